// SPDX-License-Identifier: MIT
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

void add(HarmonicSums &sums, const HarmonicSums &more)
{
    sums.currentCos += more.currentCos;
    sums.currentSin += more.currentSin;
    sums.voltageCos += more.voltageCos;
    sums.voltageSin += more.voltageSin;
}

/**
 * Sums of all harmonics over the full samples of a record.
 *
 * Harmonic 2h has at sample n the very angle that harmonic h has at sample 2n, bit by bit as long as neither is folded.
 * So the sines of h serve 2h, too, as far as they go.
 */
class SumsOfHarmonics
{
public:
    /// @p steps are the angles between two samples, in radians, one for each harmonic from 0 on.
    SumsOfHarmonics(const std::vector<float> &current, const std::vector<float> &voltage, int end,
                    const std::vector<float> &steps, const FourierKernel &kernel);

    const HarmonicSums &operator[](std::size_t harmonic) const { return _sums[harmonic]; }

private:
    static constexpr int vectorSize = 8;   // that of the kernel with the widest
    static constexpr int blockSize = 1024; // of which vectors are a whole part; a block stays in the nearest cache

    bool isTwiceItsHalf(std::size_t harmonic) const
    {
        return harmonic > 0 && harmonic % 2 == 0 && _steps[harmonic] == 2.0f * _steps[harmonic / 2];
    }
    void fillBlock(float step, int first, int count);
    void addBlock(std::size_t harmonic, int first, int count);

    const float *_current;
    const float *_voltage;
    const std::vector<float> &_steps;
    const FourierKernel &_kernel;
    std::vector<HarmonicSums> _sums;
    float _cosines[blockSize];
    float _sines[blockSize];
};

SumsOfHarmonics::SumsOfHarmonics(const std::vector<float> &current, const std::vector<float> &voltage, int end,
                                 const std::vector<float> &steps, const FourierKernel &kernel)
    : _current(current.data()), _voltage(voltage.data()), _steps(steps), _kernel(kernel), _sums(steps.size())
{
    for (std::size_t harmonic = 0; harmonic < steps.size(); ++harmonic) {
        const int begin = isTwiceItsHalf(harmonic) ? (end + 1) / 2 : 0; // the first part came with the half
        for (int first = begin; first < end; first += blockSize) {
            const int count = std::min(blockSize, end - first);
            fillBlock(steps[harmonic], first, count);
            addBlock(harmonic, first, count);
        }
    }
}

void SumsOfHarmonics::fillBlock(float step, int first, int count)
{
    const int whole = (count + vectorSize - 1) / vectorSize * vectorSize; // quicker than single ones at the end
    if (step != 0.0f)
        return _kernel.fillAngles(_cosines, _sines, first, whole, step);
    std::fill_n(_cosines, count, 1.0f);
    std::fill_n(_sines, count, 0.0f);
}

/// Adds the angles in the block, of the samples from @p first on, to their harmonic, its double, and so on.
void SumsOfHarmonics::addBlock(std::size_t harmonic, int first, int count)
{
    for (;;) {
        add(_sums[harmonic], _kernel.sumProducts(_cosines, _sines, _current, _voltage, first, count));
        harmonic *= 2;
        if (harmonic >= _steps.size() || !isTwiceItsHalf(harmonic))
            return;
        const int odd = first % 2;
        first = (first + 1) / 2;
        count = (count - odd + 1) / 2;
        _kernel.keepEverySecond(_cosines, odd, count);
        _kernel.keepEverySecond(_sines, odd, count);
    }
}

/// Adds the trapezoid's end to a signal's sums over the full samples, and scales them.
std::complex<double> completed(const std::vector<float> &samples, const Window &window,
                               const std::complex<float> &lastAngle, double cosSum, double sinSum)
{
    const int last = window.last();
    const float fraction = window.partialStep();
    const float lastWeight = (0.5f * fraction - 0.5f) * (samples[std::size_t(last)] - samples[0]);
    // See compatibility.md, tail at angle 0.
    const float tail = 0.5f * fraction * sampleBehind(samples, last);
    const double re = cosSum + double(lastWeight * lastAngle.real()) + double(tail);
    const double im = sinSum + double(lastWeight * lastAngle.imag());
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
                            double sampleFrequency, double signalFrequency, int harmonics, const FourierKernel &kernel)
{
    RecordSpectra spectra;
    if (current.size() < 2 || current.size() != voltage.size())
        return spectra;
    const Window window = wholePeriodWindow(int(current.size()), sampleFrequency, signalFrequency);
    std::vector<float> steps(std::size_t(std::max(harmonics, 0)) + 2);
    for (std::size_t h = 0; h < steps.size(); ++h)
        steps[h] = float(2.0 * pi / NimbrelleLib::getRelativePeriod(sampleFrequency, double(h) * signalFrequency));
    const SumsOfHarmonics sums(current, voltage, window.end, steps, kernel);
    spectra.current.reserve(steps.size());
    spectra.voltage.reserve(steps.size());
    for (std::size_t h = 0; h < steps.size(); ++h) {
        const float angle = steps[h] * float(window.last());
        const std::complex<float> last(std::cos(angle), std::sin(angle));
        spectra.current.push_back(completed(current, window, last, sums[h].currentCos, sums[h].currentSin));
        spectra.voltage.push_back(completed(voltage, window, last, sums[h].voltageCos, sums[h].voltageSin));
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
