// SPDX-License-Identifier: MIT
#include "elements/NodePlan.h"

#include "elements/NodeSampling.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace {

constexpr double unknown = std::numeric_limits<double>::quiet_NaN();
constexpr double unlimited = std::numeric_limits<double>::infinity();
constexpr double givesWay = 1e-3;        ///< of an interval or a step: what comes so close before the end is the end
constexpr double roundingOfSteps = 1e-5; ///< what single precision may take off a whole number of steps
constexpr double roundingOfRatio = 1e-4; ///< the same of the logarithm of a ratio of frequencies
constexpr double highestSampleRate = 1e5;
constexpr int samplesPerPeriod = 64;
constexpr double leastPeriods = 8; ///< from 1 Hz on

/// How a type of node spends its time, which is what an estimate is made of.
enum class Course { None, Hold, Sweep, Steps, Pulses, Impedance };

constexpr int noParameter = -1;

struct TypeRow {
    NodeType_t type;
    const char *name;
    Course course;
    const char *unit;
    int startOffset; ///< of the first set point among the parameters
    int endOffset;   ///< of the last one; the same where one value is held
};

// clang-format off
constexpr TypeRow typeRows[] = {
    // type                              name                       course             unit   start        end
    {NodeType_t::End,                    "End",                     Course::None,      "",    noParameter, noParameter},
    {NodeType_t::OpenCircuit,            "Open circuit",            Course::Hold,      "",    noParameter, noParameter},
    {NodeType_t::SweepVoltage,           "Potential sweep",         Course::Sweep,     "V",   8,           12},
    {NodeType_t::SweepCurrent,           "Current sweep",           Course::Sweep,     "A",   8,           12},
    {NodeType_t::ConstantVoltage,        "Constant potential",      Course::Hold,      "V",   4,           4},
    {NodeType_t::ConstantCurrent,        "Constant current",        Course::Hold,      "A",   4,           4},
    {NodeType_t::PulseNormalVoltage,     "Normal pulses",           Course::Pulses,    "V",   0,           4},
    {NodeType_t::PulseDiffVoltage,       "Differential pulses",     Course::Pulses,    "V",   0,           4},
    {NodeType_t::PulseSqrVoltage,        "Square wave",             Course::Pulses,    "V",   0,           4},
    {NodeType_t::ConstantResistance,     "Constant resistance",     Course::Hold,      "Ohm", 4,           4},
    {NodeType_t::ConstantPower,          "Constant power",          Course::Hold,      "W",   4,           4},
    {NodeType_t::EisVoltage,             "Potentiostatic impedance", Course::Impedance, "Hz", 8,           12},
    {NodeType_t::EisCurrent,             "Galvanostatic impedance", Course::Impedance, "Hz",  8,           12},
    {NodeType_t::Loop,                   "Loop",                    Course::None,      "",    noParameter, noParameter},
    {NodeType_t::BranchLogic,            "Branch",                  Course::None,      "",    noParameter, noParameter},
    {NodeType_t::Modify,                 "Next potential",          Course::None,      "V",   0,           4},
    {NodeType_t::StepVoltage,            "Potential steps",         Course::Steps,     "V",   4,           8},
    {NodeType_t::StepCurrent,            "Current steps",           Course::Steps,     "A",   4,           8},
    {NodeType_t::PseudoConstantVoltage,  "Constant potential",      Course::Hold,      "V",   4,           4},
};
// clang-format on

const TypeRow &rowOf(NodeType_t type)
{
    static constexpr TypeRow other{NodeType_t::End, "Other", Course::None, "", noParameter, noParameter};
    for (const TypeRow &row : typeRows) {
        if (row.type == type)
            return row;
    }
    return other;
}

/// The single-precision parameter at an offset from the first one.
double parameter(const ExpNode_t &node, int offset)
{
    float value = 0.0f;
    std::memcpy(&value, node.parameters + offset, sizeof value);
    return value;
}

double timeLimitOf(const ExpNode_t &node)
{
    return node.flags & NodeFlag::timeLimit ? double(node.timeLimit) : unlimited;
}

double chargeLimitOf(const ExpNode_t &node)
{
    return node.flags & NodeFlag::chargeLimit ? double(node.chargeLimit) : unlimited;
}

/// Staircases and pulses have their step at the same place.
double levelCount(const ExpNode_t &node, const PlannedNode &planned)
{
    const double span = planned.endValue - planned.startValue;
    return span == 0.0 ? 1.0 : std::floor(std::abs(span / parameter(node, 12)) + roundingOfSteps) + 1.0;
}

double stairDuration(const ExpNode_t &node, const PlannedNode &planned)
{
    const bool goesOn = node.parameters[20] & 1; // the level at the start was the end of the leg before
    return std::max(1.0, levelCount(node, planned) - (goesOn ? 1.0 : 0.0)) * parameter(node, 16);
}

double frequencyCount(const ExpNode_t &node, const PlannedNode &planned)
{
    const double span = std::abs(std::log(planned.endValue / planned.startValue));
    return std::floor((span + roundingOfRatio) / std::abs(std::log(parameter(node, 16)))) + 1.0;
}

/// Seconds between two samples of a sine.
double samplePeriod(double frequency)
{
    if (frequency * samplesPerPeriod <= highestSampleRate)
        return 1.0 / (frequency * samplesPerPeriod);
    const double skipped = std::max(1.0, std::ceil(frequency / highestSampleRate - 1.0 / samplesPerPeriod));
    return (skipped + 1.0 / samplesPerPeriod) / frequency;
}

double impedanceDuration(const ExpNode_t &node, const PlannedNode &planned)
{
    const double count = frequencyCount(node, planned);
    double seconds = 0.0;
    for (double point = 0; point < count; ++point) {
        const double frequency = planned.startValue * std::pow(parameter(node, 16), point);
        const double wanted = parameter(node, 20);
        const double periods = frequency >= 1.0 ? std::max(wanted, leastPeriods) : wanted;
        seconds += 1.0 / frequency + (periods * samplesPerPeriod + 1.0) * samplePeriod(frequency);
    }
    return seconds;
}

/// Seconds until the node has done what its record says.
double courseDuration(const ExpNode_t &node, const PlannedNode &planned)
{
    switch (rowOf(node.nodeType()).course) {
    case Course::None:
        return 0.0;
    case Course::Hold:
        return node.nodeType() == NodeType_t::ConstantCurrent && planned.startValue != 0.0
                   ? planned.chargeLimit / std::abs(planned.startValue)
                   : unlimited;
    case Course::Sweep:
        return std::abs((planned.endValue - planned.startValue) / parameter(node, 16));
    case Course::Steps:
        return stairDuration(node, planned);
    case Course::Pulses:
        return levelCount(node, planned) * (parameter(node, 20) + parameter(node, 28));
    case Course::Impedance:
        return impedanceDuration(node, planned);
    }
    return unknown;
}

/// Nobody knows how far a sweep goes whose one end alone depends on the cell.
bool isSpanUnknown(const PlannedNode &planned)
{
    return planned.isStartVersusOcp != planned.isEndVersusOcp;
}

double durationOf(const ExpNode_t &node, const PlannedNode &planned)
{
    if (isSpanUnknown(planned))
        return unknown;
    const Course course = rowOf(node.nodeType()).course;
    const double own = courseDuration(node, planned);
    return course == Course::None ? own : std::min(own, planned.timeLimit);
}

/// A controlled current moves a known charge, all else depends on the cell.
double chargeOf(const ExpNode_t &node, const PlannedNode &planned)
{
    const TypeRow &row = rowOf(node.nodeType());
    if (row.course == Course::None || row.type == NodeType_t::OpenCircuit)
        return 0.0;
    if (std::strcmp(row.unit, "A") != 0)
        return unknown;
    const double current = (planned.startValue + planned.endValue) / 2.0;
    return current == 0.0 ? 0.0 : current * planned.expectedDuration;
}

/// Samples at whole multiples of the interval and one at the end.
double samplesWithin(double duration, double interval)
{
    return std::max(0.0, std::floor(duration / interval - givesWay)) + 1.0;
}

/// The levels of a staircase are sampled like nodes; a time limit may cut the last one short.
double samplesOfStairs(double duration, double level, double interval)
{
    const double whole = std::floor(duration / level + givesWay);
    const double rest = duration - whole * level;
    return whole * samplesWithin(level, interval) + (rest > givesWay * level ? samplesWithin(rest, interval) : 0.0);
}

/// The samples that the instrument takes, of which the host reports the last one of each full group.
double sampleRows(const Node &node, double duration)
{
    const double interval = double(hardwareSamplingInterval(node.hwNode));
    if (interval == 0.0)
        return 0.0;
    if (node.voltageDifferent > 0.0 || std::isnan(duration))
        return unknown;
    const bool isStaircase = rowOf(node.hwNode.nodeType()).course == Course::Steps;
    const double taken = isStaircase ? samplesOfStairs(duration, parameter(node.hwNode, 16), interval)
                                     : samplesWithin(duration, interval);
    return std::floor(taken / double(node.downsampleFactor));
}

double rowsOf(const Node &node, const PlannedNode &planned)
{
    switch (rowOf(node.hwNode.nodeType()).course) {
    case Course::Pulses:
        return isSpanUnknown(planned) ? unknown : 2.0 * levelCount(node.hwNode, planned);
    case Course::Impedance:
        return frequencyCount(node.hwNode, planned);
    default:
        return sampleRows(node, planned.expectedDuration);
    }
}

/// How often a modify node that steps a potential runs what it aims back at.
double potentialCount(const ExpNode_t &node)
{
    const double span = parameter(node, 4) - parameter(node, 0);
    return std::ceil(std::abs(span / parameter(node, 8)) - givesWay) + 1.0;
}

bool goesBack(const ExpNode_t &node)
{
    return node.jump < 0 && (node.nodeType() == NodeType_t::Loop || node.nodeType() == NodeType_t::Modify);
}

/// The range that an element names by its index; all others are looked up in a calibration, and a plan has none.
int voltageRangeOf(const ExpNode_t &node)
{
    constexpr int automatic = 15;
    const bool isNamed = node.nodeType() == NodeType_t::ConstantVoltage && !(node.flags2 & NodeFlag2::quietTime);
    const int nibble = node.ranges >> 4;
    return isNamed && nibble != automatic ? nibble : -1;
}

void describeSetPoints(const ExpNode_t &node, PlannedNode &planned)
{
    const TypeRow &row = rowOf(node.nodeType());
    planned.unit = QString::fromLatin1(row.unit);
    if (row.startOffset == noParameter)
        return;
    planned.startValue = parameter(node, row.startOffset);
    planned.endValue = parameter(node, row.endOffset);
    if (planned.unit != QLatin1String("V"))
        return; // of an impedance the flag is the bias's
    planned.isStartVersusOcp = node.flags & NodeFlag::firstVoltageVsOcp;
    const bool isHeld = row.startOffset == row.endOffset;
    planned.isEndVersusOcp = isHeld ? planned.isStartVersusOcp : bool(node.flags & NodeFlag::secondVoltageVsOcp);
}

void describeLimits(const ExpNode_t &node, PlannedNode &planned)
{
    planned.timeLimit = timeLimitOf(node);
    planned.chargeLimit = chargeLimitOf(node);
    planned.minVoltage = double(node.vLimitMin);
    planned.maxVoltage = double(node.vLimitMax);
    planned.isMinVoltageVersusOcp = node.flags & NodeFlag::vMinVsOcp;
    planned.isMaxVoltageVersusOcp = node.flags & NodeFlag::vMaxVsOcp;
    planned.areCurrentLimitsMagnitudes = !(node.flags & NodeFlag::signedILimits);
    planned.minCurrent = double(node.iLimitMin);
    planned.maxCurrent = double(node.iLimitMax);
}

PlannedNode describe(const Node &node)
{
    const ExpNode_t &hw = node.hwNode;
    PlannedNode planned;
    planned.stepName = node.stepName;
    planned.typeName = QString::fromLatin1(rowOf(hw.nodeType()).name);
    planned.stepNumber = node.stepNumber;
    describeSetPoints(hw, planned);
    describeLimits(hw, planned);
    planned.voltageRange = voltageRangeOf(hw);
    planned.samplingInterval = double(hardwareSamplingInterval(hw)) * node.downsampleFactor;
    planned.downsampleFactor = node.downsampleFactor;
    planned.repeats = hw.repeats;
    planned.expectedDuration = durationOf(hw, planned);
    planned.expectedCharge = chargeOf(hw, planned);
    planned.expectedRows = rowsOf(node, planned);
    return planned;
}

/// Counts the passes of the loop at @p position for all nodes inside it, inner loops included.
void countPasses(std::vector<PlannedNode> &nodes, int position, const ExpNode_t &loop)
{
    const int target = std::max(0, position + loop.jump);
    const double passes = loop.nodeType() == NodeType_t::Modify ? potentialCount(loop) : double(loop.repeats);
    nodes[position].loopTarget = target;
    for (int inside = target; inside < position; ++inside)
        nodes[inside].runs *= passes;
}

} // namespace

std::vector<PlannedNode> planNodes(const NodeList &list)
{
    std::vector<PlannedNode> nodes;
    for (int position = 0; position < list.size(); ++position) {
        const Node &node = *list[position];
        nodes.push_back(describe(node));
        if (goesBack(node.hwNode))
            countPasses(nodes, position, node.hwNode);
        else if (node.hwNode.nodeType() != NodeType_t::End)
            nodes.back().runs = node.hwNode.repeats;
    }
    return nodes;
}
