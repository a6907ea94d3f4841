// SPDX-License-Identifier: MIT
#include "elements/SteppedCurrent.h"

#include "elements/InputCheck.h"
#include "elements/NodeMakers.h"
#include "elements/StepNodes.h"

#include <cmath>

namespace {
constexpr double mostSteps = 2047;
}

NodeList SteppedCurrent::GetNodesData(const CalibrationData &, const HardwareVersion &) const
{
    ExpNode_t node = Vek_Node_Step_Current(samplingInterval, startCurrent, endCurrent, stepSize, stepDuration, false);
    Vek_Node_SetVLimits(node, approxMinVoltage, false, approxMaxVoltage, false);
    return listOf(openStep(node, QStringLiteral("Stepped Current")));
}

ErrorStringList SteppedCurrent::validateInput(const HardwareVersion &hardware) const
{
    const double steps = std::fabs((endCurrent - startCurrent) / stepSize);
    // See compatibility.md, count of steps in amperes.
    const QString tooManySteps =
        QStringLiteral("Current step size should greater then") + QString::number(steps, 'g', 6) + QStringLiteral("A");
    return InputCheck(hardware)
        .samplingLimit(samplingInterval)
        .currentLimit(startCurrent)
        .currentLimit(endCurrent)
        .complainUnless(!(steps > mostSteps), tooManySteps)
        .positiveDuration(stepDuration)
        .errors();
}
