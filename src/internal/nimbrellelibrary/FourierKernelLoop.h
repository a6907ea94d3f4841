// The body of a kernel, compiled once for each instruction set with SUM_HARMONIC as the function's name. Everything else
// in here is local to its translation unit, so that no unit runs another's instructions; include it for that only.

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

// Minimax polynomials on -pi/4 to pi/4 for sines of single precision, from Arm's optimized routines. The C library of
// Linux uses the same, hence the equal rounding.
constexpr double s1 = -0x1.555545995a603p-3;
constexpr double s2 = 0x1.1107605230bc4p-7;
constexpr double s3 = -0x1.994eb3774cf24p-13;
constexpr double c1 = -0x1.ffffffd0c621cp-2;
constexpr double c2 = 0x1.55553e1068f19p-5;
constexpr double c3 = -0x1.6c087e89a359dp-10;
constexpr double c4 = 0x1.99343027bf8c3p-16;

} // namespace

HarmonicSums SUM_HARMONIC(const float *current, const float *voltage, int end, float step)
{
    const float firstCurrent = current[0];
    const float firstVoltage = voltage[0];
    double currentCos = 0.0;
    double currentSin = 0.0;
    double voltageCos = 0.0;
    double voltageSin = 0.0;
#pragma omp simd reduction(+ : currentCos, currentSin, voltageCos, voltageSin)
    for (int n = 1; n < end; ++n) {
        const double angle = double(step * float(n));
        const double shifted = angle * quartersPerRadian + roundingConstant;
        const double quarters = shifted - roundingConstant;
        const double r = (angle - quarters * quarterHigh) - quarters * quarterLow;
        const double r2 = r * r;
        const double r3 = r * r2;
        const double r4 = r2 * r2;
        const double sine = (r + r3 * s1) + r3 * r2 * (s2 + r2 * s3);
        const double cosine = ((1.0 + r2 * c1) + r4 * c2) + r4 * r2 * (c3 + r2 * c4);

        // An odd quarter swaps the two, the second bit and its neighbour carry the signs; on bits, hence branch-free.
        const std::uint32_t quadrant = std::uint32_t(bitsAs<std::uint64_t>(shifted));
        const std::uint32_t sineBits = bitsAs<std::uint32_t>(float(sine));
        const std::uint32_t cosineBits = bitsAs<std::uint32_t>(float(cosine));
        const std::uint32_t swap = (sineBits ^ cosineBits) & (0u - (quadrant & 1u));
        const float sinAngle = bitsAs<float>(sineBits ^ swap ^ ((quadrant & 2u) << 30));
        const float cosAngle = bitsAs<float>(cosineBits ^ swap ^ (((quadrant + 1u) & 2u) << 30));

        const float currentSample = current[n] - firstCurrent;
        const float voltageSample = voltage[n] - firstVoltage;
        currentCos += double(cosAngle * currentSample);
        currentSin += double(sinAngle * currentSample);
        voltageCos += double(cosAngle * voltageSample);
        voltageSin += double(sinAngle * voltageSample);
    }
    return {currentCos, currentSin, voltageCos, voltageSin};
}
