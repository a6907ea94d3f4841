// SPDX-License-Identifier: MIT
#include "session/InitialInformation.h"

#include "link/SerialCommunicator.h"
#include "session/AdmittedInstrument.h"
#include "support/PostedEvents.h"
#include "support/TestMain.h"

namespace {

/// What a slot of the client does while an answer is on its way.
enum class Hold { BeforeDelivery, InNestedLoop };

} // namespace
Q_DECLARE_METATYPE(Hold)

/// Single questions of the handshake: what counts as an answer and what is taken from it.
class TestQuestions : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void theNameEndsAtTheFirstLineFeed_data();
    void theNameEndsAtTheFirstLineFeed();
    void aShortHardwareRecordIsFilledUp();
    void aHardwareRecordOfAnotherSizeIsIgnored();
    void aChannelCountOfTwoBytesIsIgnored();
    void textsAndChecksumAreTakenOver();
    void aCalibrationOfAnotherChannelIsIgnored();
    void aDoubledAnswerCountsOnce();
    void missingCalibrationsAreAllAskedFor();
    void aGaleBoardConfiguresBothChannels();
    void anOddGaleChannelHasNoPartner();
    void onlyTheGaleHasConfigurations();
    void aSilentPortDoesNotAnswerThePing();
    void aLostPortEndsTheQuestion();
    void nothingIsAskedOfADeadLink();
    void anAnswerInTimeCounts_data();
    void anAnswerInTimeCounts();
    void firmwareWithoutChecksumNeverMatches();
    void lettersOfTheChecksumAreAlike();

private:
    SteppedClock _clock;
    std::unique_ptr<AdmittedInstrument> _instrument;
    std::unique_ptr<SerialCommunicator> _link;
    InstrumentInfo _info;
};

void TestQuestions::init()
{
    _instrument = std::make_unique<AdmittedInstrument>();
    _instrument->setClock(_clock);
    _link = std::make_unique<SerialCommunicator>(_instrument->portName(), nullptr, _clock);
    QVERIFY(_link->Start(true));
    _info = InstrumentInfo();
    _info.hardware.hwModel = HardwareModel_t::Alder_2_5;
    _info.deviceName = "Alder-0042";
}

void TestQuestions::cleanup()
{
    _link.reset();
    _instrument.reset();
}

void TestQuestions::theNameEndsAtTheFirstLineFeed_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("name");
    QTest::newRow("plain") << QByteArray("Alder-0042\nfirmware's own\n") << "Alder-0042";
    QTest::newRow("empty") << QByteArray("\nAlder") << "";
    QTest::newRow("NUL before the line feed") << QByteArray("Al\0der\n", 7) << "Al";
    QTest::newRow("no line feed") << QByteArray(255, 'x') << QString(254, 'x');
    QTest::newRow("line feed in the last byte") << QByteArray(254, 'x') + '\n' << QString(254, 'x');
    QTest::newRow("no line feed but a NUL") << QByteArray("Alder").leftJustified(255, '\0') << "Alder";
    QTest::newRow("UTF-8") << QByteArray("Gr\xc3\xbcn\n") << QString::fromUtf8("Grün");
}

void TestQuestions::theNameEndsAtTheFirstLineFeed()
{
    QFETCH(QByteArray, text);
    const QByteArray record = (QByteArray(1, char(HardwareModel_t::Alder_2_5)) + text).leftJustified(256, '\0');
    _instrument->reply(PC_READ_HARDWARE_VERSION, NT_HARDWARE_VERSION, record);
    QVERIFY(!InitialInformation::getHardwareVersion(*_link, _info));
    QTEST(_info.deviceName, "name");
    QCOMPARE(QByteArray(reinterpret_cast<const char *>(&_info.hardware), 256), record); // stays as it came
}

void TestQuestions::aShortHardwareRecordIsFilledUp()
{
    std::memset(_info.hardware.rest, 'x', sizeof _info.hardware.rest);
    _instrument->reply(PC_READ_HARDWARE_VERSION, NT_HARDWARE_VERSION,
                       AdmittedInstrument::hardwareRecord(HardwareModel_t::Gale, "G").left(64));
    QVERIFY(!InitialInformation::getHardwareVersion(*_link, _info));
    QCOMPARE(_info.hardware.hwModel, HardwareModel_t::Gale);
    QCOMPARE(QByteArray(_info.hardware.rest, 255), QByteArray("G\n").leftJustified(255, '\0'));
}

void TestQuestions::aHardwareRecordOfAnotherSizeIsIgnored()
{
    _instrument->reply(PC_READ_HARDWARE_VERSION, NT_HARDWARE_VERSION, QByteArray(100, '\x04'));
    connect(_link.get(), &SerialCommunicator::ResponseReceived, this,
            [this] { _clock.step(1000); }); // it has been seen
    QVERIFY(InitialInformation::getHardwareVersion(*_link, _info));
    QCOMPARE(_info.hardware.hwModel, HardwareModel_t::Alder_2_5);
}

void TestQuestions::aChannelCountOfTwoBytesIsIgnored()
{
    _instrument->on(PC_READ_CHANNEL_COUNT, [this](const FakeInstrument::Command &) {
        _instrument->send(NT_CHANNEL_COUNT, 0, QByteArray("\x08\x00", 2));
        _instrument->send(NT_CHANNEL_COUNT, 0, QByteArray("\x10", 1));
    });
    QVERIFY(!InitialInformation::getChannelAmount(*_link, _info));
    QCOMPARE(int(_info.channelCount), 16);
}

void TestQuestions::textsAndChecksumAreTakenOver()
{
    _instrument->reply(PC_READ_FIRMWARE_VERSION, NT_FIRMWARE_VERSION, QByteArray("2.5.1\0tail", 10));
    QVERIFY(!InitialInformation::getFirmwareVersion(*_link, _info));
    QCOMPARE(_info.firmwareVersion, QString("2.5.1"));
    _instrument->reply(PC_READ_FIRMWARE_CHECKSUM, NT_FIRMWARE_CHECKSUM, QByteArray("\x0a\xbc\x00\x1f", 4));
    QVERIFY(!InitialInformation::getFirmwareChecksum(*_link, _info));
    QCOMPARE(_info.firmwareChecksum, QString("0ABC001F"));
}

void TestQuestions::aCalibrationOfAnotherChannelIsIgnored()
{
    const QByteArray usable = QByteArray("400v") + QByteArray(372, '\0');
    _instrument->on(PC_READ_FLASH_CAL, [this, usable](const FakeInstrument::Command &command) {
        _instrument->send(NT_RAW_CAL_DATA, quint8(command.channel + 1), QByteArray(376, 'x'));
        _instrument->send(NT_RAW_CAL_DATA, command.channel, usable);
    });
    _info.channelCount = 3;
    QVERIFY(!InitialInformation::getCalData(*_link, _info));
    QCOMPARE(_info.calibration.size(), 3);
    for (const CalibrationData &calibration : qAsConst(_info.calibration))
        QCOMPARE(calibration.getCalVersion(), 4);
}

void TestQuestions::aDoubledAnswerCountsOnce()
{
    _instrument->on(PC_READ_FLASH_CAL, [this](const FakeInstrument::Command &command) {
        _instrument->send(NT_RAW_CAL_DATA, command.channel, "400v");
        _instrument->send(NT_RAW_CAL_DATA, command.channel, "vc07");
    });
    _info.channelCount = 2;
    QVERIFY(!InitialInformation::getCalData(*_link, _info));
    QCOMPARE(_info.calibration.size(), 2);
    QCOMPARE(_info.calibration[0].getCalVersion(), 4);
    QCOMPARE(_info.calibration[1].getCalVersion(), 4);
}

void TestQuestions::missingCalibrationsAreAllAskedFor()
{
    _instrument->on(PC_READ_FLASH_CAL, [this](const FakeInstrument::Command &command) {
        if (command.channel != 1)
            _instrument->send(NT_RAW_CAL_DATA, command.channel, "400v");
    });
    _info.channelCount = 3;
    QTest::ignoreMessage(QtDebugMsg, "Error: Calibration data for Alder-0042 channel 1 was not returned by the device");
    QVERIFY(InitialInformation::getCalData(*_link, _info));
    QCOMPARE(_instrument->count(PC_READ_FLASH_CAL), 3);
}

void TestQuestions::aGaleBoardConfiguresBothChannels()
{
    _info.hardware.hwModel = HardwareModel_t::Gale;
    _info.channelCount = 4;
    QVERIFY(!InitialInformation::getCalData(*_link, _info));
    _instrument->on(PC_READ_CONFIG, [this](const FakeInstrument::Command &command) {
        QByteArray config(288, '\0');
        config[0] = char(10 + command.channel); // the version, its first field
        _instrument->send(NT_CONFIG, command.channel, QByteArray(287, 'x'));
        _instrument->send(NT_CONFIG, command.channel, config);
    });
    QVERIFY(!InitialInformation::getConfigData(*_link, _info));
    QCOMPARE(_instrument->count(PC_READ_CONFIG), 2);
    const int versions[] = {10, 10, 12, 12};
    for (int channel = 0; channel < 4; ++channel)
        QCOMPARE(int(_info.calibration[channel].getGaleCfg().cfgVersion), versions[channel]);
}

void TestQuestions::anOddGaleChannelHasNoPartner()
{
    _info.hardware.hwModel = HardwareModel_t::Gale;
    _info.channelCount = 3;
    QVERIFY(!InitialInformation::getCalData(*_link, _info));
    QTest::ignoreMessage(QtWarningMsg, "Unable to update info for channel 3");
    QVERIFY(!InitialInformation::getConfigData(*_link, _info));
}

void TestQuestions::onlyTheGaleHasConfigurations()
{
    _info.channelCount = 2;
    QVERIFY(!InitialInformation::getConfigData(*_link, _info));
    QVERIFY(!InitialInformation::doHandShake(*_link)); // whatever had been asked would have arrived before it
    QCOMPARE(_instrument->count(PC_READ_CONFIG), 0);
}

void TestQuestions::aSilentPortDoesNotAnswerThePing()
{
    _link.reset(); // two openers of one port would take each other's bytes
    QVERIFY(InitialInformation::PingToInstrument(_instrument->portName(), _clock));
    _instrument->on(PC_PING, [this](const FakeInstrument::Command &) {
        _clock.step(999);
        _instrument->send(NT_PING_REPLY, 0);
    });
    QVERIFY(InitialInformation::PingToInstrument(_instrument->portName(), _clock)); // in the last millisecond
    _instrument->fallSilentOn(PC_PING);
    QVERIFY(!InitialInformation::PingToInstrument(_instrument->portName(), _clock));
}

void TestQuestions::aLostPortEndsTheQuestion()
{
    _instrument->on(PC_PING, [this](const FakeInstrument::Command &) { _instrument->unplug(); });
    QVERIFY(InitialInformation::doHandShake(*_link)); // time stands still
    QVERIFY(!InitialInformation::PingToInstrument("/dev/pts/no-such-port", _clock));
}

void TestQuestions::nothingIsAskedOfADeadLink()
{
    _info.hardware.hwModel = HardwareModel_t::Gale;
    _info.channelCount = 16;
    _instrument->on(PC_READ_FLASH_CAL, [this](const FakeInstrument::Command &) { _instrument->unplug(); });
    QVERIFY(InitialInformation::getCalData(*_link, _info)); // time stands still
    QVERIFY(InitialInformation::getConfigData(*_link, _info));
    QVERIFY(InitialInformation::getFirmwareVersion(*_link, _info));
}

void TestQuestions::anAnswerInTimeCounts_data()
{
    QTest::addColumn<Hold>("hold");
    QTest::newRow("a slot holds the thread before the answer is delivered") << Hold::BeforeDelivery;
    QTest::newRow("a slot runs an event loop of its own") << Hold::InNestedLoop;
}

/// A slot of the client holds the thread until the second is over; the answer has come long before.
void TestQuestions::anAnswerInTimeCounts()
{
    QFETCH(Hold, hold);
    QSignalSpy answers(_link.get(), &SerialCommunicator::ResponseReceived);
    _instrument->on(PC_PING, [&](const FakeInstrument::Command &) {
        _instrument->send(NT_PING_REPLY, 0);
        if (hold == Hold::BeforeDelivery)
            QVERIFY(waitForPostedEvent());
        if (hold == Hold::InNestedLoop)
            QVERIFY(answers.wait());
        _clock.step(1000);
        if (hold == Hold::InNestedLoop)
            QCoreApplication::processEvents();
    });
    QVERIFY(!InitialInformation::doHandShake(*_link));
}

void TestQuestions::firmwareWithoutChecksumNeverMatches()
{
    QVERIFY(!InitialInformation::hasCorrectFirmware(_info)); // none received
    _info.hardware.hwModel = HardwareModel_t::Cedar;         // no image carried
    QVERIFY(!InitialInformation::hasCorrectFirmware(_info));
    _info.firmwareChecksum = "00";
    QVERIFY(!InitialInformation::hasCorrectFirmware(_info));
}

void TestQuestions::lettersOfTheChecksumAreAlike()
{
    QVERIFY(!InitialInformation::getFirmwareChecksum(*_link, _info));
    QVERIFY(InitialInformation::hasCorrectFirmware(_info));
    _info.firmwareChecksum = _info.firmwareChecksum.toLower();
    QVERIFY(InitialInformation::hasCorrectFirmware(_info));
}

NIMBRELLE_TEST_MAIN(TestQuestions)
#include "TestQuestions.moc"
