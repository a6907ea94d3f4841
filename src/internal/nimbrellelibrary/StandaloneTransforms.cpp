// SPDX-License-Identifier: MIT
#include "nimbrellelibrary/NimbrelleLib.h"

#include "calibration/DataRecords.h"
#include "nimbrellelibrary/FourierAnalysis.h"
#include "numerics/Constants.h"

#include <algorithm>
#include <cmath>

namespace {

/// Lowest and highest reading of a converter.
struct ConverterSpan {
    double lowest;
    double highest;
};
constexpr ConverterSpan span12Bit = {0.0, 4095.0};
constexpr ConverterSpan span16Bit = {-32768.0, 32767.0};

double angularStep(double period, int harmonic)
{
    return (harmonic + 1) * 2.0 * pi / period;
}

/// A sum of weighted samples, each turned by its angle.
struct Accumulator {
    double re = 0.0;
    double im = 0.0;

    void add(double weight, double sample, double angle)
    {
        re += weight * std::cos(angle) * sample;
        im += weight * std::sin(angle) * sample;
    }

    ComplexDataPoint_t scaledBy(double factor) const
    {
        ComplexDataPoint_t point;
        setImpedance(point, {re * factor, im * factor});
        return point;
    }
};

/// Half of the first sample, then every sample from index 1 below the length. Returns the index that it stopped at.
int addFullSamples(Accumulator &sum, const std::vector<double> &data, double length, double step)
{
    sum.add(0.5, data[0], 0.0);
    int n = 1;
    for (; n < int(data.size()) && n < length; ++n)
        sum.add(1.0, data[std::size_t(n)], n * step);
    return n;
}

} // namespace

DataSampleOption NimbrelleLib::_dataSamplingOptions;

void NimbrelleLib::setDataSampleOptions(const DataSampleOption &options)
{
    _dataSamplingOptions = options;
}

ComplexDataPoint_t NimbrelleLib::SingleFrequencyFourier(const std::vector<double> &data, double length, double period,
                                                        int harmonic)
{
    if (data.empty())
        return {};
    const int count = int(data.size());
    const double held = std::min(length, double(count));
    const double step = angularStep(period, harmonic);
    Accumulator sum;
    const int stop = addFullSamples(sum, data, held, step);
    const int m = stop < count ? stop : stop - 1;
    const double rest = 1.0 + held - m;
    if (rest <= 1.0 && m >= 1) { // the end lies between two samples: close the trapezoid there
        const double before = data[std::size_t(m - 1)];
        const double atEnd = (data[std::size_t(m)] - before) * (held - (m - 1)) + before;
        sum.add((rest - 1.0) / 2.0, before, (m - 1) * step);
        sum.add(rest / 2.0, atEnd, held * step);
    }
    return sum.scaledBy(2.0 / held);
}

ComplexDataPoint_t NimbrelleLib::SingleFrequencyFourier(const std::vector<double> &data, double period, int harmonic)
{
    if (data.empty())
        return {};
    const int count = int(data.size());
    const double length = std::abs(std::trunc(count / period) * period);
    const double step = angularStep(period, harmonic);
    Accumulator sum;
    const int last = addFullSamples(sum, data, length, step) - 1;
    const double fraction = length - last;
    const double atLast = data[std::size_t(last)];
    sum.add(0.5 * fraction - 0.5, atLast, last * step);

    double behind = atLast;
    if (last + 1 < count)
        behind = data[std::size_t(last + 1)];
    else if (last >= 1)
        behind = 2.0 * atLast - data[std::size_t(last - 1)];
    // See compatibility.md, tail at angle 0.
    sum.add(0.5 * fraction, behind * fraction + (1.0 - fraction) * atLast, 0.0);
    return sum.scaledBy(2.0 / length);
}

int NimbrelleLib::catchClipping(const std::vector<double> &data, double, ADC_src_t source)
{
    constexpr int longestRun = 19;
    ConverterSpan span = source == ADC_src_t::Internal12Bit ? span12Bit : span16Bit;
    int run = 0;
    for (std::size_t i = 0; i < data.size(); ++i) {
        if (data[i] < span.lowest || data[i] > span.highest)
            span = span16Bit; // no 12-bit converter took these
        const bool isAtEnd = data[i] == span.lowest || data[i] == span.highest;
        run = isAtEnd ? run + 1 : 0;
        if (run > longestRun)
            return int(i) - run;
    }
    return int(data.size());
}

ComplexDataPoint_t NimbrelleLib::getAvgComplexDataPoint(const std::vector<ComplexDataPoint_t> &points)
{
    std::complex<double> sum;
    for (const ComplexDataPoint_t &point : points)
        sum += std::complex<double>(point.realZ, point.imagZ);
    ComplexDataPoint_t average;
    const auto count = double(points.size());
    setImpedance(average, {sum.real() / count, sum.imag() / count});
    return average;
}
