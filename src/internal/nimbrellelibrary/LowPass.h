// SPDX-License-Identifier: MIT
#pragma once

#include <vector>

/**
 * A Butterworth low-pass of even order: a cascade of second-order sections whose coefficients come from a bilinear
 * transform with pre-warping. Each section has a gain of exactly 1 at DC. Clients have it as VekLowPass.
 *
 * Without setup(), and with an order below 2, it hands on what it is given. A corner at half the sample frequency or
 * above is not refused; the coefficients follow the tangent.
 *
 * @thread One object belongs to one thread.
 */
class LowPass
{
public:
    /// Designs the filter and forgets all samples; frequencies in hertz. An odd order is reduced by 1.
    void setup(unsigned order, double sampleFrequency, double cutoff);
    /// Takes the next sample, gives the next filtered one.
    double Filter(double sample);

private:
    /// a1 and a2 of the denominator, whose a0 is 1; b0, b1 and b2 of the numerator; and what it remembers.
    struct Section {
        Section(unsigned number, unsigned order, double sampleFrequency, double warpedCutoff);
        double filtered(double sample);

        double a1, a2, b0, b1, b2;
        double inputs[2] = {};  ///< the last two, the latest first
        double outputs[2] = {}; ///< the last two, the latest first
    };

    std::vector<Section> sections; ///< in the order in which a sample passes them
};
