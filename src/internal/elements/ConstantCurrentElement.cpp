// SPDX-License-Identifier: MIT
#include "elements/ConstantCurrentElement.h"

#include "elements/InputCheck.h"
#include "elements/NodeMakers.h"
#include "elements/StepNodes.h"

NodeList ConstantCurrentElement::GetNodesData(const CalibrationData &, const HardwareVersion &) const
{
    ExpNode_t node = Vek_Node_Constant_Current(samplingInterval, current, 0);
    Vek_Node_SetTimeLimit(node, maxDuration, true);
    return listOf(openStep(node, QStringLiteral("Constant Current"), longestCurrentPeriod));
}

ErrorStringList ConstantCurrentElement::validateInput(const HardwareVersion &hardware) const
{
    return InputCheck(hardware).samplingLimit(samplingInterval).currentLimit(current).errors();
}
