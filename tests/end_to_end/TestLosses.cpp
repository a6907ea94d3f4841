// SPDX-License-Identifier: MIT
#include "support/ClientProcess.h"
#include "support/RunFolder.h"
#include "support/SimulatorProcess.h"
#include "support/TestMain.h"

#include <QRandomGenerator>

#include <memory>
#include <vector>

namespace {

constexpr int longestRunMs = 300;
constexpr int noConnection = 3;

int given(const char *variable, int otherwise)
{
    const int value = qEnvironmentVariableIntValue(variable);
    return value > 0 ? value : otherwise;
}

/// One instrument with one run on it, somewhere between its beginning and the end of its cable.
struct Run {
    std::unique_ptr<SimulatorProcess> simulator;
    std::unique_ptr<ClientProcess> client;
    QString folder;
    int killAfterMs;
};

} // namespace

/// What a client does when its instrument goes away, or when there is a lot to record.
class TestLosses : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void pulledCablesAreEachToldOnce();
    void sixteenStreamsArriveWhole();

private:
    Run startRun(int number, const QString &experiment);
    void checkLoss(Run &run);

    QTemporaryDir _home;
    QRandomGenerator _random{20260301};
};

Run TestLosses::startRun(int number, const QString &experiment)
{
    Run run;
    run.folder = _home.filePath(QString("run-%1").arg(number));
    run.killAfterMs = _random.bounded(longestRunMs);
    run.simulator = std::make_unique<SimulatorProcess>(QStringList{"--speed", "100"});
    run.client = std::make_unique<ClientProcess>(
        QStringList{"run", experiment, "--port", run.simulator->portName(), "--out", run.folder});
    return run;
}

void TestLosses::checkLoss(Run &run)
{
    QCOMPARE(run.client->finish(), noConnection);
    QCOMPARE(run.client->errors(), QStringLiteral("nimbrelle: The connection to the instrument was lost.\n"));
    const QJsonObject record = RunFolder::summary(run.folder);
    QCOMPARE(record["state"].toString(), QStringLiteral("device lost"));
    const auto rows = RunFolder::rows(run.folder + "/dc.csv");
    QCOMPARE(record["counts"].toObject()["dcRows"].toInt(), rows.size());
    for (int row = 1; row < rows.size(); ++row)
        QVERIFY(rows[row][RunFolder::Time] > rows[row - 1][RunFolder::Time]);
}

void TestLosses::pulledCablesAreEachToldOnce()
{
    const QString experiment = RunFolder::writeExperiment(_home.filePath("endless.json"),
                                                          "{\"element\": \"ConstantCurrent\", \"current\": \"1 mA\", "
                                                          "\"samplingInterval\": 0.01, \"maxDuration\": \"none\"}");
    const int killCount = given("NIMBRELLE_UNPLUGS", 100);
    const int atOnce = given("NIMBRELLE_AT_ONCE", 10); // where cables have sockets, these are few
    for (int number = 0; number < killCount; number += atOnce) {
        std::vector<Run> runs;
        for (int index = 0; index < atOnce; ++index)
            runs.push_back(startRun(number + index, experiment));
        for (Run &run : runs) {
            QTRY_VERIFY2_WITH_TIMEOUT(QFile::exists(run.folder + "/dc.csv"), qPrintable(run.client->errors()), 60000);
            QTest::qWait(run.killAfterMs); // the moment is what varies
            run.simulator->kill();
        }
        for (Run &run : runs)
            checkLoss(run);
    }
}

void TestLosses::sixteenStreamsArriveWhole()
{
    constexpr int channels = 16;
    SimulatorProcess simulator({"--channels", "16", "--speed", "max", "--stats"});
    const QString experiment = RunFolder::writeExperiment(
        _home.filePath("stream.json"),
        "{\"element\": \"ConstantCurrent\", \"current\": \"1 mA\", \"samplingInterval\": 0.01, \"maxDuration\": 200}");
    QStringList numbers;
    for (int channel = 0; channel < channels; ++channel)
        numbers.append(QString::number(channel));
    const QString folder = _home.filePath("stream");
    ClientProcess client({"run", experiment, "--port", simulator.portName(), "--out", folder, "--channel",
                          numbers.join(','), "--quiet"});
    QCOMPARE(client.finish(100000), 0);
    const QString sent = simulator.finish();
    for (int channel = 0; channel < channels; ++channel) {
        const int rows = RunFolder::rowCount(QString("%1/channel-%2/dc.csv").arg(folder).arg(channel));
        QVERIFY(rows >= 20000);
        const QString line = QString("channel %1: %2 DC records").arg(channel).arg(rows);
        QVERIFY2(sent.contains(line), qPrintable(line + " are on the disk, but: " + sent));
    }
}

NIMBRELLE_TEST_MAIN(TestLosses)
#include "TestLosses.moc"
