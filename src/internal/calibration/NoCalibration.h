// SPDX-License-Identifier: MIT
#pragma once

#include "calibration/DataRecords.h"

#include <memory>
#include <utility>

class HardwareModel;

/// Stands in for the record that a channel does not have: every answer is the neutral one, whatever was asked.
class NoCalibration
{
public:
    using DcRecord = MainDcRecord_t; ///< none of it is read
    static constexpr qint32 version = 0;

    void setModel(const std::shared_ptr<const HardwareModel> &) {}

    ProcessedDCData reading(const DcRecord &) const
    {
        ProcessedDCData nothing;
        nothing.currentRange = currentRange_t::OFF;
        nothing.weGain = ACgain_t::Unknown;
        nothing.iGain = ACgain_t::Unknown;
        return nothing;
    }

    int voltageCode(double, voltageRange_t) const { return 0; }
    int currentCode(double, currentRange_t) const { return 0; }
    double voltageOfCode(int, voltageRange_t) const { return 0.0; }
    double currentOfCode(int, currentRange_t) const { return 0.0; }
    double temperatureLimit(float) const { return 0.0; }

    currentRange_t smallestCurrentRange(float) const { return currentRange_t::OFF; }
    currentRange_t smallestCurrentRangeOfSine(float, float) const { return currentRange_t::OFF; }
    voltageRange_t smallestVoltageRange(float) const { return voltageRange_t::Largest; }
    std::pair<double, double> currentSpan(currentRange_t) const { return {0.0, 0.0}; }
};
