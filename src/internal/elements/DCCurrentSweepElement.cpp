// SPDX-License-Identifier: MIT
#include "elements/DCCurrentSweepElement.h"

#include "elements/InputCheck.h"
#include "elements/NodeMakers.h"
#include "elements/StepNodes.h"
#include "hardware_models/HardwareModel.h"

NodeList DCCurrentSweepElement::GetNodesData(const CalibrationData &, const HardwareVersion &) const
{
    NodeList list;
    addQuietTime(list, Vek_Node_Constant_Current(quietTimeSamplingInterval, startingCurrent, 0), quietTime,
                 currentRange_t::Auto);

    ExpNode_t sweep = Vek_Node_Sweep_Current(samplingInterval, alphaFactor, startingCurrent, endingCurrent, scanRate);
    Vek_Node_SetVLimits(sweep, minVoltage, false, maxVoltage, false);
    list.addNode(openStep(sweep, QStringLiteral("Current Linear Sweep")));
    return list;
}

ErrorStringList DCCurrentSweepElement::validateInput(const HardwareVersion &hardware) const
{
    InputCheck check(hardware);
    const HardwareModel &model = check.model();
    return check
        .complainUnless(model.isWithinCurrentLimit(startingCurrent) && model.isWithinCurrentLimit(endingCurrent),
                        model.getCurrentLimitErrorMsg())
        .samplingLimit(samplingInterval)
        .errors();
}
