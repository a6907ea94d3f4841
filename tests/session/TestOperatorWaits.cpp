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

void TestOperatorWaits::anAnswerEndsItsWaitAtOnce()
{
    _instrument->reply(PC_CHANNEL_LIMITS, NT_GENERAL_ACK, ackOf(PC_CHANNEL_LIMITS));
    _instrument->reply(PC_MANUAL_SAMPLING_PARAMS, NT_GENERAL_ACK, ackOf(PC_MANUAL_SAMPLING_PARAMS));
    _instrument->reply(PC_READ_DEVICE_STATUS, NT_DEVICE_STATUS, QByteArray(2, '\0'));
    constexpr int rounds = 20;
    QElapsedTimer clock;
    clock.start();
    for (int round = 0; round < rounds; ++round) {
        QVERIFY(_operator->setChannelLimits(channel, -1, 1, -2, 2, 0.5));
        QVERIFY(_operator->setManualSamplingParams(channel, "abcd"));
        QVERIFY(_operator->readDeviceStatus());
    }
    // One look at the end of each pass would take 4,000 ms.
    QVERIFY2(clock.elapsed() < 2000, qPrintable(QString::number(clock.elapsed())));
}

void TestOperatorWaits::anAnswerInTheLastWaitCounts()
{
    // The third pass begins after 200 ms at the earliest and lasts 100 ms, so that this comes in its time.
    QTimer::singleShot(250, _operator.get(),
                       [this] { _operator->responseReceived(NT_DEVICE_STATUS, 0, QByteArray(2, '\0')); });
    QVERIFY(_operator->readDeviceStatus());
    QVERIFY(!_operator->readDeviceStatus()); // nothing is left of it
}

void TestOperatorWaits::anAnswerOfAnotherChannelIsNotTaken()
{
    QTimer others;
    int left = 200;
    connect(&others, &QTimer::timeout, this, [&] {
        _instrument->send(NT_GENERAL_ACK, channel + 1, ackOf(PC_MANUAL_SAMPLING_PARAMS));
        _instrument->send(NT_GENERAL_ACK, channel, ackOf(PC_CHANNEL_LIMITS));
        if (--left == 0)
            others.stop();
    });
    others.start(20);
    QElapsedTimer clock;
    clock.start();
    QVERIFY(!_operator->setManualSamplingParams(channel, "abcd"));
    const qint64 elapsed = clock.elapsed(); // they neither shorten the wait nor draw it out
    QVERIFY2(140 <= elapsed && elapsed < 3000, qPrintable(QString::number(elapsed)));
}

void TestOperatorWaits::oneAnswerServesOneOfTwoWaits()
{
    const auto limit = [this] { return _operator->setChannelLimits(channel, -1, 1, -2, 2, 0.5); };
    int asked = 0;
    bool innerServed = false;
    _instrument->on(PC_CHANNEL_LIMITS, [&](const FakeInstrument::Command &) {
        if (++asked == 2)
            return _instrument->send(NT_GENERAL_ACK, channel, ackOf(PC_CHANNEL_LIMITS));
        QTimer::singleShot(0, _operator.get(), [&] { innerServed = limit(); });
    });
    QElapsedTimer clock;
    clock.start();
    const bool outerServed = limit();
    QCOMPARE(int(outerServed) + int(innerServed), 1);
    QVERIFY2(clock.elapsed() >= 140, qPrintable(QString::number(clock.elapsed()))); // the other one waited its time
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
    QElapsedTimer clock;
    clock.start();
    QVERIFY(!_operator->uploadExperimentToInstrument(channel, {nodeWith(1), nodeWith(2), nodeWith(3)},
                                                     HardwareModel_t::Alder_2_5));
    QVERIFY2(clock.elapsed() < 900, qPrintable(QString::number(clock.elapsed())));
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
    QElapsedTimer clock;
    clock.start();
    QVERIFY(!_operator->uploadExperimentToInstrument(channel, {nodeWith(1)}, HardwareModel_t::Alder_2_5));
    QVERIFY(clock.elapsed() >= 900);
    QVERIFY2(clock.elapsed() < 20000, qPrintable(QString::number(clock.elapsed()))); // nothing is on its way
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
