#include "nimbrellelibrary/FourierAnalysis.h"

#include "nimbrellelibrary/NimbrelleLib.h"
#include "numerics/Constants.h"

#include <algorithm>
#include <cmath>

namespace {

/// The part of a record that is integrated: an exact number of periods, with a partial step at the end.
struct Window {
    float length; ///< in samples
    int end;      ///< the first index at or behind the length

    int last() const { return end - 1; }
    float partialStep() const { return length - float(last()); }
};

Window wholePeriodWindow(int samples, double sampleFrequency, double signalFrequency)
{
    const double period = NimbrelleLib::getRelativePeriod_pos(sampleFrequency, signalFrequency);
    const double periods = std::max(1.0, wholePeriods(samples, sampleFrequency, signalFrequency));
    const float length = float(std::min(double(samples - 1), std::abs(periods * period)));
    int end = std::max(1, int(std::ceil(length)));
    while (end > 1 && !(float(end - 1) < length)) // of use above 2^24, where indices round
        --end;
    return {length, end};
}

/// The sample behind the window, relative to the first one; extrapolated where the record ends.
float sampleBehind(const std::vector<float> &samples, int last)
{
    const auto n = std::size_t(last);
    if (n + 1 < samples.size())
        return samples[n + 1] - samples[0];
    return 2.0f * samples[n] - samples[n - 1] - samples[0];
}

/// Adds the trapezoid's end to a signal's sums over the full samples, and scales them.
std::complex<double> completed(const std::vector<float> &samples, const Window &window, float step, double cosSum,
                               double sinSum)
{
    const int last = window.last();
    const float fraction = window.partialStep();
    const float angle = step * float(last);
    const float lastWeight = (0.5f * fraction - 0.5f) * (samples[std::size_t(last)] - samples[0]);
    // See compatibility.md, tail at angle 0.
    const float tail = 0.5f * fraction * sampleBehind(samples, last);
    const double re = cosSum + double(lastWeight * std::cos(angle)) + double(tail);
    const double im = sinSum + double(lastWeight * std::sin(angle));
    return std::complex<double>(re, im) * (2.0 / double(window.length));
}

double distortion(const Spectrum &spectrum)
{
    double sum = 0.0;
    for (std::size_t k = 2; k < spectrum.size(); ++k)
        sum += std::norm(spectrum[k]);
    return std::sqrt(sum) / std::abs(spectrum[1]);
}

} // namespace

double RecordSpectra::thdPercent() const
{
    if (std::abs(current[1]) == 0.0 && std::abs(voltage[1]) == 0.0)
        return 0.0;
    return 100.0 * std::fmax(distortion(current), distortion(voltage));
}

RecordSpectra analyseRecord(const std::vector<float> &current, const std::vector<float> &voltage,
                            double sampleFrequency, double signalFrequency, int harmonics, FourierKernel kernel)
{
    RecordSpectra spectra;
    if (current.size() < 2 || current.size() != voltage.size())
        return spectra;
    const Window window = wholePeriodWindow(int(current.size()), sampleFrequency, signalFrequency);
    const int entries = std::max(harmonics, 0) + 2;
    spectra.current.reserve(std::size_t(entries));
    spectra.voltage.reserve(std::size_t(entries));
    for (int h = 0; h < entries; ++h) {
        const auto step = float(2.0 * pi / NimbrelleLib::getRelativePeriod(sampleFrequency, h * signalFrequency));
        const HarmonicSums sums = kernel(current.data(), voltage.data(), window.end, step);
        spectra.current.push_back(completed(current, window, step, sums.currentCos, sums.currentSin));
        spectra.voltage.push_back(completed(voltage, window, step, sums.voltageCos, sums.voltageSin));
    }
    spectra.current[0] += double(current[0] + current[0]);
    spectra.voltage[0] += double(voltage[0] + voltage[0]);
    return spectra;
}

double wholePeriods(double samples, double sampleFrequency, double signalFrequency)
{
    return std::trunc(samples / NimbrelleLib::getRelativePeriod_pos(sampleFrequency, signalFrequency));
}

void setImpedance(ComplexDataPoint_t &point, std::complex<double> z)
{
    point.absZ = std::abs(z);
    point.phaseDeg = std::arg(z) * 180.0 / pi;
    point.realZ = z.real();
    point.imagZ = z.imag();
}

double NimbrelleLib::getRelativePeriod(double sampleFrequency, double frequency)
{
    const double half = 0.5 * sampleFrequency;
    double fold = std::trunc(frequency / half);
    if (std::fmod(fold, 2.0) != 0.0)
        fold += 1.0;
    return sampleFrequency / (frequency - fold * half);
}

double NimbrelleLib::getRelativePeriod_pos(double sampleFrequency, double frequency)
{
    return std::abs(getRelativePeriod(sampleFrequency, frequency));
}

std::vector<std::complex<double>> NimbrelleLib::MultiFrequencyFourier(const std::vector<float> &data,
                                                                      double sampleFrequency, double signalFrequency,
                                                                      int harmonics)
{
    return analyseRecord(data, data, sampleFrequency, signalFrequency, harmonics).current;
}
