// SPDX-License-Identifier: MIT
// AC records of both lines, against decoders written down step by step.

#include "FuzzTarget.h"
#include "calibration/ComplexDataPoint.h"
#include "calibration/Records.h"
#include "channels/DeltaPacket.h"
#include "nimbrellelibrary/NimbrelleLib.h"

namespace {

template <typename Number>
Number numberAt(const QByteArray &bytes, int position)
{
    return recordFromBytes<Number>(bytes.mid(position, int(sizeof(Number))));
}

void unpackDelta(const QByteArray &packet)
{
    QByteArray words;
    unpackDeltaEncodedCompression(packet, words);
    mustHold(words.size() == 64, "a packet holds eight pairs");
    const int width = packet.size() == 50 ? 3 : packet.size() == 36 ? 2 : packet.size() == 22 ? 1 : 4;
    qint64 sums[2] = {};
    for (int word = 0; word < 16; ++word) {
        const bool isFirst = word < 2;
        const int size = isFirst ? 4 : width;
        const int position = isFirst ? 4 * word : 8 + width * (word - 2);
        qint64 value = 0;
        for (int byte = 0; byte < size; ++byte)
            value += position + byte < packet.size() ? qint64(quint8(packet.at(position + byte))) << (8 * byte) : 0;
        if (value >= qint64(1) << (8 * size - 1))
            value -= qint64(1) << (8 * size);
        sums[word % 2] += value;
        mustHold(numberAt<quint32>(words, 4 * word) == quint32(sums[word % 2]), "pairs are sums of differences");
    }
}

std::vector<float> samplesOf(const QByteArray &packet, int position, int count, bool areFloats)
{
    std::vector<float> samples;
    for (int i = 0; i < count; ++i)
        samples.push_back(areFloats ? numberAt<float>(packet, position + 4 * i)
                                    : float(numberAt<qint16>(packet, position + 2 * i)));
    return samples;
}

/// A record of the main line: its head must come out as it stands, its means as those of the samples decoded here.
void analyseMain(const QByteArray &packet)
{
    static const CalibrationData calibration = calibrated(HardwareModel_t::Alder_2_5, bytesOfRecord(roundMainRecord()));
    const ComplexDataPoint_t point =
        NimbrelleLib::AnalyzeFRA(packet, &calibration, HardwareModel_t::Alder_2_5, QString());
    constexpr int head = 29;
    const auto count = numberAt<qint32>(packet, 16);
    const auto flags = numberAt<quint8>(packet, 20);
    const bool areFloats = flags & 1;
    const qint64 body = 2 * qint64(count) * (areFloats ? 4 : 2);
    if (count < 2 || packet.size() != head + body) {
        mustHold(point.frequency == 0.0 && point.timestamp == 0.0, "a record of a wrong length gives zeros");
        return;
    }
    mustHold(point.timestamp == double(numberAt<quint64>(packet, 0)) / 1e8, "the time is the head's");
    mustHold(isSameNumber(point.frequency, double(numberAt<float>(packet, 8))), "the frequency is the head's");
    mustHold(index(point.currentRange) == numberAt<quint8>(packet, 21), "the current range is the head's");
    const bool isStraightened = !(flags & 2); // an identity on codes, which drops fractions
    if (isStraightened)
        return;
    const double sampleFrequency = double(1.0f / numberAt<float>(packet, 12));
    const int behindCurrent = head + int(body / 2);
    const auto mean = [&](int position) {
        return NimbrelleLib::MultiFrequencyFourier(samplesOf(packet, position, count, areFloats), sampleFrequency,
                                                   point.frequency, 0)[0]
                   .real() /
               2.0;
    };
    mustHold(isSameNumber(point.rawDCcurrent, mean(head)), "the first half of the samples is the current");
    mustHold(isSameNumber(point.rawDCvoltage, mean(behindCurrent)), "the second half is the voltage");
}

/// Whether so many samples are missing that the head must be damaged; working through them would take seconds.
bool lacksThousands(const Gale_AC_Header_t &head, const std::vector<int> &words)
{
    return head.samplesPerSignal > words.size() / 2 + 4096;
}

/// Batches of one to four channels of a cycler; the words may be fewer than the head claims.
void analyseGale(FuzzInput &input)
{
    static const CalibrationData calibration = calibrated(HardwareModel_t::Gale, bytesOfRecord(roundGaleRecord()));
    std::vector<Gale_AC_Header_t> heads;
    std::vector<std::vector<int>> words;
    std::vector<const CalibrationData *> calibrations;
    const bool bipolar = input.flag();
    const auto channels = std::size_t(1 + input.below(4));
    for (std::size_t i = 0; i < channels; ++i) {
        heads.push_back(input.take<Gale_AC_Header_t>());
        const QByteArray raw = input.text();
        words.emplace_back();
        for (int position = 0; position + 4 <= raw.size(); position += 4)
            words.back().push_back(numberAt<int>(raw, position));
        calibrations.push_back(&calibration);
    }
    std::vector<std::pair<int *, int>> data;
    for (std::vector<int> &batch : words)
        data.emplace_back(batch.data(), int(batch.size()));
    const auto points = NimbrelleLib::AnalyzeFRA(heads, data, calibrations, bipolar, {}, QString(), 0.0);
    const std::size_t tones = heads.front().driveMode == 2 ? 6 : 1;
    mustHold(points.empty() || points.size() == tones, "there is a point for each tone");
    mustHold(points.empty() || !lacksThousands(heads.front(), words.front()), "a batch of missing samples is none");
    mustHold(points.empty() || points.front().timestamp == double(heads.front().tick) / 8.75e7,
             "the time is the head's");
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    FuzzProcess::instance();
    FuzzInput input(data, size);
    switch (input.below(4)) {
    case 0:
        unpackDelta(input.rest());
        break;
    case 1:
        analyseMain(input.rest());
        break;
    case 2:
        analyseGale(input);
        break;
    case 3: {
        static const CalibrationData calibration =
            calibrated(HardwareModel_t::Alder_2_5, bytesOfRecord(roundMainRecord()));
        NimbrelleLib::AnalyzeFourierOnRecover(input.rest(), &calibration, HardwareModel_t::Alder_2_5, QString());
        break;
    }
    }
    return 0;
}
