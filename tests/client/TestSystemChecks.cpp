#include "SystemChecks.h"

#include "support/TestMain.h"

#include <unistd.h>

using namespace client;

namespace {

/// A folder that looks like /proc to the checks.
class FakeProc
{
public:
    QString root() const { return _root.path(); }

    void addProcess(int id, const QByteArray &name, const QStringList &openFiles)
    {
        const QString folder = _root.filePath(QString::number(id));
        QDir().mkpath(folder + "/fd");
        QFile comm(folder + "/comm");
        QVERIFY(comm.open(QIODevice::WriteOnly));
        comm.write(name + '\n');
        int number = 0;
        for (const QString &target : openFiles)
            QCOMPARE(symlink(qPrintable(target), qPrintable(QString("%1/fd/%2").arg(folder).arg(number++))), 0);
    }

private:
    QTemporaryDir _root;
};

} // namespace

class TestSystemChecks : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void tellsWhatIsNoPort();
    void findsTheProcessThatHoldsAPort();
    void theFarEndOfAPseudoTerminalHoldsNothing();
    void leavesAloneWhatRecords();
    void curesMissingRights_data();
    void curesMissingRights();
    void looksForTheUdevRule();
    void asksInstrumentsAlone();
    void noticesModemManager();
};

void TestSystemChecks::tellsWhatIsNoPort()
{
    const Finding missing = checkPresence("ttyNowhere");
    QCOMPARE(missing.level, Finding::Level::Bad);
    QCOMPARE(missing.text, QStringLiteral("There is no /dev/ttyNowhere."));
    QCOMPARE(missing.command, QStringLiteral("nimbrelle list"));
    QTemporaryFile file;
    QVERIFY(file.open());
    QCOMPARE(checkPresence(file.fileName()).level, Finding::Level::Bad);
    QCOMPARE(checkPresence("/dev/null").level, Finding::Level::Good); // a character device
}

void TestSystemChecks::findsTheProcessThatHoldsAPort()
{
    FakeProc proc;
    proc.addProcess(4711, "screen", {"/dev/null", "/dev/ttyNowhere"});
    proc.addProcess(4712, "bash", {"/dev/null"});
    const std::vector<Holder> holders = holdersOf("/dev/ttyNowhere", proc.root());
    QCOMPARE(holders.size(), std::size_t(1));
    QCOMPARE(holders.front().processId, 4711);
    const Finding finding = checkHolders("ttyNowhere", proc.root());
    QCOMPARE(finding.text, QStringLiteral("Process 4711 (screen) has it open; close that program."));
    QCOMPARE(finding.command, QStringLiteral("ps -fp 4711"));
}

void TestSystemChecks::leavesAloneWhatRecords()
{
    FakeProc proc;
    proc.addProcess(4711, "nimbrelle", {"/data/cell 17/dc.csv", "/dev/ttyNowhere"});
    const Finding finding = checkHolders("ttyNowhere", proc.root());
    QCOMPARE(finding.level, Finding::Level::Bad);
    QVERIFY(finding.text.contains("records an experiment in /data/cell 17;"));
    QVERIFY(!finding.command.contains("kill"));
}

void TestSystemChecks::curesMissingRights_data()
{
    QTest::addColumn<bool>("isSystemGroup");
    QTest::addColumn<bool>("isMember");
    QTest::addColumn<QString>("command");
    QTest::newRow("a group for ports") << false << false << "sudo usermod -aG dialout ann && newgrp dialout";
    QTest::newRow("joined after the login") << false << true << "newgrp dialout";
    QTest::newRow("root's group") << true << false << "sudo cp packaging/71-nimbrelle.rules";
}

void TestSystemChecks::curesMissingRights()
{
    QFETCH(bool, isSystemGroup);
    QFETCH(bool, isMember);
    QFETCH(QString, command);
    const Finding finding = missingRights({"/dev/ttyNowhere", "dialout", isSystemGroup, isMember}, "ann");
    QCOMPARE(finding.level, Finding::Level::Bad);
    QVERIFY2(finding.command.startsWith(command), qPrintable(finding.command));
}

void TestSystemChecks::looksForTheUdevRule()
{
    QTemporaryDir folder;
    QCOMPARE(checkUdevRule({"/nowhere", folder.path()}).level, Finding::Level::Doubtful);
    QFile rule(folder.filePath("71-nimbrelle.rules"));
    QVERIFY(rule.open(QIODevice::WriteOnly));
    QCOMPARE(checkUdevRule({"/nowhere", folder.path()}).level, Finding::Level::Good);
}

void TestSystemChecks::asksInstrumentsAlone()
{
    QVERIFY(looksLikeInstrument(0x04d8, "Brenmoor Apparatus"));
    QVERIFY(!looksLikeInstrument(0x04d8, "Microchip"));
    QVERIFY(!looksLikeInstrument(0x1234, "Brenmoor Apparatus"));
    QVERIFY(!looksLikeInstrument(0, QString())); // a port on the mainboard
}

void TestSystemChecks::theFarEndOfAPseudoTerminalHoldsNothing()
{
    FakeProc proc;
    proc.addProcess(4711, "nimbrelle-sim", {"/dev/pts/7", "/dev/ptmx"});
    QVERIFY(holdersOf("/dev/pts/7", proc.root()).empty());
}

void TestSystemChecks::noticesModemManager()
{
    FakeProc proc;
    QCOMPARE(checkModemManager(proc.root()).level, Finding::Level::Good);
    proc.addProcess(99, "ModemManager", {});
    QCOMPARE(checkModemManager(proc.root()).command, QStringLiteral("sudo systemctl stop ModemManager"));
}

NIMBRELLE_TEST_MAIN(TestSystemChecks)
#include "TestSystemChecks.moc"
