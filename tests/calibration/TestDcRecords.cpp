// SPDX-License-Identifier: MIT
#include "benchmarks/reference/PlainDcRecord.h"
#include "calibration/Records.h"
#include "hardware_models/HardwareModel.h"
#include "hardware_models/HardwareModelFactory.h"
#include "hardware_models/ModelNames.h"
#include "support/TestMain.h"

#include <cmath>
#include <limits>
#include <random>

namespace {

/// Numbers without a pattern, the same in each run.
class Numbers
{
public:
    quint64 bits() { return _generator(); }
    /// One in six is an edge of what a number can be.
    float any()
    {
        constexpr float edges[] = {0.0f,
                                   -0.0f,
                                   1e30f,
                                   -1e-42f,
                                   std::numeric_limits<float>::infinity(),
                                   std::numeric_limits<float>::quiet_NaN()};
        return bits() % 6 == 0 ? edges[bits() % std::size(edges)] : usual();
    }
    /// Of either sign, of six decades.
    float usual() { return float(double(qint64(bits())) * std::pow(10.0, double(bits() % 6) - 22.0)); }
    /// Mostly an index that exists, of `count` that do.
    quint8 indexOf(int count) { return quint8(bits() % 16 == 0 ? bits() : bits() % quint64(count + 2)); }

private:
    std::mt19937_64 _generator{20260104u};
};

template <class Record>
Record calibrationRecord(Numbers &numbers, quint32 magic)
{
    QByteArray bytes = bytesOfRecord(magic);
    while (bytes.size() < int(sizeof(Record)))
        bytes += bytesOfRecord(numbers.usual());
    return recordFromBytes<Record>(bytes);
}

MainDcRecord_t mainSample(Numbers &numbers)
{
    MainDcRecord_t sample = {};
    sample.firstRaw = numbers.any();
    sample.rawVoltage = numbers.any();
    sample.rawCurrent = numbers.any();
    sample.secondRaw = numbers.any();
    sample.charge = double(numbers.any());
    sample.tick = numbers.bits() >> numbers.bits() % 64;
    sample.voltageRef = qint16(numbers.bits());
    sample.currentRef = qint16(numbers.bits());
    sample.temperature = quint32(numbers.bits());
    sample.currentRange = currentRange_t(numbers.indexOf(10));
    sample.voltageRange = voltageRange_t(numbers.indexOf(4));
    sample.weGain = ACgain_t(numbers.indexOf(14));
    sample.iGain = ACgain_t(numbers.indexOf(14));
    return sample;
}

GaleDcRecord_t galeSample(Numbers &numbers)
{
    GaleDcRecord_t sample = {};
    sample.tick = numbers.bits() >> numbers.bits() % 64;
    sample.rawCurrent = numbers.any();
    sample.rawVoltage = numbers.any();
    sample.temperature = numbers.bits() % 4 == 0 ? numbers.any() : float(numbers.bits() % 32500u);
    sample.counter = quint8(numbers.bits());
    sample.currentRange = currentRange_t(numbers.indexOf(8));
    sample.voltageRange = voltageRange_t(numbers.indexOf(4));
    sample.currentRef = qint16(numbers.bits());
    sample.voltageRef = qint16(numbers.bits());
    sample.charge = qint64(numbers.bits()) >> numbers.bits() % 64;
    return sample;
}

/// The bits of a number; NaNs are all the same.
quint64 bitsOf(double number)
{
    return std::isnan(number) ? ~quint64(0) : recordAt<quint64>(reinterpret_cast<const char *>(&number));
}

/// The names of the values that differ in any bit.
QStringList differences(const ProcessedDCData &one, const ProcessedDCData &other)
{
    const struct {
        const char *name;
        double one;
        double other;
    } values[] = {
        {"time", one.timestamp, other.timestamp},
        {"voltage", one.workingElectrodeVoltage, other.workingElectrodeVoltage},
        {"counter electrode", one.counterElectrodeVoltage, other.counterElectrodeVoltage},
        {"current", one.current, other.current},
        {"charge", one.charge, other.charge},
        {"temperature", one.temperature, other.temperature},
        {"counter", double(one.counter), double(other.counter)},
        {"spare", one.spare, other.spare},
        {"current range", double(index(one.currentRange)), double(index(other.currentRange))},
        {"voltage range", double(index(one.voltageRange)), double(index(other.voltageRange))},
        {"voltage gain", double(index(one.weGain)), double(index(other.weGain))},
        {"current gain", double(index(one.iGain)), double(index(other.iGain))},
    };
    QStringList names;
    for (const auto &value : values)
        if (bitsOf(value.one) != bitsOf(value.other))
            names << QLatin1String(value.name);
    return names;
}

/// What differs, over many samples, between a channel and the plain form of it.
template <class Plain, class Sample>
QStringList differences(const CalibrationData &channel, const Plain &plain, Numbers &numbers,
                        Sample (*sample)(Numbers &))
{
    QStringList names;
    for (int i = 0; i < 2000; ++i) {
        QByteArray payload = bytesOfRecord(sample(numbers));
        const QByteArray whole = payload;
        if (i % 10 ==
            0) { // a record that was cut short reads as if zeros had followed, one that is too long as its front
            const int size = int(numbers.bits() % quint64(whole.size() + 8));
            payload = whole.left(size) + QByteArray(std::max(0, size - whole.size()), '\xFF');
        }
        const QByteArray filled =
            payload.left(whole.size()) + QByteArray(std::max(0, whole.size() - payload.size()), 0);
        const ProcessedDCData expected = PlainDcRecord::values(filled.constData(), plain);
        names << differences(channel.ProcessDCDataPoint(payload), expected);
        names << differences(channel.ProcessDCDataPoint(ExperimentalDcData::fromPayload(payload)), expected);
    }
    names.removeDuplicates();
    return names;
}

} // namespace

/// Holds the conversion of samples against its plain form, bit by bit.
class TestDcRecords : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsWhatThePlainFormReads_data();
    void readsWhatThePlainFormReads();
};

void TestDcRecords::readsWhatThePlainFormReads_data()
{
    QTest::addColumn<int>("model");
    const QStringList names = ModelNames::all();
    for (int model = 0; model < names.size(); ++model)
        QTest::newRow(qPrintable(names[model])) << model;
    QTest::newRow("unknown model") << 255;
}

void TestDcRecords::readsWhatThePlainFormReads()
{
    QFETCH(int, model);
    const auto number = HardwareModel_t(model);
    const auto hardware = HardwareModelFactory::getHardwareModel(number);
    Numbers numbers;

    const auto mainRecord = calibrationRecord<cal_v4>(numbers, CalMagic::v4);
    const PlainDcRecord::Main plainMain(mainRecord, hardware->getNumHighSideRanges(), hardware->supportsTemperature());
    QCOMPARE(differences(calibrated(number, mainRecord), plainMain, numbers, &mainSample), QStringList());

    const auto galeRecord = calibrationRecord<cal_vc07>(numbers, CalMagic::vc07);
    CalibrationData cycler = calibrated(number, galeRecord);
    QCOMPARE(differences(cycler, PlainDcRecord::Gale{galeRecord, 1, 1.5625e-5}, numbers, &galeSample), QStringList());
    Gale_Cfg_t board;
    board.numCurrentRanges = 9; // one more than the record has
    board.boardId = 0x12010200;
    cycler.setGaleCfgData(board);
    QCOMPARE(differences(cycler, PlainDcRecord::Gale{galeRecord, 9, 2e-5}, numbers, &galeSample), QStringList());
}

NIMBRELLE_TEST_MAIN(TestDcRecords)
#include "TestDcRecords.moc"
