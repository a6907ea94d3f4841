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

/// Acknowledgements: awaited, early, late, missing, and for somebody else.
class TestOperatorWaits : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup() { _operator.reset(); }

    void anAnswerIsEnoughWhateverItSays();
    void silenceEndsAfterThreeLooks();
    void anAnswerOfAnotherChannelIsNotTaken();
    void anEarlyAnswerIsFoundWithoutWaiting();
    void aLateAnswerServesTheNextRequest();

    void anUploadSendsNodeAfterNode();
    void aRefusedNodeDoesNotStopTheUpload();
    void anotherChannelsNodeEndsTheUpload();
    void aSilentInstrumentEndsTheUpload();

    void aLostLinkEndsAWaitEarly();
    void aMissingPortIsNotConnected();

private:
    std::unique_ptr<FakeInstrument> _instrument;
    std::unique_ptr<InstrumentOperator> _operator;
};

void TestOperatorWaits::init()
{
    _instrument = std::make_unique<FakeInstrument>();
    _operator = std::make_unique<InstrumentOperator>(_instrument->portName());
    QTRY_COMPARE(_instrument->count(PC_PING), 1);
    _instrument->forgetCommands();
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
    QElapsedTimer clock;
    clock.start();
    QVERIFY(!_operator->setChannelLimits(channel, -1, 1, -2, 2, 0.5));
    QVERIFY2(clock.elapsed() >= 140, qPrintable(QString::number(clock.elapsed()))); // 3 times 50 ms
    clock.restart();
    QVERIFY(!_operator->readDeviceStatus());
    QVERIFY2(clock.elapsed() >= 290, qPrintable(QString::number(clock.elapsed())));
}

void TestOperatorWaits::anAnswerOfAnotherChannelIsNotTaken()
{
    _instrument->on(PC_MANUAL_SAMPLING_PARAMS, [this](const FakeInstrument::Command &) {
        _instrument->send(NT_GENERAL_ACK, channel + 1, ackOf(PC_MANUAL_SAMPLING_PARAMS));
        _instrument->send(NT_GENERAL_ACK, channel, ackOf(PC_CHANNEL_LIMITS));
    });
    QVERIFY(!_operator->setManualSamplingParams(channel, "abcd"));
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
    QVERIFY(!_operator->setManualSamplingParams(channel, "abcd"));
    QSignalSpy acks(_operator.get(), &InstrumentOperator::acktoManualSamplingIntervalSet);
    _instrument->send(NT_GENERAL_ACK, channel, ackOf(PC_MANUAL_SAMPLING_PARAMS));
    QTRY_COMPARE(acks.size(), 1);
    QVERIFY(_operator->setManualSamplingParams(channel, "efgh"));
    QVERIFY(!_operator->setManualSamplingParams(channel, "ijkl")); // it served once
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

void TestOperatorWaits::aRefusedNodeDoesNotStopTheUpload()
{
    _instrument->reply(PC_NODE_APPEND, NT_NODE_APPENDED, QByteArray(1, char(FW_NODE_NOT_APPENDED)));
    QTest::ignoreMessage(QtDebugMsg, "  : Experiment node cannot be appended to node list.");
    QVERIFY(_operator->uploadExperimentToInstrument(channel, {nodeWith(1)}, HardwareModel_t::Alder_2_5));
    QTRY_COMPARE(_instrument->count(PC_NODE_LIST_END), 1);
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
    QElapsedTimer clock;
    clock.start();
    QVERIFY(!_operator->uploadExperimentToInstrument(channel, {nodeWith(1)}, HardwareModel_t::Alder_2_5));
    QVERIFY(clock.elapsed() >= 900);
}

void TestOperatorWaits::aLostLinkEndsAWaitEarly()
{
    QSignalSpy losses(_operator.get(), &InstrumentOperator::deviceDisconnected);
    _instrument->on(PC_NODE_APPEND, [this](const FakeInstrument::Command &) { _instrument->unplug(); });
    QElapsedTimer clock;
    clock.start();
    QVERIFY(!_operator->uploadExperimentToInstrument(channel, {nodeWith(1)}, HardwareModel_t::Alder_2_5));
    QVERIFY(!_operator->uploadExperimentToInstrument(channel, {nodeWith(1)}, HardwareModel_t::Alder_2_5));
    QVERIFY(!_operator->setChannelLimits(channel, -1, 1, -2, 2, 0.5));
    QVERIFY2(clock.elapsed() < 900, qPrintable(QString::number(clock.elapsed())));
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
