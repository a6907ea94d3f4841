// SPDX-License-Identifier: MIT
#pragma once

#include "elements/BuilderElement.h"

/// Steps the potential from a start to an end.
class SteppedVoltage : public BuilderElement<SteppedVoltage, measuresDc>
{
public:
    QString GetFullName() const override { return QStringLiteral("Stepped Voltage"); }
    QStringList GetCategory() const override { return {"Potentiostatic Control"}; }
    NodeList GetNodesData(const CalibrationData &calibration, const HardwareVersion &hardware) const override;
    ErrorStringList validateInput(const HardwareVersion &hardware) const override;

    double startVoltage = 0.0;
    bool startVoltageVsOCP = false;
    double endVoltage = 0.0;
    bool endVoltageVsOCP = false;
    double stepSize = 0.0;
    double stepDuration = 1.0;
    double samplingInterval = 1.0;
    bool autoRange = true;
    double approxMaxCurrent = 0.0;
};
