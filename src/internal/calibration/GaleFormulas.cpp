// SPDX-License-Identifier: MIT
#include "calibration/GaleFormulas.h"

#include "numerics/Constants.h"

#include <algorithm>
#include <cmath>

namespace {

/// The coefficient of a range; a range that the record does not have reads as 0.
template <int Count>
float coefficient(const float (&values)[Count], int range)
{
    return range >= 0 && range < Count ? values[range] : 0.0f;
}

/// Clamps to what a 32-bit code holds; a record without gains can yield NaN, which gives 0.
double clampedCode(double code)
{
    constexpr double largest = 2147483647.0;
    return std::isnan(code) ? 0.0 : std::clamp(code, -largest, largest);
}

double polynomial(const float (&coefficients)[5], double frequency)
{
    double sum = coefficients[0];
    double power = frequency;
    for (int k = 1; k < 5; ++k) {
        sum += double(coefficients[k]) * power;
        power *= frequency;
    }
    return sum;
}

std::complex<double> scaledAndTurned(std::complex<double> z, double factor, double degrees)
{
    const std::complex<double> scaled = z * factor;
    return std::polar(std::abs(scaled), std::arg(scaled) + pi * degrees / 180.0);
}

} // namespace

void GaleFormulas::voltageBatch(const cal_vc07 &record, voltageRange_t range, short ref, const float *in, float *out,
                                int count)
{
    const int r = readingRange(range);
    const float offset = record.vOffset[r] + record.vRefCoeff[r] * float(ref);
    std::transform(in, in + count, out, [&record, r, offset](float raw) { return record.vGain[r] * raw + offset; });
}

void GaleFormulas::currentBatch(const cal_vc07 &record, currentRange_t range, short ref, const float *in, float *out,
                                int count)
{
    const int r = readingRange(range);
    const float offset = record.iOffset[r] + record.iRefCoeff[r] * float(ref);
    std::transform(in, in + count, out,
                   [&record, r, offset](float raw) { return straightened(record, r, record.iGain[r] * raw + offset); });
}

double GaleFormulas::voltageBias(const cal_vc07 &record, double raw, voltageRange_t range, short ref)
{
    const int r = readingRange(range);
    const float reference = float(ref) * record.vRefCoeff[r]; // see compatibility.md, reference in single precision
    return record.vOffset[r] + (record.vGain[r] * raw + reference);
}

double GaleFormulas::currentBias(const cal_vc07 &record, double raw, currentRange_t range, short ref)
{
    const int r = readingRange(range);
    const float reference = float(ref) * record.iRefCoeff[r]; // see compatibility.md, reference in single precision
    return straightened(record, r, record.iOffset[r] + (record.iGain[r] * raw + reference));
}

int GaleFormulas::voltageCode(const cal_vc07 &record, double volts, voltageRange_t range)
{
    const int r = index(range); // see compatibility.md, range without a fall-back
    const double reference = nominalRefWord * coefficient(record.vRefCoeff, r);
    const double code = (volts - reference - coefficient(record.vOffset, r)) / coefficient(record.vGain, r);
    return int(std::round(clampedCode(code)));
}

int GaleFormulas::currentCode(const cal_vc07 &record, double amps, currentRange_t range)
{
    const int r = index(range);
    if (!hasCurrentRange(record, r))
        return 0;
    double x = amps - (amps * amps * record.iQuadratic[r] + record.iCubic[r] * (amps * amps * amps));
    x -= record.iOffset[r];
    x /= record.iGain[r];
    return int(clampedCode(x));
}

double GaleFormulas::controlVoltage(const cal_vc07 &record, int code, voltageRange_t range)
{
    const int r = index(range);
    const double offset = coefficient(record.vRefCoeff, r) * nominalRefWord + coefficient(record.vOffset, r);
    return std::max(0.0, coefficient(record.vGain, r) * float(code) + offset);
}

bool GaleFormulas::hasCurrentRange(const cal_vc07 &record, int range)
{
    return coefficient(record.iGain, range) != 0.0f;
}

std::complex<double> GaleFormulas::acCurrent(const cal_vc07 &record, std::complex<double> z, currentRange_t range,
                                             double frequency)
{
    const int r = readingRange(range);
    return scaledAndTurned(z, record.iGain[r] * polynomial(record.acIMag[r], frequency),
                           polynomial(record.acIPhase[r], frequency));
}

std::complex<double> GaleFormulas::acVoltage(const cal_vc07 &record, std::complex<double> z, voltageRange_t range,
                                             double frequency)
{
    const int r = readingRange(range);
    return scaledAndTurned(z, record.vGain[r] * polynomial(record.acVMag[r], frequency),
                           polynomial(record.acVPhase[r], frequency));
}

std::complex<double> GaleFormulas::commonModeAdmittance(const cal_vc07 &record, currentRange_t range, double frequency)
{
    return std::complex<double>(polynomial(record.cmReal, frequency), polynomial(record.cmImag, frequency)) *
           double(record.iGain[readingRange(range)]);
}
