// SPDX-License-Identifier: MIT
#pragma once

#include "elements/BuilderElement.h"

#include <limits>

/// Discharges through a constant resistance within limits.
class ConstantResistanceElement : public BuilderElement<ConstantResistanceElement, measuresDc>
{
public:
    QString GetFullName() const override { return QStringLiteral("Constant Resistance"); }
    QStringList GetCategory() const override { return {"Energy Storage", "Charge/Discharge"}; }
    NodeList GetNodesData(const CalibrationData &calibration, const HardwareVersion &hardware) const override;
    ErrorStringList validateInput(const HardwareVersion &hardware) const override;

    double resistance = 1e9;
    double samplingInterval = 1.0;
    double minCurrent = -std::numeric_limits<double>::infinity();
    double maxCurrent = std::numeric_limits<double>::infinity();
    bool maximumVoltageVsOCP = false;
    double maxVoltage = std::numeric_limits<double>::infinity();
    bool minimumVoltageVsOCP = false;
    double minVoltage = -std::numeric_limits<double>::infinity();
    double maxDuration = std::numeric_limits<double>::infinity();
    double maxCapacity = std::numeric_limits<double>::infinity();
};
