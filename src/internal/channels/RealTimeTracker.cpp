// SPDX-License-Identifier: MIT
#include "channels/RealTimeTracker.h"

#include "elements/Node.h"

#include <chrono>
#include <cstddef>

bool DCDataAccumulator::countSample()
{
    const qint32 groupSize = samplesPerPoint;
    if (sampleCountdown == 0 || sampleCountdown > groupSize)
        sampleCountdown = groupSize;
    --sampleCountdown;
    return sampleCountdown == 0;
}

void DCDataAccumulator::setGroupSize(quint32 samples)
{
    constexpr quint32 most = std::numeric_limits<qint32>::max();
    samplesPerPoint = qint32(qBound(1u, samples, most));
}

void DCDataAccumulator::beginGroups(quint32 samples)
{
    setGroupSize(samples);
    sampleCountdown = samplesPerPoint;
}

void ACDataAccumulator::forgetUnfinishedPoint()
{
    data.clear();
    header.clear();
    points.clear();
}

void ACDataAccumulator::beginBatch(qint32 packets)
{
    packetsTotal = packets;
    packetsRemaining = packets;
    data.clear();
}

RealTimeTracker::Position RealTimeTracker::enterNode(const Node &node)
{
    stepName = node.stepName;
    if (stepNumber != node.stepNumber || node.newSubStep) {
        stepNumber = node.stepNumber;
        substepNumber = 0;
        countStep();
    } else if (node.newCycle) {
        ++substepNumber;
    }
    return {cycleNumber(), substepNumber};
}

int RealTimeTracker::cycleNumber() const
{
    const bool isCounted = stepNumber > 0 && std::size_t(stepNumber) <= stepCounters.size();
    return isCounted ? stepCounters[std::size_t(stepNumber - 1)] : 0;
}

void RealTimeTracker::countStep()
{
    if (stepNumber < 1)
        return;
    if (std::size_t(stepNumber) <= stepCounters.size())
        ++stepCounters[std::size_t(stepNumber - 1)];
    else
        stepCounters.resize(std::size_t(stepNumber), 1); // steps that were jumped over count as entered once
}

void RealTimeTracker::startClockOnce(double instrumentSeconds)
{
    if (startTimestamp != 0.0)
        return;
    using namespace std::chrono;
    startTimestamp = instrumentSeconds;
    utcStartTime = double(duration_cast<nanoseconds>(system_clock::now().time_since_epoch()).count()) / 1e9;
}
