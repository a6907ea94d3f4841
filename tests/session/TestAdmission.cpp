// SPDX-License-Identifier: MIT
#include "session/InitialInformation.h"

#include "session/AdmittedInstrument.h"
#include "support/TestMain.h"

#include <functional>

namespace {

using Spoil = std::function<void(AdmittedInstrument &)>;

Spoil silenceOn(PCcommand_t command)
{
    return [command](AdmittedInstrument &instrument) { instrument.fallSilentOn(command); };
}

Spoil answer(PCcommand_t command, Notifications_t type, const QByteArray &payload)
{
    return [=](AdmittedInstrument &instrument) { instrument.reply(command, type, payload); };
}

/// Answers only the first ping; the second comes after the pre-handshake.
void answerOnePing(AdmittedInstrument &instrument)
{
    instrument.on(PC_PING, [&instrument](const FakeInstrument::Command &command) {
        if (instrument.count(PC_PING) == 1)
            instrument.send(NT_PING_REPLY, command.channel);
    });
}

} // namespace
Q_DECLARE_METATYPE(Spoil)
Q_DECLARE_METATYPE(HardwareModel_t)

/// The verdict of the whole handshake.
class TestAdmission : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { _clock.hurry(500); } // the pause in which a Gale prepares itself
    void aRightInstrumentIsAdmitted();
    void aRightGaleIsAdmitted();
    void anEchoIsRefused();
    void aMissingAnswerIsNamed_data();
    void aMissingAnswerIsNamed();

private:
    SteppedClock _clock;
};

void TestAdmission::aRightInstrumentIsAdmitted()
{
    AdmittedInstrument instrument(HardwareModel_t::Alder_2_5, "Alder-0042", 2);
    instrument.setClock(_clock);
    InstrumentInfo info;
    QCOMPARE(InitialInformation::getBasicInfoSuccessfully(instrument.portName(), info, _clock),
             VekErrorCode(VekErrorCode::Success));
    QCOMPARE(instrument.commandNames(),
             (QVector<PCcommand_t>{PC_ECHO_TEST, PC_PING, PC_READ_HARDWARE_VERSION, PC_READ_CHANNEL_COUNT,
                                   PC_READ_FIRMWARE_CHECKSUM, PC_READ_FIRMWARE_VERSION, PC_READ_FLASH_CAL,
                                   PC_READ_FLASH_CAL}));
    QCOMPARE(info.deviceName, QString("Alder-0042"));
    QCOMPARE(info.comPort, instrument.portName());
    QCOMPARE(info.firmwareVersion, QString("2.5.1"));
    QCOMPARE(info.calibration.size(), 2);
}

void TestAdmission::aRightGaleIsAdmitted()
{
    AdmittedInstrument instrument(HardwareModel_t::Gale, "Gale-7", 2);
    instrument.setClock(_clock);
    InstrumentInfo info;
    const qint64 before = _clock.now();
    QCOMPARE(InitialInformation::getBasicInfoSuccessfully(instrument.portName(), info, _clock),
             VekErrorCode(VekErrorCode::Success));
    QCOMPARE(instrument.commandNames(),
             (QVector<PCcommand_t>{PC_ECHO_TEST, PC_PING, PC_READ_HARDWARE_VERSION, PC_READ_CHANNEL_COUNT,
                                   PC_READ_FIRMWARE_CHECKSUM, PC_GALE_PRE_HANDSHAKE, PC_PING, PC_READ_FIRMWARE_VERSION,
                                   PC_READ_FLASH_CAL, PC_READ_FLASH_CAL, PC_READ_CONFIG}));
    QCOMPARE(instrument.commands()[5].channel, quint8(255));
    QCOMPARE(_clock.now() - before, 1000 + 500); // the echo that does not come, and the time to prepare
}

void TestAdmission::anEchoIsRefused()
{
    FakeInstrument loop;
    loop.setEchoing(true);
    QVERIFY(InitialInformation::PingToInstrument(loop.portName())); // its ping comes back as a reply would
    InstrumentInfo info;
    const VekErrorCode verdict = InitialInformation::getBasicInfoSuccessfully(loop.portName(), info, _clock);
    QCOMPARE(int(verdict), 255);
    QCOMPARE(verdict.message(), QString("Unknown error occurred"));
}

void TestAdmission::aMissingAnswerIsNamed_data()
{
    QTest::addColumn<HardwareModel_t>("model");
    QTest::addColumn<Spoil>("spoil");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("message");
    const auto alder = HardwareModel_t::Alder_2_5;
    const auto gale = HardwareModel_t::Gale;
    const QString because = "A connection with the device could not be successfully established because ";
    const QString restart = " Please try to reconnect after restarting the device.";
    const QString firmware =
        because + "device firmware did not match with API version. Please update device firmware using "
                  "updateFirmwareOnComPort or updateFirmwareOnAllAvailableDevices or use utility application which is "
                  "provided with library.";
    QTest::newRow("ping") << alder << silenceOn(PC_PING) << 1
                          << because + "the device did not respond to ping." + restart;
    QTest::newRow("hardware record") << alder << silenceOn(PC_READ_HARDWARE_VERSION) << 1
                                     << because + "hardware version was not received." + restart;
    QTest::newRow("unknown model")
        << alder
        << answer(PC_READ_HARDWARE_VERSION, NT_HARDWARE_VERSION,
                  AdmittedInstrument::hardwareRecord(HardwareModel_t(36), "X"))
        << 1
        << because + "hardware version is invalid. Please try to reconnect after writing correct hardware information.";
    QTest::newRow("channel count") << alder << silenceOn(PC_READ_CHANNEL_COUNT) << 1
                                   << because + "total number of channels was not received." + restart;
    QTest::newRow("no checksum") << alder << silenceOn(PC_READ_FIRMWARE_CHECKSUM) << 2 << firmware;
    QTest::newRow("wrong checksum") << alder
                                    << answer(PC_READ_FIRMWARE_CHECKSUM, NT_FIRMWARE_CHECKSUM, "\x01\x02\x03\x04") << 2
                                    << firmware;
    QTest::newRow("empty checksum") << alder << answer(PC_READ_FIRMWARE_CHECKSUM, NT_FIRMWARE_CHECKSUM, "") << 2
                                    << firmware;
    QTest::newRow("firmware version") << alder << silenceOn(PC_READ_FIRMWARE_VERSION) << 1
                                      << because + "firmware version was not received." + restart;
    QTest::newRow("calibration") << alder << silenceOn(PC_READ_FLASH_CAL) << 1
                                 << because + "DC calibration data was not received." + restart;
    QTest::newRow("second ping of a Gale")
        << gale << Spoil(answerOnePing) << 1
        << "A connection with the could not be successfully established because the device did not respond to ping." +
               restart;
    QTest::newRow("configuration of a Gale")
        << gale << silenceOn(PC_READ_CONFIG) << 1 << because + "configuration data was not received." + restart;
}

void TestAdmission::aMissingAnswerIsNamed()
{
    QFETCH(HardwareModel_t, model);
    QFETCH(Spoil, spoil);
    AdmittedInstrument instrument(model, "X", 1);
    instrument.setClock(_clock);
    spoil(instrument);
    InstrumentInfo info;
    const VekErrorCode verdict = InitialInformation::getBasicInfoSuccessfully(instrument.portName(), info, _clock);
    QTEST(int(verdict), "code");
    QTEST(verdict.message(), "message");
    QVERIFY(info.comPort.isEmpty()); // set by success alone
}

NIMBRELLE_TEST_MAIN(TestAdmission)
#include "TestAdmission.moc"
