// SPDX-License-Identifier: MIT
#include "elements/SteppedVoltage.h"

#include "elements/InputCheck.h"
#include "elements/NodeMakers.h"
#include "elements/StepNodes.h"
#include "hardware_models/HardwareModel.h"

NodeList SteppedVoltage::GetNodesData(const CalibrationData &calibration, const HardwareVersion &) const
{
    ExpNode_t node = Vek_Node_Step_Voltage(samplingInterval, startVoltage, startVoltageVsOCP, endVoltage,
                                           endVoltageVsOCP, stepSize, stepDuration, false);
    Vek_Node_SetCurrentRange(node, chooseCurrentRange(calibration, autoRange, approxMaxCurrent));
    return listOf(openStep(node, QStringLiteral("Stepped Voltage")));
}

ErrorStringList SteppedVoltage::validateInput(const HardwareVersion &hardware) const
{
    InputCheck check(hardware);
    check.samplingLimit(samplingInterval);
    // See compatibility.md, stepped potentials stay controlled; and for the text
    // see compatibility.md, complaint with the current's text.
    for (const double voltage : {startVoltage, endVoltage})
        check.complainUnless(check.model().isWithinVoltageLimit(voltage, false),
                             check.model().getCurrentLimitErrorMsg());
    return check.voltageStepLimit(stepSize).positiveDuration(stepDuration).errors();
}
