// SPDX-License-Identifier: MIT
#include "ConnectedInstrument.h"

#include "support/ClientProcess.h"
#include "support/RunFolder.h"
#include "support/TestMain.h"

#include <VekConstantCurrentElement.h>

#include <cerrno>
#include <csignal>
#include <functional>
#include <memory>
#include <sys/resource.h>

namespace {

/// Lets files grow to so many bytes and no further, as a full disk does.
void limitFiles(rlim_t bytes)
{
    rlimit limit;
    getrlimit(RLIMIT_FSIZE, &limit);
    limit.rlim_cur = bytes;
    setrlimit(RLIMIT_FSIZE, &limit);
}

} // namespace

/// Faults of the machine that the client runs on: its ports, its disk.
class TestHostFaults : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanup() { limitFiles(RLIM_INFINITY); }

    void heldPort_data();
    void heldPort();
    void twoInstrumentsOfOneName();
    void badDocuments_data();
    void badDocuments();
    void fullDiskEndsARunWithItsReason();
};

namespace {

using Change = std::function<void(const QDir &home)>;

const QString logFile = QStringLiteral("Documents/Brenmoor Apparatus/API/NimbrelleAPI.log");
const QString tables = QStringLiteral("Documents/Brenmoor Apparatus/Calibration files");
constexpr int samplesOfARun = 50;
constexpr int attempts = 3; // on a crowded machine an answer may take longer than the second that a handshake waits

VekExperiment halfASecond()
{
    VekConstantCurrentElement element(1e-3, 0.01, 0.5);
    VekExperiment experiment;
    experiment.appendElement(element, 1);
    return experiment;
}

void nothing(const QDir &)
{
}

/// Another process that is connected and prints samples; none when it could not connect.
std::unique_ptr<ClientProcess> clientThatMeasures(const QString &port)
{
    for (int i = 0; i < attempts; ++i) {
        auto client = std::make_unique<ClientProcess>(QStringList{"monitor", port});
        const auto hasEnded = [&client] { return !client->isRunning(); };
        if (QTest::qWaitFor([&] { return client->output().count('\n') > 1 || hasEnded(); }, 20000) && !hasEnded())
            return client;
    }
    return nullptr;
}

void makeFile(const QDir &home, const QString &path)
{
    QVERIFY(home.mkpath(QFileInfo(path).path()));
    QFile file(home.filePath(path));
    QVERIFY(file.open(QIODevice::WriteOnly));
}

void fillDisk(const QDir &home)
{
    constexpr int full = 512; // not less: Qt's lock on the port is a small file too
    makeFile(home, logFile);
    QVERIFY(QFile(home.filePath(logFile)).resize(full));
    limitFiles(full);
}

int linesIn(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll().count('\n') : 0;
}

/// Bytes of all files below a folder.
qint64 bytesBelow(const QString &folder)
{
    qint64 bytes = 0;
    for (QDirIterator files(folder, QDir::Files, QDirIterator::Subdirectories); files.hasNext();)
        bytes += QFileInfo(files.next()).size();
    return bytes;
}

} // namespace

Q_DECLARE_METATYPE(Change)

void TestHostFaults::initTestCase()
{
    std::signal(SIGXFSZ, SIG_IGN); // a write beyond the limit shall fail, as one on a full disk does
}

void TestHostFaults::heldPort_data()
{
    QTest::addColumn<int>("endOfHolder");
    QTest::newRow("until its holder ends") << SIGINT;
    QTest::newRow("until its holder is killed") << SIGKILL;
}

void TestHostFaults::heldPort()
{
    QFETCH(int, endOfHolder);
    SimulatorProcess simulator({"--name", "Held", "--model", "Cedar_2_0"});
    const auto holder = clientThatMeasures(simulator.portName());
    QVERIFY(holder);
    VekDeviceTracker *tracker = VekDeviceTracker::Instance();
    const VekErrorCode refusal = tracker->connectToDeviceOnComPort(simulator.portName());
    QCOMPARE(int(refusal), int(VekErrorCode::ConnectionFailed));
    QVERIFY2(refusal.message().endsWith("the NUI is open, please close it."), qPrintable(refusal.message()));

    const int linesBefore = holder->output().count('\n');
    QTRY_VERIFY_WITH_TIMEOUT(holder->output().count('\n') > linesBefore, 20000); // undisturbed
    holder->sendSignal(endOfHolder);
    holder->finish();
    QSignalSpy arrivals(tracker, &VekDeviceTracker::newDeviceConnected);
    VekErrorCode result = VekErrorCode::ConnectionFailed;
    for (int i = 0; i < attempts && result == VekErrorCode::ConnectionFailed; ++i)
        result = tracker->connectToDeviceOnComPort(simulator.portName());
    QCOMPARE(result.message(), QString("Success"));
    QTRY_COMPARE_WITH_TIMEOUT(arrivals.size(), 1, 20000);
    simulator.finish();
    QTRY_VERIFY(tracker->getConnectedDevices().empty());
}

void TestHostFaults::twoInstrumentsOfOneName()
{
    VekDeviceTracker *tracker = VekDeviceTracker::Instance();
    QSignalSpy losses(tracker, &VekDeviceTracker::deviceDisconnected);
    const QStringList arguments{"--speed", "max", "--cell"};
    {
        ConnectedInstrument first("Twin", QStringList(arguments) << "resistor:R=1000");
        ConnectedInstrument second("Twin", QStringList(arguments) << "resistor:R=2000");
        QVERIFY(first.isReady() && second.isReady());
        QVERIFY(&first.handler() != &second.handler());
        QCOMPARE(tracker->getConnectedDevices(), std::list<QString>{"Twin"});
        QVERIFY(first.complete(halfASecond()) && second.complete(halfASecond()));
        QCOMPARE(first.samples.size(), std::size_t(samplesOfARun));
        QCOMPARE(second.samples.size(), std::size_t(samplesOfARun));
        QVERIFY(qAbs(first.samples.back().data.workingElectrodeVoltage - 1.0) < 1e-3);
        QVERIFY(qAbs(second.samples.back().data.workingElectrodeVoltage - 2.0) < 1e-3);
        first.simulator().kill();
        QTRY_COMPARE(first.losses, 1);
        second.ends.clear();
        QVERIFY(second.complete(halfASecond())); // the twin's end is not its own
        QCOMPARE(second.losses, 0);
        QCOMPARE(tracker->getConnectedDevices(), std::list<QString>{"Twin"});
    }
    QCOMPARE(losses.size(), 2);
    QVERIFY(tracker->getConnectedDevices().empty());
}

void TestHostFaults::badDocuments_data()
{
    QTest::addColumn<Change>("spoil");
    QTest::addColumn<Change>("mend");
    QTest::addColumn<bool>("logs");
    QTest::addColumn<bool>("keepsTables");
    const auto removeDocuments = [](const QDir &home) { QVERIFY(QFile::remove(home.filePath("Documents"))); };
    QTest::newRow("missing") << Change(nothing) << Change(nothing) << true << true;
    QTest::newRow("a file in its place") << Change([](const QDir &home) { makeFile(home, "Documents"); })
                                         << Change(removeDocuments) << false << false;
    // No one makes a folder there, not even root, for whom a write-protected folder is none.
    QTest::newRow("write-protected") << Change([](const QDir &home) {
        QVERIFY(QFile::link("/sys/kernel", home.filePath("Documents")));
    }) << Change(removeDocuments) << false
                                     << false;
    QTest::newRow("full") << Change(fillDisk) << Change([](const QDir &) { limitFiles(RLIM_INFINITY); }) << false
                          << true; // as far as they fitted
    QTest::newRow("log file cannot be written")
        << Change([](const QDir &home) { QVERIFY(home.mkpath(logFile)); })
        << Change([](const QDir &home) { QVERIFY(home.rmdir(logFile)); }) << false << true;
}

/**
 * With a disk that takes nothing the instrument is connected and measures as usual, alarms reach the client, and what is
 * logged after the fault has been mended is in the file.
 */
void TestHostFaults::badDocuments()
{
    QFETCH(Change, spoil);
    QFETCH(Change, mend);
    QFETCH(bool, logs);
    QFETCH(bool, keepsTables);
    QTemporaryDir folder;
    const QDir home(folder.path());
    qputenv("HOME", QFile::encodeName(folder.path()));
    spoil(home);
    VekDeviceTracker::Instance()->setLogFilePath(home.filePath(logFile));

    ConnectedInstrument instrument("Disk", {"--speed", "max", "--fault", "alarm:overcurrent@0.2"});
    QVERIFY(instrument.isReady());
    QSignalSpy alarms(&instrument.handler(), &VekInstrumentHandler::deviceError);
    const auto runIntoAlarm = [&instrument] {
        instrument.ends.clear();
        instrument.handler().uploadExperimentToChannel(0, halfASecond());
        instrument.handler().startUploadedExperiment(0);
        return instrument.waitForEnds(1, 20000);
    };
    QVERIFY(runIntoAlarm());
    QCOMPARE(alarms.size(), 1);
    QCOMPARE(linesIn(home.filePath(logFile)), logs ? 1 : 0);
    QCOMPARE(bytesBelow(home.filePath(tables)) > 0, keepsTables);

    mend(home);
    QVERIFY(runIntoAlarm());
    QCOMPARE(alarms.size(), 2);
    QVERIFY(linesIn(home.filePath(logFile)) >= (logs ? 2 : 1));
}

void TestHostFaults::fullDiskEndsARunWithItsReason()
{
    QTemporaryDir folder;
    const QString run = folder.filePath("run");
    const QString experiment = RunFolder::writeExperiment(folder.filePath("long.json"),
                                                          "{\"element\": \"ConstantCurrent\", \"current\": \"1 mA\", "
                                                          "\"samplingInterval\": 0.01, \"maxDuration\": 10}");
    SimulatorProcess simulator({"--model", "Cedar_2_0", "--speed", "max"});
    constexpr rlim_t room = 8192; // inherited by the client
    limitFiles(room);
    ClientProcess client({"run", experiment, "--port", simulator.portName(), "--out", run, "--quiet"});
    QCOMPARE(client.finish(60000), 1); // a file of this machine could not be written
    QCOMPARE(client.errors(), QStringLiteral("nimbrelle: %1/dc.csv: %2\n").arg(run, qt_error_string(EFBIG)));
    QCOMPARE(QFileInfo(run + "/dc.csv").size(), qint64(room)); // what fitted is there
}

NIMBRELLE_TEST_MAIN(TestHostFaults)
#include "TestHostFaults.moc"
