// SPDX-License-Identifier: MIT
#include "VekDeviceTracker.h"
#include "firmware/FirmwareImages.h"
#include "images/HexLoader.h"
#include "support/TestMain.h"

#include <QDirIterator>

namespace {

const QByteArray permission = "NIMBRELLE_ALLOW_STAND_IN";

/// A line of Intel HEX with the checksum that belongs to it.
QByteArray line(int address, int type, const QByteArray &data)
{
    QByteArray bytes;
    bytes.append(char(data.size())).append(char(address >> 8)).append(char(address)).append(char(type)).append(data);
    int sum = 0;
    for (const char byte : qAsConst(bytes))
        sum += byte;
    return ":" + bytes.append(char(-sum)).toHex() + "\n";
}

const QByteArray toFlash = line(0, 4, QByteArray::fromHex("1d00"));
const QByteArray end = line(0, 1, {});

} // namespace

/// Stand-ins are told from programs, whatever becomes of the file.
class TestFirmwareImages : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { qunsetenv(permission); }
    void standInIsKnownByWhatItStores_data();
    void standInIsKnownByWhatItStores();
    void onlyAWholeProgramOfItsFamilyMayBeWritten_data();
    void onlyAWholeProgramOfItsFamilyMayBeWritten();
    void everyImageOfTheSourcesIsAStandIn();
    void onlyTheOneValueAllowsThem();

private:
    QString write(const QByteArray &content);

    QTemporaryDir _folder;
};

QString TestFirmwareImages::write(const QByteArray &content)
{
    QFile file(_folder.filePath("image.hex"));
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(content) != content.size())
        qFatal("The test's image cannot be written");
    return file.fileName();
}

void TestFirmwareImages::standInIsKnownByWhatItStores_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<bool>("isStandIn");
    const QByteArray mark = "stand-in for Nimbrelle_X.hex";
    QTest::newRow("as it was made") << toFlash + line(0, 0, mark) + end + ";12ab\n;GALE\n" << true;
    QTest::newRow("without its comments") << toFlash + line(0, 0, mark) + end << true;
    QTest::newRow("in shorter records") << toFlash + line(0, 0, mark.left(9)) + line(9, 0, mark.mid(9)) + end << true;
    QTest::newRow("in another order") << toFlash + line(9, 0, mark.mid(9)) + line(0, 0, mark.left(9)) + end << true;
    QTest::newRow("program") << toFlash + line(0, 0, QByteArray::fromHex("00601a40")) + end + ";12ab\n;GALE\n" << false;
    QTest::newRow("program that has the words elsewhere") << toFlash + line(0, 0, "x" + mark) + end << false;
    QTest::newRow("comment that has the words") << ";" + mark + "\n" + toFlash + line(0, 0, "x") + end << false;
}

void TestFirmwareImages::standInIsKnownByWhatItStores()
{
    QFETCH(QByteArray, content);
    QFETCH(bool, isStandIn);
    const QString path = write(content);
    const QList<QByteArray> records = HexLoader::ReadFile(path);
    QVERIFY(!records.isEmpty());
    QCOMPARE(FirmwareImages::isRefusedStandIn(records), isStandIn);
    QCOMPARE(FirmwareImages::recordsToWrite(path).isEmpty(), isStandIn);
    qputenv(permission, "1");
    QCOMPARE(FirmwareImages::recordsToWrite(path), records);
}

void TestFirmwareImages::onlyAWholeProgramOfItsFamilyMayBeWritten_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<int>("code");
    const QByteArray program = toFlash + line(0, 0, QByteArray::fromHex("00601a40"));
    const QByteArray signature = ";12ab\n;GALE\n";
    QTest::newRow("whole") << program + end + signature << int(VekErrorCode::Success);
    QTest::newRow("family in lower case") << program + end + ";12ab\n;gale\n" << int(VekErrorCode::Success);
    QTest::newRow("another family") << program + end + ";12ab\n;GALE_2\n" << int(VekErrorCode::FirmwareFileNotFound);
    QTest::newRow("signature cut off") << program + end + ";12ab\n" << int(VekErrorCode::FirmwareFileNotFound);
    QTest::newRow("without its end") << program + signature << int(VekErrorCode::FirmwareFileNotFound);
    QTest::newRow("without a program") << toFlash + end + signature << int(VekErrorCode::FirmwareFileNotFound);
    QTest::newRow("empty") << QByteArray() << int(VekErrorCode::FirmwareFileNotFound);
}

void TestFirmwareImages::onlyAWholeProgramOfItsFamilyMayBeWritten()
{
    QFETCH(QByteArray, content);
    QTEST(int(FirmwareImages::verdictOn(write(content), "GALE").value()), "code");
}

void TestFirmwareImages::everyImageOfTheSourcesIsAStandIn()
{
    int images = 0;
    for (QDirIterator files(NIMBRELLE_STAND_IN_DIR, {"*.hex"}); files.hasNext(); ++images) {
        const QString path = files.next();
        QVERIFY2(FirmwareImages::recordsToWrite(path).isEmpty(), qPrintable(path));
    }
    QCOMPARE(images, 12);
    QVERIFY(VekDeviceTracker::carriesStandInFirmware());
}

void TestFirmwareImages::onlyTheOneValueAllowsThem()
{
    const int alder = int(HardwareModel_t::Alder_2_5);
    for (const char *value : {"", "0", "yes", "11"}) {
        qputenv(permission, value);
        QCOMPARE(FirmwareImages::verdictOn(alder).value(), VekErrorCode::StandInFirmware);
    }
    qputenv(permission, "1");
    QCOMPARE(FirmwareImages::verdictOn(alder).value(), VekErrorCode::Success);
    QCOMPARE(FirmwareImages::verdictOn(200).value(), VekErrorCode::FirmwareFileNotFound);
}

NIMBRELLE_TEST_MAIN(TestFirmwareImages)
#include "TestFirmwareImages.moc"
