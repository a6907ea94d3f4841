// SPDX-License-Identifier: MIT
#pragma once

#include "elements/BuilderElement.h"

#include <limits>

/// Sweeps the potential once, after an optional quiet time.
class DCPotentialSweepElement : public BuilderElement<DCPotentialSweepElement, measuresDc>
{
public:
    QString GetFullName() const override { return QStringLiteral("DC Potential Linear Sweep"); }
    QStringList GetCategory() const override { return {"Potentiostatic Control", "Basic Experiments"}; }
    NodeList GetNodesData(const CalibrationData &calibration, const HardwareVersion &hardware) const override;
    ErrorStringList validateInput(const HardwareVersion &hardware) const override;

    double quietTime = 0.0; ///< 0 for none
    double quietTimeSamplingInterval = 1.0;
    double startingPot = 0.0;
    bool startVoltageVsOCP = false;
    double endingPot = 0.0;
    bool endVoltageVsOCP = false;
    double scanRate = 0.0;
    double samplingInterval = 1.0;
    double maxAbsoluteCurrent = std::numeric_limits<double>::infinity();
    double minAbsoluteCurrent = 0.0;
    bool autoRange = true;
    double approxMaxCurrent = std::numeric_limits<double>::infinity();
    double alphaFactor = 1.0; ///< 0 to 1
};
