// SPDX-License-Identifier: MIT
#include "VekFourier.h"

#include "calibration/ComplexDataPoint.h"
#include "nimbrellelibrary/NimbrelleLib.h"
#include "numerics/Constants.h"

#include <cmath>

namespace {

constexpr int mostHarmonics = 1000;

bool isPositive(double value)
{
    return value > 0.0 && std::isfinite(value);
}

std::complex<double> phasorOf(const ComplexDataPoint_t &point)
{
    return {point.realZ, point.imagZ};
}

} // namespace

std::vector<std::complex<double>> VekFourier::spectrum(const std::vector<float> &samples, double sampleFrequency,
                                                       double signalFrequency, int harmonics)
{
    if (!isPositive(sampleFrequency) || !isPositive(signalFrequency) || harmonics < 0 || harmonics > mostHarmonics)
        return {};
    return NimbrelleLib::MultiFrequencyFourier(samples, sampleFrequency, signalFrequency, harmonics);
}

std::complex<double> VekFourier::amplitude(const std::vector<double> &samples, double samplesPerPeriod)
{
    if (!isPositive(samplesPerPeriod) || double(samples.size()) < samplesPerPeriod)
        return {notANumber, notANumber};
    return phasorOf(NimbrelleLib::SingleFrequencyFourier(samples, samplesPerPeriod, 0));
}

std::complex<double> VekFourier::amplitude(const std::vector<double> &samples, double samplesPerPeriod, double length)
{
    if (!isPositive(samplesPerPeriod) || !(length > 0.0) || samples.empty())
        return {notANumber, notANumber};
    return phasorOf(NimbrelleLib::SingleFrequencyFourier(samples, length, samplesPerPeriod, 0));
}
