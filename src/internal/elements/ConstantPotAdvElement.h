// SPDX-License-Identifier: MIT
#pragma once

#include "elements/BuilderElement.h"

#include <limits>

/**
 * Holds a constant potential within limits. With pseudo control the instrument regulates the current instead, which
 * the Gale line cannot do.
 */
class ConstantPotAdvElement : public BuilderElement<ConstantPotAdvElement, measuresDc>
{
public:
    QString GetFullName() const override { return fullName; }
    QStringList GetCategory() const override { return {"Potentiostatic Control", "Basic Experiments"}; }
    NodeList GetNodesData(const CalibrationData &calibration, const HardwareVersion &hardware) const override;
    ErrorStringList validateInput(const HardwareVersion &hardware) const override;

    QString fullName = QStringLiteral("Constant Potential, Advanced");
    double potential = 0.0;
    bool voltageVsOCP = false;
    double samplingInterval = 1.0;
    bool pseudoControl = false; ///< no public element sets it
    double pseudoValue = 0.0;   ///< amperes
    double maxDuration = 0.0;
    double maxAbsoluteCurrent = std::numeric_limits<double>::infinity();
    double minAbsoluteCurrent = 0.0;
    double maxCapacity = std::numeric_limits<double>::infinity();
    double mindIdt = 0.0; ///< 0 for none
    bool autoRange = true;
    double approxMaxCurrent = std::numeric_limits<double>::infinity(); ///< chooses the range unless autoRange
    qint8 voltageRange = 5;                                            ///< 0 to 3, or 5 for automatic
};
