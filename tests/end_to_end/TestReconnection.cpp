// SPDX-License-Identifier: MIT
#include "../simulator/Bench.h"

#include "support/TestMain.h"

#include <VekDeviceTracker.h>
#include <VekInstrumentHandler.h>

/// A host that finds an instrument at work. The instrument is in this process, so that the commands to it can be seen.
class TestReconnection : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void runOfALostHostKeepsItsLimits();
    void instrumentAtRestIsSetUp();
};

namespace {

constexpr int patienceMs = 30000;

/// The commands that come to an instrument from now on.
class Commands : public QObject
{
public:
    explicit Commands(SimulatedInstrument &instrument)
    {
        connect(&instrument.serialEnd(), &SerialEnd::received, this, [this](const QByteArray &bytes) {
            _bytes += bytes;
            quint32 skipped = 0;
            _frames += takeFrames(_bytes, skipped);
        });
    }

    int count(PCcommand_t command) const
    {
        return int(std::count_if(_frames.begin(), _frames.end(),
                                 [command](const Frame &frame) { return quint8(frame.type) == quint8(command); }));
    }
    QList<unsigned int> channelsOf(PCcommand_t command) const
    {
        QList<unsigned int> channels;
        for (const Frame &frame : _frames)
            if (quint8(frame.type) == quint8(command))
                channels += frame.channel;
        return channels;
    }

private:
    QByteArray _bytes;
    QVector<Frame> _frames;
};

/// Connects the library and waits until all that it sends at first has come.
const VekInstrumentHandler *connected(const Bench &bench, const Commands &commands)
{
    VekDeviceTracker *tracker = VekDeviceTracker::Instance();
    QSignalSpy connections(tracker, &VekDeviceTracker::newDeviceConnected);
    const auto succeeds = [&] { // again, on a machine that is too busy to answer within the handshake's second
        return tracker->connectToDeviceOnComPort(bench.instrument->portName()) == VekErrorCode::Success;
    };
    const bool isThere = QTest::qWaitFor(succeeds, patienceMs) &&
                         QTest::qWaitFor([&] { return connections.size() == 1; }, patienceMs) &&
                         QTest::qWaitFor([&] { return commands.count(PC_READ_GROUND_FLOAT) == 1; }, patienceMs);
    return isThere ? &tracker->getInstrumentHandler(QStringLiteral("Bench")) : nullptr;
}

} // namespace

void TestReconnection::runOfALostHostKeepsItsLimits()
{
    constexpr float none = std::numeric_limits<float>::infinity();
    Bench bench({}, 2, 1.0, HardwareModel_t::Heron_2_4, QStringLiteral("resistor:R=1000"));
    const auto hold = [](float amperes) { return timed(Vek_Node_Constant_Current(10.0f, amperes, 0.0f), 1e6f); };
    QCOMPARE(bench.acknowledged(PC_CHANNEL_LIMITS, packed(-none, none, -none, 1.5f, none)), int(FW_SUCCESS));
    bench.upload({hold(1e-3f), hold(2e-3f), endNode()}); // 1 V, 2 V
    QCOMPARE(bench.acknowledged(PC_EXPERIMENT_START), int(FW_SUCCESS));
    bench.host.reset();

    const Commands commands(*bench.instrument);
    const VekInstrumentHandler *host = connected(bench, commands);
    QVERIFY(host);
    QCOMPARE(commands.channelsOf(PC_CHANNEL_LIMITS), QList<unsigned int>{1}); // the one at rest
    QCOMPARE(commands.count(PC_ERASE_MEMORY_DATA), 0);
    QCOMPARE(commands.count(PC_FAN_MODE), 0);

    QSignalSpy ends(host, &VekInstrumentHandler::experimentStopped);
    Q_EMIT bench.instrument->serialEnd().received(makeFrame(quint8(PC_SKIP_STEP), 0)); // the run goes on to its 2 V
    QTRY_COMPARE_WITH_TIMEOUT(ends.size(), 1, patienceMs);
    QCOMPARE(ends.first().at(0).toInt(), 0);
    QCOMPARE(ends.first().at(1).toString(),
             QStringLiteral("Experiment stopped: voltage exceeded user specified Voltage Max safety limit"));
}

void TestReconnection::instrumentAtRestIsSetUp()
{
    Bench bench({}, 2, 1.0, HardwareModel_t::Heron_2_4);
    QCOMPARE(bench.acknowledged(PC_DEFAULT_SAMPLING), int(FW_SUCCESS));
    bench.host.reset();
    const Commands commands(*bench.instrument);
    QVERIFY(connected(bench, commands));
    QCOMPARE(commands.channelsOf(PC_CHANNEL_LIMITS), (QList<unsigned int>{0, 1}));
    QCOMPARE(commands.count(PC_ERASE_MEMORY_DATA), 0); // its word is valid, and tells of no data
    QCOMPARE(commands.count(PC_FAN_MODE), 1);
}

NIMBRELLE_TEST_MAIN(TestReconnection)
#include "TestReconnection.moc"
