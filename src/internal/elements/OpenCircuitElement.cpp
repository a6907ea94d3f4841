// SPDX-License-Identifier: MIT
#include "elements/OpenCircuitElement.h"

#include "elements/InputCheck.h"
#include "elements/NodeMakers.h"
#include "elements/StepNodes.h"

NodeList OpenCircuitElement::GetNodesData(const CalibrationData &calibration, const HardwareVersion &) const
{
    ExpNode_t node = Vek_Node_Open_Circuit(samplingInterval, mindVdt);
    Vek_Node_SetVoltageRange(node, chooseVoltageRange(calibration, autoVoltageRange, maxVoltage));
    Vek_Node_SetTimeLimit(node, maxDuration, true);
    Vek_Node_SetVLimits(node, minVoltage, false, maxVoltage, false);
    return listOf(openStep(node, QStringLiteral("Open Circuit Potential")));
}

ErrorStringList OpenCircuitElement::validateInput(const HardwareVersion &hardware) const
{
    return InputCheck(hardware).samplingLimit(samplingInterval).errors();
}
