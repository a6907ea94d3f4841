// SPDX-License-Identifier: MIT
#include "HandlerBench.h"
#include "handlers/MainInstrumentHandler.h"

#include <QPointer>
#include <QThread>
#include <QTimer>

/// Handlers, their public halves and the instrument, destroyed in every order. Much of what these tests ask is asked by
/// the sanitizers.
class TestHandlerLifeCycle : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void threadEndsWithTheHandler();
    void threadEndsWithAHandlerThatDiesOnIt();
    void deletionWaitsForTheStartUp();
    void deletionInTheStartUpFromOutside();
    void publicHalfSurvivesThePrivateOne();
    void publicHalfDiesFirst();
    void publicHalfDiesInItsOwnSignal();
    void pulledCableDuringARequest();
    void startUpOfALostInstrument();
    void handlerWithoutInstrument();

private:
    using Bench = HandlerBench<MainInstrumentHandler>;
    void streamSamples(int count)
    {
        for (int i = 0; i < count; ++i)
            _bench->instrument.send(NT_DC_DATA, 0, QByteArray(44, '\0'));
    }
    /// What the tracker does with a handler whose device has gone.
    void letGo() { _bench->handler.release()->deleteLater(); }

    std::unique_ptr<Bench> _bench;
    QPointer<QThread> _thread;
};

void TestHandlerLifeCycle::init()
{
    _bench = std::make_unique<Bench>(HardwareModel_t::Birch_2_2, 2, roundMainRecord());
    _thread = _bench->handler->thread();
    QVERIFY(_thread->isRunning());
}

void TestHandlerLifeCycle::cleanup()
{
    _bench.reset();
    QTRY_VERIFY(!_thread); // it has ended, or it could not have been deleted
}

void TestHandlerLifeCycle::threadEndsWithTheHandler()
{
    streamSamples(200);
    _bench->handler.reset();
    QVERIFY(!_thread || _thread->isFinished());
}

void TestHandlerLifeCycle::threadEndsWithAHandlerThatDiesOnIt()
{
    streamSamples(200);
    letGo();
    QTRY_VERIFY(!_thread);
}

void TestHandlerLifeCycle::deletionWaitsForTheStartUp()
{
    _bench->instrument.on(PC_CHANNEL_LIMITS, {}); // so that the start-up waits
    bool isFinished = false;
    connect(_bench->handler.get(), &VekInstrumentHandlerPrivate::initialConnectionRequestFinished, this,
            [&isFinished] { isFinished = true; });
    QMetaObject::invokeMethod(_bench->handler.get(), "sendInitialDefaults", Qt::QueuedConnection);
    letGo();
    QVERIFY(_bench->clock.stepUntil([this] { return !_thread; }, {50}));
    QVERIFY(isFinished);
}

void TestHandlerLifeCycle::deletionInTheStartUpFromOutside()
{
    _bench->instrument.on(PC_CHANNEL_LIMITS, {});
    QMetaObject::invokeMethod(_bench->handler.get(), "sendInitialDefaults", Qt::QueuedConnection);
    QTRY_COMPARE(_bench->instrument.count(PC_CHANNEL_LIMITS), 1);
    _bench->handler.reset();
    QVERIFY(!_thread || _thread->isFinished());
}

void TestHandlerLifeCycle::publicHalfSurvivesThePrivateOne()
{
    _bench->handler.reset();
    QCOMPARE(_bench->device->stopExperiment(0), VekErrorCode::DeviceNotFound);
    QVERIFY(!_bench->device->isChannelBusy(0));
}

void TestHandlerLifeCycle::publicHalfDiesFirst()
{
    streamSamples(50);
    _bench->device.reset();
    QTRY_VERIFY(_bench->handler->isConnected());
    _bench->instrument.unplug();
    QTRY_VERIFY(!_bench->handler->isConnected());
}

void TestHandlerLifeCycle::publicHalfDiesInItsOwnSignal()
{
    connect(_bench->device.get(), &VekInstrumentHandler::deviceDisconnected, this, [this] { _bench->device.reset(); });
    connect(_bench->device.get(), &VekInstrumentHandler::idleDCDataReady, this,
            [this] { _bench->instrument.unplug(); });
    streamSamples(3);
    QTRY_VERIFY(!_bench->device);
}

void TestHandlerLifeCycle::pulledCableDuringARequest()
{
    _bench->instrument.on(PC_CHANNEL_LIMITS, [this](const FakeInstrument::Command &) { _bench->instrument.unplug(); });
    int losses = 0;
    // As in the tracker: the handler is let go while the request still waits in its nested loop.
    connect(_bench->handler.get(), &VekInstrumentHandlerPrivate::deviceDisconnected, this, [this] { letGo(); });
    connect(_bench->device.get(), &VekInstrumentHandler::deviceDisconnected, this, [&losses] { ++losses; });
    QCOMPARE(_bench->device->setChannelMaximumVoltage(0, 4.2), VekErrorCode::ChannelVmaxNotSet);
    QTRY_VERIFY(!_thread);
    QTRY_COMPARE(losses, 1);
    QCOMPARE(_bench->device->setChannelMaximumVoltage(0, 4.2), VekErrorCode::DeviceNotFound);
    QVERIFY(_bench->device->getFreeChannels().empty());
}

void TestHandlerLifeCycle::startUpOfALostInstrument()
{
    _bench->instrument.unplug();
    bool isConnected = true;
    connect(_bench->handler.get(), &VekInstrumentHandlerPrivate::initialConnectionRequestFinished, this,
            [&isConnected](bool connected) { isConnected = connected; });
    QMetaObject::invokeMethod(_bench->handler.get(), "sendInitialDefaults", Qt::QueuedConnection);
    QTRY_VERIFY(!isConnected);
}

void TestHandlerLifeCycle::handlerWithoutInstrument()
{
    struct NoHandler : VekInstrumentHandlerPrivate {
        void sendInitialDefaults() override {}
        void onExperimentNodeBeginning(unsigned char, const QByteArray &) override {}
        void onExperimentNodeCompleted(unsigned char, const QByteArray &) override {}
        void onExperimentDCDataReceived(unsigned char, const QByteArray &) override {}
        void onExperimentACDataReceived(unsigned char, const QByteArray &) override {}
        void onACDataInvalidated(unsigned char, const QByteArray &) override {}
    };
    NoHandler handler;
    QVERIFY(!handler.isConnected());
    QCOMPARE(handler.stopExperiment(0), VekErrorCode::InvalidChannel);
    QCOMPARE(handler.eraseRecoverDataFromDevice(), VekErrorCode::CommandNotSent);
    handler.softReset();
    handler.disconnectDevice();
    QVERIFY(handler.getFreeChannels().empty());
}

NIMBRELLE_TEST_MAIN(TestHandlerLifeCycle)
#include "TestHandlerLifeCycle.moc"
