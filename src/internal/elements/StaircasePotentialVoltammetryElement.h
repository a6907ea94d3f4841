// SPDX-License-Identifier: MIT
#pragma once

#include "elements/BuilderElement.h"

/// Cyclic voltammetry in steps in place of sweeps.
class StaircasePotentialVoltammetryElement : public BuilderElement<StaircasePotentialVoltammetryElement, measuresDc>
{
public:
    QString GetFullName() const override { return QStringLiteral("Staircase Potential Voltammetry"); }
    QStringList GetCategory() const override { return {"Potentiostatic Control", "Basic Experiments"}; }
    NodeList GetNodesData(const CalibrationData &calibration, const HardwareVersion &hardware) const override;
    ErrorStringList validateInput(const HardwareVersion &hardware) const override;

    quint32 numberOfCycles = 1;
    double startVoltage = 0.0;
    bool startVoltageVsOCP = false;
    double endVoltage = 0.0;
    bool endVoltageVsOCP = false;
    double firstVoltageLimit = 0.0;
    bool firstVoltageLimitVsOCP = false;
    double secondVoltageLimit = 0.0;
    bool secondVoltageLimitVsOCP = false;
    double stepSize = 0.0;
    double stepDuration = 1.0;
    double samplingInterval = 1.0;
    double quietTime = 0.0; ///< 0 for none
    double quietTimeSamplingInterval = 1.0;
    bool autoRange = false;
    double approxMaxCurrent = 0.0;
};
