// SPDX-License-Identifier: MIT
#pragma once

#include "lab/records/Sample.h"

#include <cstddef>
#include <vector>

namespace lab {

/**
 * Keeps of any number of samples about as many as a picture can show, while they arrive.
 *
 * Short runs stay whole. Of longer ones each group of neighbours is reduced to its first and last sample and to those
 * with the lowest and highest voltage and current, in their order, so that no peak is lost. Groups end where a segment
 * or a stretch does, and pulses stay as they are.
 */
class SampleThinner
{
public:
    /// @param mostKept how many samples may stay, unless there are more segments, stretches or pulses
    explicit SampleThinner(std::size_t mostKept);

    void add(const Sample &sample);
    /// What has been kept; the thinner is empty then.
    std::vector<Sample> take();

private:
    void endGroup();
    void thinAgain();

    std::vector<Sample> _kept;
    std::vector<Sample> _group; // of the samples that arrive
    std::size_t _groupSize = 1; // as many of them are reduced together
    std::size_t _limit;
};

} // namespace lab
