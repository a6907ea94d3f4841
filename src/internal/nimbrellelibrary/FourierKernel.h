#pragma once

/// Sums of one harmonic over both signals of a record.
struct HarmonicSums {
    double currentCos;
    double currentSin;
    double voltageCos;
    double voltageSin;
};

/**
 * The inner loop of the Fourier analysis: sums (sample - first sample) times cosine and sine of the angle
 * `step` * n for the indices n from 1 to `end` - 1.
 *
 * Angle and product are single precision, rounded as the plain loop over std::sin and std::cos rounds them, and the sums
 * double; so all kernels agree to the rounding of the sums. Current and voltage share their sines. Nothing is allocated.
 */
using FourierKernel = HarmonicSums (*)(const float *current, const float *voltage, int end, float step);

/// For any processor of the architecture.
HarmonicSums sumHarmonicBaseline(const float *current, const float *voltage, int end, float step);
/// For processors with AVX2 and FMA; null where the compiler has none of these.
extern const FourierKernel sumHarmonicAvx2;
/// Whether this processor may run sumHarmonicAvx2().
bool isAvx2Usable();
/// The fastest one that this processor runs.
FourierKernel fastestFourierKernel();
