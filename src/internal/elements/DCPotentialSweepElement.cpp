// SPDX-License-Identifier: MIT
#include "elements/DCPotentialSweepElement.h"

#include "elements/InputCheck.h"
#include "elements/NodeMakers.h"
#include "elements/StepNodes.h"

NodeList DCPotentialSweepElement::GetNodesData(const CalibrationData &calibration, const HardwareVersion &) const
{
    const currentRange_t range = chooseCurrentRange(calibration, autoRange, approxMaxCurrent);
    NodeList list;
    addQuietTime(list, Vek_Node_Constant_Voltage(quietTimeSamplingInterval, startingPot, startVoltageVsOCP, 0),
                 quietTime, range);

    ExpNode_t sweep = Vek_Node_Sweep_Voltage(samplingInterval, alphaFactor, startingPot, startVoltageVsOCP, endingPot,
                                             endVoltageVsOCP, scanRate);
    Vek_Node_SetILimits_Abs(sweep, minAbsoluteCurrent, maxAbsoluteCurrent);
    Vek_Node_SetCurrentRange(sweep, range);
    list.addNode(openStep(sweep, QStringLiteral("Potential Linear Sweep")));
    return list;
}

ErrorStringList DCPotentialSweepElement::validateInput(const HardwareVersion &hardware) const
{
    return InputCheck(hardware)
        .voltageLimit(startingPot, startVoltageVsOCP)
        .voltageLimit(endingPot, endVoltageVsOCP)
        .samplingLimit(samplingInterval)
        .errors();
}
