#include "VekExperimentPlan.h"

#include "VekExperiment.h"
#include "calibration/CalibrationData.h"
#include "elements/ExpNode.h"
#include "elements/NodeList.h"
#include "hardware_models/HardwareModelFactory.h"
#include "hardware_models/HardwareVersion.h"
#include "hardware_models/ModelNames.h"
#include "logging/ErrorStringList.h"
#include "nimbrellelibrary/NimbrelleLib.h"
#include "private_implementations/VekExperimentPrivate.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <iterator>
#include <limits>

namespace {

constexpr double unknown = std::numeric_limits<double>::quiet_NaN();
constexpr double unlimited = std::numeric_limits<double>::infinity();

/// How a type of node spends its time, which is what an estimate is made of.
enum class Course { None, Hold, Rest, Sweep, Steps, Pulses, Impedance };

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
    {NodeType_t::OpenCircuit,            "Open circuit",            Course::Rest,      "",    noParameter, noParameter},
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

/// A quotient of single-precision numbers, rounded down; one that misses a whole number by their rounding is that number.
double wholePart(double quotient)
{
    return std::floor(std::abs(quotient) * (1.0 + 1e-6));
}

bool hasOneEndVersusOcp(const ExpNode_t &node)
{
    const int ends = node.flags & (NodeFlag::firstVoltageVsOcp | NodeFlag::secondVoltageVsOcp);
    return ends == NodeFlag::firstVoltageVsOcp || ends == NodeFlag::secondVoltageVsOcp;
}

double timeLimitOf(const ExpNode_t &node)
{
    return node.flags & NodeFlag::timeLimit ? double(node.timeLimit) : unlimited;
}

double chargeLimitOf(const ExpNode_t &node)
{
    return node.flags & NodeFlag::chargeLimit ? double(node.chargeLimit) : unlimited;
}

double stepCount(const ExpNode_t &node, const VekPlannedNode &planned)
{
    const bool goesOn = node.parameters[20] & 1; // the level at the start was the end of the leg before
    return wholePart((planned.endValue - planned.startValue) / parameter(node, 12)) + (goesOn ? 0.0 : 1.0);
}

double pulseCount(const ExpNode_t &node, const VekPlannedNode &planned)
{
    return wholePart((planned.endValue - planned.startValue) / parameter(node, 12)) + 1.0;
}

double frequencyCount(const ExpNode_t &node, const VekPlannedNode &planned)
{
    const double ratio = std::abs(std::log(parameter(node, 16)));
    return std::ceil(std::abs(std::log(planned.endValue / planned.startValue)) / ratio - 1e-4) + 1.0;
}

/// The periods that are measured; finding the ranges takes the instrument longer.
double impedanceDuration(const ExpNode_t &node, const VekPlannedNode &planned)
{
    const double count = frequencyCount(node, planned);
    double seconds = 0.0;
    double frequency = planned.startValue;
    for (double point = 0; point < count; ++point) {
        seconds += parameter(node, 20) / frequency;
        frequency *= parameter(node, 16);
    }
    return seconds;
}

double durationOf(const Node &node, const VekPlannedNode &planned)
{
    const ExpNode_t &hw = node.hwNode;
    const bool isCurrent = hw.nodeType() == NodeType_t::ConstantCurrent;
    switch (rowOf(hw.nodeType()).course) {
    case Course::None:
        return 0.0;
    case Course::Hold:
        return isCurrent ? std::min(planned.timeLimit, planned.chargeLimit / std::abs(planned.startValue))
                         : planned.timeLimit;
    case Course::Rest:
        return planned.timeLimit;
    case Course::Sweep:
        return hasOneEndVersusOcp(hw) ? unknown : std::abs((planned.endValue - planned.startValue) / parameter(hw, 16));
    case Course::Steps:
        return hasOneEndVersusOcp(hw) ? unknown : stepCount(hw, planned) * parameter(hw, 16);
    case Course::Pulses:
        return hasOneEndVersusOcp(hw) ? unknown : pulseCount(hw, planned) * (parameter(hw, 20) + parameter(hw, 28));
    case Course::Impedance:
        return impedanceDuration(hw, planned);
    }
    return unknown;
}

/// Some elements take a negative time for a step without a complaint; what the instrument makes of it is its own affair.
double foreseeable(double seconds)
{
    return seconds < 0.0 ? unknown : seconds;
}

/// A controlled current moves a known charge, all else depends on the cell.
double chargeOf(const Node &node, const VekPlannedNode &planned)
{
    const TypeRow &row = rowOf(node.hwNode.nodeType());
    if (row.course == Course::None || row.course == Course::Rest)
        return 0.0;
    const double current = (planned.startValue + planned.endValue) / 2.0;
    const bool isCurrent = std::strcmp(row.unit, "A") == 0;
    return isCurrent ? (current == 0.0 ? 0.0 : current * planned.expectedDuration) : unknown;
}

double rowsOf(const Node &node, const VekPlannedNode &planned)
{
    const Course course = rowOf(node.hwNode.nodeType()).course;
    if (course == Course::Pulses)
        return hasOneEndVersusOcp(node.hwNode) ? unknown : 2.0 * pulseCount(node.hwNode, planned);
    if (course == Course::Impedance)
        return frequencyCount(node.hwNode, planned);
    if (planned.samplingInterval == 0.0)
        return 0.0;
    return node.voltageDifferent > 0.0 ? unknown : wholePart(planned.expectedDuration / planned.samplingInterval);
}

/// How often a modify node that steps a potential runs what it aims back at.
double potentialCount(const ExpNode_t &node)
{
    const double span = parameter(node, 4) - parameter(node, 0);
    return std::ceil(std::abs(span / parameter(node, 8)) - 1e-4) + 1.0;
}

bool goesBack(const ExpNode_t &node)
{
    return node.jump < 0 && (node.nodeType() == NodeType_t::Loop || node.nodeType() == NodeType_t::Modify);
}

VekPlannedNode describe(const Node &node)
{
    const ExpNode_t &hw = node.hwNode;
    const TypeRow &row = rowOf(hw.nodeType());
    VekPlannedNode planned;
    planned.stepName = node.stepName;
    planned.typeName = QString::fromLatin1(row.name);
    planned.stepNumber = node.stepNumber;
    planned.unit = QString::fromLatin1(row.unit);
    planned.startValue = row.startOffset == noParameter ? unknown : parameter(hw, row.startOffset);
    planned.endValue = row.endOffset == noParameter ? unknown : parameter(hw, row.endOffset);
    planned.isVersusOcp = hw.flags & NodeFlag::firstVoltageVsOcp;
    planned.samplingInterval = NimbrelleLib::get_hwNode_sampling_interval(hw) * node.downsampleFactor;
    planned.downsampleFactor = node.downsampleFactor;
    planned.timeLimit = timeLimitOf(hw);
    planned.chargeLimit = chargeLimitOf(hw);
    planned.repeats = hw.repeats;
    planned.expectedDuration = foreseeable(durationOf(node, planned));
    planned.expectedCharge = chargeOf(node, planned);
    planned.expectedRows = rowsOf(node, planned);
    return planned;
}

/// Counts the passes of the loop at @p position for all nodes inside it, inner loops included.
void countPasses(std::vector<VekPlannedNode> &nodes, int position, const ExpNode_t &loop)
{
    const int target = std::max(0, position + loop.jump);
    const double passes = loop.nodeType() == NodeType_t::Modify ? potentialCount(loop) : double(loop.repeats);
    nodes[position].loopTarget = target;
    for (int inside = target; inside < position; ++inside)
        nodes[inside].runs *= passes;
}

std::vector<VekPlannedNode> describe(const NodeList &list)
{
    std::vector<VekPlannedNode> nodes;
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

QStringList complaintsOf(AbstractExperiment &experiment, const HardwareVersion &hardware)
{
    const QString vanityName = HardwareModelFactory::getHardwareModel(hardware.hwModel)->getVanityName();
    const QString text = experiment.validateInput(hardware).getErrorListSingleString(vanityName);
    return text.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

} // namespace

QStringList VekExperimentPlan::modelNames()
{
    return ModelNames::all();
}

QString VekExperimentPlan::modelName(int modelNumber)
{
    return ModelNames::all().value(modelNumber);
}

VekExperimentPlan VekExperimentPlan::forModel(const VekExperiment &experiment, const QString &modelName)
{
    VekExperimentPlan plan;
    HardwareVersion hardware;
    hardware.hwModel = ModelNames::find(modelName);
    if (hardware.hwModel == HardwareModel_t::Invalid) {
        plan._complaints.append(QStringLiteral("There is no model \"%1\".").arg(modelName));
        return plan;
    }
    const auto internal = experiment._private->getExperiment();
    plan._complaints = complaintsOf(*internal, hardware);
    if (plan._complaints.isEmpty())
        plan._nodes = describe(internal->GetNodesData(CalibrationData(), hardware));
    return plan;
}

double VekExperimentPlan::total(double VekPlannedNode::*field) const
{
    double sum = 0.0;
    for (const VekPlannedNode &node : _nodes)
        sum += node.runs * (node.*field);
    return sum;
}
