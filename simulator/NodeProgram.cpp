// SPDX-License-Identifier: MIT
#include "simulator/NodeProgram.h"

#include "simulator/NodeFields.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double roundingOfSteps = 1e-5; ///< what single precision may take off a whole number of steps

/// The float at an offset of the record.
bool bitAt(const ExpNode_t &node, int offset)
{
    return reinterpret_cast<const quint8 *>(&node)[offset] & 1u;
}

int countOfLevels(double start, double end, double step)
{
    if (step == 0.0 || start == end)
        return 1;
    return int(std::floor(std::abs((end - start) / step) + roundingOfSteps)) + 1;
}

} // namespace

bool NodeProgram::isRunnable(NodeType_t type)
{
    switch (type) {
    case NodeType_t::OpenCircuit:
    case NodeType_t::SweepVoltage:
    case NodeType_t::SweepCurrent:
    case NodeType_t::ConstantVoltage:
    case NodeType_t::ConstantCurrent:
    case NodeType_t::PulseNormalVoltage:
    case NodeType_t::PulseNormalCurrent:
    case NodeType_t::PulseDiffVoltage:
    case NodeType_t::PulseDiffCurrent:
    case NodeType_t::PulseSqrVoltage:
    case NodeType_t::PulseSqrCurrent:
    case NodeType_t::ConstantResistance:
    case NodeType_t::ConstantPower:
    case NodeType_t::MaximumPowerPoint:
    case NodeType_t::StepVoltage:
    case NodeType_t::StepCurrent:
    case NodeType_t::PseudoConstantVoltage:
        return true;
    default:
        return isImpedance(type);
    }
}

bool NodeProgram::isImpedance(NodeType_t type)
{
    return type == NodeType_t::EisVoltage || type == NodeType_t::EisCurrent || type == NodeType_t::MultiSineVoltage ||
           type == NodeType_t::MultiSineCurrent;
}

NodeProgram::NodeProgram(const ExpNode_t &node, double openCircuit, int acCycles) : _acCycles(acCycles)
{
    unfold(node, openCircuit);
}

void NodeProgram::unfold(const ExpNode_t &node, double openCircuit)
{
    using Law = Control::Law;
    const double firstOcp = node.flags & NodeFlag::firstVoltageVsOcp ? openCircuit : 0.0;
    const double secondOcp = node.flags & NodeFlag::secondVoltageVsOcp ? openCircuit : 0.0;
    _interval = at(node, 8);
    switch (node.nodeType()) {
    case NodeType_t::OpenCircuit:
        _leastVoltageRate = at(node, 20);
        return hold({Law::OpenCircuit});
    case NodeType_t::ConstantVoltage:
        _leastCurrentRate = at(node, 16);
        return hold({Law::Voltage, at(node, 12) + firstOcp});
    case NodeType_t::ConstantCurrent:
        _leastVoltageRate = at(node, 20);
        return hold({Law::Current, at(node, 12)});
    case NodeType_t::PseudoConstantVoltage: {
        _leastCurrentRate = at(node, 16);
        const double cap = std::copysign(at(node, 24), bitAt(node, 28) ? 1.0 : -1.0);
        return hold({cap == 0.0 ? Law::Voltage : Law::CappedVoltage, at(node, 12) + firstOcp, 0.0, cap});
    }
    case NodeType_t::MaximumPowerPoint:
        return hold({Law::MaximumPower});
    case NodeType_t::EisVoltage:
    case NodeType_t::MultiSineVoltage:
        return impedance({Law::Voltage, at(node, 8) + firstOcp}, node);
    case NodeType_t::EisCurrent:
    case NodeType_t::MultiSineCurrent:
        return impedance({Law::Current, at(node, 8)}, node);
    case NodeType_t::ConstantResistance:
        return hold({Law::Resistance, at(node, 12)});
    case NodeType_t::ConstantPower:
        return hold({Law::Power, at(node, 12)});
    case NodeType_t::SweepVoltage:
        return sweep(Law::Voltage, at(node, 16) + firstOcp, at(node, 20) + secondOcp, at(node, 24), at(node, 12));
    case NodeType_t::SweepCurrent:
        return sweep(Law::Current, at(node, 16), at(node, 20), at(node, 24), at(node, 12));
    case NodeType_t::StepVoltage:
        return staircase(Law::Voltage, at(node, 12) + firstOcp, at(node, 16) + secondOcp, at(node, 20), at(node, 24),
                         bitAt(node, 28));
    case NodeType_t::StepCurrent:
        return staircase(Law::Current, at(node, 12), at(node, 16), at(node, 20), at(node, 24), bitAt(node, 28));
    case NodeType_t::PulseNormalVoltage:
    case NodeType_t::PulseDiffVoltage:
    case NodeType_t::PulseSqrVoltage:
        return pulses(Law::Voltage, node, at(node, 8) + firstOcp, at(node, 12) + secondOcp);
    case NodeType_t::PulseNormalCurrent:
    case NodeType_t::PulseDiffCurrent:
    case NodeType_t::PulseSqrCurrent:
        return pulses(Law::Current, node, at(node, 8), at(node, 12));
    default:
        _valid = false;
    }
}

void NodeProgram::hold(const Control &control)
{
    _valid = _interval > 0.0;
    _count = 1;
    _segment = [control](int) { return Segment{control}; };
}

void NodeProgram::sweep(Control::Law law, double start, double end, double rate, double alpha)
{
    rate = std::abs(rate);
    _valid = _interval > 0.0 && (rate > 0.0 || start == end);
    _averagedShare = std::clamp(alpha, 0.0, 1.0);
    _count = 1;
    _duration = start == end ? 0.0 : std::abs(end - start) / rate;
    const Segment ramp{{law, start, std::copysign(rate, end - start)}, _duration};
    _segment = [ramp](int) { return ramp; };
}

void NodeProgram::staircase(Control::Law law, double start, double end, double step, double stepDuration,
                            bool continues)
{
    _valid = _interval > 0.0 && stepDuration > 0.0;
    _samplesEachSegment = true;
    const int first = continues ? 1 : 0;
    _count = std::max(1, countOfLevels(start, end, step) - first);
    _duration = _count * stepDuration;
    const double signedStep = std::copysign(step, end - start);
    _segment = [=](int index) { return Segment{{law, start + (index + first) * signedStep}, stepDuration}; };
}

void NodeProgram::pulses(Control::Law law, const ExpNode_t &node, double start, double end)
{
    const NodeType_t type = node.nodeType();
    const double height = at(node, 16);
    const double step = std::copysign(at(node, 20), end - start);
    const Segment base{{law}, at(node, 28), nullptr, at(node, 24)};
    const Segment pulse{{law}, at(node, 36), nullptr, at(node, 32)};
    const bool isNormal = type == NodeType_t::PulseNormalVoltage || type == NodeType_t::PulseNormalCurrent;
    const bool isSquare = type == NodeType_t::PulseSqrVoltage || type == NodeType_t::PulseSqrCurrent;
    const double amplitude = std::copysign(height, end - start);
    _interval = 0.0;
    _valid = base.duration > 0.0 && pulse.duration > 0.0;
    _count = 2 * countOfLevels(start, end, step);
    _duration = _count / 2 * (base.duration + pulse.duration);
    _segment = [=](int index) {
        const double level = start + (index / 2) * step;
        const bool isPulse = index % 2 == 1;
        Segment segment = isPulse ? pulse : base;
        if (isNormal)
            segment.control.value = isPulse ? level : start;
        else if (isSquare)
            segment.control.value = isPulse ? level - amplitude : level + amplitude;
        else
            segment.control.value = isPulse ? level + height : level;
        return segment;
    };
}

void NodeProgram::impedance(const Control &bias, const ExpNode_t &node)
{
    const auto plans = std::make_shared<const std::vector<AcPlan>>(planImpedance(node, _acCycles));
    _plans = plans;
    _interval = 0.0;
    _valid = !plans->empty();
    _count = int(plans->size());
    _duration = 0.0;
    for (const AcPlan &plan : *plans)
        _duration += plan.duration();
    _segment = [plans, bias](int index) {
        const AcPlan &plan = plans->at(std::size_t(index));
        return Segment{bias, plan.duration(), &plan};
    };
}
