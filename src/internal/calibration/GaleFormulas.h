// SPDX-License-Identifier: MIT
#pragma once

#include "calibration/CalRecords.h"
#include "hardware_models/RangeTypes.h"

#include <complex>

/**
 * The arithmetic of the battery cyclers over their calibration record.
 *
 * Ranges that the record does not have: readings take range 0 instead, setpoints of a current answer 0, and everything
 * else reads the missing coefficient as 0. Free functions over a record, hence free of any thread.
 */
namespace GaleFormulas {

constexpr int currentRanges = 8;
constexpr int voltageRanges = 4;
constexpr double nominalRefWord = 728.0; ///< reference word of a voltage setpoint, which has no reading of its own

/// The ranges that a reading is taken with: themselves, or 0 when the record has no such range.
int readingRange(currentRange_t range);
int readingRange(voltageRange_t range);

// A sample, in single precision; volts and amperes.
float voltage(const cal_vc07 &record, float raw, voltageRange_t range, short ref);
float current(const cal_vc07 &record, float raw, currentRange_t range, short ref);
/// The cubic that straightens a current; in the precision of its argument.
template <typename Real>
Real straightened(const cal_vc07 &record, int range, Real x);
/// The `count` samples of a batch, in single precision; each sum is associated differently than a sample's.
void voltageBatch(const cal_vc07 &record, voltageRange_t range, short ref, const float *in, float *out, int count);
void currentBatch(const cal_vc07 &record, currentRange_t range, short ref, const float *in, float *out, int count);
// The mean of many samples, in double precision.
double voltageBias(const cal_vc07 &record, double raw, voltageRange_t range, short ref);
double currentBias(const cal_vc07 &record, double raw, currentRange_t range, short ref);

/// Coulombs per count of the integrator, for a tick of one second; a range is not negative.
float chargeGain(const cal_vc07 &record, int range);

// Setpoints as codes.
int voltageCode(const cal_vc07 &record, double volts, voltageRange_t range); ///< rounded
int currentCode(const cal_vc07 &record, double amps, currentRange_t range);  ///< see compatibility.md, truncated codes
/// Volts of a code. See compatibility.md, voltage without its sign.
double controlVoltage(const cal_vc07 &record, int code, voltageRange_t range);
/// Whether the record marks the range as present.
bool hasCurrentRange(const cal_vc07 &record, int range);

// Complex amplitudes, corrected by the record's polynomials in the frequency.
std::complex<double> acCurrent(const cal_vc07 &record, std::complex<double> z, currentRange_t range, double frequency);
std::complex<double> acVoltage(const cal_vc07 &record, std::complex<double> z, voltageRange_t range, double frequency);
/// Amperes per volt that the common-mode voltage drives through the current input.
std::complex<double> commonModeAdmittance(const cal_vc07 &record, currentRange_t range, double frequency);

} // namespace GaleFormulas

// What every sample passes.

inline int GaleFormulas::readingRange(currentRange_t range)
{
    return index(range) < currentRanges ? index(range) : 0;
}

inline int GaleFormulas::readingRange(voltageRange_t range)
{
    return index(range) < voltageRanges ? index(range) : 0;
}

template <typename Real>
Real GaleFormulas::straightened(const cal_vc07 &record, int range, Real x)
{
    return record.iCubic[range] * (x * x * x) + x * x * record.iQuadratic[range] + x;
}

inline float GaleFormulas::voltage(const cal_vc07 &record, float raw, voltageRange_t range, short ref)
{
    const int r = readingRange(range);
    return record.vOffset[r] + (record.vGain[r] * raw + float(ref) * record.vRefCoeff[r]);
}

inline float GaleFormulas::current(const cal_vc07 &record, float raw, currentRange_t range, short ref)
{
    const int r = readingRange(range);
    const float x = record.iOffset[r] + (record.iGain[r] * raw + float(ref) * record.iRefCoeff[r]);
    return straightened(record, r, x);
}

inline float GaleFormulas::chargeGain(const cal_vc07 &record, int range)
{
    return range < currentRanges ? record.iGain[range] : 0.0f;
}
