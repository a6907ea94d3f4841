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
    // Deliberate: the limits of the controlled cell hold even for potentials relative to the open-circuit potential,
    // and a voltage out of bounds is complained about with the current's text.
    for (const double voltage : {startVoltage, endVoltage})
        check.complainUnless(check.model().isWithinVoltageLimit(voltage, false),
                             check.model().getCurrentLimitErrorMsg());
    return check.voltageStepLimit(stepSize).positiveDuration(stepDuration).errors();
}
