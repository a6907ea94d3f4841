// SPDX-License-Identifier: MIT
#include "client/instruments/SystemChecks.h"

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
    void namesTheRuleThatIsThere_data();
    void namesTheRuleThatIsThere();
    void findsBootloaders();
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
    proc.addProcess(4713, "cat", {"/dev/ttyNowhere"}); // both take bytes from each other
    const Findings findings = checkHolders("ttyNowhere", proc.root());
    QCOMPARE(findings.size(), std::size_t(2));
    QCOMPARE(findings[0].text, QStringLiteral("Process 4711 (screen) has it open; close that program."));
    QCOMPARE(findings[0].command, QStringLiteral("ps -fp 4711"));
    QCOMPARE(findings[1].command, QStringLiteral("ps -fp 4713"));
}

void TestSystemChecks::leavesAloneWhatRecords()
{
    FakeProc proc;
    proc.addProcess(4711, "nimbrelle", {"/data/cell 17/dc.csv", "/dev/ttyNowhere"});
    const Finding finding = checkHolders("ttyNowhere", proc.root()).front();
    QCOMPARE(finding.level, Finding::Level::Bad);
    QVERIFY(finding.text.contains("records an experiment in /data/cell 17;"));
    QCOMPARE(finding.command, QStringLiteral("tail -f '/data/cell 17/dc.csv'")); // and no advice to kill it
}

void TestSystemChecks::curesMissingRights_data()
{
    QTest::addColumn<bool>("isSystemGroup");
    QTest::addColumn<bool>("isMember");
    QTest::addColumn<QString>("command");
    QTest::newRow("a group for ports") << false << false << "sudo usermod -aG dialout ann && newgrp dialout";
    QTest::newRow("joined after the login") << false << true << "newgrp dialout";
    QTest::newRow("root's group") << true << false << "sudo cp ";
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

void TestSystemChecks::namesTheRuleThatIsThere_data()
{
    QTest::addColumn<QString>("program");
    QTest::addColumn<QString>("rule");
    QTest::newRow("clone") << "build/release/client"
                           << "packaging/71-nimbrelle.rules";
    QTest::newRow("prefix") << "bin"
                            << "lib/udev/rules.d/71-nimbrelle.rules";
}

void TestSystemChecks::namesTheRuleThatIsThere()
{
    QFETCH(QString, program);
    QFETCH(QString, rule);
    QTemporaryDir home;
    const QDir folder(home.path());
    const QString path = folder.filePath(rule);
    QVERIFY(folder.mkpath(program) && folder.mkpath(QFileInfo(path).path()));
    QCOMPARE(udevRuleFile(folder.filePath(program)), QStringLiteral("packaging/71-nimbrelle.rules")); // for want of it
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(QFileInfo(udevRuleFile(folder.filePath(program))).canonicalFilePath(),
             QFileInfo(path).canonicalFilePath());
}

/// As /sys has them: the strings of a USB device stand some folders above its HID.
void TestSystemChecks::findsBootloaders()
{
    QTemporaryDir root;
    const auto add = [&root](const QString &hid, const QByteArray &product) {
        const QString device = root.filePath("devices/usb-" + hid);
        QVERIFY(QDir().mkpath(device + "/interface/0003:04D8:003C.0001"));
        QVERIFY(QDir().mkpath(root.filePath("class/hidraw/" + hid)));
        QVERIFY(
            QFile::link(device + "/interface/0003:04D8:003C.0001", root.filePath("class/hidraw/" + hid + "/device")));
        const QPair<QString, QByteArray> attributes[] = {
            {"idVendor", "04d8"}, {"idProduct", "003c"}, {"manufacturer", "Brenmoor Apparatus"}, {"product", product}};
        for (const auto &[name, value] : attributes) {
            QFile file(device + '/' + name);
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write(value + '\n');
        }
    };
    QVERIFY(bootloaderNodes(root.path()).isEmpty());
    add("hidraw0", "Mouse"); // of the same maker of controllers
    add("hidraw1", "Nimbrelle HID bootloader");
    QCOMPARE(bootloaderNodes(root.path()), QStringList{"/dev/hidraw1"});
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
