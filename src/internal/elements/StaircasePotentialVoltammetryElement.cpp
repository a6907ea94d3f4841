// SPDX-License-Identifier: MIT
#include "elements/StaircasePotentialVoltammetryElement.h"

#include "elements/CyclicPath.h"
#include "elements/InputCheck.h"
#include "elements/NodeMakers.h"
#include "elements/StepNodes.h"

NodeList StaircasePotentialVoltammetryElement::GetNodesData(const CalibrationData &calibration,
                                                            const HardwareVersion &) const
{
    const currentRange_t range = chooseCurrentRange(calibration, autoRange, approxMaxCurrent);

    NodeList list;
    addQuietTime(list, Vek_Node_Constant_Voltage(quietTimeSamplingInterval, startVoltage, startVoltageVsOCP, 0),
                 quietTime, range);
    addCyclicLegs(list, pathOf(*this), QStringLiteral("Staircase Voltammetry"),
                  [&](Potential from, Potential to, bool continues) {
                      ExpNode_t leg = Vek_Node_Step_Voltage(samplingInterval, from.volts, from.vsOCP, to.volts,
                                                            to.vsOCP, stepSize, stepDuration, continues);
                      Vek_Node_SetCurrentRange(leg, range);
                      return leg;
                  });
    return list;
}

ErrorStringList StaircasePotentialVoltammetryElement::validateInput(const HardwareVersion &hardware) const
{
    InputCheck check(hardware);
    checkCyclicPath(check, pathOf(*this));
    return check.voltageStepLimit(stepSize)
        .samplingLimit(samplingInterval)
        .fixedRangeLimit(autoRange, approxMaxCurrent)
        .errors();
}
