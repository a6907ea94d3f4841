// SPDX-License-Identifier: MIT
#include "images/HexLoader.h"
#include "simulator/GaleBootloader.h"
#include "simulator/HidBootloader.h"
#include "support/TestMain.h"

#include <QDirIterator>

namespace {

const QByteArray record = QByteArray::fromHex("0200000001 02 fb");  // two bytes at the base address
const QByteArray toFlash = QByteArray::fromHex("02000004 1d00 dd"); // base address 0x1D000000
const QByteArray endRecord = QByteArray::fromHex("00000001ff");

} // namespace

/// The instrument's side of an update, which must not be kinder than a real one.
class TestBootloaders : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void checksumsAgreeWithTheImages();
    void flashTakesSoundRecordsAlone_data();
    void flashTakesSoundRecordsAlone();
    void crcCountsFromTwoPlaces();
    void imageIsWholeWithItsEnd();
    void galeWantsItsCodeAndItsPreparation();
    void galeStartsFirmwareAfterAnUpdateAlone();
    void hidDropsDamagedFrames_data();
    void hidDropsDamagedFrames();
};

void TestBootloaders::checksumsAgreeWithTheImages()
{
    QCOMPARE(crc16("123456789"), quint16(0x31C3)); // the published check values
    QCOMPARE(firmwareChecksum("123456789").toHex(), QByteArray("cbf43926"));
    int images = 0;
    for (QDirIterator files(":/VekFirmwareHexFiles"); files.hasNext(); ++images) {
        const QString path = files.next();
        FlashMemory flash;
        flash.load(HexLoader::ReadFile(path));
        QVERIFY2(flash.isComplete(), qPrintable(path));
        const HexCrc crc = HexLoader::CalculateCrc(HexLoader::ReadFile(path));
        QCOMPARE(flash.crc(crc.address, crc.size), crc.crc);
    }
    QVERIFY(images > 0);
}

void TestBootloaders::flashTakesSoundRecordsAlone_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<bool>("isTaken");
    QTest::newRow("data") << QByteArray("02 0000 00 0102 fb") << true;
    QTest::newRow("wrong checksum") << QByteArray("02 0000 00 0102 fc") << false;
    QTest::newRow("a byte short") << QByteArray("02 0000 00 01 fd") << false;
    QTest::newRow("a byte long") << QByteArray("02 0000 00 0102 00 fb") << false;
    QTest::newRow("nothing") << QByteArray() << false;
    QTest::newRow("behind the flash") << QByteArray("02 0000 04 1d20 bd") << true; // refused at its first data
    QTest::newRow("address without address") << QByteArray("00 0000 04 fc") << false;
}

void TestBootloaders::flashTakesSoundRecordsAlone()
{
    QFETCH(QByteArray, line);
    FlashMemory flash;
    QVERIFY(flash.program(toFlash));
    QTEST(flash.program(QByteArray::fromHex(line)), "isTaken");
    const bool isBehind = line.contains("1d20");
    QCOMPARE(flash.program(record), !isBehind);
    flash.program(endRecord);
    QFETCH(bool, isTaken);
    QCOMPARE(flash.isComplete(), isTaken && !isBehind);
}

void TestBootloaders::crcCountsFromTwoPlaces()
{
    FlashMemory flash;
    flash.program(toFlash);
    flash.program(QByteArray::fromHex("02 0004 00 3132 97")); // "12" behind four blank bytes
    QCOMPARE(flash.image(), QByteArray("\xFF\xFF\xFF\xFF"
                                       "12"));
    QCOMPARE(flash.crc(0x9D000004, 6), crc16("12"));
    QCOMPARE(flash.crc(0x9D000004, 8), crc16("12\xFF\xFF")); // blank again
    QCOMPARE(flash.crc(0x9D000004, 4), quint16(0));
    QCOMPARE(flash.crc(0, 6), quint16(0));
}

void TestBootloaders::imageIsWholeWithItsEnd()
{
    FlashMemory flash;
    flash.program(toFlash);
    flash.program(record);
    QVERIFY(!flash.isComplete());
    flash.program(endRecord);
    QVERIFY(flash.isComplete());
    flash.erase();
    QVERIFY(!flash.isComplete());
    QCOMPARE(firmwareChecksum(flash.image()), QByteArray());
}

void TestBootloaders::galeWantsItsCodeAndItsPreparation()
{
    FlashMemory flash;
    flash.load({toFlash, record, endRecord});
    BootFaults faults;
    GaleBootloader bootloader(flash, faults, "hardware", 5);
    const auto answer = [&](PCcommand_t command, const QByteArray &payload = QByteArray()) {
        QByteArray replies;
        bootloader.take(makeFrame(quint8(command), allChannels, payload), replies);
        return replies.toHex(' ');
    };
    const QByteArray refusal = "ee ff %1 00 01 00 01 ee ff %1 01 01 00 01"; // two boards, five channels
    const QByteArray consent = "ee ff %1 00 00 00 ee ff %1 01 00 00";
    const auto by = [](QByteArray text, const char *command) { return text.replace("%1", command); };
    QCOMPARE(answer(PC_BOOT_UNLOCK, "W4TnKqYs8LhBfM2C"), by(refusal, "12"));
    QCOMPARE(answer(PC_BOOT_PREPARE), by(refusal, "13"));
    QCOMPARE(answer(PC_BOOT_RECORD, toFlash), by(refusal, "14"));
    QVERIFY(flash.isComplete()); // nothing was erased
    QCOMPARE(answer(PC_BOOT_UNLOCK, "W4TnKqYs8LhBfM2c"), by(consent, "12"));
    QCOMPARE(answer(PC_BOOT_RECORD, toFlash), by(refusal, "14"));
    QCOMPARE(answer(PC_BOOT_PREPARE), by(consent, "13"));
    QVERIFY(!flash.isComplete());
    QCOMPARE(answer(PC_BOOT_RECORD, toFlash), by(consent, "14"));
    QCOMPARE(answer(PC_BOOT_RECORD, toFlash.chopped(1)), by(refusal, "14"));
    QCOMPARE(answer(PC_EXPERIMENT_START), QByteArray());
}

void TestBootloaders::galeStartsFirmwareAfterAnUpdateAlone()
{
    FlashMemory flash;
    flash.load({toFlash, record, endRecord});
    BootFaults faults;
    GaleBootloader bootloader(flash, faults, "hardware", 2);
    QByteArray replies;
    const QByteArray reset = makeFrame(quint8(PC_SOFT_RESET), allChannels);
    QCOMPARE(bootloader.take(reset, replies), BootEvent::Restart);
    const QByteArray update = makeFrame(quint8(PC_BOOT_UNLOCK), allChannels, "W4TnKqYs8LhBfM2c") +
                              makeFrame(quint8(PC_BOOT_PREPARE), allChannels) +
                              makeFrame(quint8(PC_BOOT_RECORD), allChannels, toFlash);
    QCOMPARE(bootloader.take(update, replies), BootEvent::None);
    QCOMPARE(bootloader.take(reset, replies), BootEvent::Restart); // without its end
    bootloader.take(update, replies);
    bootloader.take(makeFrame(quint8(PC_BOOT_RECORD), allChannels, endRecord), replies);
    QCOMPARE(bootloader.take(reset, replies), BootEvent::StartFirmware);
}

void TestBootloaders::hidDropsDamagedFrames_data()
{
    QTest::addColumn<QByteArray>("report");
    QTest::addColumn<int>("replies");
    // CRC-16/XMODEM of the one byte 0x02 is 0x2042, low byte first in the frame.
    QTest::newRow("erase") << QByteArray("01 02 42 20 04") << 1;
    QTest::newRow("wrong CRC") << QByteArray("01 02 42 21 04") << 0;
    QTest::newRow("no body") << QByteArray("01 00 00 04") << 0;
    QTest::newRow("CRC cut short") << QByteArray("01 02 04") << 0;
    QTest::newRow("begun anew") << QByteArray("01 02 42 01 02 42 20 04") << 1;
    QTest::newRow("two frames") << QByteArray("01 02 42 20 04 ff ff 01 02 42 20 04") << 2;
    QTest::newRow("unknown command") << QByteArray("01 07 e7 70 04") << 0; // 0x70E7
}

void TestBootloaders::hidDropsDamagedFrames()
{
    QFETCH(QByteArray, report);
    QFETCH(int, replies);
    FlashMemory flash;
    BootFaults faults;
    HidBootloader bootloader(flash, faults);
    QList<QByteArray> answers;
    bootloader.take(QByteArray::fromHex(report).leftJustified(HidBootloader::reportSize, '\xFF'), answers);
    QCOMPARE(answers.size(), replies);
    for (const QByteArray &answer : qAsConst(answers))
        QCOMPARE(answer, QByteArray::fromHex("0102422004").leftJustified(HidBootloader::reportSize, '\xFF'));
}

NIMBRELLE_TEST_MAIN(TestBootloaders)
#include "TestBootloaders.moc"
