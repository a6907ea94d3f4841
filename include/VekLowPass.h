// SPDX-License-Identifier: MIT
#pragma once

#include "NimbrelleExport.h"
#include "VekErrorCode.h"

#include <memory>

class VekLowPassPrivate;

/**
 * Smooths a stream of samples that are equally spaced in time: a Butterworth low-pass, as a cascade of second-order
 * sections.
 *
 *     VekLowPass lowPass;
 *     lowPass.setUp(4, 1000.0, 10.0);
 *     ...
 *     plot(data.timestamp, lowPass.filter(data.current));
 *
 * Below the corner it passes what is given, at the corner 1/sqrt(2) of it; above, an order of n takes 20 n dB a decade. What
 * is constant passes as it is, once it has lasted; the first samples show how the filter settles from 0. The output lags: at
 * low frequencies by about n / 10 of a period of the corner.
 *
 * The coefficients come from the analogue filter by the bilinear transform, with the corner pre-warped (A. V. Oppenheim and
 * R. W. Schafer, Discrete-Time Signal Processing, "Design of discrete-time IIR filters").
 *
 * @thread Use it from one thread at a time. A copy goes on by itself.
 */
class NIMBRELLE_EXPORT VekLowPass
{
public:
    /// One that hands on what it is given.
    VekLowPass();
    /// A filter of the same design that has seen the same samples.
    VekLowPass(const VekLowPass &other);
    /// Becomes such a filter.
    VekLowPass &operator=(const VekLowPass &other);
    ~VekLowPass();

    /**
     * Designs the filter and forgets all samples.
     *
     * @param order           an even number, 2 to 20
     * @param sampleFrequency of the samples to come, in hertz
     * @param cornerFrequency hertz; above 0 and below half the sample frequency
     * @return InvalidParameters outside of that; nothing has then changed
     */
    VekErrorCode setUp(int order, double sampleFrequency, double cornerFrequency);
    /// Takes the next sample, gives the next smoothed one, in the same unit. After NaN or infinity nothing but NaN comes, up
    /// to the next setUp().
    double filter(double sample);

private:
    std::unique_ptr<VekLowPassPrivate> _private;
};
