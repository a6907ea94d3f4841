#include "FakeHidApi.h"

#include "firmware/BootLoaderCommunicator.h"
#include "firmware/FirmwareUpdateHandler.h"
#include "firmware/HexLoader.h"
#include "session/InstrumentInfo.h"
#include "support/FakeInstrument.h"
#include "support/TestMain.h"

namespace {

const QString hidPath = "/dev/hidraw-test";

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
    void instrumentGoesThroughItsHidBootloader();
    void galeIsUpdatedOverItsPort();
    void unknownDeviceIsToldInWords();

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
    _instrument.reset(new FakeInstrument);
    _messages.reset(new QSignalSpy(&_handler, &FirmwareUpdateHandler::firmwareUpdateNotification));
    _finished.reset(new QSignalSpy(&_handler, &FirmwareUpdateHandler::firmwareUpdateFinished));
}

void TestFirmwareUpdate::answerAs(HardwareModel_t model, const QByteArray &checksum)
{
    const QByteArray record = QByteArray(1, char(model)) + "bench\n";
    _instrument->reply(PC_PING, NT_PING_REPLY);
    _instrument->reply(PC_READ_HARDWARE_VERSION, NT_HARDWARE_VERSION, record.leftJustified(256, '\0'));
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

void TestFirmwareUpdate::instrumentGoesThroughItsHidBootloader()
{
    answerAs(HardwareModel_t::Alder_2_5, "old");
    _instrument->on(PC_SOFT_RESET, [](const FakeInstrument::Command &) { FakeHidBus::bus().plug(hidPath); });
    InstrumentInfo info;
    QCOMPARE(_handler.hasCorrectFirmware(_instrument->portName(), info).value(), VekErrorCode::FirmwareNotSupported);
    QCOMPARE(info.deviceName, QString("bench"));

    QCOMPARE(_handler.update(_instrument->portName()).value(), VekErrorCode::Success);
    QTRY_COMPARE_WITH_TIMEOUT(_finished->size(), 1, 20000);
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
    QTRY_VERIFY_WITH_TIMEOUT(messages().contains("bench: Firmware updated successfully."), 20000);
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
    QTRY_COMPARE_WITH_TIMEOUT(messages(), QStringList({"Unknow HID model connections. "}), 5000);
    QCOMPARE(FakeHidBus::bus().device(hidPath).writes, 0);
}

NIMBRELLE_TEST_MAIN(TestFirmwareUpdate)
#include "TestFirmwareUpdate.moc"
