// SPDX-License-Identifier: MIT
#include "session/InstrumentOperator.h"
#include "support/FakeInstrument.h"
#include "support/TestMain.h"

namespace {

constexpr unsigned char channel = 2;

QByteArray ackOf(PCcommand_t command, FirmwareErrorCode code = FW_SUCCESS)
{
    QByteArray payload;
    payload.append(char(command)).append(char(code));
    return payload;
}

ExpNode_t nodeWith(quint16 repeats)
{
    ExpNode_t node;
    node.repeats = repeats;
    return node;
}

} // namespace

/// Acknowledgements: awaited, early, late, missing, and for somebody else. Time stands still but where a test lets it pass.
class TestOperatorWaits : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void anAnswerIsEnoughWhateverItSays();
    void silenceEndsAfterThreeLooks();
    void anAnswerEndsItsWaitAtOnce();
    void anAnswerInTheLastWaitCounts();
    void anAnswerOfAnotherChannelIsNotTaken();
    void oneAnswerServesOneOfTwoWaits();
    void anEarlyAnswerIsFoundWithoutWaiting();
    void aLateAnswerServesTheNextRequest();
    void theOldestUnclaimedAnswerGoes_data();
    void theOldestUnclaimedAnswerGoes();

    void anUploadSendsNodeAfterNode();
    void aRefusedNodeEndsTheUpload();
    void anotherChannelsNodeEndsTheUpload();
    void aSilentInstrumentEndsTheUpload();

    void aLostLinkEndsAWaitEarly();
    void aMissingPortIsNotConnected();

private:
    std::unique_ptr<SteppedClock> _clock;
    std::unique_ptr<FakeInstrument> _instrument;
    std::unique_ptr<InstrumentOperator> _operator;
};

void TestOperatorWaits::init()
{
    _clock = std::make_unique<SteppedClock>();
    _instrument = std::make_unique<FakeInstrument>();
    _operator = std::make_unique<InstrumentOperator>(_instrument->portName(), nullptr, *_clock);
    QTRY_COMPARE(_instrument->count(PC_PING), 1);
    _instrument->forgetCommands();
}

void TestOperatorWaits::cleanup()
{
    _operator.reset();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); // the link, which holds the clock
}

void TestOperatorWaits::anAnswerIsEnoughWhateverItSays()
{
    _instrument->reply(PC_CHANNEL_LIMITS, NT_GENERAL_ACK, ackOf(PC_CHANNEL_LIMITS, FW_BAD_PARAMETERS));
    QVERIFY(_operator->setChannelLimits(channel, -1, 1, -2, 2, 0.5));
    _instrument->reply(PC_READ_DEVICE_STATUS, NT_DEVICE_STATUS, QByteArray(2, '\0'));
    QVERIFY(_operator->readDeviceStatus());
}

void TestOperatorWaits::silenceEndsAfterThreeLooks()
{
    _clock->hurry(50);
    QVERIFY(!_operator->setChannelLimits(channel, -1, 1, -2, 2, 0.5));
    QCOMPARE(_clock->now(), 3 * 50);
    _clock->hurry(100);
    QVERIFY(!_operator->readDeviceStatus());
    QCOMPARE(_clock->now(), 3 * 50 + 3 * 100);
}

void TestOperatorWaits::anAnswerEndsItsWaitAtOnce()
{
    _instrument->reply(PC_CHANNEL_LIMITS, NT_GENERAL_ACK, ackOf(PC_CHANNEL_LIMITS));
    _instrument->reply(PC_MANUAL_SAMPLING_PARAMS, NT_GENERAL_ACK, ackOf(PC_MANUAL_SAMPLING_PARAMS));
    _instrument->reply(PC_READ_DEVICE_STATUS, NT_DEVICE_STATUS, QByteArray(2, '\0'));
    for (int round = 0; round < 20; ++round) {
        QVERIFY(_operator->setChannelLimits(channel, -1, 1, -2, 2, 0.5));
        QVERIFY(_operator->setManualSamplingParams(channel, "abcd"));
        QVERIFY(_operator->readDeviceStatus());
    }
}

void TestOperatorWaits::anAnswerInTheLastWaitCounts()
{
    _clock->hurry(100, 2);
    QTimer looks;
    connect(&looks, &QTimer::timeout, this, [&] {
        if (_clock->now() < 200)
            return;
        looks.stop();
        _operator->responseReceived(NT_DEVICE_STATUS, 0, QByteArray(2, '\0'));
    });
    looks.start(0);
    QVERIFY(_operator->readDeviceStatus());
    _clock->hurry(100);
    QVERIFY(!_operator->readDeviceStatus()); // nothing is left of it
}

void TestOperatorWaits::anAnswerOfAnotherChannelIsNotTaken()
{
    const auto sendOthers = [this] {
        _instrument->send(NT_GENERAL_ACK, channel, ackOf(PC_CHANNEL_LIMITS));
        _instrument->send(NT_GENERAL_ACK, channel + 1, ackOf(PC_MANUAL_SAMPLING_PARAMS));
    };
    _instrument->on(PC_MANUAL_SAMPLING_PARAMS, [=](const FakeInstrument::Command &) { sendOthers(); });
    connect(_operator.get(), &InstrumentOperator::acktoManualSamplingIntervalSet, this, [&] {
        _clock->step(25);
        sendOthers();
    });
    QVERIFY(!_operator->setManualSamplingParams(channel, "abcd"));
    QCOMPARE(_clock->now(), 3 * 50); // they neither shorten the wait nor draw it out
}

void TestOperatorWaits::oneAnswerServesOneOfTwoWaits()
{
    const auto limit = [this] { return _operator->setChannelLimits(channel, -1, 1, -2, 2, 0.5); };
    int asked = 0;
    bool innerServed = false;
    _instrument->on(PC_CHANNEL_LIMITS, [&](const FakeInstrument::Command &) {
        if (++asked == 2)
            return _instrument->send(NT_GENERAL_ACK, channel, ackOf(PC_CHANNEL_LIMITS));
        QTimer::singleShot(0, _operator.get(), [&] {
            innerServed = limit();
            _clock->hurry(50);
        });
    });
    const bool outerServed = limit();
    QCOMPARE(int(outerServed) + int(innerServed), 1);
    QCOMPARE(_clock->now(), 3 * 50); // the other one waited its time
}

void TestOperatorWaits::anEarlyAnswerIsFoundWithoutWaiting()
{
    QSignalSpy statuses(_operator.get(), &InstrumentOperator::channelstatusInformation);
    _instrument->send(NT_DEVICE_STATUS, 0, QByteArray(2, '\0'));
    QTRY_COMPARE(statuses.size(), 1);
    bool loopRan = false;
    QObject context;
    QTimer::singleShot(0, &context, [&loopRan] { loopRan = true; });
    QVERIFY(_operator->readDeviceStatus());
    QVERIFY(!loopRan);
}

void TestOperatorWaits::aLateAnswerServesTheNextRequest()
{
    _clock->hurry(50);
    QVERIFY(!_operator->setManualSamplingParams(channel, "abcd"));
    QSignalSpy acks(_operator.get(), &InstrumentOperator::acktoManualSamplingIntervalSet);
    _instrument->send(NT_GENERAL_ACK, channel, ackOf(PC_MANUAL_SAMPLING_PARAMS));
    QTRY_COMPARE(acks.size(), 1);
    QVERIFY(_operator->setManualSamplingParams(channel, "efgh"));
    QVERIFY(!_operator->setManualSamplingParams(channel, "ijkl")); // it served once
}

void TestOperatorWaits::theOldestUnclaimedAnswerGoes_data()
{
    QTest::addColumn<int>("laterAnswers");
    QTest::addColumn<bool>("isKept");
    QTest::newRow("room for all") << 999 << true;
    QTest::newRow("one too many") << 1000 << false;
}

/// An instrument may acknowledge for months what nobody awaits.
void TestOperatorWaits::theOldestUnclaimedAnswerGoes()
{
    QFETCH(int, laterAnswers);
    QFETCH(bool, isKept);
    _clock->hurry(50);
    _operator->filterGeneralAck(channel, ackOf(PC_CHANNEL_LIMITS));
    for (int i = 0; i < laterAnswers; ++i)
        _operator->filterGeneralAck(channel + 1, ackOf(PC_CHANNEL_LIMITS));
    QCOMPARE(_operator->setChannelLimits(channel, -1, 1, -2, 2, 0.5), isKept);
    QVERIFY(_operator->setChannelLimits(channel + 1, -1, 1, -2, 2, 0.5));
}

void TestOperatorWaits::anUploadSendsNodeAfterNode()
{
    _instrument->reply(PC_NODE_APPEND, NT_NODE_APPENDED, QByteArray(1, char(FW_SUCCESS)));
    QVERIFY(_operator->uploadExperimentToInstrument(channel, {nodeWith(0x1122), nodeWith(0x3344)},
                                                    HardwareModel_t::Alder_2_5));
    QTRY_COMPARE(_instrument->commandNames(),
                 (QVector<PCcommand_t>{PC_PING, PC_NODE_LIST_BEGIN, PC_NODE_APPEND, PC_NODE_APPEND, PC_NODE_LIST_END}));
    const auto &commands = _instrument->commands();
    QCOMPARE(commands[1].payload, QByteArray::fromHex("0200"));
    QCOMPARE(commands[2].payload.size(), 64);
    QCOMPARE(commands[2].payload.mid(4, 2), QByteArray::fromHex("2211")); // the repeats
    QCOMPARE(commands[3].payload.mid(4, 2), QByteArray::fromHex("4433"));
    for (int i = 1; i < commands.size(); ++i)
        QCOMPARE(commands[i].channel, channel);
}

void TestOperatorWaits::aRefusedNodeEndsTheUpload()
{
    _instrument->on(PC_NODE_APPEND, [this](const FakeInstrument::Command &) {
        const bool isFirst = _instrument->count(PC_NODE_APPEND) == 1;
        _instrument->send(NT_NODE_APPENDED, channel, QByteArray(1, char(isFirst ? FW_SUCCESS : FW_NODE_NOT_APPENDED)));
    });
    QTest::ignoreMessage(QtDebugMsg, "  : Experiment node cannot be appended to node list.");
    QVERIFY(!_operator->uploadExperimentToInstrument(channel, {nodeWith(1), nodeWith(2), nodeWith(3)},
                                                     HardwareModel_t::Alder_2_5));
    _operator->softReset(channel); // whatever the upload had sent would arrive before it
    QTRY_COMPARE(_instrument->count(PC_SOFT_RESET), 1);
    QCOMPARE(_instrument->count(PC_NODE_APPEND), 2);
    QCOMPARE(_instrument->count(PC_NODE_LIST_END), 0);
}

void TestOperatorWaits::anotherChannelsNodeEndsTheUpload()
{
    _instrument->on(PC_NODE_APPEND, [this](const FakeInstrument::Command &) {
        _instrument->send(NT_NODE_APPENDED, channel + 1, QByteArray(1, '\0'));
        _instrument->send(NT_NODE_APPENDED, channel, QByteArray(1, '\0')); // too late: the first decides
    });
    QVERIFY(!_operator->uploadExperimentToInstrument(channel, {nodeWith(1), nodeWith(2)}, HardwareModel_t::Alder_2_5));
    _operator->softReset(channel); // whatever the upload had sent would arrive before it
    QTRY_COMPARE(_instrument->count(PC_SOFT_RESET), 1);
    QCOMPARE(_instrument->count(PC_NODE_APPEND), 1);
    QCOMPARE(_instrument->count(PC_NODE_LIST_END), 0);
}

void TestOperatorWaits::aSilentInstrumentEndsTheUpload()
{
    _instrument->on(PC_NODE_APPEND, [this](const FakeInstrument::Command &) { _clock->step(1000); });
    QVERIFY(!_operator->uploadExperimentToInstrument(channel, {nodeWith(1)}, HardwareModel_t::Alder_2_5));
    QCOMPARE(_clock->now(), 1000); // nothing is on its way
}

void TestOperatorWaits::aLostLinkEndsAWaitEarly()
{
    QSignalSpy losses(_operator.get(), &InstrumentOperator::deviceDisconnected);
    _instrument->on(PC_NODE_APPEND, [this](const FakeInstrument::Command &) { _instrument->unplug(); });
    QVERIFY(!_operator->uploadExperimentToInstrument(channel, {nodeWith(1)}, HardwareModel_t::Alder_2_5));
    QVERIFY(!_operator->uploadExperimentToInstrument(channel, {nodeWith(1)}, HardwareModel_t::Alder_2_5));
    QVERIFY(!_operator->setChannelLimits(channel, -1, 1, -2, 2, 0.5));
    QVERIFY(!_operator->isConnected());
    QCOMPARE(losses.size(), 1);
}

void TestOperatorWaits::aMissingPortIsNotConnected()
{
    InstrumentOperator lonely("/dev/pts/no-such-port");
    QTRY_VERIFY(!lonely.isConnected());
    QVERIFY(!lonely.setChannelLimits(channel, -1, 1, -2, 2, 0.5));
}

NIMBRELLE_TEST_MAIN(TestOperatorWaits)
#include "TestOperatorWaits.moc"
