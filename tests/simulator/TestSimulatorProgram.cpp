#include "link/Frame.h"
#include "simulator/PseudoTerminal.h"
#include "support/SimulatorProcess.h"
#include "support/TestMain.h"

/// The program around the instrument: its words, exit codes, files and its end.
class TestSimulatorProgram : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void complainsInOneLine_data();
    void complainsInOneLine();
    void answersInWords_data();
    void answersInWords();
    void endsCleanlyOnRequest();
    void runsOnATerminalThatComesAndGoes();
    void runsACommandBeforeItComesUp();
};

static QProcess *finished(QProcess *process, const QStringList &arguments)
{
    process->start(QStringLiteral(NIMBRELLE_SIM_PROGRAM), arguments);
    process->waitForFinished(5000);
    return process;
}

void TestSimulatorProgram::complainsInOneLine_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("complaint");
    QTest::newRow("model") << QStringList{"--model", "Aldr"} << "nimbrelle-sim: --model: there is no model 'Aldr'\n";
    QTest::newRow("cell") << QStringList{"--cell", "2=resistor"} << "nimbrelle-sim: --cell: there is no channel 2\n";
    QTest::newRow("fault") << QStringList{"--fault", "fire"}
                           << "nimbrelle-sim: --fault: there is no fault named 'fire'\n";
    QTest::newRow("speed") << QStringList{"--speed", "0.5"} << "nimbrelle-sim: --speed takes 1 to 1000, or max\n";
    QTest::newRow("firmware without a node")
        << QStringList{"--firmware", "none"}
        << "nimbrelle-sim: in its HID bootloader, for which there is no node (--hid)\n";
    QTest::newRow("node") << QStringList{"--firmware", "none", "--hid", "/nowhere/hid"}
                          << "nimbrelle-sim: cannot make the socket /nowhere/hid: No such file or directory\n";
    QTest::newRow("change") << QStringList{"--on-change", "false"} << "nimbrelle-sim: 'false' has failed\n";
    QTest::newRow("step") << QStringList{"--fault", "boot-silence:jump"}
                          << "nimbrelle-sim: --fault: 'boot-silence:jump' wants 'boot-silence:STEP'\n";
    QTest::newRow("truth") << QStringList{"--truth", "/nowhere/truth.csv"}
                           << "nimbrelle-sim: cannot write /nowhere/truth.csv: No such file or directory\n";
}

void TestSimulatorProgram::complainsInOneLine()
{
    QFETCH(QStringList, arguments);
    QProcess process;
    finished(&process, arguments);
    QCOMPARE(process.exitCode(), 2);
    QTEST(QString::fromLocal8Bit(process.readAllStandardError()), "complaint");
    QVERIFY(process.readAllStandardOutput().isEmpty());
}

void TestSimulatorProgram::answersInWords_data()
{
    QTest::addColumn<QString>("argument");
    QTest::addColumn<QString>("word");
    QTest::newRow("help") << "--help"
                          << "no-calibration:CHANNEL";
    QTest::newRow("version") << "--version"
                             << "nimbrelle-sim 1.";
    QTest::newRow("models") << "--list-models"
                            << "35  Alder_2_5";
}

void TestSimulatorProgram::answersInWords()
{
    QFETCH(QString, argument);
    QFETCH(QString, word);
    QProcess process;
    finished(&process, {argument});
    QCOMPARE(process.exitCode(), 0);
    QVERIFY(QString::fromLocal8Bit(process.readAllStandardOutput()).contains(word));
}

void TestSimulatorProgram::endsCleanlyOnRequest()
{
    QTemporaryDir folder;
    const QString link = folder.filePath(QStringLiteral("port"));
    SimulatorProcess simulator({"--link", link, "--stats", "--channels", "2", "--model", "31"});
    QVERIFY(QFile::exists(simulator.portName()));
    QCOMPARE(QFile::symLinkTarget(link), simulator.portName());
    QCOMPARE(simulator.finish(), QStringLiteral("channel 0: 0 DC records, 0 AC records\n"
                                                "channel 1: 0 DC records, 0 AC records\n"));
    QCOMPARE(simulator.exitCode(), 0);
    QVERIFY(!QFileInfo(link).isSymLink());
}

/// Asks until there is an answer: what comes while nobody listens is lost.
static bool answersPing(PseudoTerminal &cable)
{
    QSignalSpy answers(&cable, &SerialEnd::received);
    return QTest::qWaitFor(
        [&] {
            cable.write(makeFrame(quint8(PC_PING), deviceChannel));
            return answers.wait(100);
        },
        10000);
}

void TestSimulatorProgram::runsOnATerminalThatComesAndGoes()
{
    QTemporaryDir folder;
    PseudoTerminal cable(folder.filePath("device"));
    SimulatorProcess simulator({"--device", folder.filePath("device")});
    QCOMPARE(simulator.portName(), folder.filePath("device"));
    QVERIFY(answersPing(cable));
    cable.unplug();
    QTest::qWait(100);
    QVERIFY(cable.plug());
    QVERIFY(answersPing(cable));
}

void TestSimulatorProgram::runsACommandBeforeItComesUp()
{
    QTemporaryDir folder;
    PseudoTerminal cable(folder.filePath("device"));
    QFile log(folder.filePath("log"));
    SimulatorProcess simulator({"--model", "Gale", "--channels", "2", "--device", folder.filePath("device"),
                                "--on-change", ">>" + log.fileName() + " echo changed to"});
    QVERIFY(answersPing(cable));
    cable.write(makeFrame(quint8(PC_SOFT_RESET), allChannels));
    QTRY_COMPARE(log.size(), qint64(qstrlen("changed to firmware\nchanged to bootloader\n")));
    QVERIFY(answersPing(cable));
    QVERIFY(log.open(QIODevice::ReadOnly));
    QCOMPARE(log.readAll(), QByteArray("changed to firmware\nchanged to bootloader\n"));
}

NIMBRELLE_TEST_MAIN(TestSimulatorProgram)
#include "TestSimulatorProgram.moc"
