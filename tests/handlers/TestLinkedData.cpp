// SPDX-License-Identifier: MIT
#include "benchmarks/reference/PlainDeltaPacket.h"
#include "channels/AcDataAverage.h"
#include "channels/DeltaPacket.h"
#include "channels/LinkedPoints.h"
#include "support/TestMain.h"

#include <cmath>
#include <cstring>
#include <random>

using Words = QVector<qint32>;
Q_DECLARE_METATYPE(Words)

namespace {

template <typename Delta>
QByteArray bytesOf(std::initializer_list<Delta> values)
{
    return QByteArray(reinterpret_cast<const char *>(values.begin()), int(values.size() * sizeof(Delta)));
}

/// A first pair of (100, -100), and seven times the same bytes behind it.
QByteArray packet(const QByteArray &pairOfDeltas)
{
    return bytesOf<qint32>({100, -100}) + pairOfDeltas.repeated(7);
}

Words wordsOf(const QByteArray &bytes)
{
    Words words(bytes.size() / int(sizeof(qint32)));
    std::memcpy(words.data(), bytes.constData(), std::size_t(bytes.size()));
    return words;
}

Words ramp(qint32 current, qint32 voltage, qint32 currentStep, qint32 voltageStep)
{
    Words words;
    for (int i = 0; i < 8; ++i)
        words << current + i * currentStep << voltage + i * voltageStep;
    return words;
}

ProcessedDCData point(double current, double volts, double coulombs)
{
    ProcessedDCData data;
    data.current = current;
    data.workingElectrodeVoltage = volts;
    data.charge = coulombs;
    return data;
}

} // namespace

/// The pure pieces of what channels measure together.
class TestLinkedData : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void unpacksDeltas_data();
    void unpacksDeltas();
    void unpacksWhatThePlainFormUnpacks();
    void joinsInParallel();
    void joinsABipolarPair();
    void averagesRecordsOfAPoint();
};

void TestLinkedData::unpacksDeltas_data()
{
    QTest::addColumn<QByteArray>("packet");
    QTest::addColumn<Words>("expected");

    QTest::newRow("one byte") << packet(QByteArray::fromHex("01ff")) << ramp(100, -100, 1, -1);
    QTest::newRow("two bytes") << packet(QByteArray::fromHex("2c01 0080")) << ramp(100, -100, 300, -32768);
    QTest::newRow("three bytes") << packet(QByteArray::fromHex("ffffff 000080")) << ramp(100, -100, -1, -8388608);
    QTest::newRow("four bytes") << packet(QByteArray::fromHex("00000001 feffffff")) << ramp(100, -100, 1 << 24, -2);
    QTest::newRow("sums wrap") << bytesOf<qint32>({0x7FFFFFFF, 0, 1, 0}) + QByteArray(48, '\0')
                               << Words{0x7FFFFFFF, 0, INT_MIN, 0, INT_MIN, 0, INT_MIN, 0,
                                        INT_MIN,    0, INT_MIN, 0, INT_MIN, 0, INT_MIN, 0};
    QTest::newRow("longer than any") << packet(QByteArray::fromHex("00000001 feffffff")) + "surplus"
                                     << ramp(100, -100, 1 << 24, -2);
    QTest::newRow("cut short") << bytesOf<qint32>({5, 6}) << ramp(5, 6, 0, 0);
    QTest::newRow("empty") << QByteArray() << ramp(0, 0, 0, 0);
}

void TestLinkedData::unpacksDeltas()
{
    QFETCH(QByteArray, packet);
    QFETCH(Words, expected);
    QByteArray batch("came before");
    unpackDeltaEncodedCompression(packet, batch);
    QVERIFY(batch.startsWith("came before"));
    QCOMPARE(batch.size(), 11 + 64);
    QCOMPARE(wordsOf(batch.mid(11)), expected);
}

void TestLinkedData::unpacksWhatThePlainFormUnpacks()
{
    std::mt19937 generator(20260106u);
    for (int size = 0; size < 80; ++size) {
        QByteArray batch;
        std::vector<std::int32_t> expected;
        for (int i = 0; i < 50; ++i) {
            std::vector<unsigned char> packet(static_cast<std::size_t>(size));
            for (unsigned char &byte : packet)
                byte = static_cast<unsigned char>(generator());
            plainDeltaPacket(packet, expected);
            const auto bytes = reinterpret_cast<const char *>(packet.data()); // without a NUL behind them
            unpackDeltaEncodedCompression(QByteArray::fromRawData(bytes, size), batch);
        }
        QCOMPARE(wordsOf(batch), Words(expected.begin(), expected.end()));
    }
}

void TestLinkedData::joinsInParallel()
{
    ProcessedDCData master = point(7.0, 7.0, 7.0);
    master.timestamp = 3.5;
    master.temperature = 25.0;
    const ProcessedDCData joined = joinPoints(
        master, {{0, point(1.0, 4.0, 10.0)}, {1, point(2.0, 2.0, 20.0)}, {5, point(-6.0, 3.0, 30.0)}}, false);
    QCOMPARE(joined.current, -3.0);
    QCOMPARE(joined.workingElectrodeVoltage, 3.0);
    QCOMPARE(joined.charge, 60.0);
    QCOMPARE(joined.timestamp, 3.5);
    QCOMPARE(joined.temperature, 25.0);
}

void TestLinkedData::joinsABipolarPair()
{
    const ProcessedDCData joined =
        joinPoints(ProcessedDCData(), {{2, point(3.0, 1.0, 8.0)}, {3, point(-1.0, 0.875, -4.0)}}, true);
    QCOMPARE(joined.current, 2.0);
    QCOMPARE(joined.workingElectrodeVoltage, 0.125);
    QCOMPARE(joined.charge, 6.0);
}

void TestLinkedData::averagesRecordsOfAPoint()
{
    std::vector<ComplexDataPoint_t> points;
    QCOMPARE(AcDataAverage(points).getDataPoint().frequency, 0.0);

    ComplexDataPoint_t first;
    first.realZ = 6.0;
    first.absZ = 6.0;
    first.frequency = 50.0;
    first.currentRange = currentRange_t(4);
    first.voltageRange = voltageRange_t(2);
    first.numPeriods = 3.0;
    first.timestamp = 1.0;
    first.dcVoltage = 0.5;
    ComplexDataPoint_t second = first;
    second.realZ = 0.0;
    second.imagZ = -6.0;
    second.frequency = 51.0;
    second.currentRange = currentRange_t(5);
    second.numPeriods = 5.0;
    second.timestamp = 2.0;
    second.dcVoltage = 1.5;
    points = {first, second};
    const ComplexDataPoint_t average = AcDataAverage(points).getDataPoint();
    QCOMPARE(average.realZ, 3.0);
    QCOMPARE(average.imagZ, -3.0);
    QCOMPARE(average.absZ, std::sqrt(18.0)); // the magnitudes' mean would be 6
    QCOMPARE(average.phaseDeg, -45.0);
    QCOMPARE(average.dcVoltage, 1.0);
    QCOMPARE(average.numPeriods, 8.0);
    QCOMPARE(average.frequency, 50.0);
    QCOMPARE(index(average.currentRange), 4);
    QCOMPARE(index(average.voltageRange), 0);
    QCOMPARE(average.timestamp, 2.0);
}

NIMBRELLE_TEST_MAIN(TestLinkedData)
#include "TestLinkedData.moc"
