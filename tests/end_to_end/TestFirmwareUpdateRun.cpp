// SPDX-License-Identifier: MIT
#include "UpdateBench.h"
#include "support/TestMain.h"

#include <csignal>

namespace {

constexpr int noConnection = 3; // exit codes of the program
constexpr int refused = 4;

const QString initialized = QStringLiteral("%1: Firmware update has initialized.\n");
const QString starting = QStringLiteral("%1: Firmware update is starting.\n");
const QString updated = QStringLiteral("%1: Firmware updated successfully.\n");

/// What one whole update says.
QString wholeUpdate(const QString &name)
{
    return initialized.arg(name) + starting.arg(name) + updated.arg(name);
}

} // namespace

/// Instruments with firmware that the client does not know: refused, updated, connected.
class TestFirmwareUpdateRun : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void refusedUpdatedConnected_data();
    void refusedUpdatedConnected();
    void drawsItsProgressOnATerminal();
    void anInterruptionDoesNotCutItOff();
    void everyInstrumentThatNeedsItIsUpdated();
    void bootloadersAreUpdatedOneAfterTheOther();
    void aRestartThatDoesNotComeIsTold();
    void standInIsRefused_data();
    void standInIsRefused();
    void whatCannotBeUpdatedIsTold_data();
    void whatCannotBeUpdatedIsTold();
};

void TestFirmwareUpdateRun::refusedUpdatedConnected_data()
{
    QTest::addColumn<QStringList>("model");
    QTest::newRow("Alder") << QStringList{"Alder_2_5"};
    QTest::newRow("Ibis") << QStringList{"Ibis_2_4", "--channels", "2"};
    // A cycler's bootloader is announced by the text of its hardware record, whose line end is not shown.
    QTest::newRow("Gale") << QStringList{"Gale", "--channels", "4"};
}

void TestFirmwareUpdateRun::refusedUpdatedConnected()
{
    QFETCH(QStringList, model);
    UpdateBench bench;
    const QString port = bench.plug(QStringList{"--name", "Bench", "--firmware", "old", "--model"} + model);
    const auto refusedClient = bench.client({"info", port});
    QCOMPARE(refusedClient->finish(), noConnection);
    QCOMPARE(refusedClient->errors(),
             QStringLiteral("nimbrelle: %1: code 2: A connection with the device could not be successfully established "
                            "because device firmware did not match with API version. Please update device firmware "
                            "using updateFirmwareOnComPort or updateFirmwareOnAllAvailableDevices or use utility "
                            "application which is provided with library.\n")
                 .arg(port));

    const auto updatingClient = bench.client({"update", port});
    QCOMPARE(updatingClient->finish(), 0);
    QCOMPARE(updatingClient->errors(), initialized.arg("Bench") + starting.arg("Bench") + updated.arg("Bench"));
    QCOMPARE(updatingClient->output(), QByteArray());

    const auto connectedClient = bench.client({"info", port}); // at once: the update has waited for the restart
    QCOMPARE(connectedClient->finish(), 0);
    QVERIFY(connectedClient->output().startsWith("Name:      Bench\n"));
    const auto secondUpdate = bench.client({"update", port});
    QCOMPARE(secondUpdate->finish(), 0);
    QVERIFY(secondUpdate->errors().contains("code 4: Device has up to date firmware."));
}

void TestFirmwareUpdateRun::drawsItsProgressOnATerminal()
{
    UpdateBench bench;
    const QString port = bench.plug({"--name", "Bench", "--firmware", "old"});
    QProcess terminal; // the program script(1) runs a command on a terminal of its own
    terminal.setProcessEnvironment(bench.environment());
    terminal.start("script", {"-qefc", QStringLiteral(NIMBRELLE_CLIENT_PROGRAM " update ") + port, "/dev/null"});
    QVERIFY(terminal.waitForFinished(30000));
    QCOMPARE(terminal.exitCode(), 0);
    const QByteArray seen = terminal.readAllStandardOutput();
    QVERIFY2(seen.contains("] ") && seen.contains(" % Bench"), seen);
    QVERIFY2(seen.contains("\r\033[KBench: Firmware updated successfully.\r\n"), seen); // the bar gives way
    QVERIFY2(seen.endsWith('\n'), seen);
}

void TestFirmwareUpdateRun::anInterruptionDoesNotCutItOff()
{
    UpdateBench bench;
    const QString port = bench.plug({"--name", "Bench", "--firmware", "old"});
    const auto client = bench.client({"update", port});
    QTRY_VERIFY_WITH_TIMEOUT(client->errors().contains("has initialized"), 20000);
    client->sendSignal(SIGINT);
    QCOMPARE(client->finish(), 0);
    QVERIFY(client->errors().contains("The update goes on"));
    QVERIFY(UpdateBench::hasCome(port));
    QCOMPARE(bench.run({"info", port}), 0);
}

void TestFirmwareUpdateRun::everyInstrumentThatNeedsItIsUpdated()
{
    UpdateBench bench;
    const QStringList ports{bench.plug({"--name", "Alder-1", "--firmware", "old"}),
                            bench.plug({"--name", "Gale-2", "--firmware", "old", "--model", "Gale", "--channels", "2"}),
                            bench.plug({"--name", "Alder-3"}),
                            bench.plug({"--name", "Ibis-4", "--firmware", "none", "--model", "Ibis_2_4"}),
                            bench.plug({"--name", "Heron-5", "--firmware", "old", "--model", "Heron_1_0"})};
    const QString untouched = QFileInfo(ports[2]).symLinkTarget();
    const auto client = bench.client({"update", "--all"});
    QCOMPARE(client->finish(60000), 0);
    const QString told = client->errors();
    for (const char *name : {"Alder-1", "Gale-2", "", "Heron-5"}) // one that is in its bootloader already has no name
        QVERIFY2(("\n" + told).contains("\n" + updated.arg(name)), qPrintable(told));
    QVERIFY(!told.contains("Alder-3"));
    QCOMPARE(QFileInfo(ports[2]).symLinkTarget(), untouched);
    for (const QString &port : ports)
        QCOMPARE(bench.run({"info", port}), 0); // at once: the update has waited for each restart
}

void TestFirmwareUpdateRun::bootloadersAreUpdatedOneAfterTheOther()
{
    UpdateBench bench;
    const QStringList slow{"--on-change", "boot() { test $1 = bootloader || sleep 2; }; boot"}; // as a real one starts
    const QStringList ports{bench.plug(slow + QStringList{"--firmware", "none"}),
                            bench.plug(slow + QStringList{"--firmware", "none", "--model", "Heron_2_0"})};
    const auto client = bench.client({"update", "--all"});
    QCOMPARE(client->finish(), 0);
    QCOMPARE(client->errors(), wholeUpdate(QString()).repeated(2));
    for (const QString &port : ports)
        QCOMPARE(bench.run({"info", port}), 0); // each got its own model's image, else its firmware would be refused
}

void TestFirmwareUpdateRun::aRestartThatDoesNotComeIsTold()
{
    UpdateBench bench;
    const QString dies = "boot() { test $1 = bootloader; }; boot"; // the program ends in place of a start
    bench.plug({"--firmware", "none", "--on-change", dies});
    const auto client = bench.client({"update", "--all"});
    QCOMPARE(client->finish(60000), noConnection);
    QVERIFY2(
        client->errors().startsWith(wholeUpdate(QString()) + "nimbrelle: An instrument has its new firmware, but "),
        qPrintable(client->errors()));
}

void TestFirmwareUpdateRun::standInIsRefused_data()
{
    QTest::addColumn<QString>("firmware");
    QTest::addColumn<bool>("wantsAll");
    QTest::newRow("on its port") << "old" << false;
    QTest::newRow("among all ports") << "old" << true;
    QTest::newRow("in its bootloader") << "none" << true;
}

void TestFirmwareUpdateRun::standInIsRefused()
{
    QFETCH(QString, firmware);
    QFETCH(bool, wantsAll);
    UpdateBench bench;
    const QString port = bench.plug({"--name", "Bench", "--firmware", firmware});
    const bool hasPort = firmware == "old";
    QCOMPARE(hasPort && UpdateBench::hasCome(port), hasPort);
    const QString device = QFileInfo(port).symLinkTarget();
    QProcessEnvironment environment = bench.environment();
    environment.remove("NIMBRELLE_ALLOW_STAND_IN");
    ClientProcess client({"update", wantsAll ? "--all" : port}, environment);
    QCOMPARE(client.finish(), refused);
    QVERIFY2(client.errors().contains(" is a stand-in "), qPrintable(client.errors()));
    QVERIFY2(client.errors().contains("-DNIMBRELLE_FIRMWARE_DIR=DIR"), qPrintable(client.errors()));
    QCOMPARE(QFileInfo(port).symLinkTarget(), device); // it was not restarted
    QCOMPARE(bench.run({"update", "--all"}), 0);       // and can be updated still
}

void TestFirmwareUpdateRun::whatCannotBeUpdatedIsTold_data()
{
    QTest::addColumn<QString>("release");
    QTest::addColumn<QString>("told");
    QTest::newRow("unknown release number") << "256"
                                            << "nimbrelle: Unknow HID model connections. \n";
    QTest::newRow("no model's release number")
        << "200" << initialized.arg("") + "nimbrelle: : Firmware update failed.\n";
}

void TestFirmwareUpdateRun::whatCannotBeUpdatedIsTold()
{
    QFETCH(QString, release);
    UpdateBench bench;
    const QString port = bench.plug({"--firmware", "none", "--release", release});
    const auto client = bench.client({"update", "--all"});
    QCOMPARE(client->finish(), refused);
    QTEST(client->errors(), "told");
    QVERIFY(!QFileInfo::exists(port));
}

NIMBRELLE_TEST_MAIN(TestFirmwareUpdateRun)
#include "TestFirmwareUpdateRun.moc"
