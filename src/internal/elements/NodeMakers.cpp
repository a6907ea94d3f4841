// SPDX-License-Identifier: MIT
#include "elements/NodeMakers.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <initializer_list>

namespace {

/// Writes a value at an offset of the record.
template <typename Value>
void put(ExpNode_t &node, std::size_t offset, Value value)
{
    std::memcpy(reinterpret_cast<char *>(&node) + offset, &value, sizeof value);
}

/// A record whose parameters are the given values, four bytes each from offset 8 on.
ExpNode_t makeNode(NodeType_t type, std::initializer_list<float> parameters, quint8 flags = 0)
{
    ExpNode_t node;
    node.type = static_cast<quint8>(type);
    node.flags |= flags;
    if (parameters.size() > 0) // an empty list has no address
        std::memcpy(node.parameters, parameters.begin(), parameters.size() * sizeof(float));
    return node;
}

quint8 vsOcp(bool first, bool second = false)
{
    return (first ? NodeFlag::firstVoltageVsOcp : 0) | (second ? NodeFlag::secondVoltageVsOcp : 0);
}

void setBit(quint8 &bits, quint8 bit, bool isSet)
{
    bits = isSet ? bits | bit : bits & ~bit;
}

ExpNode_t pulseNode(NodeType_t type, float start, float end, float height, float step, float baseSpan, float baseTime,
                    float pulseSpan, float pulseTime, quint8 flags = 0)
{
    return makeNode(
        type,
        {start, end, height, step, std::min(baseSpan, baseTime), baseTime, std::min(pulseSpan, pulseTime), pulseTime},
        flags);
}

float frequencyRatio(float startFrequency, float endFrequency, float stepsPerDecade)
{
    const float exponent = 1.0f / stepsPerDecade;
    return std::pow(10.0f, endFrequency > startFrequency ? exponent : -exponent);
}

ExpNode_t eisNode(NodeType_t type, float bias, float amplitude, float startFrequency, float endFrequency,
                  float stepsPerDecade, float fixedFraction, int minimumCycles, quint8 flags = 0)
{
    return makeNode(type,
                    {bias, amplitude, startFrequency, endFrequency,
                     frequencyRatio(startFrequency, endFrequency, stepsPerDecade), static_cast<float>(minimumCycles),
                     fixedFraction},
                    flags);
}

ExpNode_t stepNode(NodeType_t type, float samplingInterval, float start, float end, float step, float stepDuration,
                   bool lastFlag, quint8 flags = 0)
{
    ExpNode_t node = makeNode(type, {samplingInterval, start, end, step, stepDuration}, flags);
    put(node, 28, static_cast<quint8>(lastFlag));
    return node;
}

ExpNode_t multiSineNode(NodeType_t type, float first, float second, int count, float last, quint8 flags = 0)
{
    return makeNode(type, {first, second, 0.5f, 457.5f, 5.5f, static_cast<float>(count), last}, flags);
}

} // namespace

ExpNode_t Vek_Node_Open_Circuit(float samplingInterval, float mindVdt)
{
    return makeNode(NodeType_t::OpenCircuit, {samplingInterval, 0.0f, 0.0f, std::fabs(mindVdt)});
}

ExpNode_t Vek_Node_Sweep_Voltage(float samplingInterval, float alphaFactor, float start, bool startVsOCP, float end,
                                 bool endVsOCP, float scanRate)
{
    return makeNode(NodeType_t::SweepVoltage, {samplingInterval, alphaFactor, start, end, scanRate},
                    vsOcp(startVsOCP, endVsOCP));
}

ExpNode_t Vek_Node_Sweep_Current(float samplingInterval, float alphaFactor, float start, float end, float scanRate)
{
    return makeNode(NodeType_t::SweepCurrent, {samplingInterval, alphaFactor, start, end, scanRate});
}

ExpNode_t Vek_Node_Constant_Voltage(float samplingInterval, float voltage, bool voltageVsOCP, float mindIdt)
{
    return makeNode(NodeType_t::ConstantVoltage, {samplingInterval, voltage, std::fabs(mindIdt)}, vsOcp(voltageVsOCP));
}

ExpNode_t Vek_Node_Constant_Current(float samplingInterval, float current, float mindVdt)
{
    return makeNode(NodeType_t::ConstantCurrent, {samplingInterval, current, 0.0f, std::fabs(mindVdt)});
}

ExpNode_t Vek_Node_Pulse_Normal_Voltage(float start, bool startVsOCP, float end, bool endVsOCP, float step,
                                        float baseSpan, float baseTime, float pulseSpan, float pulseTime)
{
    return pulseNode(NodeType_t::PulseNormalVoltage, start, end, 0.0f, step, baseSpan, baseTime, pulseSpan, pulseTime,
                     vsOcp(startVsOCP, endVsOCP));
}

ExpNode_t Vek_Node_Pulse_Normal_Current(float start, float end, float step, float baseSpan, float baseTime,
                                        float pulseSpan, float pulseTime)
{
    return pulseNode(NodeType_t::PulseNormalCurrent, start, end, 0.0f, step, baseSpan, baseTime, pulseSpan, pulseTime);
}

ExpNode_t Vek_Node_Pulse_Diff_Voltage(float start, bool startVsOCP, float end, bool endVsOCP, float pulseHeight,
                                      float step, float baseSpan, float baseTime, float pulseSpan, float pulseTime)
{
    return pulseNode(NodeType_t::PulseDiffVoltage, start, end, pulseHeight, step, baseSpan, baseTime, pulseSpan,
                     pulseTime, vsOcp(startVsOCP, endVsOCP));
}

ExpNode_t Vek_Node_Pulse_Diff_Current(float start, float end, float pulseHeight, float step, float baseSpan,
                                      float baseTime, float pulseSpan, float pulseTime)
{
    return pulseNode(NodeType_t::PulseDiffCurrent, start, end, pulseHeight, step, baseSpan, baseTime, pulseSpan,
                     pulseTime);
}

ExpNode_t Vek_Node_Pulse_Sqr_Voltage(float start, bool startVsOCP, float end, bool endVsOCP, float amplitude,
                                     float step, float baseSpan, float baseTime, float pulseSpan, float pulseTime)
{
    return pulseNode(NodeType_t::PulseSqrVoltage, start, end, amplitude, step, baseSpan, baseTime, pulseSpan, pulseTime,
                     vsOcp(startVsOCP, endVsOCP));
}

ExpNode_t Vek_Node_Pulse_Sqr_Current(float start, float end, float amplitude, float step, float baseSpan,
                                     float baseTime, float pulseSpan, float pulseTime)
{
    return pulseNode(NodeType_t::PulseSqrCurrent, start, end, amplitude, step, baseSpan, baseTime, pulseSpan,
                     pulseTime);
}

ExpNode_t Vek_Node_Constant_Resistance(float samplingInterval, float resistance)
{
    return makeNode(NodeType_t::ConstantResistance, {samplingInterval, resistance});
}

ExpNode_t Vek_Node_Constant_Power(float samplingInterval, float power)
{
    return makeNode(NodeType_t::ConstantPower, {samplingInterval, power});
}

ExpNode_t Vek_Node_MPPT(float samplingInterval)
{
    return makeNode(NodeType_t::MaximumPowerPoint, {samplingInterval});
}

ExpNode_t Vek_Node_EIS_Voltage(float bias, bool biasVsOCP, float amplitude, float startFrequency, float endFrequency,
                               float stepsPerDecade, float fixedFraction, int minimumCycles)
{
    return eisNode(NodeType_t::EisVoltage, bias, amplitude, startFrequency, endFrequency, stepsPerDecade, fixedFraction,
                   minimumCycles, vsOcp(biasVsOCP));
}

ExpNode_t Vek_Node_EIS_Current(float bias, float amplitude, float startFrequency, float endFrequency,
                               float stepsPerDecade, float fixedFraction, int minimumCycles)
{
    return eisNode(NodeType_t::EisCurrent, bias, amplitude, startFrequency, endFrequency, stepsPerDecade, fixedFraction,
                   minimumCycles);
}

ExpNode_t Vek_Node_EIS_Voltage_FixedSettings(float bias, bool biasVsOCP, float amplitude, float startFrequency,
                                             float endFrequency, float stepsPerDecade, float fixedFraction,
                                             currentRange_t currentRange, voltageRange_t voltageRange,
                                             ACgain_t firstGain, ACgain_t secondGain, int setting, int minimumCycles,
                                             bool rangeOff)
{
    ExpNode_t node = Vek_Node_EIS_Voltage(bias, biasVsOCP, amplitude, startFrequency, endFrequency, stepsPerDecade,
                                          fixedFraction, minimumCycles);
    node.type = static_cast<quint8>(NodeType_t::EisVoltageFixedSettings);
    put(node, 36, firstGain);
    put(node, 37, secondGain);
    put(node, 38, static_cast<quint8>(setting));
    put(node, 39, static_cast<quint8>(rangeOff));
    Vek_Node_SetCurrentRange(node, rangeOff ? currentRange_t::OFF : currentRange);
    Vek_Node_SetVoltageRange(node, voltageRange);
    return node;
}

ExpNode_t Vek_Node_Loop(qint16 jump, quint16 count)
{
    ExpNode_t node = makeNode(NodeType_t::Loop, {});
    node.jump = jump;
    node.repeats = count;
    node.timeLimit = 0.0f;
    return node;
}

ExpNode_t Vek_Node_BranchLogic(qint16 firstTarget, qint16 secondTarget)
{
    ExpNode_t node = makeNode(NodeType_t::BranchLogic, {});
    node.jump = firstTarget;
    node.repeats = 65535;
    put(node, 16, secondTarget);
    return node;
}

ExpNode_t Vek_Node_Modify(float next, float last, float step, int target, ModTarget_t what, ModType_t how, int jump)
{
    ExpNode_t node = makeNode(NodeType_t::Modify, {next, last, step});
    put(node, 20, static_cast<qint16>(target));
    put(node, 22, what);
    put(node, 23, how);
    node.jump = static_cast<qint16>(jump);
    node.timeLimit = 0.0f;
    return node;
}

ExpNode_t Vek_Node_PITT(float first, float second, float third, float fourth, float fifth, float sixth)
{
    return makeNode(NodeType_t::Pitt, {second, first, sixth, fifth, fourth, third}, vsOcp(true));
}

ExpNode_t Vek_Node_GITT(float first, float second, float third, float fourth, float fifth, float sixth)
{
    return makeNode(NodeType_t::Gitt, {second, first, sixth, fifth, fourth, third});
}

ExpNode_t Vek_Node_NonlinearADCcal(quint16 first, quint16 second, quint16 third, quint16 fourth)
{
    ExpNode_t node = makeNode(NodeType_t::NonlinearAdcCal, {});
    put(node, 8, first);
    put(node, 10, second);
    put(node, 12, third);
    put(node, 14, fourth);
    return node;
}

ExpNode_t Vek_Node_Step_Voltage(float samplingInterval, float start, bool startVsOCP, float end, bool endVsOCP,
                                float step, float stepDuration, bool lastFlag)
{
    return stepNode(NodeType_t::StepVoltage, samplingInterval, start, end, step, stepDuration, lastFlag,
                    vsOcp(startVsOCP, endVsOCP));
}

ExpNode_t Vek_Node_Step_Current(float samplingInterval, float start, float end, float step, float stepDuration,
                                bool lastFlag)
{
    return stepNode(NodeType_t::StepCurrent, samplingInterval, start, end, step, stepDuration, lastFlag);
}

ExpNode_t Vek_Node_MultiSine_Voltage(float first, bool firstVsOCP, float second, int count, float last)
{
    return multiSineNode(NodeType_t::MultiSineVoltage, first, second, count, last, vsOcp(firstVsOCP));
}

ExpNode_t Vek_Node_MultiSine_Current(float first, float second, int count, float last)
{
    return multiSineNode(NodeType_t::MultiSineCurrent, first, second, count, last);
}

ExpNode_t Vek_Node_Pseudo_Constant_Voltage(float samplingInterval, float voltage, bool voltageVsOCP, float pseudoValue,
                                           bool isPositive, float mindIdt)
{
    ExpNode_t node = makeNode(NodeType_t::PseudoConstantVoltage,
                              {samplingInterval, voltage, std::fabs(mindIdt), 0.0f, pseudoValue}, vsOcp(voltageVsOCP));
    put(node, 28, static_cast<quint8>(isPositive));
    return node;
}

QList<ExpNode_t> AI_Nodes_MottSchottky(float potential, bool potentialVsOCP, float lastPotential, float step,
                                       float holdTime, float holdSamplingInterval, float amplitude,
                                       float startFrequency, float endFrequency, float stepsPerDecade,
                                       int minimumCycles)
{
    ExpNode_t hold = Vek_Node_Constant_Voltage(holdSamplingInterval, potential, potentialVsOCP, 0.0f);
    Vek_Node_SetTimeLimit(hold, holdTime, true);
    return {hold,
            Vek_Node_EIS_Voltage(potential, potentialVsOCP, amplitude, startFrequency, endFrequency, stepsPerDecade,
                                 eisFixedFraction, minimumCycles),
            Vek_Node_Modify(potential, lastPotential, step, -2, ModTarget_t::FirstValue, ModType_t::Step, 1),
            Vek_Node_Modify(potential, lastPotential, step, -2, ModTarget_t::BiasPotential, ModType_t::Step, -3)};
}

void Vek_Node_SetILimits(ExpNode_t &node, float min, float max)
{
    setBit(node.flags, NodeFlag::signedILimits, true);
    node.iLimitMin = min;
    node.iLimitMax = max;
}

void Vek_Node_SetILimits_Abs(ExpNode_t &node, float min, float max)
{
    setBit(node.flags, NodeFlag::signedILimits, false);
    node.iLimitMin = std::fabs(min);
    node.iLimitMax = std::fabs(max);
}

void Vek_Node_SetVLimits(ExpNode_t &node, float min, bool minVsOCP, float max, bool maxVsOCP)
{
    setBit(node.flags, NodeFlag::vMinVsOcp, minVsOCP);
    setBit(node.flags, NodeFlag::vMaxVsOcp, maxVsOCP);
    node.vLimitMin = min;
    node.vLimitMax = max;
}

void Vek_Node_SetTimeLimit(ExpNode_t &node, float seconds, bool active)
{
    setBit(node.flags, NodeFlag::timeLimit, active);
    node.timeLimit = std::fabs(seconds);
}

void Vek_Node_SetChargeLimit(ExpNode_t &node, float coulombs, bool active)
{
    setBit(node.flags, NodeFlag::chargeLimit, active);
    node.chargeLimit = std::fabs(coulombs);
}

void Vek_Node_SetCurrentRange(ExpNode_t &node, currentRange_t range)
{
    const int nibble = range == currentRange_t::Auto ? 0x0F : index(range) & 0x0F;
    node.ranges = static_cast<quint8>((node.ranges & 0xF0) | nibble);
}

void Vek_Node_SetVoltageRange(ExpNode_t &node, voltageRange_t range)
{
    const int nibble = range == voltageRange_t::Auto ? 0x0F : index(range) & 0x0F;
    node.ranges = static_cast<quint8>((node.ranges & 0x0F) | nibble << 4);
}

void Vek_Node_SetRepeats(ExpNode_t &node, quint16 count)
{
    node.repeats = count;
}
