// SPDX-License-Identifier: MIT
#include "elements/MottSchottkyElement.h"

#include "elements/InputCheck.h"
#include "elements/StepNodes.h"

#include <algorithm>

NodeList MottSchottkyElement::GetNodesData(const CalibrationData &, const HardwareVersion &) const
{
    NodeList list;
    addQuietTime(list, Vek_Node_Constant_Voltage(quietTimeSampInterval, startingPotential, startVoltageVsOCP, 0),
                 quietTime, currentRange_t::Auto);
    list.addNode(sweepAt(startingPotential));
    if (startingPotential != endingPotential)
        addSteps(list);
    return list;
}

/// The second potential, and the modify nodes by which the instrument runs it again with each further one.
void MottSchottkyElement::addSteps(NodeList &list) const
{
    const double overshot = startingPotential + voltageStep;
    const double next = voltageStep > 0.0 ? std::min(overshot, endingPotential) : std::max(overshot, endingPotential);

    const int stepStart = list.size();
    addQuietTime(list, Vek_Node_Constant_Voltage(stepQuietSampInterval, next, startVoltageVsOCP, 0), stepQuietTime,
                 currentRange_t::Auto);
    const int sweepIndex = list.size();
    list.addNode(sweepAt(next));
    if (stepQuietTime > 0.0)
        list.addNode(modifyNode(next, stepStart - list.size(), ModTarget_t::FirstValue, 1));
    list.addNode(modifyNode(next, sweepIndex - list.size(), ModTarget_t::BiasPotential, stepStart - list.size()));
}

Node MottSchottkyElement::sweepAt(double potential) const
{
    return openStep(Vek_Node_EIS_Voltage(potential, startVoltageVsOCP, amplitude, startFrequency, endFrequency,
                                         stepsPerDecade, eisFixedFraction, minCycles),
                    QStringLiteral("Mott Schottky"));
}

Node MottSchottkyElement::modifyNode(double next, int target, ModTarget_t what, int jump) const
{
    Node node = openStep(Vek_Node_Modify(next, endingPotential, voltageStep, target, what, ModType_t::Step, jump),
                         QStringLiteral("Quiet Time"));
    node.setNewSubStep(false);
    return node;
}

// Nothing asks whether the model runs AC experiments. See compatibility.md, Mott-Schottky everywhere.
ErrorStringList MottSchottkyElement::validateInput(const HardwareVersion &hardware) const
{
    return InputCheck(hardware)
        .voltageLimit(startingPotential, startVoltageVsOCP)
        .voltageLimit(endingPotential, endVoltageVsOCP)
        .complainUnless(startVoltageVsOCP == endVoltageVsOCP,
                        QStringLiteral("StartVoltageVsOCP and EndVoltageVsOCP must have the same value"))
        .samplingLimit(quietTimeSampInterval)
        .frequencyLimit(startFrequency)
        .frequencyLimit(endFrequency)
        .voltageStepLimit(voltageStep)
        .sweepDensity(stepsPerDecade, minCycles)
        .voltageAmplitude(amplitude)
        .errors();
}
