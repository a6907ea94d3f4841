// SPDX-License-Identifier: MIT
#include "Nodes.h"

#include "link/Frame.h"
#include "link/SerialCommunicator.h"
#include "simulator/Payload.h"
#include "simulator/PseudoTerminal.h"
#include "support/SimulatorProcess.h"
#include "support/TestMain.h"

#include <fcntl.h>
#include <optional>
#include <sys/inotify.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

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
    void endsInTheMiddleOfAComputation();
    void endsInFrontOfAFullPipe();
    void publishesItsPortOnce();
    void replacesNothingThatIsNotItsOwn_data();
    void replacesNothingThatIsNotItsOwn();
    void replacesWhatAKilledRunHasLeft_data();
    void replacesWhatAKilledRunHasLeft();
    void removesOnlyWhatIsStillItsOwn_data();
    void removesOnlyWhatIsStillItsOwn();
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
    for (const char *fault : {"refuse-start:0", "refuse-start:128", "refuse-start:1.5", "refuse-start"})
        QTest::newRow(fault) << QStringList{"--fault", fault}
                             << QStringLiteral("nimbrelle-sim: --fault: '%1' wants 'refuse-start:CODE'\n").arg(fault);
    for (const char *fault : {"refuse-node:0,8", "refuse-node:2", "refuse-node:2,0", "refuse-node:2,8,9"})
        QTest::newRow(fault) << QStringList{"--fault", fault}
                             << QStringLiteral("nimbrelle-sim: --fault: '%1' wants 'refuse-node:N,CODE'\n").arg(fault);
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

/// Whether there is anything of this name, be it a link that leads nowhere.
static bool isThere(const QString &path)
{
    return QFileInfo(path).isSymLink() || QFileInfo::exists(path);
}

/// The cell's time constant is 15 ns, so an hour of it takes longer than any patience.
void TestSimulatorProgram::endsInTheMiddleOfAComputation()
{
    QTemporaryDir folder;
    const QString link = folder.filePath(QStringLiteral("port"));
    SimulatorProcess simulator({"--link", link, "--speed", "max", "--cell", "battery:Rs=1,R=1,C=3e-8"});
    SerialCommunicator host(simulator.portName());
    int nodesBegun = 0;
    connect(&host, &SerialCommunicator::ResponseReceived, this, [&nodesBegun](Notifications_t type) {
        nodesBegun += type == NT_NODE_BEGIN; //
    });
    QVERIFY(host.Start(true));
    host.SendCommand(PC_NODE_LIST_BEGIN, 0, packed(quint16(2)));
    host.SendCommand(PC_NODE_APPEND, 0, packed(timed(Vek_Node_Constant_Voltage(3600.0f, 3.9f, false, 0.0f), 3600.0f)));
    host.SendCommand(PC_NODE_APPEND, 0, packed(endNode()));
    host.SendCommand(PC_NODE_LIST_END);
    host.SendCommand(PC_EXPERIMENT_START);
    QTRY_COMPARE_WITH_TIMEOUT(nodesBegun, 1, 20000);
    simulator.finish();
    QCOMPARE(simulator.exitCode(), 0);
    QVERIFY(!isThere(link)); // a killed one would have left it
}

void TestSimulatorProgram::endsInFrontOfAFullPipe()
{
    QTemporaryDir folder;
    const QString pipe = folder.filePath(QStringLiteral("pipe"));
    const QString link = folder.filePath(QStringLiteral("port"));
    QCOMPARE(mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    const int fd = open(QFile::encodeName(pipe).constData(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    while (write(fd, "full", 4) > 0) {
    }
    QProcess process;
    process.setStandardOutputFile(pipe);
    process.start(QStringLiteral(NIMBRELLE_SIM_PROGRAM), {"--link", link});
    QTRY_VERIFY_WITH_TIMEOUT(isThere(link), 20000); // it will want to say so now
    process.terminate();
    QVERIFY(process.waitForFinished(20000));
    QCOMPARE(process.exitStatus(), QProcess::NormalExit);
    QVERIFY(!isThere(link));
    close(fd);
}

/// Whoever opens a port the moment that its link is there keeps it.
void TestSimulatorProgram::publishesItsPortOnce()
{
    QTemporaryDir folder;
    const int watch = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    QVERIFY(inotify_add_watch(watch, QFile::encodeName(folder.path()).constData(), IN_CREATE | IN_DELETE) >= 0);
    SimulatorProcess simulator({"--link", folder.filePath(QStringLiteral("port"))});
    QVERIFY(!simulator.portName().isEmpty());
    char events[4096];
    const ssize_t size = read(watch, events, sizeof events);
    close(watch);
    const auto *first = reinterpret_cast<const inotify_event *>(events);
    QVERIFY(size > 0 && first->mask & IN_CREATE);
    QCOMPARE(int(size), int(sizeof *first + first->len)); // and no second one
}

/// A socket that a test listens on.
class ListeningSocket
{
public:
    ListeningSocket(const QString &path, int type) : _fd(socket(AF_UNIX, type | SOCK_CLOEXEC, 0))
    {
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        std::strcpy(address.sun_path, QFile::encodeName(path).constData());
        if (bind(_fd, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0)
            listen(_fd, 1);
    }
    ~ListeningSocket() { close(_fd); }

private:
    int _fd;
};

static void writeFile(const QString &path, const QByteArray &content)
{
    QFile file(path);
    if (file.open(QIODevice::WriteOnly))
        file.write(content);
}

static QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

static const QByteArray truthHeader = "channel,node,time,voltage,current,counter_electrode,charge,temperature\n";

void TestSimulatorProgram::replacesNothingThatIsNotItsOwn_data()
{
    QTest::addColumn<QString>("option");
    QTest::addColumn<QString>("thing"); // in the way: what a file holds, or the word for something else
    for (const char *option : {"--link", "--hid", "--truth", "--passes"}) {
        QTest::addRow("%s on a file", option) << option << "month of work\n";
        QTest::addRow("%s on an empty file", option) << option << "";
        QTest::addRow("%s on a link to a file", option) << option << "LINK";
        QTest::addRow("%s on a link to nowhere", option) << option << "LOOSE";
        QTest::addRow("%s on a socket in use", option) << option << "SOCKET";
    }
    QTest::newRow("--hid on a stream's socket in use") << "--hid"
                                                       << "STREAM";
    QTest::newRow("--link on a link to a terminal in use") << "--link"
                                                           << "TERMINAL";
    QTest::newRow("--passes on a truth file") << "--passes" << QString::fromLatin1(truthHeader);
}

void TestSimulatorProgram::replacesNothingThatIsNotItsOwn()
{
    QFETCH(QString, option);
    QFETCH(QString, thing);
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("wanted"));
    const QString other = folder.filePath(QStringLiteral("other"));
    const QString link = folder.filePath(QStringLiteral("port"));
    std::optional<ListeningSocket> server;
    const PseudoTerminal terminal;
    writeFile(other, truthHeader);
    if (thing == QLatin1String("LINK"))
        QVERIFY(QFile::link(other, path));
    else if (thing == QLatin1String("LOOSE"))
        QVERIFY(QFile::link(folder.filePath(QStringLiteral("nothing")), path));
    else if (thing == QLatin1String("TERMINAL"))
        QVERIFY(QFile::link(terminal.portName(), path));
    else if (thing == QLatin1String("SOCKET"))
        server.emplace(path, SOCK_SEQPACKET);
    else if (thing == QLatin1String("STREAM"))
        server.emplace(path, SOCK_STREAM);
    else
        writeFile(path, thing.toLatin1());
    struct stat before = {};
    lstat(QFile::encodeName(path).constData(), &before);

    QProcess process;
    QStringList arguments{option, path};
    if (option != QLatin1String("--link"))
        arguments << "--link" << link;
    finished(&process, arguments);
    QCOMPARE(process.state(), QProcess::NotRunning);
    QCOMPARE(process.exitCode(), 2);
    const QString complaint = QString::fromLocal8Bit(process.readAllStandardError());
    QVERIFY2(complaint.startsWith(QLatin1String("nimbrelle-sim: ")) && complaint.contains(path), qPrintable(complaint));
    QCOMPARE(complaint.count(QLatin1Char('\n')), 1);
    QVERIFY(!isThere(link));
    struct stat after = {};
    lstat(QFile::encodeName(path).constData(), &after);
    QCOMPARE(after.st_ino, before.st_ino);
    QCOMPARE(after.st_mode, before.st_mode);
    QCOMPARE(contentOf(other), truthHeader);
    if (!server && S_ISREG(after.st_mode))
        QCOMPARE(QString::fromLatin1(contentOf(path)), thing);
}

void TestSimulatorProgram::replacesWhatAKilledRunHasLeft_data()
{
    QTest::addColumn<QStringList>("arguments"); // the last one is the path
    QTest::newRow("link") << QStringList{"--link"};
    QTest::newRow("socket") << QStringList{"--firmware", "none", "--hid"};
    QTest::newRow("truth") << QStringList{"--truth"};
    QTest::newRow("passes") << QStringList{"--passes"};
}

void TestSimulatorProgram::replacesWhatAKilledRunHasLeft()
{
    QFETCH(QStringList, arguments);
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("wanted"));
    arguments << path;
    SimulatorProcess killed(arguments);
    killed.kill();
    QVERIFY(isThere(path));
    if (QFileInfo(path).isSymLink()) { // another test may have been given the number of its terminal by now
        QVERIFY(QFile::remove(path));
        QVERIFY(QFile::link(QStringLiteral("/dev/pts/999999999"), path));
    }
    SimulatorProcess simulator(arguments);
    QVERIFY(!simulator.portName().isEmpty());
    if (QFileInfo(path).isSymLink())
        QCOMPARE(QFile::symLinkTarget(path), simulator.portName());
    QCOMPARE(simulator.finish(), QString());
    QCOMPARE(simulator.exitCode(), 0);
    QCOMPARE(isThere(path), arguments.contains("--truth") || arguments.contains("--passes"));
}

void TestSimulatorProgram::removesOnlyWhatIsStillItsOwn_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("link") << QStringList{"--link"};
    QTest::newRow("socket") << QStringList{"--firmware", "none", "--hid"};
}

void TestSimulatorProgram::removesOnlyWhatIsStillItsOwn()
{
    QFETCH(QStringList, arguments);
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("wanted"));
    SimulatorProcess simulator(arguments << path);
    QVERIFY(QFile::remove(path));
    writeFile(path, "month of work\n");
    simulator.finish();
    QCOMPARE(simulator.exitCode(), 0);
    QCOMPARE(contentOf(path), QByteArray("month of work\n"));
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
    QVERIFY(cable.plug());
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
    QVERIFY(cable.plug());
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
