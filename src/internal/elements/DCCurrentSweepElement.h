// SPDX-License-Identifier: MIT
#pragma once

#include "elements/BuilderElement.h"

#include <limits>

/// Sweeps the current once, after an optional quiet time.
class DCCurrentSweepElement : public BuilderElement<DCCurrentSweepElement, measuresDc>
{
public:
    QString GetFullName() const override { return QStringLiteral("DC Current Linear Sweep"); }
    QStringList GetCategory() const override { return {"Galvanostatic Control", "Basic Experiments"}; }
    NodeList GetNodesData(const CalibrationData &calibration, const HardwareVersion &hardware) const override;
    ErrorStringList validateInput(const HardwareVersion &hardware) const override;

    double quietTime = 0.0; ///< 0 for none
    double quietTimeSamplingInterval = 1.0;
    double startingCurrent = 0.0;
    double endingCurrent = 0.0;
    double scanRate = 0.0;
    double samplingInterval = 1.0;
    double maxVoltage = std::numeric_limits<double>::infinity();
    double minVoltage = -std::numeric_limits<double>::infinity();
    double alphaFactor = 1.0; ///< 0 to 1
};
