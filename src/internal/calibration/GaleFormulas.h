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
/// The `count` samples of a batch, in single precision; each sum is associated differently than a sample's.
void voltageBatch(const cal_vc07 &record, voltageRange_t range, short ref, const float *in, float *out, int count);
void currentBatch(const cal_vc07 &record, currentRange_t range, short ref, const float *in, float *out, int count);
// The mean of many samples, in double precision.
double voltageBias(const cal_vc07 &record, double raw, voltageRange_t range, short ref);
double currentBias(const cal_vc07 &record, double raw, currentRange_t range, short ref);

/// Coulombs per count of the integrator, for a tick of one second.
float chargeGain(const cal_vc07 &record, int range);

// Setpoints as codes.
int voltageCode(const cal_vc07 &record, double volts, voltageRange_t range); ///< rounded
int currentCode(const cal_vc07 &record, double amps, currentRange_t range);  ///< truncated, unlike the voltage's
/// Volts of a code; never negative.
double controlVoltage(const cal_vc07 &record, int code, voltageRange_t range);
/// Whether the record marks the range as present.
bool hasCurrentRange(const cal_vc07 &record, int range);

// Complex amplitudes, corrected by the record's polynomials in the frequency.
std::complex<double> acCurrent(const cal_vc07 &record, std::complex<double> z, currentRange_t range, double frequency);
std::complex<double> acVoltage(const cal_vc07 &record, std::complex<double> z, voltageRange_t range, double frequency);
/// Amperes per volt that the common-mode voltage drives through the current input.
std::complex<double> commonModeAdmittance(const cal_vc07 &record, currentRange_t range, double frequency);

} // namespace GaleFormulas
