// SPDX-License-Identifier: MIT
#pragma once

#include "NimbrelleExport.h"

#include <complex>
#include <vector>

/**
 * What samples that are equally spaced in time hold at one frequency and its harmonics: hum in a current, distortion of a
 * sine, the response to a step that was repeated.
 *
 * All numbers are conjugate phasors: A cos(2 pi f t - p) gives A cos(p) + i A sin(p), so that the magnitude is the amplitude
 * in the unit of the samples, and a signal that lags has a positive phase. Time begins with the first sample. The integrals
 * of the Fourier coefficients are taken by the trapezoidal rule; an end between two samples is interpolated, one behind the
 * last sample extrapolated.
 *
 * Two at least, better ten samples a period: a frequency above half the sample frequency is found under its alias, and so is
 * everything that was aliased into the one that is asked for.
 *
 * @thread Pure functions: any thread.
 */
class NIMBRELLE_EXPORT VekFourier
{
public:
    /**
     * Mean, fundamental and harmonics over as many whole periods of the signal as the samples hold, or over all samples if
     * they hold none; in single precision.
     *
     * @param sampleFrequency hertz
     * @param signalFrequency of the fundamental, in hertz
     * @param harmonics       behind the fundamental, 0 to 1,000
     * @return harmonics + 2 numbers: twice the mean, the fundamental, then its multiples by 2, 3 and so on; empty for fewer
     *         than two samples, a frequency that is not above 0 or infinite, and another count of harmonics
     */
    static std::vector<std::complex<double>> spectrum(const std::vector<float> &samples, double sampleFrequency,
                                                      double signalFrequency, int harmonics);
    /**
     * One frequency over as many whole periods as the samples hold. Subtract a mean that is large against the amplitude
     * first: where a period is no whole number of samples, it is not quite cancelled.
     *
     * @param samplesPerPeriod sample frequency over signal frequency; no whole number need it be
     * @return NaN when there is no whole period, or the period is not above 0
     */
    static std::complex<double> amplitude(const std::vector<double> &samples, double samplesPerPeriod);
    /**
     * The same over the beginning of the samples, whether whole periods or not.
     *
     * @param length in samples, above 0; what exceeds the samples counts as all of them
     * @return NaN without samples, for a length or period that is not above 0
     */
    static std::complex<double> amplitude(const std::vector<double> &samples, double samplesPerPeriod, double length);
};
