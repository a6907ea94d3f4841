// SPDX-License-Identifier: MIT
#include "VekConstantCurrentElement.h"
#include "VekExperiment.h"
#include "handlers/HandlerBench.h"
#include "handlers/MainInstrumentHandler.h"
#include "link/SerialCommunicator.h"
#include "session/AdmittedInstrument.h"
#include "session/InitialInformation.h"
#include "support/TestMain.h"

#include <functional>
#include <map>
#include <optional>

namespace {

constexpr int answerMs = 1000; // that a question of the handshake waits
constexpr int galePauseMs = 500;

/// What is wrong with the answer to one command.
struct Fault {
    enum Kind { LateByLess, LateByMore, Twice, OtherChannel, OfSize } kind;
    int size = 0; ///< of the payload, in bytes
};

QByteArray nameOf(const Fault &fault)
{
    constexpr const char *names[] = {"a little before the end", "a little after the end", "twice",
                                     "on another channel"};
    return fault.kind == Fault::OfSize ? QByteArray::number(fault.size) + " bytes" : QByteArray(names[fault.kind]);
}

/// An answer that is awaited.
struct Awaited {
    PCcommand_t command;
    Notifications_t answer;
    int passMs; ///< of the wait for it
    int furtherPasses;
};

/// Lets the wait for an answer be over.
void letWaitEnd(SteppedClock &clock, const Awaited &awaited)
{
    clock.hurry(awaited.passMs, awaited.furtherPasses);
    clock.step(awaited.passMs);
}

/**
 * @param attempt  what is under way while it lives
 * @param counts  whether the answer is expected to end the wait; else its time does, once the answer has had its chance
 * @return the answer as it was, to mend it with
 */
FakeInstrument::Answer spoil(FakeInstrument &instrument, SteppedClock &clock, const QObject &attempt,
                             const Awaited &awaited, const Fault &fault, bool counts)
{
    const FakeInstrument::Answer usual = instrument.answerTo(awaited.command);
    switch (fault.kind) {
    case Fault::LateByLess:
        instrument.on(awaited.command, [=, &clock](const FakeInstrument::Command &command) {
            clock.step(awaited.passMs - 1);
            usual(command);
        });
        break;
    case Fault::LateByMore:
        instrument.on(awaited.command, [=, &clock](const FakeInstrument::Command &) { letWaitEnd(clock, awaited); });
        break;
    case Fault::Twice:
        instrument.on(awaited.command, [usual](const FakeInstrument::Command &command) {
            usual(command);
            usual(command);
        });
        break;
    case Fault::OtherChannel:
        instrument.on(awaited.command, [usual](FakeInstrument::Command command) {
            ++command.channel;
            usual(command);
        });
        break;
    case Fault::OfSize: { // of a general acknowledgement, the command comes first
        const QByteArray first(awaited.answer == NT_GENERAL_ACK ? 1 : 0, char(awaited.command));
        instrument.reply(awaited.command, awaited.answer, first.leftJustified(fault.size, '\0', true));
        break;
    }
    }
    if (!counts && fault.kind != Fault::LateByMore) {
        const FakeInstrument::Answer spoilt = instrument.answerTo(awaited.command);
        instrument.on(awaited.command, [=, &attempt, &clock](const FakeInstrument::Command &command) {
            constexpr int chanceMs = 30;
            spoilt(command);
            QTimer::singleShot(chanceMs, &attempt, [=, &clock] { letWaitEnd(clock, awaited); });
        });
    }
    return usual;
}

struct Outcome {
    int code = -1;
    QString message;
    int nextCode = VekErrorCode::Success; ///< of the next try, with the fault mended

    bool operator==(const Outcome &other) const
    {
        return code == other.code && message == other.message && nextCode == other.nextCode;
    }
};

/// What one row does, on a thread of its own.
struct Attempt {
    std::unique_ptr<QThread> thread; // one of Qt's: others serve no serial port
    Outcome outcome;
};

VekErrorCode connectTo(const FakeInstrument &instrument, const SteppedClock &clock)
{
    if (!InitialInformation::PingToInstrument(instrument.portName(), clock))
        return VekErrorCode(VekErrorCode::ConnectionFailed, QStringLiteral("no answer"));
    InstrumentInfo info;
    return InitialInformation::getBasicInfoSuccessfully(instrument.portName(), info, clock);
}

Outcome connectDespite(HardwareModel_t model, const Awaited &awaited, const Fault &fault, bool counts)
{
    SteppedClock clock;
    clock.hurry(galePauseMs);
    AdmittedInstrument instrument(model, "Spoilt", 2);
    instrument.on(PC_ECHO_TEST, [&clock](const FakeInstrument::Command &) { clock.step(answerMs); });
    std::optional<QObject> attempt(std::in_place);
    const FakeInstrument::Answer usual = spoil(instrument, clock, *attempt, awaited, fault, counts);
    const VekErrorCode verdict = connectTo(instrument, clock);
    attempt.reset();
    instrument.on(awaited.command, usual);
    return {int(verdict), verdict.message(), int(connectTo(instrument, clock))};
}

using Request = VekErrorCode (*)(const VekInstrumentHandler &handler);

Outcome requestDespite(Request request, const Awaited &awaited, const Fault &fault, bool counts)
{
    Outcome outcome;
    {
        HandlerBench<MainInstrumentHandler> bench(HardwareModel_t::Birch_2_2, 2, roundMainRecord());
        std::optional<QObject> attempt(std::in_place);
        const FakeInstrument::Answer usual = spoil(bench.instrument, bench.clock, *attempt, awaited, fault, counts);
        const VekErrorCode result = request(*bench.device);
        attempt.reset();
        bench.instrument.on(awaited.command, usual);
        outcome = {int(result), result.message(), int(request(*bench.device))};
    }
    QCoreApplication::sendPostedEvents(); // the handler's thread has ended and wants to be deleted here
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    return outcome;
}

VekErrorCode upload(const VekInstrumentHandler &handler)
{
    VekExperiment experiment;
    VekConstantCurrentElement element(0.001, 1.0, 10.0);
    experiment.appendElement(element, 1);
    return handler.uploadExperimentToChannel(0, experiment);
}

VekErrorCode limit(const VekInstrumentHandler &handler)
{
    return handler.setChannelMaximumVoltage(0, 4.2);
}

VekErrorCode sample(const VekInstrumentHandler &handler)
{
    handler.startManualExperiment(0);
    return handler.setManualModeSamplingInterval(0, 0.1);
}

const QString because = "A connection with the device could not be successfully established because ";
const QString restart = " Please try to reconnect after restarting the device.";

constexpr HardwareModel_t alder = HardwareModel_t::Alder_2_5;
constexpr HardwareModel_t gale = HardwareModel_t::Gale;

} // namespace

Q_DECLARE_METATYPE(Outcome)

/**
 * Answers that come late, twice, from elsewhere or in another size. Each costs the one request that waited for it: the
 * next try, with a right answer, succeeds.
 *
 * All rows run at the same time, each on a thread of its own and by a clock of its own.
 */
class TestReplyFaults : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void handshake_data();
    void handshake() { check(); }
    void acknowledgement_data();
    void acknowledgement() { check(); }

private:
    void addRow(const QByteArray &subject, const Fault &fault, const Outcome &expected,
                const std::function<Outcome()> &attempt);
    void check();

    std::map<QByteArray, Attempt> _attempts;
};

void TestReplyFaults::initTestCase()
{
    // Rows log on threads of their own, and QtTest's handler looks up which row is at work on this one.
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {});
    // The first port of a process makes a list of Qt's, behind a guard that the thread sanitizer does not see.
    SerialCommunicator(QStringLiteral("nowhere")).Start(true);
}

void TestReplyFaults::addRow(const QByteArray &subject, const Fault &fault, const Outcome &expected,
                             const std::function<Outcome()> &attempt)
{
    const QByteArray name = subject + ", " + nameOf(fault);
    QTest::newRow(name.constData()) << name << expected;
    Attempt &row = _attempts[name];
    row.thread.reset(QThread::create([&row, attempt] { row.outcome = attempt(); }));
    row.thread->start();
}

void TestReplyFaults::check()
{
    QFETCH(QByteArray, name);
    QFETCH(Outcome, expected);
    const Attempt &attempt = _attempts[name];
    QVERIFY(attempt.thread->wait());
    const Outcome &outcome = attempt.outcome;
    QCOMPARE(outcome.code, expected.code);
    QCOMPARE(outcome.message, expected.message);
    QCOMPARE(outcome.nextCode, expected.nextCode);
}

void TestReplyFaults::handshake_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<Outcome>("expected");
    const Outcome admitted{0, "Success"};
    const Outcome wrongFirmware{2, because + "device firmware did not match with API version. Please update device "
                                             "firmware using updateFirmwareOnComPort or "
                                             "updateFirmwareOnAllAvailableDevices or use utility application which is "
                                             "provided with library."};
    const auto missing = [](const QString &what) {
        return Outcome{1, because + what + " was not received." + restart};
    };
    struct Row {
        const char *subject;
        HardwareModel_t model;
        PCcommand_t command;
        Notifications_t answer;
        Outcome refusal;           ///< when the answer does not count
        bool hasChannel;           ///< an answer on another channel does not count
        std::vector<int> refused;  ///< sizes that do not count
        std::vector<int> accepted; ///< sizes that count, odd as they are: what is missing reads as zero
    };
    const std::vector<Row> rows = {
        // clang-format off
        {"ping", alder, PC_PING, NT_PING_REPLY, {1, "no answer"}, false, {}, {1, 65535}},
        {"hardware record", alder, PC_READ_HARDWARE_VERSION, NT_HARDWARE_VERSION, missing("hardware version"), false,
            {0, 1, 63, 65, 255, 257}, {}},
        {"channel count", alder, PC_READ_CHANNEL_COUNT, NT_CHANNEL_COUNT, missing("total number of channels"), false,
            {0, 2}, {}},
        {"checksum", alder, PC_READ_FIRMWARE_CHECKSUM, NT_FIRMWARE_CHECKSUM, wrongFirmware, false, {0, 1, 5}, {}},
        {"firmware version", alder, PC_READ_FIRMWARE_VERSION, NT_FIRMWARE_VERSION, missing("firmware version"), false,
            {}, {0, 65535}},
        {"calibration", alder, PC_READ_FLASH_CAL, NT_RAW_CAL_DATA, missing("DC calibration data"), true,
            {}, {0, 3, 375, 377}},
        {"configuration", gale, PC_READ_CONFIG, NT_CONFIG, missing("configuration data"), false, {0, 287, 289}, {}},
        // clang-format on
    };
    for (const Row &row : rows) {
        const auto add = [&](const Fault &fault, const Outcome &expected) {
            const Awaited awaited{row.command, row.answer, answerMs, 0};
            const bool counts = expected == admitted;
            const HardwareModel_t model = row.model;
            addRow(row.subject, fault, expected, [=] { return connectDespite(model, awaited, fault, counts); });
        };
        add({Fault::LateByLess}, admitted);
        add({Fault::LateByMore}, row.refusal);
        add({Fault::Twice}, admitted);
        add({Fault::OtherChannel}, row.hasChannel ? row.refusal : admitted);
        for (const int size : row.refused)
            add({Fault::OfSize, size}, row.refusal);
        for (const int size : row.accepted)
            add({Fault::OfSize, size}, admitted);
    }
}

void TestReplyFaults::acknowledgement_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<Outcome>("expected");
    struct Row {
        const char *subject;
        Request request;
        Awaited awaited;
        Outcome refusal;
        std::vector<int> refused;
        std::vector<int> accepted;
    };
    const std::vector<Row> rows = {
        // clang-format off
        {"node", &upload, {PC_NODE_APPEND, NT_NODE_APPENDED, 1000, 0},
            {106, "Experiment was not successfully uploaded to the channel. Please try again."}, {}, {0, 2}},
        {"limits", &limit, {PC_CHANNEL_LIMITS, NT_GENERAL_ACK, 50, 2},
            {115, "Channel maximum voltage is not set. Please try again."}, {0}, {1, 3}},
        {"sampling", &sample, {PC_MANUAL_SAMPLING_PARAMS, NT_GENERAL_ACK, 50, 2},
            {100, "API is unable to send command to device. Please try again."}, {0}, {1, 3}},
        // clang-format on
    };
    for (const Row &row : rows) {
        const auto add = [&](const Fault &fault, const Outcome &expected) {
            const Request request = row.request;
            const Awaited awaited = row.awaited;
            const bool counts = expected.code == VekErrorCode::Success;
            addRow(row.subject, fault, expected, [=] { return requestDespite(request, awaited, fault, counts); });
        };
        const Outcome success{0, "Success"};
        add({Fault::LateByLess}, success);
        add({Fault::LateByMore}, row.refusal);
        add({Fault::Twice}, success);
        add({Fault::OtherChannel}, row.refusal);
        for (const int size : row.refused)
            add({Fault::OfSize, size}, row.refusal);
        for (const int size : row.accepted)
            add({Fault::OfSize, size}, success);
    }
}

NIMBRELLE_TEST_MAIN(TestReplyFaults)
#include "TestReplyFaults.moc"
