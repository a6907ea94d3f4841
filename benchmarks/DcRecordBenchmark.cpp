// SPDX-License-Identifier: MIT
// What a channel makes of DC records, from the payload that the link hands over to volts and amperes.

#include "TableRow.h"
#include "calibration/CalibrationData.h"
#include "calibration/RecordBytes.h"
#include "calibration/Records.h"
#include "reference/PlainDcRecord.h"

#include <benchmark/benchmark.h>

#include <random>

namespace {

constexpr int samples = 4096;
constexpr int passes = 8; // a call takes long enough to be measured

/// Samples that go up and down through the ranges, as an instrument measures them.
std::vector<QByteArray> mainPayloads(int currentRanges)
{
    std::mt19937 generator(20260102u);
    std::vector<QByteArray> payloads;
    for (int i = 0; i < samples; ++i) {
        MainDcRecord_t sample = {};
        sample.tick = quint64(i) * 100000u;
        sample.rawVoltage = float(generator() % 60000u) - 30000.0f;
        sample.rawCurrent = float(generator() % 60000u) - 30000.0f;
        sample.firstRaw = 100.0f;
        sample.secondRaw = -200.0f;
        sample.charge = 1e-6 * i;
        sample.voltageRef = sample.currentRef = 728;
        sample.temperature = 0x01900000;
        sample.currentRange = currentRange_t(i * currentRanges / samples);
        sample.weGain = ACgain_t(i / 512 % 4);
        sample.iGain = ACgain_t(i / 256 % 4);
        payloads.push_back(bytesOfRecord(sample));
    }
    return payloads;
}

std::vector<QByteArray> galePayloads()
{
    std::mt19937 generator(20260103u);
    std::vector<QByteArray> payloads;
    for (int i = 0; i < samples; ++i) {
        GaleDcRecord_t sample = {};
        sample.tick = quint64(i) * 87500u;
        sample.rawVoltage = float(generator() % 6000000u);
        sample.rawCurrent = float(generator() % 6000000u) - 3000000.0f;
        sample.temperature = 16000.0f + float(generator() % 500u);
        sample.currentRange = currentRange_t(i / 1024 % 3);
        sample.voltageRange = voltageRange_t(i / 512 % 4);
        sample.voltageRef = sample.currentRef = 728;
        sample.charge = i * 1000;
        payloads.push_back(bytesOfRecord(sample));
    }
    return payloads;
}

template <class Reading>
TableRow::Work every(const std::vector<QByteArray> &payloads, const Reading &reading)
{
    return [payloads, reading] {
        for (int pass = 0; pass < passes; ++pass)
            for (const QByteArray &payload : payloads)
                benchmark::DoNotOptimize(reading(payload));
    };
}

template <class Plain>
void addCase(TableRow &row, const char *name, const CalibrationData &calibration, const Plain &plain,
             const std::vector<QByteArray> &payloads)
{
    row.addCase(
        name,
        every(payloads, [calibration](const QByteArray &payload) { return calibration.ProcessDCDataPoint(payload); }),
        every(payloads,
              [plain](const QByteArray &payload) { return PlainDcRecord::values(payload.constData(), plain); }));
}

} // namespace

int main(int argc, char **argv)
{
    TableRow row("DC record from payload to values, worst of both lines", "a copy and the arithmetic",
                 {Aim::TimesAtMost, 1.5});
    addCase(row, "Alder 2.5", calibrated(HardwareModel_t::Alder_2_5, roundMainRecord()),
            PlainDcRecord::Main(roundMainRecord(), 2, false), mainPayloads(10));
    addCase(row, "Heron 2.4, with a thermocouple", calibrated(HardwareModel_t::Heron_2_4, roundMainRecord()),
            PlainDcRecord::Main(roundMainRecord(), 3, true), mainPayloads(10));
    addCase(row, "Gale", calibrated(HardwareModel_t::Gale, roundGaleRecord()),
            PlainDcRecord::Gale{roundGaleRecord(), 1, 1.5625e-5}, galePayloads());
    return measureRows(argc, argv, {&row});
}
