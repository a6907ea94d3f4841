// SPDX-License-Identifier: MIT
#pragma once

#include "calibration/CalRecords.h"
#include "calibration/DataRecords.h"

#include <cmath>
#include <cstring>
#include <limits>

/// DC records into values: a copy and the formulas as they are written down, each line in one function.
namespace PlainDcRecord {

/// A mainline channel: its record, the gains of the two paths by their 14 settings, and what its model says.
struct Main {
    Main(const cal_v4 &calibration, int highSide, bool measuresTemperature)
        : record(calibration), highSideRanges(highSide), hasTemperature(measuresTemperature)
    {
        fill(voltageGain, record.weStage1Gain, record.weStage2Gain, record.weStage3Gain);
        fill(currentGain, record.iStage1Gain, record.iStage2Gain, record.iStage3Gain);
        for (int setting = 0; setting < 14; ++setting)
            voltsPerUnit[setting] = record.eweGainBase / voltageGain[setting];
    }

    static void fill(float *gain, const float *stage1, float stage2, float stage3)
    {
        const float gains[] = {1.0f,
                               stage1[0],
                               stage1[1],
                               stage1[2],
                               stage1[0] * stage2,
                               stage1[1] * stage2,
                               stage1[2] * stage2,
                               stage1[0] * stage2 * stage3,
                               stage1[1] * stage2 * stage3,
                               stage1[2] * stage2 * stage3,
                               stage2,
                               stage3,
                               stage3 * stage1[2],
                               stage3 * stage2};
        std::memcpy(gain, gains, sizeof gains);
    }

    cal_v4 record;
    int highSideRanges;
    bool hasTemperature;
    float voltageGain[14];
    float currentGain[14];
    float voltsPerUnit[14];
};

inline ProcessedDCData values(const char *payload, const Main &channel)
{
    MainDcRecord_t sample;
    std::memcpy(&sample, payload, sizeof sample);
    const cal_v4 &record = channel.record;
    const int weGain = int(sample.weGain);
    const int iGain = int(sample.iGain);
    const int range = int(sample.currentRange);

    ProcessedDCData point;
    point.timestamp = double(sample.tick) / 1e8;
    if (weGain < 14) {
        const float offset = weGain < 10 ? record.eweOffset[weGain] : 0.0f;
        point.workingElectrodeVoltage =
            offset + (channel.voltsPerUnit[weGain] * sample.rawVoltage + float(sample.voltageRef) * record.eweRefCoeff);
    }
    point.counterElectrodeVoltage = record.eceCeOffset + record.eceCeGain * sample.secondRaw -
                                    record.eceWeGain * sample.firstRaw - record.eceWeOffset;
    if (iGain < 14 && range < 10) {
        const float offset = iGain < 10 ? record.iStageOffset[iGain] : 0.0f;
        float reading = (offset + sample.rawCurrent) / channel.currentGain[iGain];
        reading += record.iRefCoeff * float(sample.currentRef);
        if (range < channel.highSideRanges)
            reading += record.highSideCMCoeff * sample.secondRaw;
        point.current = record.currentOffset[range] + record.currentGain[range] * reading;
    }
    point.charge = sample.charge;
    point.temperature = std::numeric_limits<double>::quiet_NaN();
    if (channel.hasTemperature && !(sample.temperature >> 16 & 1u))
        point.temperature = float(int(sample.temperature) >> 18) * 0.25f;
    point.currentRange = sample.currentRange;
    point.voltageRange = sample.voltageRange;
    point.weGain = sample.weGain;
    point.iGain = sample.iGain;
    return point;
}

/// A channel of a battery cycler: its record, and what its board's configuration says.
struct Gale {
    cal_vc07 record;
    int configuredRanges;
    double chargeTick; ///< seconds
};

inline ProcessedDCData values(const char *payload, const Gale &channel)
{
    GaleDcRecord_t sample;
    std::memcpy(&sample, payload, sizeof sample);
    const cal_vc07 &record = channel.record;
    const int named = int(sample.currentRange);
    const int i = named < 8 ? named : 0;
    const int v = int(sample.voltageRange) < 4 ? int(sample.voltageRange) : 0;
    const int charged = named < channel.configuredRanges ? named : 0;

    ProcessedDCData point;
    point.timestamp = double(sample.tick) / 8.75e7;
    point.workingElectrodeVoltage =
        record.vOffset[v] + (record.vGain[v] * sample.rawVoltage + float(sample.voltageRef) * record.vRefCoeff[v]);
    point.counterElectrodeVoltage = std::numeric_limits<double>::quiet_NaN();
    const float x =
        record.iOffset[i] + (record.iGain[i] * sample.rawCurrent + float(sample.currentRef) * record.iRefCoeff[i]);
    point.current = record.iCubic[i] * (x * x * x) + x * x * record.iQuadratic[i] + x;
    const float chargeGain = charged < 8 ? record.iGain[charged] : 0.0f;
    point.charge = channel.chargeTick * double(chargeGain * float(sample.charge));

    const auto ratio = float(sample.temperature / 32500.0);
    const double log = std::log(10000.0 * ratio / (1.0 - ratio) / 10000.0);
    const double reciprocal =
        0.003354016f + 0.000256524f * log + 2.60597e-6f * log * log + 6.32926e-8f * log * log * log;
    const auto degrees = float(1.0 / reciprocal - 273.15);
    const bool isKnown = !(degrees < -60.0f || degrees > 135.0f);
    point.temperature = isKnown ? degrees : std::numeric_limits<float>::quiet_NaN();

    point.counter = sample.counter;
    point.currentRange = sample.currentRange;
    point.voltageRange = sample.voltageRange;
    point.weGain = ACgain_t::Unknown;
    point.iGain = ACgain_t::Unknown;
    return point;
}

} // namespace PlainDcRecord
