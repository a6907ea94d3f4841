// SPDX-License-Identifier: MIT
#pragma once

#include "elements/BuilderElement.h"

#include <limits>

/// Pulses of constant height on a staircase.
class DiffPulseVoltammetryElement : public BuilderElement<DiffPulseVoltammetryElement, measuresDc>
{
public:
    QString GetFullName() const override { return QStringLiteral("Differential Pulse Potential Voltammetry"); }
    QStringList GetCategory() const override
    {
        return {"Potentiostatic Control", "Basic Voltammetry", "Pulse Voltammetry"};
    }
    NodeList GetNodesData(const CalibrationData &calibration, const HardwareVersion &hardware) const override;
    ErrorStringList validateInput(const HardwareVersion &hardware) const override;

    double startVoltage = 0.0;
    bool startVoltageVsOCP = false;
    double endVoltage = 0.0;
    bool endVoltageVsOCP = false;
    double vStep = 0.0;
    double quietTime = 0.0; ///< 0 for none
    double quietTimeSamplingInterval = 1.0;
    double pulseHeight = 0.0;
    double pulseWidth = 0.5;
    double pulsePeriod = 1.0;
    bool autoRange = true;
    double approxMaxCurrent = std::numeric_limits<double>::infinity();
    double alphaFactor = 0.75; ///< part of each level over which the instrument samples
};
