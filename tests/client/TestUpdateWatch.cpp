#include "SignalWatcher.h"
#include "UpdateWatch.h"
#include "VekDeviceTracker.h"

#include "support/TestMain.h"

#include <QTimer>

using namespace client;

class TestUpdateWatch : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsTheProgressOfATwoWordName();
    void drawsTheBar_data();
    void drawsTheBar();
    void waitsForTheEndOfEachUpdate_data();
    void waitsForTheEndOfEachUpdate();

private:
    SignalWatcher _signals;
};

void TestUpdateWatch::readsTheProgressOfATwoWordName()
{
    QCOMPARE(progressIn("Alder: Progress 1: Progress 42"), 42);
    QCOMPARE(progressIn(": Progress 7"), 7);
    QCOMPARE(progressIn("Alder: Firmware update is starting."), -1);
    QCOMPARE(progressIn("Alder: Progress soon"), -1);
}

void TestUpdateWatch::drawsTheBar_data()
{
    QTest::addColumn<int>("percent");
    QTest::addColumn<QString>("bar");
    QTest::newRow("begin") << 0 << "[                    ]   0 % Alder";
    QTest::newRow("half") << 50 << "[##########          ]  50 % Alder";
    QTest::newRow("end") << 100 << "[####################] 100 % Alder";
}

void TestUpdateWatch::drawsTheBar()
{
    QFETCH(int, percent);
    QFETCH(QString, bar);
    QCOMPARE(progressBar("Alder", percent), bar);
}

void TestUpdateWatch::waitsForTheEndOfEachUpdate_data()
{
    QTest::addColumn<QStringList>("texts");
    QTest::addColumn<int>("exitCode");
    const QString good = "Alder-1: Firmware updated successfully.";
    const QString bad = "Alder-2: Firmware update failed.";
    QTest::newRow("both succeed") << QStringList{"Alder-1: Progress 50", good, good} << int(Done);
    QTest::newRow("one fails") << QStringList{good, "Alder-2: Firmware update is starting.", bad} << int(Refused);
    QTest::newRow("one cannot go on") << QStringList{"Unknow HID model connections. ", good} << int(Refused);
}

void TestUpdateWatch::waitsForTheEndOfEachUpdate()
{
    QFETCH(QStringList, texts);
    QFETCH(int, exitCode);
    UpdateWatch watch;
    QTimer next; // one text for each turn of the event loop
    connect(&next, &QTimer::timeout, &next, [&] {
        if (!texts.isEmpty())
            Q_EMIT VekDeviceTracker::Instance()->firmwareUpdateNotification(texts.takeFirst());
    });
    next.start(1);
    QCOMPARE(int(watch.waitForEnds(2)), exitCode);
    QVERIFY(texts.isEmpty());
}

NIMBRELLE_TEST_MAIN(TestUpdateWatch)
#include "TestUpdateWatch.moc"
