// SPDX-License-Identifier: MIT
#pragma once

#include "VekExperimentNode.h"
#include "lab/notation/JsonOutput.h"

#include <set>
#include <utility>
#include <vector>

namespace lab {

/// What the experiment file says of one step.
struct ProgramStep {
    std::string className;   ///< "ConstantCurrent"
    std::vector<int> groups; ///< numbers of the repeated groups that it stands in, outermost first
    int direction = 0;       ///< 1 when it charges, -1 when it discharges, 0 where the cell decides
};

/// The steps of an experiment file's content by step number minus 1; none where it is no experiment.
std::vector<ProgramStep> programSteps(const Json &experiment);

/// Whether the step does no more than watch the cell: a rest or an impedance.
bool onlyWatches(const ProgramStep &step);

/// The repeated groups that both charge and discharge; none where no battery is cycled.
std::set<int> cyclingGroups(const std::vector<ProgramStep> &program);

/**
 * Counts, from the announcements of an experiment, how often steps have been executed and how many cycles have begun.
 *
 * An execution is one pass of one element; a quiet time is part of the pass that it precedes. A cycle begins
 * - when the program jumps back: with each further pass of a repeated group or element,
 * - with each further cycle that a sweep announces inside its step; the way to its first vertex belongs to the first,
 * - when the program leaves a repeated group, or a sweep that counted cycles, and when it comes to the first group from
 *   a step that did more than watch the cell: what charges a battery ahead of its cycles is none of theirs. What only
 *   watches the cell, a rest or an impedance, still belongs to the cycle behind which it stands.
 *
 * Of a battery that is cycled only the groups count that both charge and discharge: pulses that repeat inside a discharge
 * are no cycles.
 *
 * The instrument announces each potential of a Mott-Schottky measurement as another pass of its step: these are
 * executions, and no cycles.
 */
class StepCounter
{
public:
    StepCounter() = default;
    explicit StepCounter(std::vector<ProgramStep> program)
        : _program(std::move(program)), _cyclingGroups(cyclingGroups(_program))
    {
    }

    void begin(const VekExperimentNode &node);

    const VekExperimentNode &node() const { return _node; }
    /// The file's element that runs; null where the file does not tell.
    const ProgramStep *step() const { return step(_node.stepNumber); }
    int stepCount() const { return _stepCount; }   ///< from 1; 0 before the first announcement
    int cycleCount() const { return _cycleCount; } ///< from 1

private:
    const ProgramStep *step(int number) const;
    bool continuesStep(const VekExperimentNode &node) const;
    bool beginsCycle(const VekExperimentNode &node) const;
    bool endsCycle(const ProgramStep &next) const;
    bool countsCycles(int group) const;
    void countSweepCycles(int substep);

    std::vector<ProgramStep> _program;
    std::set<int> _cyclingGroups;
    VekExperimentNode _node;
    int _stepCount = 0;
    int _cycleCount = 1;
    int _place = 0;               // number of the last step that did more than watch
    bool _hasSweptCycles = false; // of that step
};

} // namespace lab
