// SPDX-License-Identifier: MIT
#include "experiments/VekDataManipulatorPrivate.h"

#include <cmath>

// See compatibility.md, code of a refused pulse type.
VekErrorCode VekDataManipulatorPrivate::setPulseType(VekPulseType type, double width, double period)
{
    if (type != DifferentialPulse && type != NormalPulse)
        return {VekErrorCode::SendFailed, QStringLiteral("Pulse type is not DifferentialPulse or NormalPulse")};
    start(type);
    pulseWidth = width;
    pulsePeriod = period;
    return VekErrorCode::Success;
}

VekErrorCode VekDataManipulatorPrivate::setPulseType(VekPulseType type, double pulseFrequency)
{
    if (type != SquarewavePulse)
        return {VekErrorCode::SendFailed, QStringLiteral("Pulse type is not SquarewavePulse")};
    start(type);
    frequency = pulseFrequency;
    return VekErrorCode::Success;
}

void VekDataManipulatorPrivate::start(VekPulseType type)
{
    baseCurrent = pulseCurrent = baseVoltage = pulseVoltage = 0.0;
    referenceTime = 0.0;
    pulseCompleted = false;
    pulseType = type;
}

bool VekDataManipulatorPrivate::isPulsePoint(double time)
{
    const double period = pulseType == SquarewavePulse ? 1.0 / frequency : pulsePeriod;
    const double width = pulseType == SquarewavePulse ? period / 2.0 : pulseWidth;
    if (referenceTime == 0.0)
        referenceTime = time;
    const double phase = std::fmod(time - referenceTime, period);
    const bool isNearerToPeriod = std::fabs(phase - width) > std::fabs(phase - period);
    if (isNearerToPeriod || width / 2.0 > std::fabs(phase)) {
        referenceTime = time;
        return false;
    }
    return true;
}

void VekDataManipulatorPrivate::loadPrimaryData(const VekDCData &data)
{
    const bool isOnPulse = isPulsePoint(data.timestamp);
    if (pulseType == SquarewavePulse)
        loadSquareWaveSample(data, isOnPulse);
    else
        loadPulseSample(data, isOnPulse);
}

void VekDataManipulatorPrivate::loadPulseSample(const VekDCData &data, bool isOnPulse)
{
    if (isOnPulse)
        storePulse(data, true);
    else
        storeBase(data, false);
}

// The other way round than for the other types. See compatibility.md, levels of a square wave.
void VekDataManipulatorPrivate::loadSquareWaveSample(const VekDCData &data, bool isOnPulse)
{
    if (!isOnPulse) {
        storePulse(data, false);
        return;
    }
    pulseCompleted = false;
    const bool hasFirstLevel = pulseCurrent != 0.0 || pulseVoltage != 0.0;
    if (hasFirstLevel)
        storeBase(data, true);
}

void VekDataManipulatorPrivate::storeBase(const VekDCData &data, bool completes)
{
    baseCurrent = data.current;
    baseVoltage = data.workingElectrodeVoltage;
    pulseCompleted = completes;
}

void VekDataManipulatorPrivate::storePulse(const VekDCData &data, bool completes)
{
    pulseCurrent = data.current;
    pulseVoltage = data.workingElectrodeVoltage;
    pulseCompleted = completes;
}
