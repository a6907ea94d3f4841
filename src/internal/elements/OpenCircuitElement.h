// SPDX-License-Identifier: MIT
#pragma once

#include "elements/BuilderElement.h"

#include <limits>

/// Disconnects the cell and watches its potential within limits.
class OpenCircuitElement : public BuilderElement<OpenCircuitElement, measuresDc>
{
public:
    QString GetFullName() const override { return QStringLiteral("Open Circuit Potential"); }
    QStringList GetCategory() const override { return {"Basic Experiments"}; }
    NodeList GetNodesData(const CalibrationData &calibration, const HardwareVersion &hardware) const override;
    ErrorStringList validateInput(const HardwareVersion &hardware) const override;

    bool autoVoltageRange = true;
    double maxDuration = 0.0;
    double samplingInterval = 1.0;
    double maxVoltage = std::numeric_limits<double>::infinity(); ///< a limit that also chooses the range
    double minVoltage = -std::numeric_limits<double>::infinity();
    double mindVdt = 0.0; ///< 0 for none
};
