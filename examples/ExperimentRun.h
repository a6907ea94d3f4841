// SPDX-License-Identifier: MIT
#pragma once

#include <VekACData.h>
#include <VekDCData.h>
#include <VekExperimentNode.h>

#include <functional>
#include <vector>

class VekExperiment;

/// What a program wants to hear of its experiment; what is left empty is not called.
struct RunObservers {
    std::function<void(const VekExperimentNode &)> onStep;   ///< another element, or another cycle, has begun
    std::function<void(const VekDCData &)> onSample;         ///< a DC sample
    std::function<void(const VekACData &)> onImpedancePoint; ///< an impedance point
};

/// Exit codes of the examples.
enum ExitCode { Done = 0, BadUsage = 2, NoConnection = 3, Refused = 4 };

/**
 * Connects to the instrument on the port that the command line names, runs the experiment on channel 0 to its end, and
 * says on stderr what went wrong or how it ended. The headings go to stdout once it runs. Needs a QCoreApplication and
 * runs event loops of its own.
 *
 * @param linkedChannels of a battery cycler, to run it on all of these in parallel; the lowest then stands for them
 * @return what main() should return
 */
int runExperiment(const VekExperiment &experiment, const char *headings, const RunObservers &observers,
                  const std::vector<unsigned char> &linkedChannels = {});
