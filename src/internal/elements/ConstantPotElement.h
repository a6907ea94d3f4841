// SPDX-License-Identifier: MIT
#pragma once

#include "elements/BuilderElement.h"

/// Holds a constant potential for some time.
class ConstantPotElement : public BuilderElement<ConstantPotElement, measuresDc>
{
public:
    QString GetFullName() const override { return QStringLiteral("Constant Potential"); }
    QStringList GetCategory() const override { return {"Potentiostatic Control", "Basic Experiments"}; }
    NodeList GetNodesData(const CalibrationData &calibration, const HardwareVersion &hardware) const override;
    ErrorStringList validateInput(const HardwareVersion &hardware) const override;

    double potential = 0.0;
    bool voltageVsOCP = false;
    double samplingInterval = 1.0;
    double maxDuration = 0.0;
};
