// SPDX-License-Identifier: MIT
// The functions of a kernel, compiled once for each instruction set. All of them are local to their translation unit, so
// that no unit runs another's instructions; include it for that only.

#include "nimbrellelibrary/FourierKernel.h"

#include <cstdint>
#include <cstring>

namespace {

template <typename To, typename From>
inline To bitsAs(From value)
{
    To bits;
    static_assert(sizeof bits == sizeof value, "");
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

// Reduction to the quarter turn around 0: adding the large constant rounds to a whole number of quarters, which is then
// in the low bits. Quarters are taken off in two parts, of which the first is short enough for exact products.
constexpr double quartersPerRadian = 0x1.45F306DC9C883p-1;
constexpr double roundingConstant = 0x1.8p52;
constexpr double quarterHigh = 0x1.921fb544p+0;
constexpr double quarterLow = 0x1.0b4611a626331p-34;
constexpr std::uint32_t signBit = 0x80000000; // of a single-precision number

// Minimax polynomials on -pi/4 to pi/4 for sines of single precision, from Arm's optimized routines. The C library of
// Linux uses the same, hence the equal rounding.
constexpr double s1 = -0x1.555545995a603p-3;
constexpr double s2 = 0x1.1107605230bc4p-7;
constexpr double s3 = -0x1.994eb3774cf24p-13;
constexpr double c1 = -0x1.ffffffd0c621cp-2;
constexpr double c2 = 0x1.55553e1068f19p-5;
constexpr double c3 = -0x1.6c087e89a359dp-10;
constexpr double c4 = 0x1.99343027bf8c3p-16;

void fillAngles(float *cosines, float *sines, int first, int count, float step)
{
#pragma omp simd
    for (int i = 0; i < count; ++i) {
        const double angle = double(step * float(first + i));
        const double shifted = angle * quartersPerRadian + roundingConstant;
        const double quarters = shifted - roundingConstant;
        const double r = (angle - quarters * quarterHigh) - quarters * quarterLow;
        const double r2 = r * r;
        const double r4 = r2 * r2;
        const double sine = r * ((1.0 + r2 * s1) + r4 * (s2 + r2 * s3));
        const double cosine = (1.0 + r2 * c1) + r4 * ((c2 + r2 * c3) + r4 * c4);

        // An odd quarter swaps the two, the second bit and its neighbour carry the signs; on bits, hence branch-free.
        const auto quadrant = std::uint32_t(bitsAs<std::uint64_t>(shifted));
        const auto sineBits = bitsAs<std::uint32_t>(float(sine));
        const auto cosineBits = bitsAs<std::uint32_t>(float(cosine));
        const auto oddMask = std::uint32_t(std::int32_t(quadrant << 31) >> 31);
        const std::uint32_t change = ((sineBits ^ cosineBits) & oddMask) ^ ((quadrant << 30) & signBit);
        sines[i] = bitsAs<float>(sineBits ^ change);
        cosines[i] = bitsAs<float>(cosineBits ^ change ^ (oddMask & signBit));
    }
}

void keepEverySecond(float *values, int begin, int count)
{
#pragma omp simd // what is read never lies behind what is written
    for (int i = 0; i < count; ++i)
        values[i] = values[begin + 2 * i];
}

HarmonicSums sumProducts(const float *cosines, const float *sines, const float *current, const float *voltage,
                         int first, int count)
{
    const float firstCurrent = current[0];
    const float firstVoltage = voltage[0];
    double currentCos = 0.0;
    double currentSin = 0.0;
    double voltageCos = 0.0;
    double voltageSin = 0.0;
#pragma omp simd reduction(+ : currentCos, currentSin, voltageCos, voltageSin)
    for (int i = 0; i < count; ++i) {
        const float currentSample = current[first + i] - firstCurrent;
        const float voltageSample = voltage[first + i] - firstVoltage;
        currentCos += double(cosines[i] * currentSample);
        currentSin += double(sines[i] * currentSample);
        voltageCos += double(cosines[i] * voltageSample);
        voltageSin += double(sines[i] * voltageSample);
    }
    return {currentCos, currentSin, voltageCos, voltageSin};
}

} // namespace
