// SPDX-License-Identifier: MIT
#include "VekDeviceTracker.h"
#include "client/instruments/RestartWait.h"
#include "client/instruments/UpdateWatch.h"
#include "client/terminal/SignalWatcher.h"

#include "support/TestMain.h"

#include <QHash>
#include <QTimer>

using namespace client;
using Stage = VekFirmwareUpdateStage;
using News = QVector<QPair<QString, Stage>>; ///< of updates: device and stage
Q_DECLARE_METATYPE(News)

class TestUpdateWatch : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void drawsTheBar_data();
    void drawsTheBar();
    void waitsForTheEndOfEachUpdate_data();
    void waitsForTheEndOfEachUpdate();
    void waitsForEachRestart_data();
    void waitsForEachRestart();

private:
    SignalWatcher _signals;
};

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
    QTest::addColumn<News>("news");
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<bool>("isStandInMet");
    QTest::newRow("both succeed") << News{{"Alder-1", Stage::Begun},
                                          {"Alder-1", Stage::Writing},
                                          {"Alder-1\n", Stage::Succeeded},
                                          {"Ibis-3", Stage::Succeeded}}
                                  << int(Done) << false;
    QTest::newRow("one fails") << News{{"Alder-1", Stage::Succeeded},
                                       {"Alder-2", Stage::BootloaderFound},
                                       {"Alder-2", Stage::Failed}}
                               << int(Refused) << false;
    QTest::newRow("one cannot go on") << News{{"", Stage::UnknownModel}, {"Alder-1", Stage::Succeeded}} << int(Refused)
                                      << false;
    QTest::newRow("the reason is no end")
        << News{{"Alder-2", Stage::BootloaderGone}, {"Alder-2", Stage::Failed}, {"Alder-1", Stage::Succeeded}}
        << int(Refused) << false;
    QTest::newRow("one is left alone, which is no end")
        << News{{"ttyACM1", Stage::StandInFirmware}, {"Alder-1", Stage::Succeeded}, {"Ibis-3", Stage::Succeeded}}
        << int(Done) << true;
}

void TestUpdateWatch::waitsForTheEndOfEachUpdate()
{
    QFETCH(News, news);
    QFETCH(int, exitCode);
    UpdateWatch watch;
    QTimer next; // one for each turn of the event loop
    connect(&next, &QTimer::timeout, &next, [&] {
        if (news.isEmpty())
            return;
        const auto [name, stage] = news.takeFirst();
        Q_EMIT VekDeviceTracker::Instance()->firmwareUpdateStageReached(name, stage, 50, "In any words.");
    });
    next.start(1);
    QCOMPARE(int(watch.waitForEnds(2)), exitCode);
    QVERIFY(watch.updated().contains("Alder-1") && !watch.updated().contains("Alder-2"));
    QVERIFY(news.isEmpty());
    QTEST(watch.hasMetStandIn(), "isStandInMet");
}

void TestUpdateWatch::waitsForEachRestart_data()
{
    QTest::addColumn<QStringList>("names");   // that have been updated
    QTest::addColumn<QStringList>("answers"); // "port name" of what comes up after the update, one after the other
    QTest::addColumn<QStringList>("missing");
    QTest::newRow("nothing was updated") << QStringList() << QStringList() << QStringList();
    QTest::newRow("both come back") << QStringList{"Alder-1", "Ibis-2"} << QStringList{"a Alder-1", "b Ibis-2"}
                                    << QStringList();
    QTest::newRow("line end in the name") << QStringList{"Gale-1"} << QStringList{"a Gale-1\n"} << QStringList();
    QTest::newRow("one stays away") << QStringList{"Alder-1", "Ibis-2"} << QStringList{"a Ibis-2"}
                                    << QStringList{"Alder-1"};
    QTest::newRow("without a name, on a new port") << QStringList{""} << QStringList{"new Alder-1"} << QStringList();
    QTest::newRow("without a name, others do not count")
        << QStringList{""} << QStringList{"old Alder-1"} << QStringList{""};
    QTest::newRow("two without a name, one comes")
        << QStringList{"", ""} << QStringList{"new Alder-1"} << QStringList{""};
}

void TestUpdateWatch::waitsForEachRestart()
{
    QFETCH(QStringList, names);
    QFETCH(QStringList, answers);
    QStringList present{"old"}; // its instrument needs no update, and answers only in some rows
    QHash<QString, QString> nameOnPort;
    RestartWait restarts({[&] { return present; },
                          [&](const QString &port) {
                              return nameOnPort.contains(port) ? std::optional(nameOnPort[port]) : std::nullopt;
                          }});
    QTimer next;
    connect(&next, &QTimer::timeout, &next, [&] {
        if (answers.isEmpty())
            return;
        const QString answer = answers.takeFirst();
        const QString port = answer.section(' ', 0, 0);
        if (!present.contains(port))
            present.append(port);
        nameOnPort[port] = answer.section(' ', 1);
    });
    next.start(10);
    const int longestMs = names.isEmpty() ? 60000 : 1000; // long enough for what comes, on a crowded machine
    const QStringList missing = restarts.wait(names, longestMs);
    QTEST(missing, "missing");
    QCOMPARE(missingText(missing).isEmpty(), missing.isEmpty());
}

NIMBRELLE_TEST_MAIN(TestUpdateWatch)
#include "TestUpdateWatch.moc"
