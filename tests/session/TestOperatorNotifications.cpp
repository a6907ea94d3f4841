// SPDX-License-Identifier: MIT
#include "session/InstrumentOperator.h"
#include "support/FakeInstrument.h"
#include "support/TestMain.h"

namespace {

/// Every emission of every signal of an object, as "name(first, second)".
class SignalLog
{
public:
    explicit SignalLog(QObject &object)
    {
        const QMetaObject *meta = object.metaObject();
        for (int method = meta->methodOffset(); method < meta->methodCount(); ++method) {
            if (meta->method(method).methodType() == QMetaMethod::Signal)
                _spies.push_back(std::make_unique<QSignalSpy>(&object, meta->method(method)));
        }
    }

    QStringList emissions() const
    {
        QStringList all;
        for (const auto &spy : _spies) {
            for (const QList<QVariant> &arguments : *spy)
                all << nameOf(*spy) + "(" + inWords(arguments) + ")";
        }
        return all;
    }

private:
    static QString nameOf(const QSignalSpy &spy) { return QString(spy.signal()).section('(', 0, 0); }

    static QString inWords(const QList<QVariant> &arguments)
    {
        QStringList words;
        for (const QVariant &argument : arguments) {
            if (argument.userType() == qMetaTypeId<FirmwareErrorCode>())
                words << QString::number(int(argument.value<FirmwareErrorCode>()));
            else if (argument.userType() == qMetaTypeId<PCcommand_t>())
                words << QString::number(int(argument.value<PCcommand_t>()));
            else if (argument.userType() == QMetaType::QByteArray)
                words << argument.toByteArray().toHex();
            else if (argument.userType() == QMetaType::UChar)
                words << QString::number(argument.value<unsigned char>());
            else
                words << argument.toString();
        }
        return words.join(", ");
    }

    std::vector<std::unique_ptr<QSignalSpy>> _spies;
};

constexpr unsigned int channel = 3;

} // namespace

/// What the operator makes of each packet.
class TestOperatorNotifications : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void aPacketLeadsToThis_data();
    void aPacketLeadsToThis();
    void everyOtherTypeIsUnknown();
    void anAcknowledgementLeadsToThis_data();
    void anAcknowledgementLeadsToThis();
    void theTimeIsToldAtOnce();
    void memoryIsReadBlockByBlock();
    void cleanupTestCase();

private:
    FakeInstrument _instrument;
    std::unique_ptr<InstrumentOperator> _operator;
};

void TestOperatorNotifications::initTestCase()
{
    qRegisterMetaType<FirmwareErrorCode>();
    qRegisterMetaType<PCcommand_t>();
    _operator = std::make_unique<InstrumentOperator>(_instrument.portName());
    QTRY_COMPARE(_instrument.count(PC_PING), 1);
}

void TestOperatorNotifications::cleanupTestCase()
{
    _operator.reset();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); // its link, which must not outlive main()
}

void TestOperatorNotifications::aPacketLeadsToThis_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QByteArray>("payload");
    QTest::addColumn<QString>("emission");
    const auto row = [](int type, const QByteArray &payload, const char *emission) {
        QTest::addRow("%d %s", type, payload.toHex().constData()) << type << payload << QString::fromUtf8(emission);
    };
    // clang-format off
    row(1,   "ab", "");
    row(2,   "",   "deviceNotification(3, Working electrode potential out of range!)");
    row(3,   "",   "deviceNotification(3, Reference electrode potential out of range!)");
    row(4,   "\x07", "deviceNotification(3, The current limit for the current range has been exceeded. "
                     "Current Range incremented to 7)");
    row(4,   "",   "deviceNotification(3, The current limit for the current range has been exceeded. "
                   "Current Range incremented to 0)");
    row(5,   "",   "deviceError(3, The current has exceeded instrument limits!)");
    row(6,   "ab", "");
    row(65,  "ab", "");
    row(66,  "ab", "experimentDCDataReceived(3, 6162)");
    row(67,  "ab", "experimentACDataReceived(3, 6162)");
    row(68,  "ab", "rawDCcalDataReceived(3, 6162)");
    row(71,  QByteArray("Zu hei\xc3\x9f\0 hidden", 16), "deviceError(3, Zu heiß)");
    row(72,  "ab", "channelstatusInformation(6162)");
    row(73,  QByteArray(1, '\0'), "appendExperimentNodeAcked(3)");
    row(74,  "ab", "experimentNodeBeginning(3, 6162)");
    row(75,  "ab", "experimentNodeCompleted(3, 6162)");
    row(76,  "ab", "experimentCompleted(3, 6162)");
    row(77,  "ab", "experimentPaused(3)");
    row(78,  "ab", "experimentResumed(3)");
    row(79,  "ab", "");
    row(81,  "ab", "acDataInvalidated(3, 6162)");
    row(82,  "ab", "experimentNodeSkipped(3)");
    row(84,  "ab", "receivedMetaData(6162)");
    row(85,  "ab", "memoryDataStart(6162)");
    row(86,  "ab", "memoryDataErased(6162)");
    row(88,  "ab", "calibrationHeaderReceived(3, 6162)");
    row(89,  "ab", "calibrationDataReceived(3, 6162)");
    row(90,  "ab", "acknowledgeToWriteCalDataInSDCard(3, 6162)");
    row(91,  "ab", "experimentDataBeginning(3, 6162)");
    row(92,  "ab", "experimentDCDataReceived(3, 6162)");
    row(93,  "",   "deviceError(3, Excessive oscillation has been detected!)");
    row(95,  "ab", "groundFloatStateChanged(6162)");
    row(97,  "ab", "TareCurrentReceived(3, 6162)");
    row(98,  "ab", "TareVoltageReceived(3, 6162)");
    row(100, "ab", "acDataSampleFinshed(3)");
    row(101, "ab", "SpecialCalRsp_ACampErr(3, 6162)");
    row(102, "ab", "experimentDCDataReceived(3, 6162)");
    row(104, "ab", "deviceConfigReceived(3, 6162)");
    row(107, "ab", "");
    row(118, "ab", "nonlinearADCCalDataReceived(3, 6162)");
    // clang-format on
}

void TestOperatorNotifications::aPacketLeadsToThis()
{
    QFETCH(int, type);
    QFETCH(QByteArray, payload);
    QFETCH(QString, emission);
    const SignalLog log(*_operator);
    _operator->responseReceived(Notifications_t(type), channel, payload);
    QCOMPARE(log.emissions(), emission.isEmpty() ? QStringList() : QStringList(emission));
}

void TestOperatorNotifications::everyOtherTypeIsUnknown()
{
    const SignalLog log(*_operator);
    QStringList expected;
    const auto expectUnknown = [&](int from, int to) {
        for (int type = from; type <= to; ++type) {
            _operator->responseReceived(Notifications_t(type), channel, "ab");
            expected << QString("deviceNotification(3, Unknown response. Response ID: %1)").arg(type);
        }
    };
    expectUnknown(-128, 0); // 0 is the echo, which belongs to the handshake
    expectUnknown(7, 64);
    for (const int type : {69, 70, 80, 83, 96, 99, 105, 106})
        expectUnknown(type, type);
    expectUnknown(108, 117);
    expectUnknown(119, 127);
    QCOMPARE(log.emissions(), expected);
}

void TestOperatorNotifications::anAcknowledgementLeadsToThis_data()
{
    QTest::addColumn<QByteArray>("payload");
    QTest::addColumn<QString>("emission");
    const auto row = [](const char *name, const char *payload, const char *emission) {
        QTest::newRow(name) << QByteArray::fromHex(payload) << QString(emission);
    };
    // clang-format off
    row("start",                  "4d07", "acktoExperimentStart(3, 7)");
    row("manual start",           "5207", "acktoManualStart(3, 7)");
    row("manual sampling",        "5307", "acktoManualSamplingIntervalSet(3, 7)");
    row("open circuit",           "5607", "acktoManualOcpSet(3, 7)");
    row("current range",          "5707", "acktoManualCurrentRangeSet(3, 7)");
    row("soft reset",             "5807", "");
    row("compensation range",     "5907", "acktoCompRange(3, 7)");
    row("IR compensation",        "5d07", "acktoIRComp(3, 7)");
    row("voltage range",          "6c07", "acktoManualVoltageRangeSet(3, 7)");
    row("current",                "7507", "acktoManualCurrentSetPoint(3, 7)");
    row("voltage",                "7607", "acktoManualVoltageSetPoint(3, 7)");
    row("limits",                 "7d07", "");
    row("stop",                   "4e07", "acknowledge(3, 78)");
    row("raw current",            "5407", "acknowledge(3, 84)");
    row("unheard of",             "ff07", "acknowledge(3, 255)");
    row("negative code",          "56ff", "acktoManualOcpSet(3, -1)");
    row("too short for the code", "56",   "acktoManualOcpSet(3, 0)");
    row("empty",                  "",     "acknowledge(3, 0)");
    // clang-format on
}

void TestOperatorNotifications::anAcknowledgementLeadsToThis()
{
    QFETCH(QByteArray, payload);
    QFETCH(QString, emission);
    const SignalLog log(*_operator);
    _operator->responseReceived(NT_GENERAL_ACK, channel, payload);
    QCOMPARE(log.emissions(), emission.isEmpty() ? QStringList() : QStringList(emission));
}

void TestOperatorNotifications::theTimeIsToldAtOnce()
{
    _instrument.forgetCommands();
    const qint64 before = QDateTime::currentMSecsSinceEpoch();
    _instrument.send(NT_TIME_REQUEST, 5);
    QTRY_COMPARE(_instrument.count(PC_SET_TIME), 1);
    const FakeInstrument::Command command = _instrument.commands().constLast();
    QCOMPARE(command.channel, quint8(0));
    QCOMPARE(command.payload.size(), 8);
    const auto told = qFromLittleEndian<qint64>(command.payload.constData());
    QVERIFY(before <= told && told <= QDateTime::currentMSecsSinceEpoch());
}

void TestOperatorNotifications::memoryIsReadBlockByBlock()
{
    _instrument.forgetCommands();
    _instrument.send(NT_MEMORY_BLOCK_END, 0, QByteArray(512, 'x'));
    QTRY_COMPARE(_instrument.count(PC_READ_MEMORY_DATA), 1);
    QCOMPARE(_instrument.commands().constLast().payload, QByteArray(1, '\0'));

    _instrument.send(NT_MEMORY_BLOCK_END, 0, QByteArray(513, 'x')); // longer: the end
    _instrument.send(NT_TIME_REQUEST, 0);                           // answered after it
    QTRY_COMPARE(_instrument.count(PC_SET_TIME), 1);
    QCOMPARE(_instrument.count(PC_READ_MEMORY_DATA), 1);
}

NIMBRELLE_TEST_MAIN(TestOperatorNotifications)
#include "TestOperatorNotifications.moc"
