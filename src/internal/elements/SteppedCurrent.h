// SPDX-License-Identifier: MIT
#pragma once

#include "elements/BuilderElement.h"

#include <limits>

/// Steps the current from a start to an end.
class SteppedCurrent : public BuilderElement<SteppedCurrent, measuresDc>
{
public:
    QString GetFullName() const override { return QStringLiteral("Stepped Current"); }
    QStringList GetCategory() const override { return {"Galvanostatic Control"}; }
    NodeList GetNodesData(const CalibrationData &calibration, const HardwareVersion &hardware) const override;
    ErrorStringList validateInput(const HardwareVersion &hardware) const override;

    double startCurrent = 0.0;
    double endCurrent = 0.0;
    double stepSize = 0.0;
    double stepDuration = 1.0;
    double samplingInterval = 1.0;
    double approxMaxVoltage = std::numeric_limits<double>::infinity();  ///< a limit, in spite of its name
    double approxMinVoltage = -std::numeric_limits<double>::infinity(); ///< a limit, in spite of its name
};
