// SPDX-License-Identifier: MIT
// The Fourier analysis of a record's two signals. After the ratios comes the largest deviation from the plain form; the
// exit code is 1 if an output deviates by more than 1e-9 of its signal's fundamental.

#include "TableRow.h"
#include "nimbrellelibrary/FourierAnalysis.h"
#include "reference/PlainFourier.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
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

/// Analyses a record as often as makes up for its size.
template <typename Analyse>
TableRow::Work repeatedly(int samples, Analyse analyse)
{
    return [record = recordOf(samples), calls = 100000 / samples, analyse] {
        for (int call = 0; call < calls; ++call)
            benchmark::DoNotOptimize(analyse(record));
    };
}

TableRow rowOf(const std::string &form, const FourierKernel &kernel, double aim, const std::vector<int> &sizes)
{
    TableRow row("Fourier, " + form, "scalar reference", {Aim::TimesFasterAtLeast, aim});
    for (const int samples : sizes)
        row.addCase(form + " " + std::to_string(samples),
                    repeatedly(samples, [&kernel](const Record &record) { return librarySpectra(record, kernel); }),
                    repeatedly(samples, plainSpectra));
    return row;
}

} // namespace

int main(int argc, char **argv)
{
    const std::vector<int> shortest = {100};
    const std::vector<int> others = {1000, 10000, 100000};
    std::vector<TableRow> rows;
    rows.push_back(rowOf("baseline x86-64", baselineKernel, 5, others));
    rows.push_back(rowOf("baseline x86-64, 100 samples", baselineKernel, 5, shortest));
    bool isWithin = isWithinDeviation("baseline", baselineKernel);
    if (isAvx2Usable()) {
        rows.push_back(rowOf("AVX2", *avx2Kernel, 5, others));
        isWithin = isWithinDeviation("AVX2", *avx2Kernel) && isWithin;
    }
    std::vector<TableRow *> measured;
    for (TableRow &row : rows)
        measured.push_back(&row);
    const int result = measureRows(argc, argv, measured);
    return isWithin ? result : 1;
}
