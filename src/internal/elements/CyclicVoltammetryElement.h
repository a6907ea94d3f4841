// SPDX-License-Identifier: MIT
#pragma once

#include "elements/BuilderElement.h"

#include <limits>

/// Sweeps the potential from a start through two vertices, a number of cycles, to an end.
class CyclicVoltammetryElement : public BuilderElement<CyclicVoltammetryElement, measuresDc>
{
public:
    QString GetFullName() const override { return QStringLiteral("Cyclic Voltammetry"); }
    QStringList GetCategory() const override { return {"Potentiostatic Control", "Basic Experiments"}; }
    NodeList GetNodesData(const CalibrationData &calibration, const HardwareVersion &hardware) const override;
    ErrorStringList validateInput(const HardwareVersion &hardware) const override;

    double startVoltage = 0.0;
    bool startVoltageVsOCP = false;
    double firstVoltageLimit = 0.0;
    bool firstVoltageLimitVsOCP = false;
    double secondVoltageLimit = 0.0;
    bool secondVoltageLimitVsOCP = false;
    quint32 numberOfCycles = 1;
    double endVoltage = 0.0;
    bool endVoltageVsOCP = false;
    double dEdt = 0.0;
    double samplingInterval = 1.0;
    double quietTime = 0.0; ///< 0 for none
    double quietTimeSamplingInterval = 1.0;
    bool autoRange = true;
    double approxMaxCurrent = std::numeric_limits<double>::infinity();
    double alphaFactor = 1.0; ///< 0 to 1
};
