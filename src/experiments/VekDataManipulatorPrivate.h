// SPDX-License-Identifier: MIT
#pragma once

#include "VekDataManipulator.h"

#include <QtGlobal>

/// The private half of VekDataManipulator: finds the pulse that a sample belongs to by its time alone.
class VekDataManipulatorPrivate
{
public:
    VekErrorCode setPulseType(VekPulseType type, double width, double period);
    VekErrorCode setPulseType(VekPulseType type, double pulseFrequency);
    void loadPrimaryData(const VekDCData &data);

    double pulseWidth = 0.0;  ///< seconds
    double pulsePeriod = 0.0; ///< seconds
    bool pulseCompleted = false;
    double baseCurrent = 0.0;
    double pulseCurrent = 0.0;
    double baseVoltage = 0.0;
    double pulseVoltage = 0.0;
    double frequency = 0.0; ///< hertz; square wave only
    qint32 pulseType = NormalPulse;
    double referenceTime = 0.0; ///< seconds; the last sample at the base, from which the pulses count; 0: none yet

private:
    /// Whether a sample at this time lies on the pulse; else the sample becomes the new reference.
    bool isPulsePoint(double time);
    void loadPulseSample(const VekDCData &data, bool isOnPulse);
    void loadSquareWaveSample(const VekDCData &data, bool isOnPulse);
    void storeBase(const VekDCData &data, bool completes);
    void storePulse(const VekDCData &data, bool completes);
    void start(VekPulseType type);
};
