// SPDX-License-Identifier: MIT
#pragma once

#include "elements/BuilderElement.h"

#include <limits>

/// Charges or discharges at constant power within limits.
class ConstantPowerElement : public BuilderElement<ConstantPowerElement, measuresDc>
{
public:
    QString GetFullName() const override { return QStringLiteral("Constant Power"); }
    QStringList GetCategory() const override { return {"Energy Storage", "Charge/Discharge"}; }
    NodeList GetNodesData(const CalibrationData &calibration, const HardwareVersion &hardware) const override;
    ErrorStringList validateInput(const HardwareVersion &hardware) const override;

    bool isChargeSet = false; ///< isCharge decides in place of the sign of power
    bool isCharge = false;
    double power = 0.0; ///< positive charges
    double samplingInterval = 1.0;
    double maxVoltage = std::numeric_limits<double>::infinity();
    double minVoltage = -std::numeric_limits<double>::infinity();
    bool maximumVoltageVsOCP = false;
    bool minimumVoltageVsOCP = false;
    double maxDuration = std::numeric_limits<double>::infinity();
    double maxCapacity = std::numeric_limits<double>::infinity();
    double minCurrent = -std::numeric_limits<double>::infinity();
    double maxCurrent = std::numeric_limits<double>::infinity();

private:
    double signedPower() const;
};
