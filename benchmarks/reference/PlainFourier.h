// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstddef>
#include <vector>

/**
 * The transform of AC records written down step by step, with a call of std::sin and std::cos for every angle of one
 * signal: what the fast form is measured against, for speed and for deviation.
 */
inline std::vector<std::complex<double>> plainFourier(const std::vector<float> &data, double sampleFrequency,
                                                      double signalFrequency, int harmonics)
{
    const auto relativePeriod = [sampleFrequency](double frequency) {
        auto fold = static_cast<unsigned>(frequency / (0.5 * sampleFrequency));
        fold += fold % 2;
        return sampleFrequency / (frequency - fold * 0.5 * sampleFrequency);
    };
    const double pi = 3.141592653589793;
    const double period = std::abs(relativePeriod(signalFrequency));
    const auto periods = std::max(1, int(double(data.size()) / period));
    const auto length = float(std::min(double(data.size() - 1), std::abs(periods * period)));

    const auto entries = std::size_t(harmonics) + 2;
    std::vector<float> steps;
    for (std::size_t h = 0; h < entries; ++h)
        steps.push_back(float(2.0 * pi / relativePeriod(double(h) * signalFrequency)));

    std::vector<double> re(entries, 0.0);
    std::vector<double> im(entries, 0.0);
    float sample = 0.0f;
    std::size_t n = 1;
    for (; float(n) < length; ++n) {
        sample = data[n] - data[0];
        for (std::size_t h = 0; h < entries; ++h) {
            const float angle = steps[h] * float(n);
            re[h] += double(std::cos(angle) * sample);
            im[h] += double(std::sin(angle) * sample);
        }
    }
    --n;
    const float fraction = length - float(n);
    const float weight = (0.5f * fraction - 0.5f) * sample;
    const float behind = (n + 1 < data.size() ? data[n + 1] : 2.0f * data[n] - data[n - 1]) - data[0];
    std::vector<std::complex<double>> spectrum;
    for (std::size_t h = 0; h < entries; ++h) {
        const float angle = steps[h] * float(n);
        re[h] += double(weight * std::cos(angle)) + double(0.5f * fraction * behind);
        im[h] += double(weight * std::sin(angle));
        spectrum.emplace_back(re[h] * 2.0 / double(length), im[h] * 2.0 / double(length));
    }
    spectrum[0] += double(data[0] + data[0]);
    return spectrum;
}
