// SPDX-License-Identifier: MIT
#include "logging/Logger.h"
#include "support/TestMain.h"

#include <thread>

namespace {

QStringList linesOf(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QStringList lines = QString::fromUtf8(file.readAll()).split('\n');
    lines.removeLast(); // every line is closed
    return lines;
}

/// The message of a line; null if the line is not of the promised form.
QString messageIn(const QString &line, const QString &level)
{
    const QRegularExpression form(R"(^\[\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\] (\w+) - (.*)$)");
    const QRegularExpressionMatch match = form.match(line);
    return match.captured(1) == level ? match.captured(2) : QString();
}

} // namespace

class TestLogger : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theFirstUseMakesTheDefaultFile(); // the first, as the logger is made once
    void init();
    void eachLevelHasItsName();
    void aMessageIsOneLine_data();
    void aMessageIsOneLine();
    void nothingIsWrittenWhileItIsOff();
    void anExistingFileIsAppendedTo();
    void aFolderThatCannotBeMadeIsTriedAgain();
    void linesOfThreadsStayWhole();

private:
    QTemporaryDir _folder;
    QString _path;
};

void TestLogger::init()
{
    if (qstrcmp(QTest::currentTestFunction(), "theFirstUseMakesTheDefaultFile") == 0)
        return;
    _path = _folder.filePath(QString("%1/deep/log.txt").arg(QTest::currentTestFunction()));
    QFile::remove(_path);
    Logger::getInstance().setLogFilePath(_path);
}

void TestLogger::theFirstUseMakesTheDefaultFile()
{
    const QString path = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation) +
                         "/Brenmoor Apparatus/API/NimbrelleAPI.log";
    QVERIFY(!QFile::exists(path));
    const QDateTime before = QDateTime::currentDateTime();
    Logger::getInstance().logFatal("Alder-0042 channel 1: The current has exceeded instrument limits!");
    const QString line = linesOf(path).value(0);
    QCOMPARE(messageIn(line, "FATAL"), QString("Alder-0042 channel 1: The current has exceeded instrument limits!"));
    const QDateTime stamp = QDateTime::fromString(line.mid(1, 19), "yyyy-MM-dd hh:mm:ss");
    QVERIFY2(before.addSecs(-1) <= stamp && stamp <= QDateTime::currentDateTime(), qPrintable(line));
}

void TestLogger::eachLevelHasItsName()
{
    Logger::getInstance().logInformation("a");
    Logger::getInstance().logWarning("b");
    Logger::getInstance().logCritical("c");
    Logger::getInstance().logFatal("d");
    const QStringList lines = linesOf(_path);
    QCOMPARE(lines.size(), 4);
    QCOMPARE(messageIn(lines[0], "INFO"), QString("a"));
    QCOMPARE(messageIn(lines[1], "WARNING"), QString("b"));
    QCOMPARE(messageIn(lines[2], "CRITICAL"), QString("c"));
    QCOMPARE(messageIn(lines[3], "FATAL"), QString("d"));
}

void TestLogger::aMessageIsOneLine_data()
{
    QTest::addColumn<QString>("message");
    QTest::addColumn<QString>("logged");
    QTest::newRow("forged line") << "a\r\n[2025-01-01 00:00:00] INFO - b"
                                 << "a  [2025-01-01 00:00:00] INFO - b";
    QTest::newRow("terminal command") << "a\x1b[2Jb"
                                      << "a [2Jb";
    QTest::newRow("separators of Unicode") << QString("a") + QChar(0x2028) + QChar(0x85) + QChar(0x2029) + "b"
                                           << "a   b";
    QTest::newRow("direction of writing") << QString("a") + QChar(0x202e) + QChar(0x2066) + "b"
                                          << "a  b";
    QTest::newRow("NUL") << QString("a") + QChar(0) + "b"
                         << "a b";
    QTest::newRow("letters of the world") << QString::fromUtf8("Größe 電流 µA") << QString::fromUtf8("Größe 電流 µA");
    QTest::newRow("place markers") << "%1 %2 %3"
                                   << "%1 %2 %3";
}

void TestLogger::aMessageIsOneLine()
{
    QFETCH(QString, message);
    Logger::getInstance().logWarning(message);
    const QStringList lines = linesOf(_path);
    QCOMPARE(lines.size(), 1);
    QTEST(messageIn(lines[0], "WARNING"), "logged");
}

void TestLogger::nothingIsWrittenWhileItIsOff()
{
    Logger::getInstance().logWarning("before");
    Logger::getInstance().setSaveLogToFile(false);
    Logger::getInstance().logWarning("meanwhile");
    Logger::getInstance().setSaveLogToFile(true);
    Logger::getInstance().logWarning("after");
    const QStringList lines = linesOf(_path);
    QCOMPARE(lines.size(), 2);
    QCOMPARE(messageIn(lines[1], "WARNING"), QString("after"));
}

void TestLogger::anExistingFileIsAppendedTo()
{
    Logger::getInstance().logWarning("old");
    Logger::getInstance().setLogFilePath(_path);
    Logger::getInstance().logWarning("new");
    QCOMPARE(linesOf(_path).size(), 2);
}

void TestLogger::aFolderThatCannotBeMadeIsTriedAgain()
{
    const QString obstacle = _folder.filePath("obstacle");
    QVERIFY(QFile(obstacle).open(QIODevice::WriteOnly)); // a file where a folder should be
    const QByteArray warning = "Failed to create api log directory: " + obstacle.toUtf8() + "/logs";

    QTest::ignoreMessage(QtWarningMsg, warning);
    Logger::getInstance().setLogFilePath(obstacle + "/logs/log.txt");
    QTest::ignoreMessage(QtWarningMsg, warning);
    Logger::getInstance().logWarning("lost");

    QVERIFY(QFile::remove(obstacle));
    Logger::getInstance().logWarning("written");
    QCOMPARE(linesOf(obstacle + "/logs/log.txt").size(), 1);
}

void TestLogger::linesOfThreadsStayWhole()
{
    constexpr int threadCount = 4;
    constexpr int linesEach = 250;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < threadCount; ++thread) {
        threads.emplace_back([thread] {
            for (int line = 0; line < linesEach; ++line)
                Logger::getInstance().logInformation(QString("%1 %2 end").arg(thread).arg(line));
        });
    }
    for (std::thread &thread : threads)
        thread.join();

    QSet<QString> messages;
    for (const QString &line : linesOf(_path))
        messages.insert(messageIn(line, "INFO"));
    QCOMPARE(messages.size(), threadCount * linesEach);
    QVERIFY(messages.contains("3 249 end"));
    QVERIFY(!messages.contains(QString()));
}

NIMBRELLE_TEST_MAIN(TestLogger)
#include "TestLogger.moc"
