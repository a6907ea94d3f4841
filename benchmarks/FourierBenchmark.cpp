// The Fourier analysis of a record's two signals. After the ratios comes the largest deviation from the plain form; the
// exit code is 1 if an output deviates by more than 1e-9 of its signal's fundamental.

#include "TableRow.h"
#include "nimbrellelibrary/FourierAnalysis.h"
#include "reference/PlainFourier.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <optional>
#include <random>

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

RecordSpectra librarySpectra(const Record &record, const FourierKernel &kernel)
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

bool isWithinDeviation(const char *form, const FourierKernel &kernel)
{
    double worst = 0.0;
    for (const int samples : recordSizes) {
        const Record record = recordOf(samples);
        const RecordSpectra plain = plainSpectra(record);
        const RecordSpectra library = librarySpectra(record, kernel);
        worst = std::max({worst, deviation(library.current, plain.current), deviation(library.voltage, plain.voltage)});
    }
    std::fprintf(stderr, "%s: largest deviation %.1e of the fundamental\n", form, worst);
    return worst <= largestDeviation;
}

TableRow rowOf(const char *form, const FourierKernel &kernel, double aim)
{
    TableRow row(std::string("Fourier, ") + form, "scalar reference", {Aim::TimesFasterAtLeast, aim});
    for (const int samples : recordSizes) {
        const Record record = recordOf(samples);
        row.addCase(
            std::string(form) + ", " + std::to_string(samples) + " samples",
            [record, &kernel, calls = recordSizes[3] / samples] {
                for (int call = 0; call < calls; ++call)
                    benchmark::DoNotOptimize(librarySpectra(record, kernel));
            },
            [record, calls = recordSizes[3] / samples] {
                for (int call = 0; call < calls; ++call)
                    benchmark::DoNotOptimize(plainSpectra(record));
            });
    }
    return row;
}

} // namespace

int main(int argc, char **argv)
{
    TableRow baseline = rowOf("baseline x86-64", baselineKernel, 5);
    std::vector<TableRow *> rows = {&baseline};
    bool isWithin = isWithinDeviation("baseline", baselineKernel);
    std::optional<TableRow> avx2;
    if (isAvx2Usable()) {
        avx2 = rowOf("AVX2", *avx2Kernel, 7);
        rows.push_back(&*avx2);
        isWithin = isWithinDeviation("AVX2", *avx2Kernel) && isWithin;
    }
    const int result = measureRows(argc, argv, rows);
    return isWithin ? result : 1;
}
