// SPDX-License-Identifier: MIT
#pragma once

#include "hardware_models/RangeTypes.h"

#include <QtGlobal>

#include <cstddef>

#pragma pack(push, 1)
/// One impedance point: 116 bytes without padding, all zero at first.
struct ComplexDataPoint_t {
    double absZ = 0.0;      ///< ohms
    double phaseDeg = 0.0;  ///< degrees
    double realZ = 0.0;     ///< ohms
    double imagZ = 0.0;     ///< ohms; negative for a capacitance
    double frequency = 0.0; ///< hertz
    double dcCurrent = 0.0; ///< amperes, mean
    double dcVoltage = 0.0; ///< volts, mean
    double thdPercent = 0.0;
    double timestamp = 0.0;        ///< seconds of the instrument's clock
    double numPeriods = 0.0;       ///< whole periods that the record held
    double currentAmplitude = 0.0; ///< amperes
    double voltageAmplitude = 0.0; ///< volts
    currentRange_t currentRange = currentRange_t::Largest;
    voltageRange_t voltageRange = voltageRange_t::Largest;
    ACgain_t weGain = ACgain_t::Gain1; ///< of the voltage path
    ACgain_t iGain = ACgain_t::Gain1;  ///< of the current path
    double rawDCcurrent = 0.0;         ///< mean raw reading
    double rawDCvoltage = 0.0;         ///< mean raw reading
};
#pragma pack(pop)

static_assert(sizeof(ComplexDataPoint_t) == 116, "the record has no padding");
static_assert(offsetof(ComplexDataPoint_t, currentRange) == 96, "");
static_assert(offsetof(ComplexDataPoint_t, rawDCcurrent) == 100, "");
