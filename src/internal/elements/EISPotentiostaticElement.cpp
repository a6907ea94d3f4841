// SPDX-License-Identifier: MIT
#include "elements/EISPotentiostaticElement.h"

#include "elements/InputCheck.h"
#include "elements/NodeMakers.h"
#include "elements/StepNodes.h"
#include "hardware_models/HardwareModel.h"

NodeList EISPotentiostaticElement::GetNodesData(const CalibrationData &, const HardwareVersion &) const
{
    NodeList list;
    addQuietTime(list, Vek_Node_Constant_Voltage(quietTimeSamplingInterval, biasVoltage, biasVoltageVsOCP, 0),
                 quietTime, currentRange_t::Auto);
    Node sweep = openStep(Vek_Node_EIS_Voltage(biasVoltage, biasVoltageVsOCP, amplitude, startFreq, endFreq,
                                               stepsPerDecade, eisFixedFraction, minimumCycles),
                          QStringLiteral("Potentiostatic EIS"));
    sweep.setTimeSeriesData(timeSeriesData);
    list.addNode(sweep);
    return list;
}

ErrorStringList EISPotentiostaticElement::validateInput(const HardwareVersion &hardware) const
{
    InputCheck check(hardware);
    const HardwareModel &model = check.model();
    return check.acSupport()
        .frequencyLimit(startFreq)
        .frequencyLimit(endFreq)
        // See compatibility.md, complaint with the current's text.
        .complainUnless(model.isWithinVoltageLimit(biasVoltage, biasVoltageVsOCP), model.getCurrentLimitErrorMsg())
        .sweepDensity(stepsPerDecade, minimumCycles)
        .voltageAmplitude(amplitude)
        .errors();
}
