// SPDX-License-Identifier: MIT
#include "benchmarks/reference/PlainHexText.h"
#include "images/CrcCalculator.h"
#include "images/HexLoader.h"
#include "support/TestMain.h"

#include <random>

namespace {

/// A record with the checksum that belongs to it.
QByteArray record(int address, int type, const QByteArray &data)
{
    QByteArray bytes;
    bytes.append(char(data.size())).append(char(address >> 8)).append(char(address)).append(char(type)).append(data);
    int sum = 0;
    for (const char byte : bytes)
        sum += byte;
    return bytes.append(char(-sum));
}

const QByteArray toFlash = record(0, 4, QByteArray::fromHex("1d00")); // 0x1D000000, seen at 0x9D000000
const QByteArray nineDigits = "123456789";                            // the CRC's published vector, 0x31C3

} // namespace

class TestHexLoader : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void crcHasItsPublishedValue();
    void recordIsChecked_data();
    void recordIsChecked();
    void damagedRecordIsReadByItsWrittenForm();
    void fileIsReadWholeOrNotAtAll_data();
    void fileIsReadWholeOrNotAtAll();
    void signatureIsTheLastTwoLines_data();
    void signatureIsTheLastTwoLines();
    void missingFileIsEmpty();
    void flashIsRebuilt_data();
    void flashIsRebuilt();

private:
    QString write(const QByteArray &content);

    QTemporaryDir _folder;
};

QString TestHexLoader::write(const QByteArray &content)
{
    QFile file(_folder.filePath("image.hex"));
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(content) != content.size())
        qFatal("The test's image cannot be written");
    return file.fileName();
}

void TestHexLoader::crcHasItsPublishedValue()
{
    QCOMPARE(int(CrcCalculator::Get16("123456789", 9)), 0x31C3);
    QCOMPARE(int(CrcCalculator::Get16(nullptr, 0)), 0);
    QCOMPARE(int(CrcCalculator::Get16("\x80", 1)), 0x9188); // the high bit is no sign
}

void TestHexLoader::recordIsChecked_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QByteArray>("bytes"); // empty: refused
    QTest::newRow("end of file") << ":00000001FF" << QByteArray::fromHex("00000001ff");
    QTest::newRow("data") << ":02000000abcd86" << QByteArray::fromHex("02000000abcd86");
    QTest::newRow("line feed") << ":02000000ABCD86\r\n" << QByteArray::fromHex("02000000abcd86");
    QTest::newRow("text without hexadecimal in front") << "xyz :00000001FF" << QByteArray::fromHex("00000001ff");
    QTest::newRow("hexadecimal in front") << "00:00000001FF" << QByteArray();
    QTest::newRow("checksum") << ":02000000ABCD87" << QByteArray();
    QTest::newRow("length") << ":03000000ABCD85" << QByteArray();
    QTest::newRow("no colon") << "00000001FF" << QByteArray();
    QTest::newRow("cut short") << ":000000FF" << QByteArray();
    QTest::newRow("blank") << "" << QByteArray();
    const QByteArray longest = record(0, 0, QByteArray(127, 'x'));
    QTest::newRow("127 data bytes") << ":" + QString::fromLatin1(longest.toHex()) << longest;
    const QByteArray tooLong = record(0, 0, QByteArray(128, 'x'));
    QTest::newRow("128 data bytes") << ":" + QString::fromLatin1(tooLong.toHex()) << QByteArray();
}

void TestHexLoader::recordIsChecked()
{
    QFETCH(QString, line);
    QFETCH(QByteArray, bytes);
    QByteArray decoded = "untouched";
    QCOMPARE(ReadHexRecord(line, decoded), !bytes.isEmpty());
    QCOMPARE(decoded, bytes.isEmpty() ? QByteArray("untouched") : bytes);
}

/// A record of up to 140 data bytes, in either case, with up to three characters put in or taken out.
static QString damagedLine(std::mt19937 &random)
{
    const QByteArray digits =
        record(int(random()) & 0xFFFF, 0, QByteArray(int(random() % 140), char(random()))).toHex();
    QString line = ':' + QString::fromLatin1(random() % 2 ? digits : digits.toUpper());
    const QString strays = QStringLiteral(":;gF0 \u00e9\u0141\n") + QChar(0);
    for (unsigned damage = random() % 4; damage > 0; --damage) {
        const int place = int(random()) & 0xFFFF;
        if (random() % 4 == 0)
            line.remove(place % line.size(), 1);
        else // in front of the colon, among the first digits, anywhere
            line.insert(place % std::min(line.size(), 1 << random() % 9),
                        strays.at(int(random() % unsigned(strays.size()))));
    }
    return line;
}

void TestHexLoader::damagedRecordIsReadByItsWrittenForm()
{
    std::mt19937 random(1);
    int sound = 0;
    for (int i = 0; i < 20000; ++i) {
        const QString line = damagedLine(random);
        QByteArray record = "untouched", plain = "untouched";
        const bool isSound = ReadHexRecord(line, record);
        QVERIFY2(isSound == plainHexRecord(line, plain), qPrintable(line));
        QCOMPARE(record, plain);
        sound += isSound;
    }
    QVERIFY2(sound > 4000 && sound < 16000, "both kinds are many");
}

void TestHexLoader::fileIsReadWholeOrNotAtAll_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<int>("records");
    QTest::newRow("good") << QByteArray(":02000000ABCD86\n:00000001FF\n;1234\n;ALDER\n") << 2;
    QTest::newRow("comment between") << QByteArray(":02000000ABCD86\n;note\n:00000001FF") << 2;
    QTest::newRow("bad checksum at the end") << QByteArray(":02000000ABCD86\n:00000001FE\n") << 0;
    QTest::newRow("blank line") << QByteArray(":02000000ABCD86\n\n:00000001FF\n") << 0;
    QTest::newRow("comment that does not begin its line") << QByteArray(":00000001FF\n ;note\n") << 0;
    QTest::newRow("nothing") << QByteArray() << 0;
}

void TestHexLoader::fileIsReadWholeOrNotAtAll()
{
    QFETCH(QByteArray, content);
    QTEST(HexLoader::ReadFile(write(content)).size(), "records");
}

void TestHexLoader::signatureIsTheLastTwoLines_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("checksum");
    QTest::newRow("line feed at the end") << QByteArray(":00000001FF\n;12ab\n;GALE\n") << "GALE"
                                          << "12ab";
    QTest::newRow("none") << QByteArray(":00000001FF\n;12ab\n;GALE") << "GALE"
                          << "12ab";
    QTest::newRow("only one is ignored") << QByteArray(";12ab\n;GALE\n\n") << ""
                                         << "GALE";
    QTest::newRow("blank line between") << QByteArray(";12ab\n\n;GALE\n") << "GALE"
                                        << "";
    QTest::newRow("all comment signs go") << QByteArray(";;1;2\n;G;A;\n") << "GA"
                                          << "12";
    QTest::newRow("one line") << QByteArray(";GALE") << "GALE"
                              << "";
    QTest::newRow("nothing") << QByteArray() << ""
                             << "";
}

void TestHexLoader::signatureIsTheLastTwoLines()
{
    QFETCH(QByteArray, content);
    const HexSignature signature = HexLoader::ReadHexSignature(write(content));
    QTEST(signature.text, "text");
    QTEST(signature.checksum, "checksum");
}

void TestHexLoader::missingFileIsEmpty()
{
    const QString path = HexLoader::getDefaultHexPath("NoLongerSupported");
    QCOMPARE(path, QString(":/VekFirmwareHexFiles/NoLongerSupported"));
    QVERIFY(HexLoader::ReadFile(path).isEmpty());
    QVERIFY(HexLoader::ReadHexSignature(path).checksum.isEmpty());
}

void TestHexLoader::flashIsRebuilt_data()
{
    QTest::addColumn<QList<QByteArray>>("records");
    QTest::addColumn<quint32>("address");
    QTest::addColumn<quint32>("size");
    QTest::addColumn<int>("crc");
    using Records = QList<QByteArray>;
    const QByteArray end = record(0, 1, {});
    const QByteArray digits = record(0, 0, nineDigits);
    const QByteArray gap = QByteArray("1") + QByteArray(3, '\xFF') + QByteArray("2");

    QTest::newRow("no records") << Records{} << 0xFFFFFFFFu << 0u << 0;
    QTest::newRow("start of the flash") << Records{toFlash, digits, end} << 0x9D000000u << 9u << 0x31C3;
    // The size counts from the start of the flash, the CRC from the lowest address.
    QTest::newRow("higher up") << Records{toFlash, record(0x10, 0, nineDigits)} << 0x9D000010u << 25u << 0x31C3;
    QTest::newRow("out of order") << Records{toFlash, record(5, 0, "6789"), record(0, 0, "12345")} << 0x9D000000u << 9u
                                  << 0x31C3;
    QTest::newRow("second wins") << Records{toFlash, record(0, 0, "xxxxxxxxx"), digits} << 0x9D000000u << 9u << 0x31C3;
    QTest::newRow("gap is erased flash") << Records{toFlash, record(0, 0, "1"), record(4, 0, "2")} << 0x9D000000u << 5u
                                         << int(CrcCalculator::Get16(gap.constData(), 5));
    QTest::newRow("behind the end") << Records{toFlash, digits, end, record(9, 0, "x")} << 0x9D000000u << 9u << 0x31C3;
    QTest::newRow("boot flash") << Records{toFlash, digits, record(0, 4, QByteArray::fromHex("1fc0")),
                                           record(0, 0, "boot")}
                                << 0x9D000000u << 9u << 0x31C3;
    QTest::newRow("segment ends linear base")
        << Records{toFlash, digits, record(0, 2, QByteArray(2, '\0')), record(0, 0, "low")} << 0x9D000000u << 9u
        << 0x31C3;
    QTest::newRow("linear base ends segment")
        << Records{record(0, 2, QByteArray::fromHex("1000")), toFlash, digits} << 0x9D000000u << 9u << 0x31C3;
    QTest::newRow("unknown type") << Records{toFlash, record(0, 5, QByteArray(4, '\1')), digits} << 0x9D000000u << 9u
                                  << 0x31C3;
    QTest::newRow("address record without data") << Records{record(0, 4, {}), digits} << 0xFFFFFFFFu << 0u << 0;
    QTest::newRow("empty record") << Records{QByteArray(), toFlash, digits} << 0x9D000000u << 9u << 0x31C3;
}

void TestHexLoader::flashIsRebuilt()
{
    QFETCH(QList<QByteArray>, records);
    const HexCrc result = HexLoader::CalculateCrc(records);
    QTEST(result.address, "address");
    QTEST(result.size, "size");
    QTEST(int(result.crc), "crc");
}

NIMBRELLE_TEST_MAIN(TestHexLoader)
#include "TestHexLoader.moc"
