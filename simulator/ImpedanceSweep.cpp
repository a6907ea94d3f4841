// SPDX-License-Identifier: MIT
#include "simulator/ImpedanceSweep.h"

#include "simulator/NodeFields.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double highestSampleRate = 1e5;
constexpr int samplesPerSine = 64;
constexpr int samplesPerBase = 128; ///< of several tones, the highest of which is its eighth multiple
const std::vector<int> multiTones = {2, 3, 4, 5, 6, 8};
constexpr int leastCyclesAboveOneHertz = 8;
constexpr int mostFrequencies = 10000;
constexpr double roundingOfRatio = 1e-4;

std::vector<float> frequencies(double start, double end, double ratio)
{
    std::vector<float> list;
    const double direction = ratio > 1.0 ? 1.0 : -1.0;
    for (int n = 0; n < mostFrequencies; ++n) {
        const double frequency = start * std::pow(ratio, n);
        if (direction * std::log(frequency / end) > roundingOfRatio)
            break;
        list.push_back(float(frequency));
        if (start == end || ratio == 1.0)
            break;
    }
    return list;
}

/// The sampling interval that gives the sine, or its alias, so many samples a period.
double samplePeriod(double frequency, int samplesPerPeriod)
{
    if (frequency * samplesPerPeriod <= highestSampleRate)
        return 1.0 / (frequency * samplesPerPeriod);
    const double skipped = std::max(1.0, std::ceil(frequency / highestSampleRate - 1.0 / samplesPerPeriod));
    return (skipped + 1.0 / samplesPerPeriod) / frequency;
}

} // namespace

std::vector<AcPlan> planImpedance(const ExpNode_t &node, int mostCyclesPerRecord)
{
    std::vector<AcPlan> plans;
    const double start = at(node, 16);
    const double end = at(node, 20);
    const double ratio = at(node, 24);
    const NodeType_t type = node.nodeType();
    const bool isMultiSine = type == NodeType_t::MultiSineVoltage || type == NodeType_t::MultiSineCurrent;
    const int samplesPerPeriod = isMultiSine ? samplesPerBase : samplesPerSine;
    const int wanted = int(std::clamp(at(node, 28), 1.0, 65535.0));
    if (!(start > 0.0 && end > 0.0 && ratio > 0.0))
        return plans;
    for (const float frequency : frequencies(start, end, ratio)) {
        int cycles = frequency >= 1.0f ? std::max(wanted, leastCyclesAboveOneHertz) : wanted;
        AcPlan plan;
        plan.frequency = frequency;
        plan.samplePeriod = float(samplePeriod(double(frequency), samplesPerPeriod));
        plan.amplitude = at(node, 12);
        plan.drivesCurrent = type == NodeType_t::EisCurrent || type == NodeType_t::MultiSineCurrent;
        if (isMultiSine)
            plan.tones = multiTones;
        plan.settling = 1.0 / double(frequency);
        for (; cycles > 0; cycles -= mostCyclesPerRecord) {
            plan.samples = std::min(cycles, mostCyclesPerRecord) * samplesPerPeriod + 1;
            plan.isLast = cycles <= mostCyclesPerRecord;
            plans.push_back(plan);
            plan.settling = 0.0;
        }
    }
    return plans;
}
