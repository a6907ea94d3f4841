// SPDX-License-Identifier: MIT
#include "nimbrellelibrary/LowPass.h"

#include "numerics/Constants.h"

#include <cmath>
#include <complex>

namespace {

/// The corner at which an analogue filter has to stand, so that the bilinear transform brings it to the wanted one.
double preWarped(double cutoff, double sampleFrequency)
{
    return std::tan(pi * cutoff / sampleFrequency) * (sampleFrequency / pi);
}

/// Where the bilinear transform brings a pole of the analogue filter; 1 to order / 2 are those above the real axis.
std::complex<double> poleOf(unsigned number, unsigned order, double sampleFrequency, double cutoff)
{
    const double theta = pi * (2.0 * number - 1.0) / (2.0 * order);
    const double a = -2.0 * pi * cutoff * std::sin(theta);
    const double b = 2.0 * pi * cutoff * std::cos(theta);
    const double twice = 2.0 * sampleFrequency;
    const double denominator = (twice - a) * (twice - a) + b * b;
    return {(4.0 * sampleFrequency * sampleFrequency - a * a - b * b) / denominator,
            4.0 * sampleFrequency * b / denominator};
}

} // namespace

LowPass::Section::Section(unsigned number, unsigned order, double sampleFrequency, double warpedCutoff)
{
    const std::complex<double> pole = poleOf(number, order, sampleFrequency, warpedCutoff);
    a1 = -2.0 * pole.real();
    a2 = pole.real() * pole.real() + pole.imag() * pole.imag();
    b0 = b2 = (1.0 + a1 + a2) / 4.0;
    b1 = 2.0 * b0;
}

double LowPass::Section::filtered(double sample)
{
    const double output = b0 * sample + b1 * inputs[0] + b2 * inputs[1] - a1 * outputs[0] - a2 * outputs[1];
    inputs[1] = inputs[0];
    inputs[0] = sample;
    outputs[1] = outputs[0];
    outputs[0] = output;
    return output;
}

void LowPass::setup(unsigned order, double sampleFrequency, double cutoff)
{
    sections.clear();
    const unsigned evenOrder = order - order % 2;
    const double corner = preWarped(cutoff, sampleFrequency);
    for (unsigned number = evenOrder / 2; number >= 1; --number)
        sections.emplace_back(number, evenOrder, sampleFrequency, corner);
}

double LowPass::Filter(double sample)
{
    for (Section &section : sections)
        sample = section.filtered(sample);
    return sample;
}
