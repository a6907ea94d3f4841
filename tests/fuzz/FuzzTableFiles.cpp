// SPDX-License-Identifier: MIT
// Files of calibration tables: each kind reads any text, and answers every question about it.

#include "FuzzTarget.h"
#include "MemoryFile.h"
#include "calibration/CorrectionTables.h"
#include "calibration/FrequencySweep.h"

namespace {

void sweep(FuzzInput &input, MemoryFile &file)
{
    const auto interpolation = frequencySweep::interpolateType_t(input.below(3));
    const double magnitude = input.number();
    const double frequencies[] = {input.number(), input.number(), 1.0, 1e5};
    const frequencySweep table(file.write(input.rest()), interpolation, magnitude, 0.0);
    for (const double frequency : frequencies) {
        const std::complex<double> response = table.lookup(frequency);
        if (table.isEmpty())
            mustHold(isSameNumber(response.real(), magnitude), "without rows the response is the default");
    }
}

void converter(FuzzInput &input, MemoryFile &file)
{
    std::vector<float> samples;
    for (int left = 1 + input.below(8); left > 0; --left)
        samples.push_back(float(input.number()));
    const std::vector<float> before = samples;
    PIC_ADC_lut table;
    table.import(file.write(input.rest()));
    table.correctData(samples);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const bool isCode = before[i] > 0.0f && before[i] < 4096.0f;
        mustHold(isCode || isSameNumber(double(samples[i]), double(before[i])), "only codes are straightened");
    }
}

void capacitance(FuzzInput &input, MemoryFile &file)
{
    const double frequency = input.number();
    const double code = input.number();
    PICInternalADCCapacitance table;
    table.import(file.write(input.rest()));
    table.getCapacitance(code);
    table.get_Z_adj(frequency, code);
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    FuzzProcess::instance();
    static MemoryFile file;
    FuzzInput input(data, size);
    constexpr void (*kinds[])(FuzzInput &, MemoryFile &) = {sweep, converter, capacitance};
    input.oneOf(kinds)(input, file);
    return 0;
}
