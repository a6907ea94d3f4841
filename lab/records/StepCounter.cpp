// SPDX-License-Identifier: MIT
#include "lab/records/StepCounter.h"

#include <algorithm>
#include <iterator>

namespace lab {

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

/// The smallest repeated group that both steps stand in; 0 without one.
int innermostGroupOf(const ProgramStep &one, const ProgramStep &other)
{
    int innermost = 0;
    for (const int group : one.groups) {
        if (isIn(group, other))
            innermost = group;
    }
    return innermost;
}

} // namespace

bool onlyWatches(const ProgramStep &step)
{
    return std::find(std::begin(watchingElements), std::end(watchingElements), step.className) !=
           std::end(watchingElements);
}

std::set<int> cyclingGroups(const std::vector<ProgramStep> &program)
{
    std::set<int> charging;
    std::set<int> discharging;
    for (const ProgramStep &step : program) {
        if (step.direction != 0)
            (step.direction > 0 ? charging : discharging).insert(step.groups.begin(), step.groups.end());
    }
    std::set<int> both;
    std::set_intersection(charging.begin(), charging.end(), discharging.begin(), discharging.end(),
                          std::inserter(both, both.begin()));
    return both;
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
    const ProgramStep *last = step(_node.stepNumber);
    if (node.stepNumber == _node.stepNumber && next && next->className == mottSchottky)
        return false;
    const bool jumpsBack = node.stepNumber <= _node.stepNumber; // the program goes forward but for its repetitions
    if (jumpsBack)
        return !next || !last || countsCycles(innermostGroupOf(*next, *last));
    return next && !onlyWatches(*next) && endsCycle(*next);
}

bool StepCounter::endsCycle(const ProgramStep &next) const
{
    const ProgramStep *last = step(_place);
    if (!last)
        return false;
    const bool leavesGroup = std::any_of(last->groups.begin(), last->groups.end(),
                                         [&](int group) { return !isIn(group, next) && countsCycles(group); });
    const bool leadsIntoGroup = last->groups.empty() && std::any_of(next.groups.begin(), next.groups.end(),
                                                                    [&](int group) { return countsCycles(group); });
    return leavesGroup || leadsIntoGroup || _hasSweptCycles;
}

bool StepCounter::countsCycles(int group) const
{
    return _cyclingGroups.empty() || _cyclingGroups.count(group) > 0;
}

void StepCounter::countSweepCycles(int substep)
{
    const int counted = std::max(1, _node.substepNumber);
    if (substep <= counted)
        return;
    _cycleCount += substep - counted;
    _hasSweptCycles = true;
}

} // namespace lab
