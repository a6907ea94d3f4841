// SPDX-License-Identifier: MIT
#pragma once

#include "elements/BuilderElement.h"

#include <limits>

/**
 * Drives a constant current within limits. With a voltage filter the instrument samples as fast as its model can, and
 * the host reports a sample only when the voltage has moved by the difference.
 */
class ConstantCurrentAdvElement : public BuilderElement<ConstantCurrentAdvElement, measuresDc>
{
public:
    QString GetFullName() const override { return fullName; }
    QStringList GetCategory() const override { return {"Galvanostatic Control", "Basic Experiments"}; }
    NodeList GetNodesData(const CalibrationData &calibration, const HardwareVersion &hardware) const override;
    ErrorStringList validateInput(const HardwareVersion &hardware) const override;

    QString fullName = QStringLiteral("Constant Current, Advanced");
    bool autoVoltageRange = true;
    bool autoRange = true;
    double current = 0.0;
    double samplingInterval = 1.0;
    double maxVoltage = std::numeric_limits<double>::infinity();
    double minVoltage = -std::numeric_limits<double>::infinity();
    double maxDuration = 0.0;
    double maxCapacity = std::numeric_limits<double>::infinity();
    double approxMaxCurrent = std::numeric_limits<double>::infinity(); ///< chooses the range unless autoRange
    double minSamplingVoltageDifference = -std::numeric_limits<double>::infinity(); ///< negative infinity: no filter
    double approxMaxVoltage = std::numeric_limits<double>::infinity(); ///< chooses the range unless autoVoltageRange
};
