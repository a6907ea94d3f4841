// SPDX-License-Identifier: MIT
#include "HandlerBench.h"
#include "ListExperiment.h"
#include "handlers/GaleInstrumentHandler.h"

#include <QtMath>

namespace {

constexpr quint32 samplesPerBatch = 88; // eleven packets of eight pairs, five periods and a half
constexpr quint64 ticksPerSecond = 87'500'000;

/// The round record, with AC readings as true as the DC ones.
cal_vc07 acRecord()
{
    cal_vc07 record = roundGaleRecord();
    record.acIMag[0][0] = 1.0f;
    record.acVMag[0][0] = 1.0f;
    return record;
}

QByteArray header(double seconds, quint32 samples, quint16 driveMode = 0)
{
    Gale_AC_Header_t head = {};
    head.tick = quint64(seconds * double(ticksPerSecond));
    head.samplesPerSignal = samples;
    head.frequency = 64.0f;
    head.sampleFrequency = 1024.0f;
    head.driveMode = driveMode;
    head.nSum = 1;
    return bytesOfRecord(head);
}

/// A batch of packets with whole differences: a sine of 2^20 A and 2^20 V in phase, that is one ohm.
QVector<QByteArray> packets()
{
    QVector<QByteArray> packets;
    qint32 lastCurrent = 0;
    qint32 lastVoltage = 0;
    for (quint32 i = 0; i < samplesPerBatch; ++i) {
        const double sine = (1 << 20) * qSin(2.0 * M_PI * i / 16.0);
        const qint32 current = qRound(2.0 * sine);
        const qint32 voltage = qRound(4.0 * sine);
        if (i % 8 == 0)
            packets << wire(current, voltage);
        else
            packets.last() += wire(current - lastCurrent, voltage - lastVoltage);
        lastCurrent = current;
        lastVoltage = voltage;
    }
    return packets;
}

} // namespace

class TestGaleAcBatches : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup() { _bench.reset(); }

    void headerTellsTheNumberOfPackets_data();
    void headerTellsTheNumberOfPackets();
    void analysesACompleteBatch();
    void headerDropsAnIncompleteBatch();
    void nodeDropsAnIncompleteBatchWithItsHeader();
    void multiToneGivesSixPoints();
    void groupWaitsForAllItsMembers_data();
    void groupWaitsForAllItsMembers();
    void pauseOfTheLastMemberHoldsThePointBack();
    void memberWithFewerPacketsIsNotReadBehindItsEnd();

private:
    void run(const std::vector<unsigned char> &channels, bool bipolar);
    void sendBatch(unsigned char channel, quint16 driveMode = 0)
    {
        _bench->instrument.send(NT_AC_DATA_INVALID, channel, header(12.5, samplesPerBatch, driveMode));
        for (const QByteArray &packet : packets())
            _bench->instrument.send(NT_AC_DATA, channel, packet);
    }

    std::unique_ptr<HandlerBench<GaleInstrumentHandler>> _bench;
    std::unique_ptr<QSignalSpy> _points;
};

void TestGaleAcBatches::init()
{
    _bench = std::make_unique<HandlerBench<GaleInstrumentHandler>>(HardwareModel_t::Gale, 4, acRecord());
    _points = std::make_unique<QSignalSpy>(_bench->device.get(), &VekInstrumentHandler::activeACDataReady);
}

/// Starts an experiment on the last of the channels; its data begin at 10 s.
void TestGaleAcBatches::run(const std::vector<unsigned char> &channels, bool bipolar)
{
    const VekInstrumentHandler &device = *_bench->device;
    QVERIFY((bipolar ? device.setBipolarLinkedChannels(channels) : device.setLinkedChannels(channels)) >= 0);
    const auto experiment = std::make_shared<ListExperiment>(
        ListExperiment{makeNode(int(NodeType_t::EisCurrent), QStringLiteral("Galvanostatic EIS"), 1)});
    QCOMPARE(_bench->handler->uploadExperimentToChannel(channels.back(), experiment), VekErrorCode::Success);
    QCOMPARE(_bench->handler->startUploadedExperiment(channels.back()), VekErrorCode::Success);
    _bench->instrument.send(NT_DATA_BEGIN, channels.back(), wire(10 * ticksPerSecond));
    for (const unsigned char channel : channels)
        _bench->instrument.send(NT_NODE_BEGIN, channel, wire(quint64(0), quint16(0)));
}

void TestGaleAcBatches::headerTellsTheNumberOfPackets_data()
{
    QTest::addColumn<quint32>("samples");
    QTest::addColumn<int>("packets");

    QTest::newRow("10") << 10u << 2;
    QTest::newRow("16") << 16u << 2;
    QTest::newRow("17") << 17u << 3;
    QTest::newRow("none") << 0u << 0;
    QTest::newRow("as many as can be") << 0xFFFFFFFFu << 0x20000000;
}

void TestGaleAcBatches::headerTellsTheNumberOfPackets()
{
    QFETCH(quint32, samples);
    QFETCH(int, packets);
    _bench->instrument.send(NT_AC_DATA_INVALID, 1, header(1.0, samples));
    QVERIFY(_bench->settle());
    const ChannelHandler &channel = *_bench->handler->getChannelHandlers().at(1);
    QCOMPARE(channel.ac.packetsTotal, packets);
    QCOMPARE(channel.ac.packetsRemaining, packets);
}

void TestGaleAcBatches::analysesACompleteBatch()
{
    run({1}, false);
    sendBatch(1);
    sendBatch(1);
    QVERIFY(_bench->settle());
    QCOMPARE(_points->size(), 2);
    const auto point = _points->at(0).at(1).value<VekACData>();
    QCOMPARE(_points->at(0).at(0).toInt(), 1);
    QCOMPARE(point.timestamp, 2.5);
    QCOMPARE(point.frequency, 64.0);
    QVERIFY(qAbs(point.absoluteImpedance - 1.0) < 1e-4);
    QVERIFY(qAbs(point.phaseAngle) < 1e-2);
    QCOMPARE(point.numberOfCycles, 5.0);
}

void TestGaleAcBatches::headerDropsAnIncompleteBatch()
{
    run({1}, false);
    _bench->instrument.send(NT_AC_DATA_INVALID, 1, header(12.0, samplesPerBatch));
    for (const QByteArray &packet : packets().mid(3))
        _bench->instrument.send(NT_AC_DATA, 1, packet);
    QVERIFY(_bench->settle());
    QVERIFY(_points->isEmpty());
    sendBatch(1);
    QVERIFY(_bench->settle());
    QCOMPARE(_points->size(), 1);
    QVERIFY(qAbs(_points->at(0).at(1).value<VekACData>().absoluteImpedance - 1.0) < 1e-4);
}

void TestGaleAcBatches::nodeDropsAnIncompleteBatchWithItsHeader()
{
    run({1}, false);
    _bench->instrument.send(NT_AC_DATA_INVALID, 1, header(12.0, samplesPerBatch));
    for (const QByteArray &packet : packets().mid(3))
        _bench->instrument.send(NT_AC_DATA, 1, packet);
    _bench->instrument.send(NT_NODE_BEGIN, 1, wire(quint64(0), quint16(0)));
    for (const QByteArray &packet : packets().mid(1)) // as many as a node awaits before its first header
        _bench->instrument.send(NT_AC_DATA, 1, packet);
    QVERIFY(_bench->settle());
    QVERIFY2(_points->isEmpty(), "packets without a header belong to no frequency");
    sendBatch(1);
    QVERIFY(_bench->settle());
    QCOMPARE(_points->size(), 1);
}

void TestGaleAcBatches::multiToneGivesSixPoints()
{
    run({1}, false);
    sendBatch(1, 2);
    QVERIFY(_bench->settle());
    QVector<double> frequencies;
    for (const QVariantList &arguments : qAsConst(*_points))
        frequencies << arguments[1].value<VekACData>().frequency;
    QCOMPARE(frequencies, (QVector<double>{128.0, 192.0, 256.0, 320.0, 384.0, 512.0}));
}

void TestGaleAcBatches::groupWaitsForAllItsMembers_data()
{
    QTest::addColumn<bool>("bipolar");
    QTest::addColumn<double>("ohms");

    QTest::newRow("parallel: currents add up") << false << 0.5;
    QTest::newRow("pair: voltages add up") << true << 2.0;
}

void TestGaleAcBatches::groupWaitsForAllItsMembers()
{
    QFETCH(bool, bipolar);
    QFETCH(double, ohms);
    run({2, 3}, bipolar);
    sendBatch(3);
    QVERIFY(_bench->settle());
    QVERIFY(_points->isEmpty());
    sendBatch(2);
    QVERIFY(_bench->settle());
    QCOMPARE(_points->size(), 1);
    QCOMPARE(_points->at(0).at(0).toInt(), 3); // the master
    QCOMPARE(_points->at(0).at(1).value<VekACData>().timestamp, 2.5);
    QVERIFY(qAbs(_points->at(0).at(1).value<VekACData>().absoluteImpedance - ohms) < 1e-4);
}

void TestGaleAcBatches::pauseOfTheLastMemberHoldsThePointBack()
{
    run({2, 3}, false);
    _bench->instrument.send(NT_EXPERIMENT_PAUSED, 2);
    sendBatch(3);
    sendBatch(2);
    QVERIFY(_bench->settle());
    QVERIFY(_points->isEmpty());
    sendBatch(2);
    _bench->instrument.send(NT_AC_DATA_INVALID, 3, header(12.5, samplesPerBatch));
    for (const QByteArray &packet : packets())
        _bench->instrument.send(NT_AC_DATA, 3, packet);
    QVERIFY(_bench->settle());
    QCOMPARE(_points->size(), 1); // it is the channel that completes the batch whose pause counts
}

void TestGaleAcBatches::memberWithFewerPacketsIsNotReadBehindItsEnd()
{
    run({2, 3}, false);
    _bench->instrument.send(NT_AC_DATA_INVALID, 2, header(12.5, samplesPerBatch)); // eleven, of which eight come
    for (const QByteArray &packet : packets().mid(3))
        _bench->instrument.send(NT_AC_DATA, 2, packet);
    _bench->instrument.send(NT_AC_DATA_INVALID, 3, header(12.5, samplesPerBatch - 24)); // eight, of which eleven come
    for (const QByteArray &packet : packets())
        _bench->instrument.send(NT_AC_DATA, 3, packet);
    QVERIFY(_bench->settle());
    QCOMPARE(_points->size(), 1); // the sum of what was awaited came to nothing
}

NIMBRELLE_TEST_MAIN(TestGaleAcBatches)
#include "TestGaleAcBatches.moc"
