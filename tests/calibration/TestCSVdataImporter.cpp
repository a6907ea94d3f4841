// SPDX-License-Identifier: MIT
#include "calibration/CSVdataImporter.h"
#include "calibration/TableFolder.h"
#include "support/TestMain.h"

#include <QDir>

namespace {

csvDataHeader_t headerFor(int size)
{
    csvDataHeader_t header;
    header.magic = csvDataHeader_t::expectedMagic;
    header.payloadSize = size;
    return header;
}

/// Sends a payload in packets of 7 bytes.
CSVdataImporter transferred(const QString &directory, const QByteArray &payload)
{
    CSVdataImporter importer(directory);
    importer.setCSVDataHeader(headerFor(payload.size()));
    for (int i = 0; i < payload.size(); i += 7)
        if (!importer.appendCSVRawData(payload.mid(i, 7)))
            qFatal("a packet was refused");
    return importer;
}

QByteArray contentsOf(const TableFolder &folder, const QString &name)
{
    QFile file(folder.path() + QLatin1Char('/') + name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("no such file");
}

QStringList namesIn(const QString &directory)
{
    return QDir(directory).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
}

constexpr char warning[] = "CSVdataImporter::WriteCSVs  csvFileName file name is empty.";

} // namespace

class TestCSVdataImporter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cutsTheStreamIntoFiles();
    void cleansAndJudgesContents_data();
    void cleansAndJudgesContents();
    void replacesTheFilesOfItsFolder();
    void refusesWhatItDidNotAskFor();
    void cutsAnOvershootingPacket();
    void namesNeverLeaveTheFolder_data();
    void namesNeverLeaveTheFolder();
    void withoutAFolderNothingIsWritten();
    void tellsOfATableThatCannotBeWritten();
};

void TestCSVdataImporter::cutsTheStreamIntoFiles()
{
    const TableFolder folder;
    const auto importer = transferred(folder.path() + "/new", "a.csv,f,m\n1,2\x1C"
                                                              "b.csv,x,y,z\n1,2,3\n4,5,6");
    QVERIFY(importer.isCSVDataPayloadFull());
    QVERIFY(importer.validateCSVFiles());
    QCOMPARE(contentsOf(folder, "new/a.csv"), QByteArray("f,m\n1,2"));
    QCOMPARE(contentsOf(folder, "new/b.csv"), QByteArray("x,y,z\n1,2,3\n4,5,6"));
    QCOMPARE(importer.files().size(), 2);
    QCOMPARE(importer.files().at(1).name, QStringLiteral("b.csv"));
    QCOMPARE(importer.files().at(1).rowColumns, 3);
    QVERIFY(CSVdataImporter().validateCSVFiles()); // nothing came, nothing is wrong
}

void TestCSVdataImporter::cleansAndJudgesContents_data()
{
    QTest::addColumn<QByteArray>("sent");
    QTest::addColumn<QByteArray>("written");
    QTest::addColumn<bool>("isValid");
    QTest::newRow("padded rows") << QByteArray("f,m,,\n1,2,,") << QByteArray("f,m\n1,2") << true;
    QTest::newRow("two commas go") << QByteArray("ab\na,,b") << QByteArray("ab\nab") << true;
    QTest::newRow("three leave one") << QByteArray("a,b\n1,,,2") << QByteArray("a,b\n1,2") << true;
    QTest::newRow("comma before a line feed goes, at the end it stays")
        << QByteArray("1,2,\n3,4,") << QByteArray("1,2\n3,4,") << false;
    QTest::newRow("closing line feed") << QByteArray("1,2\n3,4\n") << QByteArray("1,2\n3,4\n") << false;
    QTest::newRow("heading only") << QByteArray("1,2") << QByteArray("1,2") << false;
    QTest::newRow("blank heading") << QByteArray(" \n1") << QByteArray(" \n1") << false;
    QTest::newRow("wider row") << QByteArray("1,2\n1,2,3\n1,2") << QByteArray("1,2\n1,2,3\n1,2") << false;
    QTest::newRow("nothing") << QByteArray("") << QByteArray("") << false;
    QTest::newRow("one column") << QByteArray("a\n1\n2") << QByteArray("a\n1\n2") << true;
}

void TestCSVdataImporter::cleansAndJudgesContents()
{
    QFETCH(QByteArray, sent);
    QFETCH(QByteArray, written);
    QFETCH(bool, isValid);
    const TableFolder folder;
    QCOMPARE(transferred(folder.path(), "t.csv," + sent).validateCSVFiles(), isValid);
    QCOMPARE(contentsOf(folder, "t.csv"), written);
}

void TestCSVdataImporter::replacesTheFilesOfItsFolder()
{
    const TableFolder folder;
    folder.write(QStringLiteral("old.csv"), "1");
    folder.write(QStringLiteral(".hidden"), "1");
    QDir(folder.path()).mkdir(QStringLiteral("sub"));
    folder.write(QStringLiteral("sub/kept.csv"), "1");
    transferred(folder.path(), "new.csv,a\n1");
    QCOMPARE(namesIn(folder.path()), QStringList({"new.csv", "sub"}));
    QCOMPARE(namesIn(folder.path() + "/sub"), QStringList("kept.csv"));

    CSVdataImporter(folder.path()).WriteCSVs(); // without a payload nothing goes
    QCOMPARE(namesIn(folder.path()), QStringList({"new.csv", "sub"}));
}

void TestCSVdataImporter::refusesWhatItDidNotAskFor()
{
    const TableFolder folder;
    CSVdataImporter importer(folder.path());
    QVERIFY(!importer.appendCSVRawData("a.csv,1")); // no header
    csvDataHeader_t wrong = headerFor(5);
    wrong.magic ^= 1u;
    importer.setCSVDataHeader(wrong);
    QVERIFY(!importer.appendCSVRawData("a.csv"));
    importer.setCSVDataHeader(headerFor(-1));
    QVERIFY(!importer.appendCSVRawData("a.csv"));
    QVERIFY(namesIn(folder.path()).isEmpty());

    CSVdataImporter full = transferred(folder.path(), "a.csv,1\n2");
    QVERIFY(!full.appendCSVRawData("more"));
    QVERIFY(full.isCSVDataPayloadFull());
    full.setCSVDataHeader(headerFor(9));
    QVERIFY(!full.isCSVDataPayloadFull());
    QVERIFY(!full.appendCSVRawData("more")); // a header alone does not make room
}

void TestCSVdataImporter::cutsAnOvershootingPacket()
{
    const TableFolder folder;
    CSVdataImporter importer(folder.path());
    importer.setCSVDataHeader(headerFor(9));
    QVERIFY(importer.appendCSVRawData("a.csv,1\n2 and more"));
    QCOMPARE(contentsOf(folder, "a.csv"), QByteArray("1\n2"));
}

void TestCSVdataImporter::namesNeverLeaveTheFolder_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("the folder") << QByteArray(".");
    QTest::newRow("its parent") << QByteArray("..");
    QTest::newRow("into the parent") << QByteArray("../victim.csv");
    QTest::newRow("absolute") << QByteArray("/tmp/nimbrelle-victim.csv");
    QTest::newRow("NUL") << QByteArray("victim.csv\0x", 12);
}

void TestCSVdataImporter::namesNeverLeaveTheFolder()
{
    QFETCH(QByteArray, name);
    const TableFolder outer;
    const QString folder = outer.path() + "/tables";
    QTest::ignoreMessage(QtWarningMsg, warning);
    const auto importer = transferred(folder, "good.csv,a\n1\x1C" + name +
                                                  ",a\n1\x1C"
                                                  "last.csv,a\n1");
    QVERIFY(!importer.validateCSVFiles());
    QCOMPARE(namesIn(folder), QStringList({"good.csv", "last.csv"}));
    QCOMPARE(namesIn(outer.path()), QStringList("tables"));
    QVERIFY(!QFile::exists("/tmp/nimbrelle-victim.csv"));
}

void TestCSVdataImporter::withoutAFolderNothingIsWritten()
{
    const TableFolder folder; // as the working directory, in case it were taken for the target
    folder.write(QStringLiteral("mine.txt"), "1");
    const QString before = QDir::currentPath();
    QVERIFY(QDir::setCurrent(folder.path()));
    QTest::ignoreMessage(QtWarningMsg, warning);
    const bool isValid = transferred(QString(), "a.csv,a\n1").validateCSVFiles();
    QVERIFY(QDir::setCurrent(before));
    QVERIFY(!isValid);
    QCOMPARE(namesIn(folder.path()), QStringList("mine.txt"));
    QVERIFY(!QFile::exists("/a.csv"));
}

void TestCSVdataImporter::tellsOfATableThatCannotBeWritten()
{
    const TableFolder folder;
    QVERIFY(QDir(folder.path()).mkdir("a.csv"));
    const QByteArray reason = "Calibration table " + QFile::encodeName(folder.path()) + "/a.csv: Is a directory";
    QTest::ignoreMessage(QtWarningMsg, reason.constData());
    transferred(folder.path(), "a.csv,a\n1\x1C"
                               "b.csv,a\n1");
    QVERIFY(QFileInfo(folder.path() + "/b.csv").isFile());
}

NIMBRELLE_TEST_MAIN(TestCSVdataImporter)
#include "TestCSVdataImporter.moc"
