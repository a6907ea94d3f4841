// SPDX-License-Identifier: MIT
#include "elements/ChargeDischargeElement.h"

#include "elements/InputCheck.h"
#include "elements/NodeMakers.h"
#include "elements/StepNodes.h"
#include "hardware_models/HardwareVersion.h"
#include "numerics/Constants.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr float beyondAnyCell = 300.0f; // volts

bool isFinite(double duration)
{
    return duration <= std::numeric_limits<double>::max();
}

/// What sets the two directions apart.
struct Direction {
    const ChargeDischargeHalf &half;
    bool charges;
    int stepNumber;
    QString currentName;
    QString voltageName;

    double signedCurrent() const { return charges ? std::fabs(half.current) : -std::fabs(half.current); }
};

Node constantCurrentNode(const Direction &direction)
{
    const ChargeDischargeHalf &half = direction.half;
    ExpNode_t node = Vek_Node_Constant_Current(half.samplingCC, direction.signedCurrent(), 0);
    Vek_Node_SetTimeLimit(node, half.haveDurations() ? half.durationCC : half.durationTotal, true);
    if (direction.charges)
        Vek_Node_SetVLimits(node, -beyondAnyCell, false, half.voltage, false);
    else
        Vek_Node_SetVLimits(node, half.voltage, false, beyondAnyCell, false);
    Vek_Node_SetChargeLimit(node, half.capacity, true);

    Node step = openStep(node, direction.currentName, longestCurrentPeriod);
    step.setStepNumber(direction.stepNumber);
    step.setVoltageDifferent(half.voltageDifference);
    return step;
}

Node constantVoltageNode(const Direction &direction, HardwareModel_t model)
{
    const ChargeDischargeHalf &half = direction.half;
    ExpNode_t node = model == HardwareModel_t::Gale
                         ? Vek_Node_Constant_Voltage(half.samplingCV, half.voltage, false, 0)
                         : Vek_Node_Pseudo_Constant_Voltage(half.samplingCV, half.voltage, false,
                                                            direction.signedCurrent(), direction.charges, 0);
    Vek_Node_SetTimeLimit(node, half.haveDurations() ? half.durationCV : half.durationTotal, half.haveDurations());
    if (direction.charges)
        Vek_Node_SetILimits(node, half.endCurrent, infinity);
    else
        Vek_Node_SetILimits(node, -infinity, -std::fabs(half.endCurrent));
    Vek_Node_SetChargeLimit(node, half.capacity, false);

    Node step = openStep(node, direction.voltageName, longestCurrentPeriod);
    step.setNewSubStep(false);
    return step;
}

Node restNode(const ChargeDischargeElement &element)
{
    ExpNode_t node = Vek_Node_Loop(0, 0); // passes by at once
    if (element.restDuration > 0.0) {
        node = Vek_Node_Open_Circuit(element.restSampling, 0);
        Vek_Node_SetTimeLimit(node, std::max(element.restDuration, 0.0001), true);
        Vek_Node_SetVLimits(node, element.restMinimumVoltage, false, element.restMaximumVoltage, false);
    }
    Node rest = openStep(node, QStringLiteral("Rest Period"), longestCurrentPeriod);
    rest.setNewSubStep(false);
    rest.setRestPeriod(true);
    return rest;
}

/// Passes on to the first half, or to the second where the cell's voltage is past the first one's aim already.
Node branchNode(const ChargeDischargeElement &element, int secondHalf)
{
    Node branch;
    branch.hwNode = Vek_Node_BranchLogic(1, static_cast<qint16>(secondHalf));
    if (element.chargeFirst)
        Vek_Node_SetVLimits(branch.hwNode, -infinity, false, element.charge.voltage, false);
    else
        Vek_Node_SetVLimits(branch.hwNode, element.discharge.voltage, false, infinity, false);
    branch.setNewCycle(true);
    return branch;
}

} // namespace

bool ChargeDischargeHalf::haveDurations() const
{
    return isFinite(durationCC) || isFinite(durationCV);
}

NodeList ChargeDischargeElement::GetNodesData(const CalibrationData &, const HardwareVersion &hardware) const
{
    const Direction charging{charge, true, 1, QStringLiteral("Constant Current Charge"),
                             QStringLiteral("Constant Potential Charge")};
    const Direction discharging{discharge, false, 2, QStringLiteral("Constant Current Discharge"),
                                QStringLiteral("Constant Potential Discharge")};
    const Node rest = restNode(*this);
    const int nodesInHalf = skipConstantVoltage ? 2 : 3;

    NodeList list;
    list.addNode(branchNode(*this, 1 + nodesInHalf));
    for (const Direction *direction :
         {chargeFirst ? &charging : &discharging, chargeFirst ? &discharging : &charging}) {
        list.addNode(constantCurrentNode(*direction));
        if (!skipConstantVoltage)
            list.addNode(constantVoltageNode(*direction, hardware.hwModel));
        list.addNode(rest);
    }
    if (cycles > 1) {
        Node loop;
        loop.hwNode = Vek_Node_Loop(static_cast<qint16>(-list.size()), static_cast<quint16>(cycles));
        list.addNode(loop);
    }
    return list;
}

ErrorStringList ChargeDischargeElement::validateInput(const HardwareVersion &hardware) const
{
    return InputCheck(hardware).errors();
}
