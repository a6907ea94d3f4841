// SPDX-License-Identifier: MIT
#pragma once

#include "elements/BuilderElement.h"

#include <limits>

/// One direction of a battery cycle: constant current up to a voltage, then that voltage until the current has faded.
struct ChargeDischargeHalf {
    double current = 0.0; ///< the sign does not count
    double voltage = 0.0;
    double endCurrent = 0.0; ///< ends the constant voltage
    double samplingCC = 1.0;
    double samplingCV = 1.0;
    double voltageDifference = -std::numeric_limits<double>::infinity(); ///< negative infinity: no filter
    double durationCV = std::numeric_limits<double>::infinity();
    double durationCC = std::numeric_limits<double>::infinity();
    double durationTotal = std::numeric_limits<double>::infinity(); ///< counts where neither of the two above is finite
    double capacity = std::numeric_limits<double>::infinity();

    bool haveDurations() const;
};

/**
 * A battery cycle: charge and discharge, each with constant current and constant voltage, rests between, repeated.
 *
 * A branch node in front chooses the half to begin with by the cell's voltage.
 */
class ChargeDischargeElement : public BuilderElement<ChargeDischargeElement, measuresDc>
{
public:
    QString GetFullName() const override { return QStringLiteral("Charge/Discharge"); }
    QStringList GetCategory() const override { return {"Energy Storage", "Charge/Discharge"}; }
    NodeList GetNodesData(const CalibrationData &calibration, const HardwareVersion &hardware) const override;
    ErrorStringList validateInput(const HardwareVersion &hardware) const override;

    bool chargeFirst = true;
    bool skipConstantVoltage = false;
    qint32 cycles = 1;
    ChargeDischargeHalf charge;
    ChargeDischargeHalf discharge;
    double restDuration = 0.0; ///< 0 for none
    double restSampling = 1.0;
    double restMaximumVoltage = std::numeric_limits<double>::infinity();
    double restMinimumVoltage = -std::numeric_limits<double>::infinity();
};
