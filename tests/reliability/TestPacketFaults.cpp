// SPDX-License-Identifier: MIT
#include "handlers/HandlerBench.h"
#include "handlers/MainInstrumentHandler.h"
#include "support/TestMain.h"

/// Bytes that no instrument should send, between samples that one does: the samples arrive, and nothing else happens.
class TestPacketFaults : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void samplesSurvive_data();
    void samplesSurvive();
};

namespace {

constexpr int recordSize = 44;
constexpr int channelCount = 2;

QByteArray sample(int channel = 0)
{
    return makeFrame(NT_DC_DATA, quint8(channel), QByteArray(recordSize, '\0'));
}

QByteArray recordsOfEverySize()
{
    QByteArray stream;
    for (int size = 0; size < 100; ++size)
        stream += makeFrame(NT_DC_DATA, 0, QByteArray(size, '\x7f')) + sample();
    return stream;
}

QByteArray everyType(const QByteArray &payload)
{
    QByteArray stream;
    for (int type = 0; type < 256; ++type) {
        if (type != NT_DC_DATA && type != NT_DC_DATA_92 && type != NT_DC_DATA_102)
            stream += makeFrame(quint8(type), 0, payload);
        stream += sample();
    }
    return stream;
}

QByteArray everyChannel()
{
    QByteArray stream;
    for (int channel = 0; channel < 256; ++channel)
        stream += sample(channel);
    return stream;
}

} // namespace

void TestPacketFaults::samplesSurvive_data()
{
    QTest::addColumn<QByteArray>("stream");
    QTest::addColumn<int>("samples");
    const QByteArray header = QByteArray::fromHex("eeff");
    QTest::newRow("garbage between frames") << (sample() + "\xee\xee\x01\xff garbage\xee").repeated(100) << 100;
    // The cut one fills up with 30 bytes of the next, whose rest is skipped: nothing on the line tells.
    QTest::newRow("a frame cut short") << sample() + sample().left(20) + sample() + sample().repeated(3) << 5;
    QTest::newRow("records of every size") << recordsOfEverySize() << 101; // one of the odd ones is right
    QTest::newRow("every channel") << everyChannel() << channelCount;
    QTest::newRow("every type, without payload") << everyType(QByteArray()) << 256;
    QTest::newRow("every type, one byte") << everyType(QByteArray(1, '\xff')) << 256;
    QTest::newRow("every type, zeros") << everyType(QByteArray(300, '\0')) << 256;
    // A magic in garbage promises 65,535 bytes and takes them: 1,310 records of 50 bytes on the line and 35 bytes of
    // the next one, whose rest is skipped. Of 3,000 records 1,689 are left.
    QTest::newRow("a false magic") << header + "\x01\x01\xff\xff" + sample().repeated(3000) << 1689;
}

void TestPacketFaults::samplesSurvive()
{
    QFETCH(QByteArray, stream);
    QFETCH(int, samples);
    HandlerBench<MainInstrumentHandler> bench(HardwareModel_t::Birch_2_2, channelCount, roundMainRecord());
    QSignalSpy arrivals(bench.device.get(), &VekInstrumentHandler::idleDCDataReady);
    QSignalSpy losses(bench.device.get(), &VekInstrumentHandler::deviceDisconnected);
    bench.instrument.sendRaw(stream);
    QTRY_COMPARE_WITH_TIMEOUT(arrivals.size(), samples, 20000);
    QVERIFY(bench.settle());
    QCOMPARE(arrivals.size(), samples);
    QCOMPARE(losses.size(), 0);
    QCOMPARE(bench.device->setChannelMaximumVoltage(0, 4.2), VekErrorCode(VekErrorCode::Success));
}

NIMBRELLE_TEST_MAIN(TestPacketFaults)
#include "TestPacketFaults.moc"
