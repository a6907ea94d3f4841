#include "StepCounter.h"

#include <algorithm>

namespace client {

namespace {

constexpr const char *mottSchottky = "MottSchottky";
constexpr const char *watchingElements[] = {"OpenCircuit", "EISPotentiostatic", "EISGalvanostatic", mottSchottky};

bool isRepeated(const Json &element)
{
    const auto repeats = element.find("repeats");
    return repeats != element.end() && repeats->is_number() && repeats->get<double>() > 1.0;
}

bool isBelowZero(const Json &value)
{
    if (value.is_number())
        return value.get<double>() < 0.0;
    return value.is_string() && QString::fromStdString(value.get<std::string>()).trimmed().startsWith(QLatin1Char('-'));
}

int directionOf(const Json &element)
{
    const std::string className = element.value("element", std::string());
    if (className == "ConstantResistance")
        return -1;
    const char *const setPoint = className == "ConstantCurrent" ? "current" : "power";
    const bool isLoad = className == "ConstantCurrent" || className == "ConstantPower";
    return !isLoad || !element.contains(setPoint) ? 0 : isBelowZero(element[setPoint]) ? -1 : 1;
}

void addSteps(const Json &elements, std::vector<int> &groups, int &groupCount, std::vector<ProgramStep> &steps)
{
    for (const Json &each : elements) {
        if (!each.is_object())
            continue;
        const bool isGroup = isRepeated(each);
        if (isGroup)
            groups.push_back(++groupCount);
        if (each.contains("group"))
            addSteps(each["group"], groups, groupCount, steps);
        else
            steps.push_back({each.value("element", std::string()), groups, directionOf(each)});
        if (isGroup)
            groups.pop_back();
    }
}

bool isIn(int group, const ProgramStep &step)
{
    return std::find(step.groups.begin(), step.groups.end(), group) != step.groups.end();
}

} // namespace

bool onlyWatches(const ProgramStep &step)
{
    return std::find(std::begin(watchingElements), std::end(watchingElements), step.className) !=
           std::end(watchingElements);
}

bool isCycling(const std::vector<ProgramStep> &program)
{
    const auto discharges = [&program](int group) {
        return std::any_of(program.begin(), program.end(),
                           [group](const ProgramStep &step) { return step.direction < 0 && isIn(group, step); });
    };
    return std::any_of(program.begin(), program.end(), [&](const ProgramStep &step) {
        return step.direction > 0 && std::any_of(step.groups.begin(), step.groups.end(), discharges);
    });
}

std::vector<ProgramStep> programSteps(const Json &experiment)
{
    std::vector<ProgramStep> steps;
    std::vector<int> groups;
    int groupCount = 0;
    if (experiment.is_object() && experiment.contains("elements"))
        addSteps(experiment["elements"], groups, groupCount, steps);
    return steps;
}

void StepCounter::begin(const VekExperimentNode &node)
{
    if (!continuesStep(node)) {
        ++_stepCount;
        _cycleCount += beginsCycle(node) ? 1 : 0;
        const ProgramStep *next = step(node.stepNumber);
        if (!next || !onlyWatches(*next)) {
            _place = node.stepNumber;
            _hasSweptCycles = false;
        }
        _node.substepNumber = 0;
    }
    countSweepCycles(node.substepNumber);
    _node = node;
}

const ProgramStep *StepCounter::step(int number) const
{
    const auto index = static_cast<std::size_t>(number - 1);
    return number >= 1 && index < _program.size() ? &_program[index] : nullptr;
}

bool StepCounter::continuesStep(const VekExperimentNode &node) const
{
    const bool isBehindQuietTime = _node.stepName == QLatin1String("Quiet Time");
    return node.stepNumber == _node.stepNumber && (node.cycleNumber == _node.cycleNumber || isBehindQuietTime);
}

bool StepCounter::beginsCycle(const VekExperimentNode &node) const
{
    const ProgramStep *next = step(node.stepNumber);
    if (node.stepNumber == _node.stepNumber)
        return !next || next->className != mottSchottky;
    if (node.stepNumber < _node.stepNumber)
        return true; // the program goes forward but for its repetitions
    return next && !onlyWatches(*next) && endsCycle(*next);
}

bool StepCounter::endsCycle(const ProgramStep &next) const
{
    const ProgramStep *last = step(_place);
    if (!last)
        return false;
    const bool leavesGroup = !last->groups.empty() && std::find(next.groups.begin(), next.groups.end(),
                                                                last->groups.back()) == next.groups.end();
    const bool leadsIntoGroup = last->groups.empty() && !next.groups.empty();
    return leavesGroup || leadsIntoGroup || _hasSweptCycles;
}

void StepCounter::countSweepCycles(int substep)
{
    const int counted = std::max(1, _node.substepNumber);
    if (substep <= counted)
        return;
    _cycleCount += substep - counted;
    _hasSweptCycles = true;
}

} // namespace client
