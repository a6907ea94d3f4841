// SPDX-License-Identifier: MIT
#include "elements/ConstantPotElement.h"

#include "elements/InputCheck.h"
#include "elements/NodeMakers.h"
#include "elements/StepNodes.h"

NodeList ConstantPotElement::GetNodesData(const CalibrationData &, const HardwareVersion &) const
{
    ExpNode_t node = Vek_Node_Constant_Voltage(samplingInterval, potential, voltageVsOCP, 0);
    Vek_Node_SetTimeLimit(node, maxDuration, true);
    return listOf(openStep(node, QStringLiteral("Constant Potential")));
}

ErrorStringList ConstantPotElement::validateInput(const HardwareVersion &hardware) const
{
    return InputCheck(hardware).samplingLimit(samplingInterval).voltageLimit(potential, voltageVsOCP).errors();
}
