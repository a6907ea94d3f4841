// SPDX-License-Identifier: MIT
#include "support/ClientProcess.h"
#include "support/RunFolder.h"
#include "support/SimulatorProcess.h"
#include "support/TestMain.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>

#include <csignal>
#include <fcntl.h>
#include <memory>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

using namespace RunFolder;

namespace {

constexpr int Done = 0; // exit codes of the program
constexpr int LocalFailure = 1;
constexpr int BadInput = 2;
constexpr int Refused = 4;
constexpr int Interrupted = 130;

/// The program with its output in a pipe whose reader does as it is told.
struct PipedClient {
    PipedClient(const QString &pipe, const QStringList &arguments)
    {
        mkfifo(qPrintable(pipe), 0600);
        reader = open(qPrintable(pipe), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
        process.setStandardOutputFile(pipe);
        process.start(QStringLiteral(NIMBRELLE_CLIENT_PROGRAM), arguments);
    }
    ~PipedClient()
    {
        process.kill();
        process.waitForFinished();
        closeReader();
    }

    int waitingBytes() const
    {
        int bytes = 0;
        ioctl(reader, FIONREAD, &bytes);
        return bytes;
    }
    void closeReader()
    {
        if (reader >= 0)
            close(std::exchange(reader, -1));
    }
    void sendSignal(int number) const { ::kill(pid_t(process.processId()), number); }
    int finish() { return process.waitForFinished(60000) ? process.exitCode() : -1; }

    QProcess process;
    int reader = -1;
};

/// The channels that run something, as the instrument tells a connection that only looks.
QJsonArray runningOn(const QString &port)
{
    ClientProcess client({"info", port, "--json"});
    if (client.finish() != Done)
        return {QStringLiteral("info failed: %1").arg(client.errors())};
    return QJsonDocument::fromJson(client.output()).object()["running"].toArray();
}

/// A run by a client whose files may grow to so many bytes and no further.
std::unique_ptr<ClientProcess> runOnAFullDisk(qint64 room, const QStringList &arguments)
{
    rlimit limit;
    getrlimit(RLIMIT_FSIZE, &limit);
    const rlimit less{rlim_t(room), limit.rlim_max}; // inherited by the client
    setrlimit(RLIMIT_FSIZE, &less);
    auto client = std::make_unique<ClientProcess>(QStringList{"run"} + arguments);
    setrlimit(RLIMIT_FSIZE, &limit);
    return client;
}

} // namespace

/// Nobody loses a cell: whatever ends the program, or keeps it from its files, the cell is off or guarded afterwards.
class TestCellSafety : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void signalsThatComeTogetherAreOne();
    void aSecondInterruptEndsTheProgramOnlyLater();
    void anIgnoredHangupStaysIgnored();
    void manualEndsWithTheCellOff_data();
    void manualEndsWithTheCellOff();
    void somebodyElsesExperimentIsTold();
    void aLookLeavesTheLimitsInForce();
    void aRunLeavesOtherChannelsAlone();
    void stopEndsWhatAnotherProgramStarted();
    void linksNoChannelThatIsNotThere_data();
    void linksNoChannelThatIsNotThere();
    void limitsOutOfReachAreRefused_data();
    void limitsOutOfReachAreRefused();
    void limitsOfAGroupStopIt();
    void aRunIsFreeOfTheLimitsOfBefore();
    void aFullDiskStopsTheExperiment_data();
    void aFullDiskStopsTheExperiment();
    void theRecordOfARunSurvivesAFullDisk();

private:
    QString longRun(const char *element = "\"OpenCircuit\"");
    QString freshFolder() { return _home.filePath(QString("run-%1").arg(++_count)); }
    /// Starts a run, kills the client in the middle of it, and leaves the instrument driving its cell.
    void leaveRunning(const QString &port, const QStringList &more = {});

    QTemporaryDir _home;
    int _count = 0;
};

QString TestCellSafety::longRun(const char *element)
{
    return RunFolder::writeExperiment(_home.filePath(QString("long-%1.json").arg(++_count)),
                                      QByteArray("{\"element\": ") + element +
                                          ", \"maxDuration\": 36000, \"samplingInterval\": 0.1}");
}

void TestCellSafety::leaveRunning(const QString &port, const QStringList &more)
{
    const QString folder = freshFolder();
    ClientProcess client(
        QStringList{"run", longRun("\"ConstantCurrent\", \"current\": \"1 mA\""), "--port", port, "--out", folder} +
        more);
    const auto hasRows = [&folder] { return rowCount(folder + "/dc.csv") > 2; };
    QVERIFY2(QTest::qWaitFor([&] { return hasRows() || !client.isRunning(); }, 30000) && client.isRunning(),
             qPrintable(client.errors()));
    client.sendSignal(SIGKILL);
    client.finish();
}

// A terminal that closes sends SIGHUP while its shell sends SIGTERM.
void TestCellSafety::signalsThatComeTogetherAreOne()
{
    SimulatorProcess simulator({});
    const QString folder = freshFolder();
    ClientProcess client({"run", longRun(), "--port", simulator.portName(), "--out", folder});
    QTRY_VERIFY_WITH_TIMEOUT(rowCount(folder + "/dc.csv") > 0, 30000);
    client.sendSignal(SIGTERM);
    client.sendSignal(SIGHUP);
    client.sendSignal(SIGINT);
    QCOMPARE(client.finish(), Interrupted);
    QCOMPARE(summary(folder)["state"].toString(), QStringLiteral("interrupted"));
    QCOMPARE(runningOn(simulator.portName()), QJsonArray());
}

// The instrument does not answer, so the program still waits for the end when the second one comes.
void TestCellSafety::aSecondInterruptEndsTheProgramOnlyLater()
{
    SimulatorProcess simulator({});
    const QString folder = freshFolder();
    ClientProcess client({"run", longRun(), "--port", simulator.portName(), "--out", folder});
    QTRY_VERIFY_WITH_TIMEOUT(rowCount(folder + "/dc.csv") > 0, 30000);
    simulator.suspend();
    client.sendSignal(SIGINT);
    QTRY_VERIFY(client.errors().contains("Stopping"));
    client.sendSignal(SIGINT);
    QTest::qWait(1200); // the second within which all signals are one, as the program measures it
    QVERIFY(client.isRunning());
    client.sendSignal(SIGTERM);
    client.sendSignal(SIGHUP);
    client.sendSignal(SIGINT);
    QCOMPARE(client.finish(5000), Interrupted);
    QCOMPARE(summary(folder)["state"].toString(), QStringLiteral("running")); // it had no time for more
    simulator.resume();
}

void TestCellSafety::anIgnoredHangupStaysIgnored()
{
    SimulatorProcess simulator({"--speed", "max"});
    const QString folder = freshFolder();
    std::signal(SIGHUP, SIG_IGN); // as nohup does; the client inherits it
    ClientProcess client({"run", longRun(), "--port", simulator.portName(), "--out", folder});
    std::signal(SIGHUP, SIG_DFL);
    QTRY_VERIFY_WITH_TIMEOUT(rowCount(folder + "/dc.csv") > 0, 30000);
    client.sendSignal(SIGHUP);
    QCOMPARE(client.finish(60000), Done);
    QCOMPARE(summary(folder)["state"].toString(), QStringLiteral("completed"));
}

void TestCellSafety::manualEndsWithTheCellOff_data()
{
    QTest::addColumn<QString>("interval");
    QTest::addColumn<int>("bytes"); // that wait to be read before the end begins: headings, samples, the whole pipe
    QTest::addColumn<bool>("readerGoes");
    QTest::addColumn<int>("exitCode");

    QTest::newRow("two signals at once") << "100 ms" << 200 << false << Interrupted;
    QTest::newRow("its reader stands still") << "1 ms" << 60000 << false << Interrupted; // as a pager does; 65,536 fit
    QTest::newRow("its reader goes") << "100 ms" << 200 << true << LocalFailure;
    QTest::newRow("its reader goes between rare samples") << "1 h" << 100 << true << LocalFailure;
}

void TestCellSafety::manualEndsWithTheCellOff()
{
    QFETCH(QString, interval);
    QFETCH(int, bytes);
    QFETCH(bool, readerGoes);
    SimulatorProcess simulator({"--cell", "resistor:R=1000"});
    PipedClient client(_home.filePath(QString("pipe-%1").arg(++_count)),
                       {"manual", simulator.portName(), "--voltage", "500 mV", "--interval", interval});
    QTRY_VERIFY_WITH_TIMEOUT(client.waitingBytes() >= bytes, 30000);
    if (readerGoes) {
        client.closeReader();
    } else {
        client.sendSignal(SIGTERM);
        client.sendSignal(SIGINT);
    }
    QTEST(client.finish(), "exitCode");
    QCOMPARE(runningOn(simulator.portName()), QJsonArray());
}

void TestCellSafety::somebodyElsesExperimentIsTold()
{
    SimulatorProcess simulator({"--channels", "3", "--cell", "resistor:R=1000"});
    const QString port = simulator.portName();
    leaveRunning(port, {"--channel", "1"});
    QCOMPARE(runningOn(port), QJsonArray{1});
    const QString advice = QStringLiteral("nimbrelle stop %1 --channel 1").arg(port);
    const QStringList other = {"run", longRun(), "--port", port, "--out", freshFolder(), "--channel", "1"};
    const QVector<QPair<QStringList, int>> commands = {
        {{"info", port}, Done},
        {{"doctor", port}, Done},
        {{"monitor", port, "--channel", "1", "--count", "1"}, Done},
        {{"manual", port, "--channel", "1", "--voltage", "1 V"}, Refused},
        {other, Refused},
    };
    for (const auto &[arguments, exitCode] : commands) {
        ClientProcess client(arguments);
        const int result = client.finish(15000); // at once: not after the 30 s within which an experiment must begin
        const QString said = QString::fromUtf8(client.output()) + client.errors();
        QVERIFY2(result == exitCode && said.contains(advice), qPrintable(arguments.first() + ": " + said));
    }
    QCOMPARE(runningOn(port), QJsonArray{1}); // none of them has ended it
}

// 1 mA into 10 mF: 0.1 V a second, a limit of 1 V.
void TestCellSafety::aLookLeavesTheLimitsInForce()
{
    SimulatorProcess simulator({"--cell", "rc:Rs=1,R=inf,C=0.01", "--speed", "10"});
    const QString port = simulator.portName();
    leaveRunning(port, {"--max-voltage", "1 V"});
    for (const char *command : {"info", "doctor", "limits"})
        QCOMPARE(ClientProcess::run({command, port}), Done);
    // The simulated clock stands still while nobody reads; 4 s are 40 of the instrument's.
    QCOMPARE(ClientProcess::run({"monitor", port, "--duration", "4 s"}), Done);
    QCOMPARE(runningOn(port), QJsonArray());
}

// A cycler does not tell what runs, so any of its channels may. 1 mA into 0.5 F: the limit of 0.3 V ends it after 150 s of
// the instrument's time, which are 15 here.
void TestCellSafety::aRunLeavesOtherChannelsAlone()
{
    SimulatorProcess simulator(
        {"--model", "Gale", "--channels", "4", "--cell", "rc:Rs=1,R=inf,C=0.5", "--speed", "10"});
    const QString port = simulator.portName();
    leaveRunning(port, {"--max-voltage", "0.3 V", "--channel", "2"});
    QCOMPARE(ClientProcess::run({"run", longRun(), "--port", port, "--out", freshFolder(), "--channel", "2"}), Refused);
    QCOMPARE(ClientProcess::run({"manual", port, "--channel", "2", "--voltage", "1 V"}), Refused);
    QCOMPARE(ClientProcess::run({"manual", port, "--channel", "0", "--open-circuit", "--duration", "20 s"}), Done);
    ClientProcess stop({"stop", port, "--channel", "2"});
    QCOMPARE(stop.finish(), Refused); // its limit has ended it meanwhile, so that no end can be confirmed
    QVERIFY2(stop.errors().contains("did not confirm"), qPrintable(stop.errors()));
}

void TestCellSafety::stopEndsWhatAnotherProgramStarted()
{
    SimulatorProcess simulator({"--channels", "3", "--cell", "resistor:R=1000"});
    const QString port = simulator.portName();
    QCOMPARE(ClientProcess::run({"stop", port}), BadInput); // which one?
    leaveRunning(port, {"--channel", "1"});
    QCOMPARE(ClientProcess::run({"stop", port, "--channel", "0"}), Done); // nothing ran there
    QCOMPARE(runningOn(port), QJsonArray{1});
    ClientProcess stop({"stop", port});
    QCOMPARE(stop.finish(), Done);
    QCOMPARE(stop.output(), QByteArray("channel 1: Experiment stopped by user\n"));
    QCOMPARE(runningOn(port), QJsonArray());
    leaveRunning(port, {"--channel", "2"});
    QCOMPARE(ClientProcess::run({"stop", port, "--all"}), Done);
    QCOMPARE(runningOn(port), QJsonArray());

    SimulatorProcess cycler({"--model", "Gale", "--channels", "4"});
    leaveRunning(cycler.portName(), {"--channel", "3"});
    ClientProcess all({"stop", cycler.portName(), "--all"});
    QCOMPARE(all.finish(), Done);
    QCOMPARE(all.output(), QByteArray("channel 3: Experiment stopped by user\n"));
}

void TestCellSafety::linksNoChannelThatIsNotThere_data()
{
    QTest::addColumn<QString>("group");
    QTest::addColumn<int>("missing");

    QTest::newRow("beyond a byte") << "256,257" << 256;
    QTest::newRow("beyond the instrument") << "2,4" << 4;
}

void TestCellSafety::linksNoChannelThatIsNotThere()
{
    QFETCH(QString, group);
    QFETCH(int, missing);
    SimulatorProcess simulator({"--model", "Gale", "--channels", "4"});
    const QString folder = freshFolder();
    ClientProcess client({"run", longRun(), "--port", simulator.portName(), "--out", folder, "--link", group});
    QCOMPARE(client.finish(), BadInput);
    QVERIFY2(client.errors().contains(QStringLiteral("there is no channel %1").arg(missing)),
             qPrintable(client.errors()));
    QVERIFY(!QFile::exists(folder));
}

void TestCellSafety::limitsOutOfReachAreRefused_data()
{
    QTest::addColumn<QStringList>("command");
    QTest::addColumn<QString>("range");

    const QStringList manual{"manual", "PORT", "--voltage", "1V"};
    QTest::newRow("by hand") << manual + QStringList{"--max-voltage", "100V"}
                             << "--max-voltage is 100 V; the Alder takes";
    QTest::newRow("below") << manual + QStringList{"--min-current", "-50A"}
                           << "--min-current is -50 A; the Alder takes";
    QTest::newRow("a run") << QStringList{"run", longRun(), "--port", "PORT", "--max-current", "100A"}
                           << "--max-current is 100 A; the Alder takes";
    QTest::newRow("crossing") << QStringList{"run",           longRun(), "--port",        "PORT",
                                             "--max-voltage", "1V",      "--min-voltage", "2V"}
                              << "--min-voltage of 2 V lies above --max-voltage of 1 V";
    QTest::newRow("of what runs") << QStringList{"limits", "PORT", "--channel", "0", "--max-voltage", "100V"}
                                  << "--max-voltage is 100 V; the Alder takes";
}

/// A limit that never trips would be believed in.
void TestCellSafety::limitsOutOfReachAreRefused()
{
    QFETCH(QStringList, command);
    QFETCH(QString, range);
    SimulatorProcess simulator({"--model", "Alder_2_5", "--channels", "1"});
    command.replaceInStrings("PORT", simulator.portName());
    const QString folder = freshFolder();
    if (command.first() == "run")
        command += QStringList{"--out", folder};
    ClientProcess client(command);
    QVERIFY(client.finish() > 0);
    QVERIFY2(client.errors().contains(range), qPrintable(client.errors()));
    QCOMPARE(client.errors().count('\n'), 1); // nothing was begun that had to be stopped
    QVERIFY(!QFile::exists(folder));
}

void TestCellSafety::limitsOfAGroupStopIt()
{
    SimulatorProcess simulator({"--model", "Gale", "--channels", "2", "--cell", "resistor:R=1", "--speed", "max"});
    const QString file = longRun("\"ConstantCurrent\", \"current\": 0.8");
    ClientProcess client({"run", file, "--port", simulator.portName(), "--out", freshFolder(), "--link", "0,1",
                          "--max-voltage", "0.5 V"});
    QCOMPARE(client.finish(), Refused);
    QVERIFY2(client.errors().contains("Voltage Max"), qPrintable(client.errors()));
}

// A cycler's limits are left alone by connections; the run's own ones replace them, also where it has none.
void TestCellSafety::aRunIsFreeOfTheLimitsOfBefore()
{
    SimulatorProcess simulator({"--model", "Gale", "--channels", "2", "--cell", "resistor:R=1", "--speed", "max"});
    const QString port = simulator.portName();
    QCOMPARE(ClientProcess::run({"limits", port, "--channel", "1", "--max-voltage", "0.1 V"}), Done);
    const QString file =
        RunFolder::writeExperiment(_home.filePath("short.json"), "{\"element\": \"ConstantCurrent\", \"current\": 0.5, "
                                                                 "\"samplingInterval\": 0.1, \"maxDuration\": 1}");
    QCOMPARE(ClientProcess::run({"run", file, "--port", port, "--out", freshFolder(), "--channel", "1"}), Done);
}

void TestCellSafety::aFullDiskStopsTheExperiment_data()
{
    QTest::addColumn<QStringList>("more");
    QTest::addColumn<QString>("state");

    QTest::newRow("by itself") << QStringList() << "stopped";
    QTest::newRow("told to keep going") << QStringList{"--keep-going"} << "completed";
}

void TestCellSafety::aFullDiskStopsTheExperiment()
{
    QFETCH(QStringList, more);
    QFETCH(QString, state);
    SimulatorProcess simulator({"--speed", "100"});
    const QString folder = freshFolder();
    const QString file =
        RunFolder::writeExperiment(_home.filePath("full.json"),
                                   "{\"element\": \"OpenCircuit\", \"maxDuration\": 300, \"samplingInterval\": 0.01}");
    constexpr qint64 room = 20000;
    const auto client = runOnAFullDisk(room, QStringList{file, "--port", simulator.portName(), "--out", folder} + more);
    QCOMPARE(client->finish(), LocalFailure);
    QVERIFY2(client->errors().contains(qt_error_string(EFBIG)), qPrintable(client->errors()));
    QCOMPARE(QFileInfo(folder + "/dc.csv").size(), room); // what fitted is there
    QCOMPARE(summary(folder)["state"].toString(), state);
    QCOMPARE(runningOn(simulator.portName()), QJsonArray());
}

// All rows fit, but not the last record, which names each of the 400 elements; the first one must not be lost for it.
void TestCellSafety::theRecordOfARunSurvivesAFullDisk()
{
    SimulatorProcess simulator({"--speed", "max"});
    const QString folder = freshFolder();
    const QString file = RunFolder::writeExperiment(
        _home.filePath("many.json"),
        "{\"repeats\": 200, \"group\": ["
        "{\"element\": \"OpenCircuit\", \"maxDuration\": 0.1, \"samplingInterval\": 0.1},"
        "{\"element\": \"ConstantCurrent\", \"current\": 0, \"maxDuration\": 0.1, \"samplingInterval\": 0.1}]}");
    const auto client = runOnAFullDisk(60000, {file, "--port", simulator.portName(), "--out", folder});
    QCOMPARE(client->finish(), LocalFailure);
    QCOMPARE(rowCount(folder + "/dc.csv"), 400);
    QCOMPARE(summary(folder)["state"].toString(), QStringLiteral("running"));
}

NIMBRELLE_TEST_MAIN(TestCellSafety)
#include "TestCellSafety.moc"
