// SPDX-License-Identifier: MIT
#pragma once

#include "elements/ExpNode.h"

#include <QtGlobal>

#include <vector>

/// One AC record to be taken: a whole number of periods of the sine, or of its alias, at 64 samples each, and one sample more.
struct AcPlan {
    float frequency = 0.0f;    ///< hertz; of several tones their base
    float samplePeriod = 0.0f; ///< seconds
    int samples = 0;           ///< of each signal
    double settling = 0.0;     ///< seconds before the record
    bool isLast = true;        ///< of this frequency
    double amplitude = 0.0;    ///< volts or amperes, peak
    bool drivesCurrent = false;
    std::vector<int> tones = {1}; ///< multiples of the frequency that the drive consists of, each with the amplitude

    double duration() const { return settling + samples * double(samplePeriod); }
};

/**
 * The AC records that an impedance node asks for, in their order.
 *
 * Frequencies run from start to end by the node's ratio, and stop at the end; rounding of the ratio costs no frequency.
 * The converter takes at most 100,000 samples a second. A sine for which 64 samples a period would be more is sampled
 * below its own frequency, so that its alias has 64 samples a period. Each frequency settles for one period first and has
 * at least the node's number of cycles, and at least eight from 1 Hz on, in records of at most so many cycles.
 *
 * Multi-sine nodes have the multiples 2, 3, 4, 5, 6 and 8 of each frequency at once, and 128 samples a period of it.
 */
std::vector<AcPlan> planImpedance(const ExpNode_t &node, int mostCyclesPerRecord = 120);
