// SPDX-License-Identifier: MIT
#include "VekConstantCurrentElement.h"
#include "VekDeviceTracker.h"
#include "VekExperiment.h"
#include "VekInstrumentHandler.h"
#include "session/AdmittedInstrument.h"
#include "session/InitialInformation.h"
#include "support/ProcessFigures.h"
#include "support/TestMain.h"
#include "tracker/VekDeviceTrackerPrivate.h"

namespace {

/// Outlives the application object, and the tracker's threads with it.
SteppedClock hostClock(SteppedClock::Use::AsHost);

using Instruments = std::vector<std::unique_ptr<AdmittedInstrument>>;

/// What the process holds of the system.
struct Holdings {
    int threads = ProcessFigures::threads();
    int files = ProcessFigures::openFiles();
    qint64 heapBytes = ProcessFigures::heapBytes();
    double megabytes = ProcessFigures::residentMegabytes();
};

constexpr int atOnce = 40;

int connectCount()
{
    bool isGiven = false;
    const int count = qEnvironmentVariableIntValue("NIMBRELLE_CONNECTS", &isGiven);
    return isGiven ? count : 5 * atOnce;
}

VekExperiment oneStepExperiment()
{
    VekExperiment experiment;
    VekConstantCurrentElement element(0.001, 1.0, 10.0);
    experiment.appendElement(element, 1);
    return experiment;
}

} // namespace

/**
 * Instruments that come and go, and go in the middle of something: whatever was taken is given back.
 *
 * 200 of them come and go; NIMBRELLE_CONNECTS in the environment makes it more.
 */
class TestLifeCycle : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void comingsAndGoingsLeaveNothing();
    void lossAtEachStage_data();
    void lossAtEachStage();
    void lossInASampleSlot();

private:
    void connectAndLose(int count);
    int threadsInUse() const { return ProcessFigures::threads() - _atRest.threads; }

    VekDeviceTracker *_tracker = VekDeviceTracker::Instance();
    VekDeviceTrackerPrivate _keeper; // what stands behind a tracker
    Holdings _atRest;
};

void TestLifeCycle::init()
{
    _atRest = Holdings();
}

void TestLifeCycle::connectAndLose(int count)
{
    Instruments instruments;
    for (int i = 0; i < count; ++i)
        instruments.push_back(
            std::make_unique<AdmittedInstrument>(HardwareModel_t::Cedar_2_0, "Cedar-" + QByteArray::number(i), 2));
    for (const auto &instrument : instruments) {
        instrument->setClock(hostClock);
        InstrumentInfo info;
        QCOMPARE(InitialInformation::getBasicInfoSuccessfully(instrument->portName(), info).message(),
                 QString("Success"));
        QVERIFY(_keeper.connectToDeviceWithInfo(info));
    }
    QTRY_COMPARE_WITH_TIMEOUT(int(_keeper.getConnectedDevices().size()), count, 30000);
    for (int i = 0; i < count; ++i) { // each is used, and every second one let go
        const QString name = "Cedar-" + QString::number(i);
        QCOMPARE(_keeper.getDeviceReference(name).startIdleSampling(0), VekErrorCode(VekErrorCode::Success));
        if (i % 2 == 1)
            QCOMPARE(_keeper.disconnectDevice(name), VekErrorCode(VekErrorCode::Success));
    }
    instruments.clear(); // pulls all cables
    QTRY_VERIFY_WITH_TIMEOUT(_keeper.getConnectedDevices().empty(), 30000);
    _keeper.purgeStaleDevices();
    QTRY_COMPARE_WITH_TIMEOUT(threadsInUse(), 0, 30000);
}

void TestLifeCycle::comingsAndGoingsLeaveNothing()
{
    connectAndLose(atOnce); // once, so that what is made on first use is there
    const Holdings before;
    const int rounds = connectCount() / atOnce;
    for (int round = 0; round < rounds && !QTest::currentTestFailed(); ++round)
        connectAndLose(atOnce);
    if (QTest::currentTestFailed())
        return;
    const Holdings after;
    qInfo("%d connections: %+d threads, %+d files, %+lld bytes of heap, %+.1f MB resident", rounds * atOnce,
          after.threads - before.threads, after.files - before.files, after.heapBytes - before.heapBytes,
          after.megabytes - before.megabytes);
    QCOMPARE(after.threads, before.threads);
    QCOMPARE(after.files, before.files);
    // Free memory that the heap's own caches hold counts as in use and wanders by 100 KB up and down. A thousand
    // connections therefore show what 130 bytes each would leave; the leak sanitizer sees the rest.
    QVERIFY(after.heapBytes - before.heapBytes < 128 * 1024);
    QVERIFY(after.megabytes - before.megabytes < 8.0);
}

void TestLifeCycle::lossAtEachStage_data()
{
    constexpr int none = -1;
    QTest::addColumn<int>("command");
    QTest::addColumn<int>("connection"); // result of the connection, of the upload, of the start
    QTest::addColumn<int>("upload");
    QTest::addColumn<int>("start");
    const auto row = [](const char *name, PCcommand_t command, int connection, int upload, int start) {
        QTest::newRow(name) << int(command) << connection << upload << start;
    };
    row("ping", PC_PING, 1, none, none);
    row("echo test", PC_ECHO_TEST, 1, none, none);
    row("hardware record", PC_READ_HARDWARE_VERSION, 1, none, none);
    row("channel count", PC_READ_CHANNEL_COUNT, 1, none, none);
    row("checksum", PC_READ_FIRMWARE_CHECKSUM, 2, none, none); // one that did not come does not match
    row("firmware version", PC_READ_FIRMWARE_VERSION, 1, none, none);
    row("calibration", PC_READ_FLASH_CAL, 1, none, none);
    row("status", PC_READ_DEVICE_STATUS, 0, none, none); // the handshake was over
    row("limits", PC_CHANNEL_LIMITS, 0, none, none);
    row("end of the start-up", PC_READ_GROUND_FLOAT, 0, none, none);
    row("begin of the upload", PC_NODE_LIST_BEGIN, 0, 106, none);
    row("node", PC_NODE_APPEND, 0, 106, none);
    row("end of the upload", PC_NODE_LIST_END, 0, 0, none);
    row("start", PC_EXPERIMENT_START, 0, 0, 0);
    row("stop", PC_EXPERIMENT_STOP, 0, 0, 0);
}

/// The client holds on to the handler and lets all stale ones go as soon as it hears of the loss.
void TestLifeCycle::lossAtEachStage()
{
    QFETCH(int, command);
    QFETCH(int, connection);
    QFETCH(int, upload);
    QFETCH(int, start);
    AdmittedInstrument instrument(HardwareModel_t::Cedar_2_0, "Cedar-1", 2);
    instrument.setClock(hostClock);
    instrument.reply(PC_NODE_APPEND, NT_NODE_APPENDED, QByteArray(1, '\0'));
    instrument.on(PCcommand_t(command), [&instrument](const FakeInstrument::Command &) { instrument.unplug(); });
    QSignalSpy arrivals(_tracker, &VekDeviceTracker::newDeviceConnected);
    QSignalSpy losses(_tracker, &VekDeviceTracker::deviceDisconnected);
    connect(_tracker, &VekDeviceTracker::deviceDisconnected, &instrument, [this] { _tracker->purgeStaleDevices(); });

    QCOMPARE(int(_tracker->connectToDeviceOnComPort(instrument.portName())), connection);
    if (upload >= 0) {
        QTRY_COMPARE(arrivals.size(), 1);
        const VekInstrumentHandler &handler = _tracker->getInstrumentHandler("Cedar-1");
        QCOMPARE(int(handler.uploadExperimentToChannel(0, oneStepExperiment())), upload);
        if (start >= 0) {
            QCOMPARE(int(handler.startUploadedExperiment(0)), start);
            handler.stopExperiment(0);
        }
    }
    QTRY_COMPARE(losses.size(), connection == 0 ? 1 : 0);
    QTRY_COMPARE(threadsInUse(), 0);
    QTRY_COMPARE(ProcessFigures::openFiles(), _atRest.files);
    QCOMPARE(losses.size(), connection == 0 ? 1 : 0);
    QVERIFY(arrivals.size() <= losses.size());
    QVERIFY(_tracker->getConnectedDevices().empty());
}

void TestLifeCycle::lossInASampleSlot()
{
    AdmittedInstrument instrument(HardwareModel_t::Cedar_2_0, "Cedar-1", 2);
    instrument.setClock(hostClock);
    QSignalSpy arrivals(_tracker, &VekDeviceTracker::newDeviceConnected);
    QSignalSpy losses(_tracker, &VekDeviceTracker::deviceDisconnected);
    QCOMPARE(int(_tracker->connectToDeviceOnComPort(instrument.portName())), 0);
    QTRY_COMPARE(arrivals.size(), 1);
    const VekInstrumentHandler &handler = _tracker->getInstrumentHandler("Cedar-1");
    int samples = 0;
    connect(&handler, &VekInstrumentHandler::idleDCDataReady, &instrument, [&] {
        if (++samples > 1)
            return;
        instrument.unplug();
        QTRY_COMPARE(losses.size(), 1); // runs the event loop while the handler emits
        _tracker->purgeStaleDevices();
    });
    for (int i = 0; i < 3; ++i)
        instrument.send(NT_DC_DATA, 0, QByteArray(44, '\0'));
    QTRY_COMPARE(losses.size(), 1);
    QTRY_COMPARE(threadsInUse(), 0);
    QVERIFY(samples >= 1);
}

NIMBRELLE_TEST_MAIN(TestLifeCycle)
#include "TestLifeCycle.moc"
