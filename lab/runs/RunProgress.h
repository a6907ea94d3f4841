// SPDX-License-Identifier: MIT
#pragma once

#include "VekExperimentNode.h"
#include "VekExperimentPlan.h"

#include <optional>
#include <vector>

namespace lab {

/**
 * How far a run has come by the plan of its experiment, which limits of voltage or current may cut short: what has ended
 * early then counts as done.
 */
class RunProgress
{
public:
    /// What the plan does not know remains unsaid; so does all of it for a plan with complaints.
    explicit RunProgress(const VekExperimentPlan &plan = {});

    /// The instrument has begun a node, at a time of the test in seconds.
    void begin(const VekExperimentNode &node, double time);

    /// Seconds of the plan that have still to come, at a time of the test. Nothing where that depends on the cell.
    std::optional<double> secondsLeft(double time) const;
    /// The same as a share of the whole, from 0 to 1, of what is done.
    std::optional<double> shareDone(double time) const;
    /// How often the present step is run in all; 0 where that is not known.
    int cycleCount() const;

private:
    /// All that the plan has of one step of the experiment.
    struct Step {
        double seconds = 0.0; ///< of all its executions
        double entries = 0.0; ///< how often it is begun
    };

    const Step *step(int number) const;
    double secondsOfOneEntry(int number) const;

    std::vector<Step> _steps; ///< by number, from 1
    double _total;
    VekExperimentNode _node;
    double _begin = 0.0;      ///< when the present execution began
    double _doneBefore = 0.0; ///< what the plan had for the executions before
};

/**
 * What the plan says of a moment of a run: "43 %, 12 min left, ends at 17:42"; empty where the plan does not know.
 *
 * @param secondsLeft  of the clock on the wall, which goes slower than that of an accelerated instrument
 */
QString progressWords(double shareDone, double secondsLeft);

} // namespace lab
