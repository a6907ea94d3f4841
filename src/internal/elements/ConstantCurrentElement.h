// SPDX-License-Identifier: MIT
#pragma once

#include "elements/BuilderElement.h"

/// Drives a constant current for some time.
class ConstantCurrentElement : public BuilderElement<ConstantCurrentElement, measuresDc>
{
public:
    QString GetFullName() const override { return QStringLiteral("Constant Current"); }
    QStringList GetCategory() const override { return {"Galvanostatic Control", "Basic Experiments"}; }
    NodeList GetNodesData(const CalibrationData &calibration, const HardwareVersion &hardware) const override;
    ErrorStringList validateInput(const HardwareVersion &hardware) const override;

    double current = 0.0;
    double samplingInterval = 1.0;
    double maxDuration = 0.0;
};
