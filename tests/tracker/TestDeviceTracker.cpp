// SPDX-License-Identifier: MIT
#include "VekDeviceTracker.h"

#include "VekConstantCurrentElement.h"
#include "VekExperiment.h"
#include "VekInstrumentHandler.h"
#include "handlers/MainInstrumentHandler.h"
#include "session/AdmittedInstrument.h"
#include "support/ProcessFigures.h"
#include "support/SteppedClock.h"
#include "support/TestMain.h"
#include "tracker/VekDeviceTrackerPrivate.h"

#include <functional>

namespace {

/// Outlives the application object, and the tracker's threads with it.
SteppedClock hostClock(SteppedClock::Use::AsHost);

const QString noAnswerMessage =
    "The Nimbrelle is not connecting to the selected USB port, and the initialization ping has failed. There could be "
    "multiple reasons for this issue, one of which could be that the Nimbrelle User Interface (NUI) is currently open, "
    "resulting in the COM port being occupied. If the NUI is open, please close it.";

using Request = std::function<VekErrorCode(const QString &port)>;

enum Moment { InAnnouncement, InSample, InEndOfExperiment, InUpload, InLoss };

VekExperiment oneStepExperiment()
{
    VekExperiment experiment;
    VekConstantCurrentElement element(0.001, 1.0, 10.0);
    experiment.appendElement(element, 1);
    return experiment;
}

} // namespace
Q_DECLARE_METATYPE(Request)

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
    void aLossDuringStartUpIsToldOnce();
    void aPortThatFailsBehindTheHandshakeIsTold();
    void aConnectingCallWithinAnotherIsRefused_data();
    void aConnectingCallWithinAnotherIsRefused();
    void aDeviceInStartUpIsLeftAlone();
    void aDeviceIsLetGo();
    void aDeviceMayBeLetGoAnywhere_data();
    void aDeviceMayBeLetGoAnywhere();
    void aDeviceInStartUpIsLetGo_data();
    void aDeviceInStartUpIsLetGo();
    void untouchedChannelsReachTheHandler();
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
    _instruments.back()->setClock(hostClock);
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
    poll.start(0);
    QVERIFY(connects(instrument));
    const int connected = results.size();
    QTRY_VERIFY(results.size() > connected);
    poll.stop();
    const int refusals = results.indexOf(int(VekErrorCode::ConnectionFailed)); // "already connected"
    QVERIFY(refusals > 1);
    QCOMPARE(results.count(int(VekErrorCode::ConnectionInProgress)), refusals);
    QCOMPARE(results.count(int(VekErrorCode::ConnectionFailed)), results.size() - refusals);
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

void TestDeviceTracker::aLossDuringStartUpIsToldOnce()
{
    AdmittedInstrument &instrument = plugIn("Cedar-1");
    QSignalSpy arrivals(_tracker, &VekDeviceTracker::newDeviceConnected);
    QSignalSpy losses(_tracker, &VekDeviceTracker::deviceDisconnected);
    instrument.on(PC_READ_DEVICE_STATUS, [&instrument](const FakeInstrument::Command &) { instrument.unplug(); });
    QTest::ignoreMessage(QtDebugMsg,
                         "Initial device connections failed for Cedar-1. Please restart the device and try again.");
    QCOMPARE(int(_tracker->connectToDeviceOnComPort(instrument.portName())), int(VekErrorCode::Success));
    QTRY_COMPARE(losses.size(), 1);
    QCOMPARE(losses.first().value(0).toString(), QString("Cedar-1"));
    QTRY_COMPARE(ProcessFigures::threads(), _threadsAtRest);
    QVERIFY(!losses.wait(200));
    QCOMPARE(losses.size(), 1);
    QCOMPARE(arrivals.size(), 0);
}

/// A client that quits: event loops end at once, so the handler's port is not there yet when the tracker looks.
void TestDeviceTracker::aPortThatFailsBehindTheHandshakeIsTold()
{
    struct QuittingTracker : VekDeviceTrackerPrivate {
        VekInstrumentHandlerPrivate *instrumentHandlerFactory(const InstrumentInfo &info) const override
        {
            QCoreApplication::quit();
            return VekDeviceTrackerPrivate::instrumentHandlerFactory(info);
        }
    } tracker;
    AdmittedInstrument &instrument = plugIn("Cedar-1");
    QSignalSpy losses(&tracker, &VekDeviceTrackerPrivate::deviceDisconnected);
    QTest::ignoreMessage(QtDebugMsg,
                         "Unable to initialize comport for Cedar-1. Please restart the device and try again.");
    std::optional<VekErrorCode> result;
    QTimer::singleShot(0, &tracker, [&] { result = tracker.connectToPort(instrument.portName()); });
    QCoreApplication::exec();
    QVERIFY(result);
    QCOMPARE(result->value(), VekErrorCode::ConnectionFailed);
    QVERIFY(!losses.wait(200)); // the code has told it
}

void TestDeviceTracker::aConnectingCallWithinAnotherIsRefused_data()
{
    QTest::addColumn<Request>("outer");
    QTest::addColumn<Request>("inner");
    QTest::addColumn<int>("result"); // of the outer one
    const Request connecting = [](const QString &port) {
        return VekDeviceTracker::Instance()->connectToDeviceOnComPort(port);
    };
    const Request updating = [](const QString &port) {
        return VekDeviceTracker::Instance()->updateFirmwareOnComPort(port);
    };
    QTest::newRow("two connections") << connecting << connecting << int(VekErrorCode::Success);
    QTest::newRow("an update in a connection") << connecting << updating << int(VekErrorCode::Success);
    QTest::newRow("a connection in an update") << updating << connecting << int(VekErrorCode::FirmwareUpToDate);
}

void TestDeviceTracker::aConnectingCallWithinAnotherIsRefused()
{
    QFETCH(Request, outer);
    QFETCH(Request, inner);
    AdmittedInstrument &first = plugIn("Cedar-1");
    AdmittedInstrument &second = plugIn("Cedar-2");
    const FakeInstrument::Answer answer = first.answerTo(PC_READ_CHANNEL_COUNT);
    QVector<VekErrorCode> refusals;
    first.on(PC_READ_CHANNEL_COUNT, [&](const FakeInstrument::Command &command) {
        refusals << inner(second.portName()) << inner(first.portName());
        answer(command);
    });
    QTEST(int(outer(first.portName())), "result");
    QCOMPARE(refusals.size(), 2);
    for (const VekErrorCode &refusal : qAsConst(refusals)) {
        QCOMPARE(refusal.value(), VekErrorCode::ConnectionInProgress);
        QCOMPARE(refusal.message(), QString("Another connection is being made. Please try again when it is done."));
    }
    QCOMPARE(second.commands().size(), 0);
    QCOMPARE(int(_tracker->connectToDeviceOnComPort(second.portName())), int(VekErrorCode::Success)); // now is its turn
    const std::list<QString> both = {"Cedar-1", "Cedar-2"};
    const bool isFirstConnected = QTest::currentDataTag() != QByteArray("a connection in an update");
    QTRY_COMPARE(_tracker->getConnectedDevices(), isFirstConnected ? both : std::list<QString>{"Cedar-2"});
}

void TestDeviceTracker::aDeviceInStartUpIsLeftAlone()
{
    AdmittedInstrument &instrument = plugIn("Cedar-1");
    QCOMPARE(int(_tracker->connectToDeviceOnComPort(instrument.portName())), int(VekErrorCode::Success));
    const int pings = instrument.count(PC_PING);
    QCOMPARE(int(_tracker->connectToDeviceOnComPort(instrument.portName())), int(VekErrorCode::ConnectionInProgress));
    QCOMPARE(int(_tracker->updateFirmwareOnComPort(instrument.portName())), int(VekErrorCode::FirmwareUpToDate));
    QTRY_COMPARE(_tracker->getConnectedDevices(), std::list<QString>{"Cedar-1"});
    QCOMPARE(instrument.count(PC_PING), pings + 1); // the handler's own
}

void TestDeviceTracker::aDeviceIsLetGo()
{
    QCOMPARE(int(_tracker->disconnectDevice("Cedar-1")), int(VekErrorCode::DeviceNotFound));
    AdmittedInstrument &instrument = plugIn("Cedar-1");
    const int openings = ProcessFigures::openings(instrument.portName()); // the terminal's own
    QVERIFY(connects(instrument));
    QTRY_COMPARE(instrument.count(PC_READ_GROUND_FLOAT), 1); // the last command of the start-up
    const VekInstrumentHandler &handler = _tracker->getInstrumentHandler("Cedar-1");
    QSignalSpy losses(_tracker, &VekDeviceTracker::deviceDisconnected);
    QSignalSpy ownLosses(&handler, &VekInstrumentHandler::deviceDisconnected);
    instrument.forgetCommands();

    handler.startIdleSampling(1);
    QCOMPARE(int(_tracker->disconnectDevice("Cedar-1")), int(VekErrorCode::Success));
    QCOMPARE(ProcessFigures::openings(instrument.portName()), openings);
    QVERIFY(_tracker->getConnectedDevices().empty());
    QCOMPARE(int(handler.startIdleSampling(0)), int(VekErrorCode::DeviceNotFound));
    QCOMPARE(int(_tracker->disconnectDevice("Cedar-1")), int(VekErrorCode::DeviceNotFound));
    QCOMPARE(losses.size() + ownLosses.size(), 0); // not yet: a slot of the handler may be running

    QVERIFY(connects(instrument));
    const QVector<PCcommand_t> first = {PC_DEFAULT_SAMPLING, PC_PING}; // nothing was stopped in between
    QCOMPARE(instrument.commandNames().mid(0, 2), first);
    QCOMPARE(losses.size(), 1);
    QCOMPARE(losses.first().value(0).toString(), QString("Cedar-1"));
    QCOMPARE(ownLosses.size(), 1);
    QCOMPARE(_tracker->getConnectedDevices(), std::list<QString>{"Cedar-1"});
    QCOMPARE(int(_tracker->getInstrumentHandler("Cedar-1").startIdleSampling(0)), int(VekErrorCode::Success));
}

void TestDeviceTracker::aDeviceMayBeLetGoAnywhere_data()
{
    QTest::addColumn<int>("moment");
    QTest::newRow("as it is announced") << int(InAnnouncement);
    QTest::newRow("in a slot of its sample") << int(InSample);
    QTest::newRow("in a slot of its end of experiment") << int(InEndOfExperiment);
    QTest::newRow("while it takes an upload") << int(InUpload);
    QTest::newRow("as its cable is pulled") << int(InLoss);
}

void TestDeviceTracker::aDeviceMayBeLetGoAnywhere()
{
    QFETCH(int, moment);
    AdmittedInstrument &instrument = plugIn("Cedar-1");
    QSignalSpy losses(_tracker, &VekDeviceTracker::deviceDisconnected);
    int lettingsGo = 0;
    const auto letGo = [&] {
        if (_tracker->disconnectDevice("Cedar-1") == VekErrorCode::Success)
            ++lettingsGo;
        _tracker->purgeStaleDevices();
    };
    QObject context;
    if (moment == InAnnouncement)
        connect(_tracker, &VekDeviceTracker::newDeviceConnected, &context, letGo);
    QVERIFY(connects(instrument));
    const VekInstrumentHandler &handler = _tracker->getInstrumentHandler("Cedar-1");
    QSignalSpy ends(&handler, &QObject::destroyed);
    if (moment == InSample) {
        connect(&handler, &VekInstrumentHandler::idleDCDataReady, &context, letGo);
        for (int i = 0; i < 20; ++i)
            instrument.send(NT_DC_DATA, 0, QByteArray(44, '\0'));
    } else if (moment == InEndOfExperiment) {
        connect(&handler, &VekInstrumentHandler::experimentStopped, &context, letGo);
        instrument.send(NT_EXPERIMENT_DONE, 0, QByteArray(9, '\0'));
    } else if (moment == InUpload) {
        instrument.on(PC_NODE_APPEND, [&](const FakeInstrument::Command &) { letGo(); });
        QCOMPARE(int(handler.uploadExperimentToChannel(0, oneStepExperiment())), int(VekErrorCode::UploadFailed));
    } else if (moment == InLoss) {
        connect(&handler, &VekInstrumentHandler::deviceDisconnected, &context, letGo);
        instrument.unplug();
    }
    QTRY_COMPARE(losses.size(), 1);
    QTRY_COMPARE(ProcessFigures::threads(), _threadsAtRest);
    QCOMPARE(losses.size(), 1);
    QVERIFY(moment == InLoss || lettingsGo == 1);
    QTRY_VERIFY(moment == InAnnouncement || ends.size() == 1);
}

void TestDeviceTracker::aDeviceInStartUpIsLetGo_data()
{
    QTest::addColumn<int>("holdMs");
    QTest::newRow("at once") << 0;
    QTest::newRow("when its end is on its way, by a slot that held the thread") << 200;
}

void TestDeviceTracker::aDeviceInStartUpIsLetGo()
{
    QFETCH(int, holdMs);
    AdmittedInstrument &instrument = plugIn("Cedar-1");
    QSignalSpy arrivals(_tracker, &VekDeviceTracker::newDeviceConnected);
    QSignalSpy losses(_tracker, &VekDeviceTracker::deviceDisconnected);
    QCOMPARE(int(_tracker->connectToDeviceOnComPort(instrument.portName())), int(VekErrorCode::Success));
    for (const int waitMs : {50, 100})
        hostClock.hurry(waitMs, holdMs > 0 ? INT_MAX : 0); // nobody answers meanwhile
    QThread::msleep(holdMs);
    QCOMPARE(int(_tracker->disconnectDevice("Cedar-1")), int(VekErrorCode::Success));
    QTRY_COMPARE(losses.size(), 1);
    QTRY_COMPARE(ProcessFigures::threads(), _threadsAtRest);
    QCOMPARE(losses.size(), 1);
    QCOMPARE(arrivals.size(), 0);
    for (const int waitMs : {50, 100})
        hostClock.hurry(waitMs, 0);
    QVERIFY(connects(instrument));
}

void TestDeviceTracker::untouchedChannelsReachTheHandler()
{
    struct Handler : MainInstrumentHandler {
        Handler(const InstrumentInfo &info, std::set<unsigned char> &named) : MainInstrumentHandler(info), _named(named)
        {
        }
        ~Handler() override { shutDown(); }
        void sendInitialDefaults() override
        {
            _named = _untouched;
            MainInstrumentHandler::sendInitialDefaults();
        }
        std::set<unsigned char> &_named;
    };
    struct Tracker : VekDeviceTrackerPrivate {
        VekInstrumentHandlerPrivate *instrumentHandlerFactory(const InstrumentInfo &info) const override
        {
            return new Handler(info, named);
        }
        mutable std::set<unsigned char> named;
    } tracker;
    AdmittedInstrument &instrument = plugIn("Cedar-1");
    const std::set<unsigned char> untouched = {0, 200};
    QVERIFY(tracker.connectToPort(instrument.portName(), QString(), untouched) == VekErrorCode(VekErrorCode::Success));
    QTRY_COMPARE(int(tracker.getConnectedDevices().size()), 1);
    QVERIFY(tracker.named == std::set<unsigned char>{0}); // the instrument has no channel 200
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

    AdmittedInstrument &third = plugIn("Cedar-1");
    QVERIFY(connects(third));
    QCOMPARE(int(_tracker->disconnectDevice("Cedar-1")), int(VekErrorCode::Success)); // the one that came last
    QCOMPARE(_tracker->getConnectedDevices(), std::list<QString>{"Cedar-1"});
    _tracker->getInstrumentHandler("Cedar-1").startIdleSampling(0);
    QTRY_COMPARE(second.count(PC_DEFAULT_SAMPLING), 2);
}

NIMBRELLE_TEST_MAIN(TestDeviceTracker)
#include "TestDeviceTracker.moc"
