// SPDX-License-Identifier: MIT
#pragma once

#include "elements/BuilderElement.h"

/// An impedance sweep with a sine of current.
class EISGalvanostaticElement : public BuilderElement<EISGalvanostaticElement, measuresAc>
{
public:
    QString GetFullName() const override { return QStringLiteral("Galvanostatic EIS"); }
    QStringList GetCategory() const override
    {
        return {"Galvanostatic Control", "Impedance Methods", "Basic Experiments"};
    }
    NodeList GetNodesData(const CalibrationData &calibration, const HardwareVersion &hardware) const override;
    ErrorStringList validateInput(const HardwareVersion &hardware) const override;

    bool timeSeriesData = false; ///< no public element sets it
    double startFreq = 0.0;
    double endFreq = 0.0;
    double stepsPerDecade = 1.0;
    quint32 minimumCycles = 2;
    double quietTime = 0.0; ///< 0 for none
    double quietTimeSamplingInterval = 1.0;
    double biasCurrent = 0.0;
    double amplitude = 0.0;
};
