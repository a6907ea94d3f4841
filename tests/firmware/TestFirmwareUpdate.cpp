// SPDX-License-Identifier: MIT
#include "FakeHidApi.h"

#include "firmware/BootLoaderCOM.h"
#include "firmware/BootLoaderCommunicator.h"
#include "firmware/FirmwareUpdateHandler.h"
#include "images/HexLoader.h"
#include "session/InstrumentInfo.h"
#include "support/FakeInstrument.h"
#include "support/SteppedClock.h"
#include "support/TestMain.h"

#include <QSemaphore>

#include <fcntl.h>
#include <unistd.h>

#include <functional>
#include <memory>
#include <thread>

Q_DECLARE_METATYPE(std::function<void()>)

namespace {

const QString hidPath = "/dev/hidraw-test";
const QString otherHidPath = "/dev/hidraw-test2";
/// Outlives the application object, and the bootloaders with it.
SteppedClock hostClock(SteppedClock::Use::AsHost);
constexpr int pollMs = 20;
constexpr int resetPauseMs = 100;
constexpr int searchPauseMs = 1000;
constexpr int replyTimeoutMs = 5000;

bool comes(const std::function<bool()> &condition)
{
    return hostClock.stepUntil(condition, {pollMs, searchPauseMs, replyTimeoutMs});
}

const QByteArray permission = "NIMBRELLE_ALLOW_STAND_IN";

QByteArray hardwareRecord(HardwareModel_t model, const QByteArray &name = "bench")
{
    return (QByteArray(1, char(model)) + name + '\n').leftJustified(256, '\0');
}

/// An instrument whose line is full behind its third hardware record, until it reads on.
class FullLine
{
public:
    /// @param waits  of the host that are to end before it reads on
    explicit FullLine(int waits) : _waits(waits)
    {
        _thread = std::thread([this] { serve(); });
        _isReady.acquire();
    }
    ~FullLine()
    {
        _isOver = true;
        _thread.join();
    }
    Q_DISABLE_COPY_MOVE(FullLine)

    QString portName() const { return _portName; }
    /// Waits for the restart command. @return whether it has come
    bool isReset() { return _hasReset.tryAcquire(1, 20000); }

private:
    void serve()
    {
        const int master = posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK);
        grantpt(master);
        unlockpt(master);
        _portName = QString::fromLocal8Bit(ptsname(master));
        const int kept = open(qPrintable(_portName), O_RDWR | O_NOCTTY | O_NONBLOCK);
        _isReady.release();
        while (!_isOver) {
            char bytes[4096];
            const ssize_t size = read(master, bytes, sizeof bytes);
            _received.append(bytes, int(qMax(ssize_t(0), size)));
            for (const Frame &frame : takeFrames(_received, _skipped))
                answer(PCcommand_t(quint8(frame.type)), master, kept);
            if (size <= 0)
                QThread::msleep(2);
        }
        close(kept);
        close(master);
    }
    void answer(PCcommand_t command, int master, int kept)
    {
        if (command == PC_ECHO_TEST)
            hostClock.step(1000); // no echo
        if (command == PC_SOFT_RESET)
            _hasReset.release();
        if (command == PC_PING)
            send(master, NT_PING_REPLY, QByteArray());
        if (command == PC_READ_CHANNEL_COUNT)
            send(master, NT_CHANNEL_COUNT, "\x02");
        if (command == PC_READ_FIRMWARE_CHECKSUM)
            send(master, NT_FIRMWARE_CHECKSUM, "old");
        if (command != PC_READ_HARDWARE_VERSION)
            return;
        const bool isFilled = ++_hardwareQuestions == 2; // the one before the reset
        if (isFilled)
            fill(kept);
        send(master, NT_HARDWARE_VERSION, hardwareRecord(HardwareModel_t::Alder_2_5));
        for (int ended = 0; isFilled && ended < _waits && !_isOver; QThread::msleep(1))
            ended += hostClock.wakeNext() ? 1 : 0;
    }
    /// Again and again, since the kernel moves on what has been written.
    static void fill(int file)
    {
        for (int refusals = 0; refusals < 5; QThread::msleep(20)) {
            const bool isRefused = write(file, ".", 1) <= 0;
            refusals = isRefused ? refusals + 1 : 0;
            while (!isRefused && write(file, "..........", 10) > 0)
                ;
        }
    }
    static void send(int master, Notifications_t type, const QByteArray &payload)
    {
        const QByteArray frame = makeFrame(quint8(type), 0, payload);
        if (write(master, frame.constData(), size_t(frame.size())) != frame.size())
            qFatal("The instrument's line is full in the wrong direction");
    }

    const int _waits;
    QString _portName;
    QByteArray _received;
    quint32 _skipped = 0;
    int _hardwareQuestions = 0;
    std::atomic<bool> _isOver{false};
    QSemaphore _isReady;
    QSemaphore _hasReset;
    std::thread _thread;
};

} // namespace

/// From the question on the serial port to the words for the client.
class TestFirmwareUpdate : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void refusalsLeaveTheInstrumentAlone_data();
    void refusalsLeaveTheInstrumentAlone();
    void silentPortIsToldInWords();
    void echoIsUnknown();
    void standInIsRefusedBeforeTheReset_data();
    void standInIsRefusedBeforeTheReset();
    void instrumentMustBeTheOneThatWasQuestioned_data();
    void instrumentMustBeTheOneThatWasQuestioned();
    void portThatIsGoneFailsTheUpdate();
    void portIsHeldUntilTheResetHasLeft_data();
    void portIsHeldUntilTheResetHasLeft();
    void bootloaderThatWasThereIsLeftAlone();
    void slowBootloaderDoesNotDisturbTheQuestions();
    void pathOfABootloaderThatHasGoneIsTheNextOnes();
    void instrumentGoesThroughItsHidBootloader();
    void galeIsUpdatedOverItsPort();
    void unknownDeviceIsToldInWords();
    void whatIsToldInWordsComesAsValuesToo_data();
    void whatIsToldInWordsComesAsValuesToo();

private:
    void answerAs(HardwareModel_t model, const QByteArray &checksum);
    QStringList messages() const;

    FirmwareUpdateHandler _handler;
    QScopedPointer<FakeInstrument> _instrument;
    QScopedPointer<QSignalSpy> _messages;
    QScopedPointer<QSignalSpy> _finished;
};

void TestFirmwareUpdate::init()
{
    qputenv(permission, "1");
    FakeHidBus::bus().clear();
    hostClock.hurry(resetPauseMs);
    _instrument.reset(new FakeInstrument);
    _instrument->setClock(hostClock);
    _messages.reset(new QSignalSpy(&_handler, &FirmwareUpdateHandler::firmwareUpdateNotification));
    _finished.reset(new QSignalSpy(&_handler, &FirmwareUpdateHandler::firmwareUpdateFinished));
}

void TestFirmwareUpdate::answerAs(HardwareModel_t model, const QByteArray &checksum)
{
    _instrument->reply(PC_PING, NT_PING_REPLY);
    _instrument->reply(PC_READ_HARDWARE_VERSION, NT_HARDWARE_VERSION, hardwareRecord(model));
    _instrument->reply(PC_READ_CHANNEL_COUNT, NT_CHANNEL_COUNT, "\x02");
    _instrument->reply(PC_READ_FIRMWARE_CHECKSUM, NT_FIRMWARE_CHECKSUM, checksum);
}

QStringList TestFirmwareUpdate::messages() const
{
    QStringList texts;
    for (const QVariantList &arguments : *_messages) {
        const QString text = arguments.first().toString();
        if (!text.contains(": Progress ") || text.endsWith(" 100"))
            texts.append(text);
    }
    return texts;
}

void TestFirmwareUpdate::refusalsLeaveTheInstrumentAlone_data()
{
    QTest::addColumn<int>("model");
    QTest::addColumn<QByteArray>("checksum");
    QTest::addColumn<int>("code");
    const QString path = BootLoaderCommunicator::findHexFilePath(int(HardwareModel_t::Alder_2_5));
    const QByteArray right = QByteArray::fromHex(HexLoader::ReadHexSignature(path).checksum.toLatin1());
    QTest::newRow("right firmware") << int(HardwareModel_t::Alder_2_5) << right << int(VekErrorCode::FirmwareUpToDate);
    QTest::newRow("invalid model") << 36 << right << int(VekErrorCode::ConnectionFailed);
    QTest::newRow("no image") << int(HardwareModel_t::Cedar) << right << int(VekErrorCode::FirmwareFileNotFound);
}

void TestFirmwareUpdate::refusalsLeaveTheInstrumentAlone()
{
    QFETCH(int, model);
    QFETCH(QByteArray, checksum);
    answerAs(HardwareModel_t(model), checksum);
    QTEST(int(_handler.update(_instrument->portName()).value()), "code");
    QCOMPARE(_instrument->count(PC_SOFT_RESET), 0);
}

void TestFirmwareUpdate::silentPortIsToldInWords()
{
    const VekErrorCode code = _handler.update(_instrument->portName());
    QCOMPARE(code.value(), VekErrorCode::ConnectionFailed);
    QCOMPARE(code.message(), QString("Nimbrelle is not connect at selected USB port. Unplug USB cable from computer, "
                                     "and plug it again."));
}

void TestFirmwareUpdate::echoIsUnknown()
{
    _instrument->setEchoing(true);
    QCOMPARE(_handler.update(_instrument->portName()).value(), VekErrorCode::Unknown);
}

void TestFirmwareUpdate::standInIsRefusedBeforeTheReset_data()
{
    QTest::addColumn<int>("model");
    QTest::newRow("HID") << int(HardwareModel_t::Alder_2_5);
    QTest::newRow("serial") << int(HardwareModel_t::Gale);
}

void TestFirmwareUpdate::standInIsRefusedBeforeTheReset()
{
    QFETCH(int, model);
    qunsetenv(permission);
    answerAs(HardwareModel_t(model), "old");
    QCOMPARE(_handler.update(_instrument->portName()).value(), VekErrorCode::StandInFirmware);
    QCOMPARE(_instrument->count(PC_SOFT_RESET), 0);
}

void TestFirmwareUpdate::instrumentMustBeTheOneThatWasQuestioned_data()
{
    QTest::addColumn<QByteArray>("record"); // when it is asked again; empty: silence
    QTest::newRow("other model") << hardwareRecord(HardwareModel_t::Alder_2_4);
    QTest::newRow("other name") << hardwareRecord(HardwareModel_t::Alder_2_5, "field");
    QTest::newRow("silent") << QByteArray();
}

void TestFirmwareUpdate::instrumentMustBeTheOneThatWasQuestioned()
{
    QFETCH(QByteArray, record);
    answerAs(HardwareModel_t::Alder_2_5, "old");
    const FakeInstrument::Answer answer = _instrument->answerTo(PC_READ_HARDWARE_VERSION);
    _instrument->on(PC_READ_HARDWARE_VERSION, [=](const FakeInstrument::Command &command) {
        if (_instrument->count(PC_READ_HARDWARE_VERSION) == 1)
            answer(command);
        else if (!record.isEmpty())
            _instrument->send(NT_HARDWARE_VERSION, command.channel, record);
    });
    const VekErrorCode code = _handler.update(_instrument->portName());
    QCOMPARE(code.value(), VekErrorCode::ConnectionFailed);
    QVERIFY(code.message().contains("Nothing was changed"));
    QCOMPARE(_instrument->count(PC_SOFT_RESET), 0);
}

void TestFirmwareUpdate::portThatIsGoneFailsTheUpdate()
{
    QTemporaryDir folder;
    const QString port = folder.filePath("port");
    QVERIFY(QFile::link(_instrument->portName(), port));
    answerAs(HardwareModel_t::Alder_2_5, "old");
    _instrument->on(PC_READ_FIRMWARE_CHECKSUM, [&](const FakeInstrument::Command &) {
        QFile::remove(port); // the second opening goes on, the third one fails
        _instrument->send(NT_FIRMWARE_CHECKSUM, 0, "old");
    });
    QCOMPARE(_handler.update(port).value(), VekErrorCode::ConnectionFailed);
    QCOMPARE(_instrument->count(PC_SOFT_RESET), 0);
}

void TestFirmwareUpdate::portIsHeldUntilTheResetHasLeft_data()
{
    QTest::addColumn<bool>("hasLeft");
    QTest::newRow("late") << true;
    QTest::newRow("never") << false;
}

void TestFirmwareUpdate::portIsHeldUntilTheResetHasLeft()
{
    QFETCH(bool, hasLeft);
    FullLine instrument(hasLeft ? 0 : 3);
    const VekErrorCode code = _handler.update(instrument.portName());
    QCOMPARE(code.value(), hasLeft ? VekErrorCode::Success : VekErrorCode::ConnectionFailed);
    QVERIFY(!hasLeft || instrument.isReset());
    FakeHidBus::bus().plug(hidPath);
    BootLoaderCommunicator::Instance()->checkForAnnounced();
    // Without an announcement the device is nobody's, and nothing comes.
    const auto isSearched = [] { return !BootLoaderCommunicator::Instance()->isSearching(); };
    QVERIFY(comes([&] { return hasLeft ? !_finished->isEmpty() : isSearched(); }));
    QCOMPARE(!_finished->isEmpty(), hasLeft);
    QCOMPARE(FakeHidBus::bus().device(hidPath).hasJumped, hasLeft);
}

void TestFirmwareUpdate::bootloaderThatWasThereIsLeftAlone()
{
    FakeHidBus::bus().plug(hidPath); // of the same model
    answerAs(HardwareModel_t::Alder_2_5, "old");
    _instrument->on(PC_SOFT_RESET, [](const FakeInstrument::Command &) { FakeHidBus::bus().plug(otherHidPath); });
    QCOMPARE(_handler.update(_instrument->portName()).value(), VekErrorCode::Success);
    QVERIFY(comes([this] { return _finished->size() == 1; }));
    QCOMPARE(_finished->first(), QVariantList({"bench", true}));
    QVERIFY(FakeHidBus::bus().device(otherHidPath).hasJumped);
    QCOMPARE(FakeHidBus::bus().device(hidPath).writes, 0);
}

void TestFirmwareUpdate::slowBootloaderDoesNotDisturbTheQuestions()
{
    FakeHidDevice slow;
    slow.silentAt = 2;
    FakeHidBus::bus().plug(hidPath, slow);
    answerAs(HardwareModel_t::Alder_2_5, "old");
    _instrument->on(PC_SOFT_RESET, [](const FakeInstrument::Command &) { FakeHidBus::bus().plug(otherHidPath); });
    const FakeInstrument::Answer answer = _instrument->answerTo(PC_READ_CHANNEL_COUNT);
    _instrument->on(PC_READ_CHANNEL_COUNT, [=](const FakeInstrument::Command &command) {
        QSignalSpy found(BootLoaderCommunicator::Instance(), &BootLoaderCommunicator::ShowBootloaderDialog);
        _handler.updateThroughHidConnections();
        QVERIFY(found.wait(20000)); // before the answer comes
        answer(command);
    });
    QCOMPARE(_handler.update(_instrument->portName()).value(), VekErrorCode::Success);
    QVERIFY(comes([this] { return _finished->size() == 2; }));
    QCOMPARE(_finished->at(0), QVariantList({"", false}));
    QCOMPARE(_finished->at(1), QVariantList({"bench", true}));
}

void TestFirmwareUpdate::pathOfABootloaderThatHasGoneIsTheNextOnes()
{
    FakeHidDevice other;
    other.release = 200;
    FakeHidBus::bus().plug(hidPath, other);
    _handler.updateThroughHidConnections();
    QVERIFY(comes([this] { return _finished->size() == 1; }));
    QVERIFY(comes([] { return !BootLoaderCommunicator::Instance()->isSearching(); }));
    FakeHidBus::bus().clear();
    answerAs(HardwareModel_t::Alder_2_5, "old");
    const FakeInstrument::Answer answer = _instrument->answerTo(PC_READ_HARDWARE_VERSION);
    _instrument->on(PC_READ_HARDWARE_VERSION, [=](const FakeInstrument::Command &command) {
        if (_instrument->count(PC_READ_HARDWARE_VERSION) == 2) // it comes before the next search can begin
            FakeHidBus::bus().plug(hidPath);
        answer(command);
    });
    QCOMPARE(_handler.update(_instrument->portName()).value(), VekErrorCode::Success);
    QVERIFY(comes([this] { return _finished->size() == 2; }));
    QCOMPARE(_finished->last(), QVariantList({"bench", true}));
}

void TestFirmwareUpdate::instrumentGoesThroughItsHidBootloader()
{
    answerAs(HardwareModel_t::Alder_2_5, "old");
    _instrument->on(PC_SOFT_RESET, [](const FakeInstrument::Command &) { FakeHidBus::bus().plug(hidPath); });
    InstrumentInfo info;
    QCOMPARE(_handler.hasCorrectFirmware(_instrument->portName(), info).value(), VekErrorCode::FirmwareNotSupported);
    QCOMPARE(info.deviceName, QString("bench"));

    QCOMPARE(_handler.update(_instrument->portName()).value(), VekErrorCode::Success);
    QVERIFY(comes([this] { return _finished->size() == 1; }));
    QCOMPARE(_finished->first(), QVariantList({"bench", true}));
    QCOMPARE(messages(), QStringList({"bench: Firmware update has initialized.", "bench: Firmware update is starting.",
                                      "bench: Progress 100", "bench: Firmware updated successfully."}));
    QVERIFY(FakeHidBus::bus().device(hidPath).hasJumped);
}

void TestFirmwareUpdate::galeIsUpdatedOverItsPort()
{
    answerAs(HardwareModel_t::Gale, "old");
    for (const PCcommand_t command : {PC_BOOT_UNLOCK, PC_BOOT_PREPARE, PC_BOOT_RECORD})
        _instrument->reply(command, Notifications_t(command));
    QCOMPARE(_handler.update(_instrument->portName()).value(), VekErrorCode::Success);
    QTRY_VERIFY_WITH_TIMEOUT(messages().contains("bench: Firmware updated successfully."), 60000);
    QCOMPARE(_instrument->count(PC_BOOT_RECORD),
             HexLoader::ReadFile(BootLoaderCommunicator::findHexFilePath(int(HardwareModel_t::Gale))).size());
    QVERIFY(_finished->isEmpty()); // this road tells its end in words alone
}

void TestFirmwareUpdate::unknownDeviceIsToldInWords()
{
    FakeHidDevice device;
    device.release = 256;
    FakeHidBus::bus().plug(hidPath, device);
    _handler.updateThroughHidConnections();
    QTRY_COMPARE(messages(), QStringList({"Unknow HID model connections. "}));
    QCOMPARE(FakeHidBus::bus().device(hidPath).writes, 0);
}

void TestFirmwareUpdate::whatIsToldInWordsComesAsValuesToo_data()
{
    using Stage = VekFirmwareUpdateStage;
    using Hid = BootLoaderCommunicator;
    using Serial = BootLoaderCOM;
    QTest::addColumn<std::function<void()>>("news");
    QTest::addColumn<QVariantList>("told"); // device, stage, percent, message
    const auto row = [](const char *name, const std::function<void()> &news, const char *device, Stage stage,
                        int percent, const char *message) {
        QTest::newRow(name) << news << QVariantList{device, QVariant::fromValue(stage), percent, message};
    };
    Hid *const hid = Hid::Instance();
    Serial *const serial = Serial::Instance();
    const QString name = QStringLiteral("bench");
    row(
        "begun", [=] { Q_EMIT hid->Started(name); }, "bench", Stage::Begun, 0,
        "bench: Firmware update has initialized.");
    row(
        "begun over the port", [=] { Q_EMIT serial->Started(name); }, "bench", Stage::Begun, 0,
        "bench: Firmware update has initialized.");
    row(
        "found", [=] { Q_EMIT hid->BootloaderFound(name); }, "bench", Stage::BootloaderFound, 0,
        "bench: Firmware update is starting.");
    row(
        "found at the port", [=] { Q_EMIT serial->Found(name); }, "bench", Stage::BootloaderFound, 0,
        "bench: Firmware update is starting.");
    row(
        "progress", [=] { Q_EMIT hid->ProgressChanged(name, 42); }, "bench", Stage::Writing, 42, "bench: Progress 42");
    row(
        "progress over the port", [=] { Q_EMIT serial->Progress(name, 7); }, "bench", Stage::Writing, 7,
        "bench: Progress 7");
    row(
        "refused", [=] { Q_EMIT hid->Refused(name, Stage::BootloaderGone, "Why not."); }, "bench",
        Stage::BootloaderGone, 0, "bench: Why not.");
    row(
        "success", [=] { Q_EMIT hid->Finished(name, true); }, "bench", Stage::Succeeded, 0,
        "bench: Firmware updated successfully.");
    row(
        "failure", [=] { Q_EMIT hid->Finished(name, false); }, "bench", Stage::Failed, 0,
        "bench: Firmware update failed.");
    row(
        "failure over the port", [=] { Q_EMIT serial->Finished(name, false); }, "bench", Stage::Failed, 0,
        "bench: Firmware update failed.");
    row(
        "unknown model", [=] { Q_EMIT hid->FindReleaseNumber(hidPath); }, "", Stage::UnknownModel, 0,
        "Unknow HID model connections. ");
}

void TestFirmwareUpdate::whatIsToldInWordsComesAsValuesToo()
{
    QFETCH(std::function<void()>, news);
    QFETCH(QVariantList, told);
    QSignalSpy values(&_handler, &FirmwareUpdateHandler::firmwareUpdateStageReached);
    news();
    QTRY_COMPARE(values.size(), 1);
    QCOMPARE(values.first(), told);
    QCOMPARE(*_messages, (QList<QVariantList>{{told.last()}}));
}

NIMBRELLE_TEST_MAIN(TestFirmwareUpdate)
#include "TestFirmwareUpdate.moc"
