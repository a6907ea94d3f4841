// SPDX-License-Identifier: MIT
#pragma once

#include "hardware_models/ModelTables.h"
#include "hardware_models/RangeTypes.h"

/// The most sensitive current range that a model may use at a frequency, in one of two forms. Frequencies in hertz.
namespace EisRangeTables {

using M = HardwareModel_t;

struct Step {
    double atLeast = 0.0; ///< 0: every frequency that no step before it took
    quint8 range = 0;
};

struct ChainRow { ///< the first step whose frequency is reached gives the range
    HardwareModel_t model;
    Step steps[6];
};

struct TableRow { ///< upper frequency limits, one per current range
    HardwareModel_t model;
    int size;
    double limits[10];
};

constexpr double below = 0.0;

// clang-format off

constexpr ChainRow chainRows[] = {
    {M::Alder_2_0, {{1e6, 3}, {1e5, 4}, {1e4, 5}, {1000, 6}, {below, 7}}},
    {M::Alder_2_1, {{1e6, 3}, {1e5, 4}, {1e4, 5}, {1000, 6}, {below, 7}}},
    {M::Alder_2_2, {{1e4, 5}, {100, 7}, {below, 9}}},
    {M::Alder_2_3, {{250000, 4}, {1e4, 5}, {2500, 6}, {100, 7}, {40, 8}, {below, 9}}},
    {M::Gale,      {{below, 3}}},
};
static_assert(ModelTables::isStrictlyAscending(chainRows), "one row per model, in numeric order");

constexpr TableRow tableRows[] = {
    {M::Alder_2_3b, 10, {2e6, 2e6, 2e6, 2e6, 2e6, 1e5,    1e4,    1000, 50,   10}},
    {M::Ibis_1_0,   10, {2e6, 2e6, 2e6, 2e6, 2e6, 2e6,    500000, 2e5,  1e4,  1000}},
    {M::Jay_1_0,    10, {2e6, 2e6, 2e6, 2e6, 2e6, 2e6,    500000, 2e5,  1e4,  1000}},
    {M::Heron_1_0,  9,  {2e6, 2e6, 2e6, 2e6, 2e6, 500000, 2e5,    1e4,  1000}},
    {M::Alder_2_4,  10, {2e6, 2e6, 2e6, 2e6, 2e6, 250000, 1e4,    2500, 100,  40}},
    {M::Ibis_2_0,   10, {2e6, 2e6, 2e6, 2e6, 2e6, 2e6,    500000, 2e5,  1e4,  1000}},
    {M::Jay_2_0,    10, {2e6, 2e6, 2e6, 2e6, 2e6, 2e6,    500000, 2e5,  1e4,  1000}},
    {M::Heron_2_0,  9,  {2e6, 2e6, 2e6, 2e6, 2e6, 500000, 2e5,    1e4,  1000}},
};
static_assert(ModelTables::isStrictlyAscending(tableRows), "one row per model, in numeric order");

// clang-format on

inline currentRange_t walk(const ChainRow &chain, double frequency)
{
    const Step *step = chain.steps;
    while (step->atLeast != below && !(frequency >= step->atLeast))
        ++step;
    return currentRange_t(step->range);
}

/// Walks from the most sensitive range to larger ones while the frequency is above their limits. @p size is not 0.
template <typename Limits>
currentRange_t walk(const Limits &limits, int size, double frequency)
{
    int range = size - 1;
    while (range > 0 && frequency > limits[range])
        --range;
    return currentRange_t(range);
}

} // namespace EisRangeTables
