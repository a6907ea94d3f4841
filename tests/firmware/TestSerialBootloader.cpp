// SPDX-License-Identifier: MIT
#include "firmware/BootLoaderCOM.h"
#include "firmware/FirmwareImages.h"
#include "firmware/SerialBootloader.h"
#include "support/FakeInstrument.h"
#include "support/SteppedClock.h"
#include "support/TestMain.h"
#include "support/UnreadableFile.h"

#include <QSerialPort>

namespace {

/// Outlives the application object, and the bootloaders with it.
SteppedClock hostClock(SteppedClock::Use::AsHost);

/// An image of which one record can be read; from there on every read fails, short of the size that it claims.
class BrokenImage : public QIODevice
{
public:
    BrokenImage() { open(QIODevice::ReadOnly); }

    qint64 size() const override { return 4096; }
    bool atEnd() const override { return _failures > 1000; } // so that a reader that waits for the end gets there
    int failures() const { return _failures; }

protected:
    qint64 readData(char *data, qint64) override
    {
        if (pos() > 0) {
            ++_failures;
            return -1;
        }
        const QByteArray record = ":00000001FF\n";
        std::copy(record.begin(), record.end(), data);
        return record.size();
    }
    qint64 writeData(const char *, qint64) override { return -1; }

private:
    int _failures = 0;
};

/// The image's lines as the boards get them.
QList<QByteArray> recordsIn(const QByteArray &image)
{
    QList<QByteArray> records;
    for (const QByteArray &line : image.split('\n')) {
        if (line.startsWith(':'))
            records.append(QByteArray::fromHex(line));
    }
    return records;
}

} // namespace

/// An update over the serial port, with a fake of two boards at the other end.
class TestSerialBootloader : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void everyBoardGetsTheImage_data();
    void everyBoardGetsTheImage();
    void instrumentWithoutBoardsIsNotWaitedFor();
    void failureEndsTheUpdate_data();
    void failureEndsTheUpdate();
    void otherModelIsNotReset();
    void missingImageTouchesNothing();
    void unreadableImageFails();
    void readingEndsWhereTheImageBreaksOff();
    void standInTouchesNothing();

private:
    void answerByBoards(PCcommand_t command);
    void flash(const QByteArray &image);
    QList<QByteArray> received() const;

    QTemporaryDir _folder;
    QScopedPointer<FakeInstrument> _instrument;
    QScopedPointer<QSignalSpy> _found;
    QScopedPointer<QSignalSpy> _progress;
    QScopedPointer<QSignalSpy> _finished;
    int _boards = 2;
};

void TestSerialBootloader::init()
{
    BootLoaderCOM *const bootloader = BootLoaderCOM::Instance();
    _found.reset(new QSignalSpy(bootloader, &BootLoaderCOM::Found));
    _progress.reset(new QSignalSpy(bootloader, &BootLoaderCOM::Progress));
    _finished.reset(new QSignalSpy(bootloader, &BootLoaderCOM::Finished));
    _boards = 2;
    for (const int pauseMs : {5, 100}) // between tries to open the port, and behind a reset
        hostClock.hurry(pauseMs);
    _instrument.reset(new FakeInstrument);
    _instrument->reply(PC_PING, NT_PING_REPLY);
    _instrument->reply(PC_READ_HARDWARE_VERSION, NT_HARDWARE_VERSION,
                       QByteArray("\x12Gale-7\n").leftJustified(64, '\0'));
    _instrument->reply(PC_READ_CHANNEL_COUNT, NT_CHANNEL_COUNT, "\x04");
    for (const PCcommand_t command : {PC_BOOT_UNLOCK, PC_BOOT_PREPARE, PC_BOOT_RECORD})
        answerByBoards(command);
}

void TestSerialBootloader::answerByBoards(PCcommand_t command)
{
    _instrument->on(command, [this, command](const FakeInstrument::Command &) {
        for (int board = 0; board < _boards; ++board)
            _instrument->send(Notifications_t(command), quint8(board));
    });
}

void TestSerialBootloader::flash(const QByteArray &image)
{
    QFile file(_folder.filePath("image.hex"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(image);
    file.close();
    BootLoaderCOM::Instance()->flash(_instrument->portName(), file.fileName(), "Gale-7");
}

QList<QByteArray> TestSerialBootloader::received() const
{
    QList<QByteArray> records;
    for (const FakeInstrument::Command &command : _instrument->commands()) {
        if (command.command == PC_BOOT_RECORD)
            records.append(command.payload);
    }
    return records;
}

void TestSerialBootloader::everyBoardGetsTheImage_data()
{
    QTest::addColumn<QByteArray>("image");
    QTest::addColumn<QList<int>>("percents");
    const QByteArray record = ":020000000102FB\n";
    const QByteArray end = ":00000001FF\n";
    // All of a short image is in flight at once, so that only the end tells a progress.
    QTest::newRow("five records") << record.repeated(4) + end + ";12ab\n;GALE\n" << QList<int>{100};
    QTest::newRow("nine and a signature") << record.repeated(8) + end + ";12ab\n;GALE\n" << QList<int>{11, 22, 100};
    QTest::newRow("ten records") << record.repeated(9) + end << QList<int>{10, 20, 100};
}

void TestSerialBootloader::everyBoardGetsTheImage()
{
    QFETCH(QByteArray, image);
    flash(image);
    QTRY_COMPARE_WITH_TIMEOUT(_finished->size(), 1, 60000);
    QCOMPARE(_finished->first(), QVariantList({"Gale-7", true}));
    QCOMPARE(received(), recordsIn(image));
    QCOMPARE(_found->first(), QVariantList({"Gale-7\n"}));
    QList<int> percents;
    for (const QVariantList &arguments : *_progress)
        percents.append(arguments.at(1).toInt());
    QTEST(percents, "percents");

    QCOMPARE(_instrument->count(PC_PING), 2); // the firmware, then the bootloader
    QTRY_COMPARE(_instrument->count(PC_SOFT_RESET), 2);
    for (const FakeInstrument::Command &command : _instrument->commands()) {
        const bool isForAll = command.command == PC_SOFT_RESET || command.command < PC_PING;
        QCOMPARE(int(command.channel), isForAll ? 255 : 0);
        if (command.command == PC_BOOT_UNLOCK)
            QCOMPARE(command.payload, QByteArray("W4TnKqYs8LhBfM2c"));
    }
}

void TestSerialBootloader::instrumentWithoutBoardsIsNotWaitedFor()
{
    _boards = 0;
    _instrument->reply(PC_READ_CHANNEL_COUNT, NT_CHANNEL_COUNT, "\x01");
    flash(":020000000102FB\n:00000001FF\n");
    QTRY_COMPARE_WITH_TIMEOUT(_finished->size(), 1, 60000);
    QCOMPARE(_finished->first(), QVariantList({"Gale-7", true}));
}

void TestSerialBootloader::failureEndsTheUpdate_data()
{
    QTest::addColumn<int>("command");
    QTest::addColumn<int>("answeringBoards");
    QTest::newRow("silent") << int(PC_PING) << 0;
    QTest::newRow("no channel count") << int(PC_READ_CHANNEL_COUNT) << 0;
    QTest::newRow("one board only") << int(PC_BOOT_UNLOCK) << 1;
    QTest::newRow("other reply") << int(PC_BOOT_RECORD) << -1;
}

void TestSerialBootloader::failureEndsTheUpdate()
{
    QFETCH(int, command);
    QFETCH(int, answeringBoards);
    QTimer passing; // until it has failed, several waits of 5 s may begin
    connect(&passing, &QTimer::timeout, this, [] { hostClock.step(1000); });
    _instrument->on(PCcommand_t(command), [=, &passing](const FakeInstrument::Command &) {
        passing.start(20);
        if (answeringBoards < 0)
            _instrument->send(Notifications_t(command), 0, "refused");
        else if (answeringBoards > 0)
            _instrument->send(Notifications_t(command), 0);
    });
    flash(":020000000102FB\n:00000001FF\n");
    QTRY_COMPARE_WITH_TIMEOUT(_finished->size(), 1, 60000);
    QCOMPARE(_finished->first(), QVariantList({"Gale-7", false}));
    QVERIFY(_progress->isEmpty() || _progress->last().at(1).toInt() < 100);

    // The port is free again: the next try succeeds.
    passing.stop();
    init();
    flash(":020000000102FB\n:00000001FF\n");
    QTRY_COMPARE_WITH_TIMEOUT(_finished->size(), 1, 60000);
    QCOMPARE(_finished->first(), QVariantList({"Gale-7", true}));
}

void TestSerialBootloader::missingImageTouchesNothing()
{
    BootLoaderCOM::Instance()->flash(_instrument->portName(), _folder.filePath("none.hex"), "Gale-7");
    QTRY_COMPARE(_finished->size(), 1);
    QCOMPARE(_finished->first(), QVariantList({"Gale-7", false}));
    QVERIFY(_instrument->commands().isEmpty());
}

void TestSerialBootloader::unreadableImageFails()
{
    const QString image = unreadableFile();
    if (image.isEmpty())
        QSKIP("no file here whose reading fails");
    BootLoaderCOM::Instance()->flash(_instrument->portName(), image, "Gale-7");
    QTRY_COMPARE_WITH_TIMEOUT(_finished->size(), 1, 60000);
    QCOMPARE(_finished->first(), QVariantList({"Gale-7", false}));
    QVERIFY(received().isEmpty());
}

void TestSerialBootloader::readingEndsWhereTheImageBreaksOff()
{
    QSerialPort port(_instrument->portName());
    QVERIFY(port.open(QIODevice::ReadWrite));
    BrokenImage image;
    QCOMPARE(SerialBootloader::writeRecords(port, image, 8), 1);
    QVERIFY2(image.failures() < 10, qPrintable(QString::number(image.failures())));
    QVERIFY(!image.atEnd());
}

void TestSerialBootloader::otherModelIsNotReset()
{
    _instrument->reply(PC_READ_HARDWARE_VERSION, NT_HARDWARE_VERSION,
                       QByteArray("\x23Gale-7\n").leftJustified(64, '\0'));
    flash(":020000000102FB\n:00000001FF\n");
    QTRY_COMPARE_WITH_TIMEOUT(_finished->size(), 1, 60000);
    QCOMPARE(_finished->first(), QVariantList({"Gale-7", false}));
    QCOMPARE(_instrument->count(PC_SOFT_RESET), 0);
}

void TestSerialBootloader::standInTouchesNothing()
{
    BootLoaderCOM::Instance()->flash(_instrument->portName(), FirmwareImages::pathFor(int(HardwareModel_t::Gale)),
                                     "Gale-7");
    QTRY_COMPARE(_finished->size(), 1);
    QCOMPARE(_finished->first(), QVariantList({"Gale-7", false}));
    QVERIFY(_instrument->commands().isEmpty());
}

NIMBRELLE_TEST_MAIN(TestSerialBootloader)
#include "TestSerialBootloader.moc"
