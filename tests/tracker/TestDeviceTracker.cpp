#include "VekDeviceTracker.h"

#include "VekConstantCurrentElement.h"
#include "VekExperiment.h"
#include "VekInstrumentHandler.h"
#include "session/AdmittedInstrument.h"
#include "support/ProcessFigures.h"
#include "support/TestMain.h"

namespace {

const QString noAnswerMessage =
    "The Nimbrelle is not connecting to the selected USB port, and the initialization ping has failed. There could be "
    "multiple reasons for this issue, one of which could be that the Nimbrelle User Interface (NUI) is currently open, "
    "resulting in the COM port being occupied. If the NUI is open, please close it.";

VekExperiment oneStepExperiment()
{
    VekExperiment experiment;
    VekConstantCurrentElement element(0.001, 1.0, 10.0);
    experiment.appendElement(element, 1);
    return experiment;
}

} // namespace

/// The tracker with instruments on pseudo-terminals, whose ports it is told.
class TestDeviceTracker : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void anUnknownNameHasTheNullHandler();
    void aCopyFindsNothing();
    void aSilentPortIsExplained();
    void aDeviceIsConnectedWhenItsStartUpIsOver();
    void aConnectedPortIsRefusedHoweverItIsWritten();
    void aPortThatIsBeingQuestionedIsLeftAlone();
    void aLossIsToldOnce();
    void aLossDuringAWaitEndsTheRequest();
    void aLossDuringStartUpConnectsNothing();
    void aStaleHandlerMayBePurgedInsideItsSignal();
    void aLostDeviceCanBeConnectedAgain();
    void anotherDeviceOfTheSameNameStaysConnected();

private:
    AdmittedInstrument &plugIn(const QByteArray &name);
    bool connects(AdmittedInstrument &instrument);

    VekDeviceTracker *_tracker = nullptr;
    std::vector<std::unique_ptr<AdmittedInstrument>> _instruments;
    int _threadsAtRest = 0;
};

void TestDeviceTracker::initTestCase()
{
    _tracker = VekDeviceTracker::Instance();
    QCOMPARE(VekDeviceTracker::Instance(), _tracker);
}

void TestDeviceTracker::init()
{
    _threadsAtRest = ProcessFigures::threads();
}

void TestDeviceTracker::cleanup()
{
    _instruments.clear(); // pulls all cables
    QTRY_VERIFY(_tracker->getConnectedDevices().empty());
    _tracker->purgeStaleDevices();
    QTRY_COMPARE(ProcessFigures::threads(), _threadsAtRest); // each link thread and each handler thread has ended
}

AdmittedInstrument &TestDeviceTracker::plugIn(const QByteArray &name)
{
    _instruments.push_back(std::make_unique<AdmittedInstrument>(HardwareModel_t::Cedar_2_0, name, 2));
    return *_instruments.back();
}

bool TestDeviceTracker::connects(AdmittedInstrument &instrument)
{
    QSignalSpy arrivals(_tracker, &VekDeviceTracker::newDeviceConnected);
    return _tracker->connectToDeviceOnComPort(instrument.portName()) == VekErrorCode::Success &&
           (!arrivals.isEmpty() || arrivals.wait());
}

void TestDeviceTracker::anUnknownNameHasTheNullHandler()
{
    const VekInstrumentHandler &handler = _tracker->getInstrumentHandler("nobody");
    QCOMPARE(&handler, &_tracker->getInstrumentHandler("nobody else"));
    QCOMPARE(int(handler.startIdleSampling(0)), int(VekErrorCode::DeviceNotFound));
    QCOMPARE(int(_tracker->connectToDevice(QString())), int(VekErrorCode::DeviceNotFound));
}

void TestDeviceTracker::aCopyFindsNothing()
{
    VekDeviceTracker copy(*_tracker);
    AdmittedInstrument &instrument = plugIn("Cedar-1");
    QCOMPARE(int(copy.connectToDeviceOnComPort(instrument.portName())), int(VekErrorCode::DeviceNotFound));
    QCOMPARE(copy.connectAllPluggedInDevices(), 0);
    QVERIFY(copy.getConnectedDevices().empty());
    QCOMPARE(&copy.getInstrumentHandler("Cedar-1"), &_tracker->getInstrumentHandler("nobody"));
    copy = *_tracker;
    QVERIFY(copy.getConnectedDevices().empty());
}

void TestDeviceTracker::aSilentPortIsExplained()
{
    AdmittedInstrument &instrument = plugIn("Cedar-1");
    instrument.fallSilentOn(PC_PING);
    const VekErrorCode result = _tracker->connectToDeviceOnComPort(instrument.portName());
    QCOMPARE(int(result), int(VekErrorCode::ConnectionFailed));
    QCOMPARE(result.message(), noAnswerMessage);
}

void TestDeviceTracker::aDeviceIsConnectedWhenItsStartUpIsOver()
{
    QSignalSpy arrivals(_tracker, &VekDeviceTracker::newDeviceConnected);
    AdmittedInstrument &instrument = plugIn("Cedar-1");
    QCOMPARE(int(_tracker->connectToDeviceOnComPort(instrument.portName())), int(VekErrorCode::Success));
    QVERIFY(_tracker->getConnectedDevices().empty()); // not yet
    QCOMPARE(&_tracker->getInstrumentHandler("Cedar-1"), &_tracker->getInstrumentHandler("nobody"));
    QVERIFY(arrivals.wait());
    QCOMPARE(arrivals.takeFirst().value(0).toString(), QString("Cedar-1"));
    QVERIFY(connects(plugIn("Cedar-0")));
    QCOMPARE(_tracker->getConnectedDevices(), (std::list<QString>{"Cedar-0", "Cedar-1"}));

    const VekInstrumentHandler &handler = _tracker->getInstrumentHandler("Cedar-1");
    QCOMPARE(int(handler.startIdleSampling(1)), int(VekErrorCode::Success));
    QTRY_COMPARE(instrument.count(PC_DEFAULT_SAMPLING), 1);
}

void TestDeviceTracker::aConnectedPortIsRefusedHoweverItIsWritten()
{
    AdmittedInstrument &instrument = plugIn("Cedar-1");
    QVERIFY(connects(instrument));
    QTRY_COMPARE(instrument.count(PC_READ_GROUND_FLOAT), 1); // the last command of the start-up
    instrument.forgetCommands();
    QTemporaryDir folder;
    QVERIFY(QFile::link(instrument.portName(), folder.filePath("instrument")));
    QString withoutDev = instrument.portName();
    withoutDev.remove("/dev/");
    for (const QString &port : {instrument.portName(), withoutDev, folder.filePath("instrument")}) {
        const VekErrorCode result = _tracker->connectToDeviceOnComPort(port);
        QCOMPARE(int(result), int(VekErrorCode::ConnectionFailed));
        QCOMPARE(result.message(), QString("Nimbrelle is already connected."));
    }
    QCOMPARE(int(_tracker->updateFirmwareOnComPort(instrument.portName())), int(VekErrorCode::FirmwareUpToDate));
    _tracker->getInstrumentHandler("Cedar-1").startIdleSampling(0);
    QTRY_COMPARE(instrument.commands().size(), 1); // nothing came before it
}

void TestDeviceTracker::aPortThatIsBeingQuestionedIsLeftAlone()
{
    AdmittedInstrument &instrument = plugIn("Cedar-1");
    QVector<int> results;
    QTimer poll;
    connect(&poll, &QTimer::timeout, this,
            [&] { results << int(_tracker->connectToDeviceOnComPort(instrument.portName())); });
    poll.start(50);
    QVERIFY(connects(instrument));
    QTRY_VERIFY(results.size() > 10); // the handshake takes more than a second
    poll.stop();
    QCOMPARE(results.count(int(VekErrorCode::ConnectionFailed)), results.size());
    QCOMPARE(instrument.count(PC_ECHO_TEST), 1);
}

void TestDeviceTracker::aLossIsToldOnce()
{
    AdmittedInstrument &instrument = plugIn("Cedar-1");
    QVERIFY(connects(instrument));
    const VekInstrumentHandler &handler = _tracker->getInstrumentHandler("Cedar-1");
    QSignalSpy losses(_tracker, &VekDeviceTracker::deviceDisconnected);
    QSignalSpy ownLosses(&handler, &VekInstrumentHandler::deviceDisconnected);
    instrument.unplug();
    QVERIFY(losses.wait());
    QCOMPARE(losses.first().value(0).toString(), QString("Cedar-1"));
    QVERIFY(_tracker->getConnectedDevices().empty());
    QTRY_COMPARE(ownLosses.size(), 1);
    QCOMPARE(int(handler.startIdleSampling(0)), int(VekErrorCode::DeviceNotFound)); // valid until it is purged
    QVERIFY(!losses.wait(200));
}

void TestDeviceTracker::aLossDuringAWaitEndsTheRequest()
{
    AdmittedInstrument &instrument = plugIn("Cedar-1");
    QVERIFY(connects(instrument));
    const VekInstrumentHandler &handler = _tracker->getInstrumentHandler("Cedar-1");
    instrument.on(PC_NODE_APPEND, [&instrument](const FakeInstrument::Command &) { instrument.unplug(); });
    connect(_tracker, &VekDeviceTracker::deviceDisconnected, &instrument, [this] { _tracker->purgeStaleDevices(); });
    QCOMPARE(int(handler.uploadExperimentToChannel(0, oneStepExperiment())), int(VekErrorCode::UploadFailed));
}

void TestDeviceTracker::aLossDuringStartUpConnectsNothing()
{
    AdmittedInstrument &instrument = plugIn("Cedar-1");
    QSignalSpy arrivals(_tracker, &VekDeviceTracker::newDeviceConnected);
    instrument.on(PC_READ_DEVICE_STATUS, [&instrument](const FakeInstrument::Command &) { instrument.unplug(); });
    QTest::ignoreMessage(QtDebugMsg,
                         "Initial device connections failed for Cedar-1. Please restart the device and try again.");
    QCOMPARE(int(_tracker->connectToDeviceOnComPort(instrument.portName())), int(VekErrorCode::Success));
    QTRY_COMPARE(ProcessFigures::threads(), _threadsAtRest);
    QCOMPARE(arrivals.size(), 0);
}

void TestDeviceTracker::aStaleHandlerMayBePurgedInsideItsSignal()
{
    AdmittedInstrument &instrument = plugIn("Cedar-1");
    QVERIFY(connects(instrument));
    const VekInstrumentHandler &handler = _tracker->getInstrumentHandler("Cedar-1");
    QSignalSpy ends(&handler, &QObject::destroyed);
    connect(&handler, &VekInstrumentHandler::deviceDisconnected, this, [this] { _tracker->purgeStaleDevices(); });
    connect(_tracker, &VekDeviceTracker::deviceDisconnected, &instrument, [this] { _tracker->purgeStaleDevices(); });
    instrument.unplug();
    QTRY_COMPARE(ends.size(), 1);
}

void TestDeviceTracker::aLostDeviceCanBeConnectedAgain()
{
    AdmittedInstrument &first = plugIn("Cedar-1");
    QVERIFY(connects(first));
    const VekInstrumentHandler &stale = _tracker->getInstrumentHandler("Cedar-1");
    QSignalSpy losses(_tracker, &VekDeviceTracker::deviceDisconnected);
    first.unplug();
    QVERIFY(losses.wait());
    QVERIFY(connects(plugIn("Cedar-1")));
    const VekInstrumentHandler &fresh = _tracker->getInstrumentHandler("Cedar-1");
    QVERIFY(&stale != &fresh);
    QCOMPARE(int(stale.startIdleSampling(0)), int(VekErrorCode::DeviceNotFound));
    QCOMPARE(int(fresh.startIdleSampling(0)), int(VekErrorCode::Success));
}

void TestDeviceTracker::anotherDeviceOfTheSameNameStaysConnected()
{
    AdmittedInstrument &first = plugIn("Cedar-1");
    AdmittedInstrument &second = plugIn("Cedar-1");
    QVERIFY(connects(first));
    QVERIFY(connects(second));
    QSignalSpy losses(_tracker, &VekDeviceTracker::deviceDisconnected);
    first.unplug();
    QVERIFY(losses.wait());
    QCOMPARE(_tracker->getConnectedDevices(), std::list<QString>{"Cedar-1"});
    QCOMPARE(int(_tracker->getInstrumentHandler("Cedar-1").startIdleSampling(0)), int(VekErrorCode::Success));
    QTRY_COMPARE(second.count(PC_DEFAULT_SAMPLING), 1);
}

NIMBRELLE_TEST_MAIN(TestDeviceTracker)
#include "TestDeviceTracker.moc"
