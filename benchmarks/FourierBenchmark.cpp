// Measures the Fourier analysis of a record's two signals against the plain scalar form, and the two against each other:
// after the table of times come one line with the largest deviation, and the ratios of the times. The exit code is 1 if
// an output deviates by more than 1e-9 of its signal's fundamental.

#include "nimbrellelibrary/FourierAnalysis.h"
#include "support/PlainFourier.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>
#include <random>
#include <string>

namespace {

constexpr double sampleFrequency = 1.0e5;
constexpr double largestDeviation = 1e-9;
constexpr int recordSizes[] = {100, 1000, 10000, 100000};

/// A record as an instrument takes it: 16-bit codes with noise, a harmonic, and a fraction of a period left over.
struct Record {
    std::vector<float> current;
    std::vector<float> voltage;
    double frequency;
};

Record recordOf(int samples)
{
    Record record;
    record.frequency = 7.3 * sampleFrequency / samples;
    std::mt19937 generator(20260101u);
    std::normal_distribution<double> noise(0.0, 20.0);
    for (int n = 0; n < samples; ++n) {
        const double angle = 2.0 * 3.141592653589793 * record.frequency * n / sampleFrequency;
        const double current = 9000.0 * std::sin(angle) + 90.0 * std::sin(3.0 * angle) + 120.0 + noise(generator);
        record.current.push_back(float(std::round(current)));
        record.voltage.push_back(float(std::round(14000.0 * std::sin(angle + 0.7) - 300.0 + noise(generator))));
    }
    return record;
}

RecordSpectra plainSpectra(const Record &record)
{
    return {plainFourier(record.current, sampleFrequency, record.frequency, analysedHarmonics),
            plainFourier(record.voltage, sampleFrequency, record.frequency, analysedHarmonics)};
}

RecordSpectra librarySpectra(const Record &record, FourierKernel kernel)
{
    return analyseRecord(record.current, record.voltage, sampleFrequency, record.frequency, analysedHarmonics, kernel);
}

double deviation(const Spectrum &one, const Spectrum &reference)
{
    double largest = 0.0;
    for (std::size_t k = 0; k < reference.size(); ++k) {
        const std::complex<double> difference = one[k] - reference[k];
        largest = std::max({largest, std::abs(difference.real()), std::abs(difference.imag())});
    }
    return largest / std::abs(reference[1]);
}

double worstDeviation(FourierKernel kernel)
{
    double worst = 0.0;
    for (const int samples : recordSizes) {
        const Record record = recordOf(samples);
        const RecordSpectra plain = plainSpectra(record);
        const RecordSpectra library = librarySpectra(record, kernel);
        worst = std::max({worst, deviation(library.current, plain.current), deviation(library.voltage, plain.voltage)});
    }
    return worst;
}

/// Shows the table and keeps the times for the ratios.
class RatioReporter : public benchmark::ConsoleReporter
{
public:
    void ReportRuns(const std::vector<Run> &runs) override
    {
        for (const Run &run : runs)
            if (run.run_type == Run::RT_Iteration)
                keepFastest(run.benchmark_name(), run.GetAdjustedCPUTime());
        ConsoleReporter::ReportRuns(runs);
    }

    void printRatios(const std::string &form) const
    {
        for (const int samples : recordSizes) {
            const auto plain = _times.find("plain/" + std::to_string(samples));
            const auto fast = _times.find(form + "/" + std::to_string(samples));
            if (plain != _times.end() && fast != _times.end())
                std::printf("%s, %d samples: %.2f times the plain form\n", form.c_str(), samples,
                            plain->second / fast->second);
        }
    }

private:
    void keepFastest(const std::string &name, double time)
    {
        const auto found = _times.emplace(name, time).first;
        found->second = std::min(found->second, time);
    }

    std::map<std::string, double> _times; ///< nanoseconds of processor time per record
};

void registerForm(const std::string &form, RecordSpectra (*analyse)(const Record &))
{
    for (const int samples : recordSizes)
        benchmark::RegisterBenchmark((form + "/" + std::to_string(samples)).c_str(),
                                     [samples, analyse](benchmark::State &state) {
                                         const Record record = recordOf(samples);
                                         for (auto _ : state)
                                             benchmark::DoNotOptimize(analyse(record));
                                     });
}

bool checkDeviation(const char *form, FourierKernel kernel)
{
    const double worst = worstDeviation(kernel);
    std::printf("%s: largest deviation %.1e of the fundamental\n", form, worst);
    return worst <= largestDeviation;
}

} // namespace

int main(int argc, char **argv)
{
    benchmark::Initialize(&argc, argv);
    registerForm("plain", plainSpectra);
    registerForm("baseline", [](const Record &record) { return librarySpectra(record, sumHarmonicBaseline); });
    if (isAvx2Usable())
        registerForm("avx2", [](const Record &record) { return librarySpectra(record, sumHarmonicAvx2); });

    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    bool isWithin = checkDeviation("baseline", sumHarmonicBaseline);
    if (isAvx2Usable())
        isWithin = checkDeviation("avx2", sumHarmonicAvx2) && isWithin;
    reporter.printRatios("baseline");
    reporter.printRatios("avx2");
    return isWithin ? 0 : 1;
}
