// SPDX-License-Identifier: MIT
#pragma once

/// Sums of one harmonic over both signals of a record.
struct HarmonicSums {
    double currentCos;
    double currentSin;
    double voltageCos;
    double voltageSin;
};

/**
 * The inner loops of the Fourier analysis, for one instruction set.
 *
 * Angle and product are single precision, rounded as the plain loop over std::sin and std::cos rounds them, and the sums
 * double; so all kernels agree to the rounding of the sums. Current and voltage share their sines. Nothing is allocated.
 */
struct FourierKernel {
    /// Writes cosine and sine of the angle `step` * n for @p count indices n from @p first on.
    void (*fillAngles)(float *cosines, float *sines, int first, int count, float step);
    /// Moves every second value, beginning with the one at @p begin, to the front, where @p count are then.
    void (*keepEverySecond)(float *values, int begin, int count);
    /// Sums (sample - sample at index 0) times cosine and sine for @p count samples from index @p first on.
    HarmonicSums (*sumProducts)(const float *cosines, const float *sines, const float *current, const float *voltage,
                                int first, int count);
};

/// For any processor of the architecture.
extern const FourierKernel baselineKernel;
/// For processors with AVX2 and FMA; null where the compiler has none of these.
extern const FourierKernel *const avx2Kernel;
/// Whether this processor may run the kernel for AVX2.
bool isAvx2Usable();
/// The fastest one that this processor runs.
const FourierKernel &fastestFourierKernel();
