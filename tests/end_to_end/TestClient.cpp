// SPDX-License-Identifier: MIT
#include "support/ClientProcess.h"
#include "support/RunFolder.h"
#include "support/SimulatorProcess.h"
#include "support/TestMain.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <csignal>
#include <unistd.h>

using namespace RunFolder;

namespace {

constexpr int NoConnection = 3; // exit codes of the program
constexpr int Refused = 4;
constexpr int Interrupted = 130;

constexpr int StreamedVoltage = 1; // columns of what monitor and manual print
constexpr int StreamedCurrent = 2;

QString simulated(const char *text)
{
    return QStringLiteral("A connection with the device could not be successfully established because ") +
           QString::fromLatin1(text);
}

} // namespace

class TestClient : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void showsTheInstrument();
    void tellsEachRefusalWithCodeAndText_data();
    void tellsEachRefusalWithCodeAndText();
    void runsAndRecordsWhatTheCellDoes();
    void recordsTheEndOfEachStep_data();
    void recordsTheEndOfEachStep();
    void refusesABadFileBeforeThePort();
    void refusesWhatTheModelCannotDo();
    void namesTheFolderAfterTheExperiment();
    void theWorstEndIsTheExitCode();
    void aSafetyLimitEndsTheRun_data();
    void aSafetyLimitEndsTheRun();
    void anInterruptionStopsTheInstrumentAndKeepsTheData();
    void anInterruptionOfTheHandshakeLeavesNothingBehind();
    void aKilledClientLosesNothingOlderThanASecond();
    void aLostDeviceIsToldOnce();
    void runsSeveralChannelsAtOnce_data();
    void runsSeveralChannelsAtOnce();
    void runsLinkedChannelsAsOne();
    void refusesToLinkWhatCannotBeLinked();
    void doesNotOverwriteARun();
    void monitorsAnIdleChannel();
    void holdsASetPointByHand();
    void refusesByHandBeforeTheStart_data();
    void refusesByHandBeforeTheStart();
    void examinesAPort();
    void showsPortsAndRanges();
    void leavesRightFirmwareAlone();
    void answersWrongUsage_data();
    void answersWrongUsage();
    void namesWhatWasMistyped_data();
    void namesWhatWasMistyped();

private:
    QString writeExperiment(const QByteArray &elements);
    QString freshFolder() { return _home.filePath(QString("run-%1").arg(++_count)); }

    QTemporaryDir _home;
    int _count = 0;
};

QString TestClient::writeExperiment(const QByteArray &elements)
{
    return RunFolder::writeExperiment(_home.filePath(QString("experiment-%1.json").arg(++_count)), elements);
}

void TestClient::showsTheInstrument()
{
    SimulatorProcess simulator({"--model", "Ibis_2_4", "--channels", "3", "--name", "Ibis-0007"});
    ClientProcess client({"info", simulator.portName(), "--json"});
    QCOMPARE(client.finish(), 0);
    const QJsonObject info = QJsonDocument::fromJson(client.output()).object();
    QCOMPARE(info["name"].toString(), QStringLiteral("Ibis-0007"));
    QCOMPARE(info["model"].toString(), QStringLiteral("Ibis"));
    QCOMPARE(info["modelNumber"].toInt(), 32);
    QCOMPARE(info["channels"].toInt(), 3);
    QCOMPARE(info["port"].toString(), simulator.portName());
    QVERIFY(!info["firmwareVersion"].toString().isEmpty());
}

void TestClient::tellsEachRefusalWithCodeAndText_data()
{
    QTest::addColumn<QString>("fault");
    QTest::addColumn<QString>("refusal");

    const QString silent = QStringLiteral("code 1: The Nimbrelle is not connecting to the selected USB port, and the "
                                          "initialization ping has failed.");
    const auto notReceived = [](const char *what) {
        return QStringLiteral("code 1: ") + simulated(what) +
               QStringLiteral(" was not received. Please try to reconnect after restarting the device.");
    };
    QTest::newRow("silent port") << "silence" << silent;
    QTest::newRow("echoing port") << "echo"
                                  << "code 255: Unknown error occurred";
    QTest::newRow("no ping") << "no-reply:ping" << silent;
    QTest::newRow("no hardware record") << "no-reply:hardware" << notReceived("hardware version");
    QTest::newRow("unknown model")
        << "unknown-model"
        << "code 1: " + simulated("hardware version is invalid. Please try to reconnect after writing correct hardware "
                                  "information.");
    QTest::newRow("no channel count") << "no-reply:channels" << notReceived("total number of channels");
    const QString firmware =
        "code 2: " +
        simulated("device firmware did not match with API version. Please update device firmware using "
                  "updateFirmwareOnComPort or updateFirmwareOnAllAvailableDevices or use utility application which is "
                  "provided with library.");
    QTest::newRow("wrong firmware") << "wrong-firmware" << firmware;
    QTest::newRow("no checksum") << "no-reply:checksum" << firmware;
    QTest::newRow("no firmware version") << "no-reply:firmware" << notReceived("firmware version");
    QTest::newRow("no calibration") << "no-calibration:0" << notReceived("DC calibration data");
}

void TestClient::tellsEachRefusalWithCodeAndText()
{
    QFETCH(QString, fault);
    QFETCH(QString, refusal);
    SimulatorProcess simulator({"--fault", fault});
    ClientProcess client({"info", simulator.portName()});
    QCOMPARE(client.finish(), NoConnection);
    const QString expected = QStringLiteral("nimbrelle: %1: %2").arg(simulator.portName(), refusal);
    const QString errors = client.errors();
    QVERIFY2(errors.startsWith(expected), qPrintable(errors));
    QCOMPARE(errors.count('\n'), 1);
    QCOMPARE(client.output(), QByteArray());
}

// A resistor of 1 kOhm: V = IR in every row, the charge is the integral of the current.
void TestClient::runsAndRecordsWhatTheCellDoes()
{
    SimulatorProcess simulator({"--channels", "8", "--cell", "resistor:R=1000", "--speed", "100"});
    const QString folder = freshFolder();
    const QString file = writeExperiment(
        "{\"element\": \"OpenCircuit\", \"maxDuration\": 2, \"samplingInterval\": 0.5},\n"
        "{\"repeats\": 3, \"group\": [\n"
        "{\"element\": \"ConstantCurrent\", \"current\": \"2 mA\", \"samplingInterval\": 0.01, \"maxDuration\": 5},\n"
        "{\"element\": \"ConstantPot\", \"potential\": -1, \"samplingInterval\": 0.01, \"maxDuration\": 5}]}");
    ClientProcess client({"run", file, "--port", simulator.portName(), "--channel", "5", "--out", folder});
    QCOMPARE(client.finish(), 0);
    QCOMPARE(client.output().trimmed(), folder.toLocal8Bit());

    const auto table = rows(folder + "/dc.csv");
    QVERIFY(table.size() >= 4 + 6 * 499);
    double integral = 0.0;
    for (int index = 1; index < table.size(); ++index) {
        const QVector<double> &row = table[index];
        QVERIFY(row[Time] > table[index - 1][Time]);
        if (row[Step] > 1)
            QVERIFY(qAbs(row[Voltage] - 1000.0 * row[Current]) < 1e-4 * qAbs(row[Voltage]));
        integral += row[Current] * (row[Time] - table[index - 1][Time]);
    }
    // 3 x (2 mA x 5 s - 1 mA x 5 s)
    const QVector<double> &last = table.last();
    QVERIFY(qAbs(3600.0 * last[NetCapacity] - 0.015) < 1e-4 * 0.015);
    QVERIFY(qAbs(integral - 3600.0 * last[NetCapacity]) < 5e-3 * 0.015); // rows begin a sample late
    QVERIFY(qAbs(3600.0 * last[ChargingCapacity] - 0.03) < 1e-4 * 0.03);
    QVERIFY(qAbs(3600.0 * last[DischargingCapacity] - 0.015) < 1e-4 * 0.015);
    // 3 x 2 V x 2 mA x 5 s; at -1 V and -1 mA power is positive, and what flows back takes it along
    QVERIFY(qAbs(3600.0 * last[ChargingEnergy] - 0.06) < 1e-3 * 0.06);
    QVERIFY(qAbs(3600.0 * last[DischargingEnergy] + 0.015) < 1e-3 * 0.015);
    QCOMPARE(last[Cycle], 3.0);
    QCOMPARE(last[StepCount], 7.0);

    const QJsonObject record = summary(folder);
    QCOMPARE(record["state"].toString(), QStringLiteral("completed"));
    QCOMPARE(record["endMessage"].toString(), QStringLiteral("Experiment completed"));
    QCOMPARE(record["counts"].toObject()["dcRows"].toInt(), table.size());
    QStringList elements;
    for (const QJsonValue &each : record["elements"].toArray())
        elements << QString("%1/%2").arg(each["stepNumber"].toInt()).arg(each["cycleNumber"].toInt());
    QCOMPARE(elements, QStringList({"1/1", "2/1", "3/1", "2/2", "3/2", "2/3", "3/3"}));
}

void TestClient::recordsTheEndOfEachStep_data()
{
    QTest::addColumn<QString>("model");
    QTest::newRow("main line") << "Alder_2_5";
    QTest::newRow("battery cycler") << "Gale";
}

// An interval of 2 s is thinned by the host. Of 5 s it leaves the last one out, and of 1 s all there is.
void TestClient::recordsTheEndOfEachStep()
{
    QFETCH(QString, model);
    SimulatorProcess simulator({"--model", model, "--cell", "resistor:R=100", "--speed", "100"});
    const QString folder = freshFolder();
    const QString file = writeExperiment(
        "{\"element\": \"ConstantCurrent\", \"current\": 0.01, \"samplingInterval\": 2, \"maxDuration\": 5},\n"
        "{\"element\": \"ConstantCurrent\", \"current\": -0.01, \"samplingInterval\": 2, \"maxDuration\": 1},\n"
        "{\"repeats\": 2, \"group\": [\n"
        "{\"element\": \"ConstantCurrent\", \"current\": 0.01, \"samplingInterval\": 2, \"maxDuration\": 3},\n"
        "{\"element\": \"ConstantCurrent\", \"current\": -0.01, \"samplingInterval\": 2, \"maxDuration\": 1}]}");
    ClientProcess client({"run", file, "--port", simulator.portName(), "--out", folder});
    QCOMPARE(client.finish(), 0);
    const auto table = rows(folder + "/dc.csv");
    QMap<int, double> ends;
    for (const QVector<double> &row : table)
        ends[int(row[StepCount])] = row[Time];
    QCOMPARE(ends.size(), 6);
    const QVector<double> expected{5, 6, 9, 10, 13, 14};
    for (int step = 1; step <= 6; ++step)
        QVERIFY2(qAbs(ends[step] - expected[step - 1]) < 0.02, qPrintable(QString::number(ends[step])));
    QVERIFY(qAbs(table.last()[NetCapacity] * 3600.0 - 0.08) < 1e-3 * 0.08); // 0.05 - 0.01 + 2 x (0.03 - 0.01) C
    QCOMPARE(rowCount(folder + "/cycles.csv"), 3);                          // ahead of the group, and its two passes
}

void TestClient::refusesABadFileBeforeThePort()
{
    const QString file = writeExperiment("{\"element\": \"OpenCircuit\", \"maxDuration\": \"2 V\"}");
    ClientProcess client({"run", file, "--port", "/dev/nowhere"});
    QCOMPARE(client.finish(), 2);
    const QStringList lines = client.errors().trimmed().split('\n');
    QCOMPARE(lines.size(), 2);
    for (const QString &line : lines)
        QVERIFY2(line.startsWith(file + ":2: "), qPrintable(line));
}

void TestClient::refusesWhatTheModelCannotDo()
{
    SimulatorProcess simulator({"--model", "Cedar_2_0"});
    const QString folder = freshFolder();
    const QString file = writeExperiment(
        "\n{\"element\": \"ConstantCurrent\", \"current\": 0.5, \"samplingInterval\": 1, \"maxDuration\": 1}");
    ClientProcess client({"run", file, "--port", simulator.portName(), "--out", folder});
    QCOMPARE(client.finish(), 2);
    QVERIFY(client.errors().contains("code 54: Constant Current, Advanced::"));
    QVERIFY(client.errors().contains(file + ":3: Constant Current, Advanced::"));
    QVERIFY(!QFile::exists(folder));
}

/// The folder's name suits shells and file systems, and the next run gets another.
void TestClient::namesTheFolderAfterTheExperiment()
{
    SimulatorProcess simulator({"--cell", "resistor:R=1000", "--speed", "max"});
    QFile file(freshFolder() + ".json");
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("{\"schemaVersion\": 1, \"name\": \"Fe/K, 1 mM \\u00e9\", \"elements\": [{\"element\": \"OpenCircuit\", "
               "\"samplingInterval\": 1, \"maxDuration\": 1}]}");
    file.close();
    QTemporaryDir place;
    const QString before = QDir::currentPath();
    QVERIFY(QDir::setCurrent(place.path()));
    ClientProcess client({"run", file.fileName(), "--port", simulator.portName()});
    const int exitCode = client.finish();
    QVERIFY(QDir::setCurrent(before));
    QVERIFY2(exitCode == 0, qPrintable(client.errors()));
    const QStringList made = QDir(place.path()).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    QCOMPARE(made.size(), 1);
    QVERIFY2(QRegularExpression("^Fe-K-1-mM--\\d{8}-\\d{6}$").match(made.first()).hasMatch(), qPrintable(made.first()));
}

void TestClient::theWorstEndIsTheExitCode()
{
    SimulatorProcess simulator({"--cell", "resistor:R=1000", "--speed", "100", "--channels", "2"});
    const auto hold = [this](int volts) {
        return writeExperiment(
            "{\"element\": \"ConstantPot\", \"samplingInterval\": 0.1, \"maxDuration\": 5, \"potential\": " +
            QByteArray::number(volts) + "}");
    };
    ClientProcess client({"run", hold(3), hold(1), "--port", simulator.portName(), "--channel", "0,1", "--out",
                          freshFolder(), "--max-voltage", "2"});
    QCOMPARE(client.finish(), Refused);
    QVERIFY2(client.errors().contains("channel 1: Experiment completed"), qPrintable(client.errors()));
}

void TestClient::aSafetyLimitEndsTheRun_data()
{
    QTest::addColumn<QStringList>("limit");
    QTest::addColumn<int>("potential"); // volts over a kilo-ohm
    QTest::addColumn<QString>("reason");

    const auto row = [](const char *option, const char *value, int potential, const char *reason) {
        QTest::newRow(option) << QStringList{option, value} << potential << QString::fromLatin1(reason);
    };
    row("--max-voltage", "2000 mV", 3, "voltage exceeded user specified Voltage Max safety limit");
    row("--min-voltage", "-2", -3, "voltage exceeded user specified Voltage Min safety limit");
    row("--max-current", "2 mA", 3, "current exceeded user specified Current Max safety limit");
    row("--min-current", "-2 mA", -3, "current exceeded user specified Current Min safety limit");
    row("--max-temperature", "20", 0,
        "temperature safety limit set but no temperature data received from thermocouple");
}

void TestClient::aSafetyLimitEndsTheRun()
{
    QFETCH(QStringList, limit);
    QFETCH(int, potential);
    QFETCH(QString, reason);
    SimulatorProcess simulator({"--cell", "resistor:R=1000", "--speed", "100"});
    const QString folder = freshFolder();
    const QString file = writeExperiment(
        "{\"element\": \"ConstantPot\", \"potential\": 0, \"samplingInterval\": 0.1, \"maxDuration\": 5},\n"
        "{\"element\": \"ConstantPot\", \"potential\": " +
        QByteArray::number(potential) + ", \"samplingInterval\": 0.1, \"maxDuration\": 5}");
    ClientProcess client(QStringList{"run", file, "--port", simulator.portName(), "--out", folder} + limit);
    QCOMPARE(client.finish(), Refused);
    QCOMPARE(client.errors(), "nimbrelle: channel 0: Experiment stopped: " + reason + "\n");
    QCOMPARE(summary(folder)["state"].toString(), QStringLiteral("stopped"));
    QCOMPARE(summary(folder)["endMessage"].toString(), "Experiment stopped: " + reason);
}

void TestClient::anInterruptionStopsTheInstrumentAndKeepsTheData()
{
    SimulatorProcess simulator({"--speed", "10"});
    const QString folder = freshFolder();
    const QString file =
        writeExperiment("{\"element\": \"OpenCircuit\", \"maxDuration\": 36000, \"samplingInterval\": 0.1}");
    ClientProcess client({"run", file, "--port", simulator.portName(), "--out", folder});
    QTRY_VERIFY_WITH_TIMEOUT(rowCount(folder + "/dc.csv") > 10, 20000);
    client.sendSignal(SIGINT);
    QCOMPARE(client.finish(), Interrupted);
    const QJsonObject record = summary(folder);
    QCOMPARE(record["state"].toString(), QStringLiteral("interrupted"));
    QCOMPARE(record["endMessage"].toString(), QStringLiteral("Experiment stopped by user"));
    QCOMPARE(record["counts"].toObject()["dcRows"].toInt(), rowCount(folder + "/dc.csv"));
}

void TestClient::anInterruptionOfTheHandshakeLeavesNothingBehind()
{
    SimulatorProcess simulator({"--fault", "late:400"});
    const QString folder = freshFolder();
    const QString file =
        writeExperiment("{\"element\": \"OpenCircuit\", \"maxDuration\": 36000, \"samplingInterval\": 0.1}");
    ClientProcess client({"run", file, "--port", simulator.portName(), "--out", folder});
    QTest::qWait(800); // in the middle of the handshake, which takes more than three seconds here
    client.sendSignal(SIGTERM);
    QCOMPARE(client.finish(), Interrupted);
    QVERIFY(!QFile::exists(folder));
}

void TestClient::aKilledClientLosesNothingOlderThanASecond()
{
    SimulatorProcess simulator({"--speed", "1"});
    const QString folder = freshFolder();
    const QString file =
        writeExperiment("{\"element\": \"OpenCircuit\", \"maxDuration\": 36000, \"samplingInterval\": 0.01}");
    ClientProcess client({"run", file, "--port", simulator.portName(), "--out", folder});
    QTRY_VERIFY_WITH_TIMEOUT(rowCount(folder + "/dc.csv") > 10, 20000);
    const int before = rowCount(folder + "/dc.csv");
    QTest::qWait(2000); // the measurement itself: 200 samples
    client.sendSignal(SIGKILL);
    client.finish();
    QVERIFY(rowCount(folder + "/dc.csv") >= before + 100);
    const QJsonObject record = summary(folder);
    QCOMPARE(record["state"].toString(), QStringLiteral("running"));
    QVERIFY(record["startUtc"].isString());
    QCOMPARE(record["elements"].toArray().size(), 1);
}

void TestClient::aLostDeviceIsToldOnce()
{
    SimulatorProcess simulator({"--channels", "2", "--speed", "10"});
    const QString folder = freshFolder();
    const QString file =
        writeExperiment("{\"element\": \"OpenCircuit\", \"maxDuration\": 36000, \"samplingInterval\": 0.1}");
    ClientProcess client({"run", file, "--port", simulator.portName(), "--channel", "0,1", "--out", folder});
    QTRY_VERIFY_WITH_TIMEOUT(rowCount(folder + "/channel-1/dc.csv") > 10, 20000);
    simulator.kill();
    QCOMPARE(client.finish(), NoConnection);
    QCOMPARE(client.errors(), QStringLiteral("nimbrelle: The connection to the instrument was lost.\n"));
    for (const char *channel : {"/channel-0", "/channel-1"}) {
        const QJsonObject record = summary(folder + channel);
        QCOMPARE(record["state"].toString(), QStringLiteral("device lost"));
        QCOMPARE(record["counts"].toObject()["dcRows"].toInt(), rowCount(folder + channel + "/dc.csv"));
    }
}

void TestClient::runsSeveralChannelsAtOnce_data()
{
    QTest::addColumn<QString>("model");
    QTest::newRow("main line") << "Alder_2_5";
    QTest::newRow("battery cycler") << "Gale";
}

void TestClient::runsSeveralChannelsAtOnce()
{
    QFETCH(QString, model);
    SimulatorProcess simulator({"--model", model, "--channels", "4", "--cell", "resistor:R=100", "--cell",
                                "3=resistor:R=400", "--speed", "100"});
    const QString folder = freshFolder();
    const QString first = writeExperiment(
        "{\"element\": \"ConstantCurrent\", \"current\": 0.001, \"samplingInterval\": 0.1, \"maxDuration\": 2}");
    const QString second = writeExperiment(
        "{\"element\": \"ConstantCurrent\", \"current\": 0.002, \"samplingInterval\": 0.1, \"maxDuration\": 4}");
    ClientProcess client(
        {"run", first, second, "--port", simulator.portName(), "--channel", "1,3", "--out", folder, "--json"});
    QCOMPARE(client.finish(), 0);
    QCOMPARE(QJsonDocument::fromJson(client.output()).array().size(), 2);
    QVERIFY(qAbs(rows(folder + "/channel-1/dc.csv").last()[Voltage] - 0.1) < 1e-4 * 0.1);
    QVERIFY(qAbs(rows(folder + "/channel-3/dc.csv").last()[Voltage] - 0.8) < 1e-4 * 0.8);
    QCOMPARE(ClientProcess::run({"run", first, "--port", simulator.portName(), "--channel", "4"}), 2);
}

// Each group drives the cell of its lowest channel, and is recorded as that channel.
void TestClient::runsLinkedChannelsAsOne()
{
    SimulatorProcess simulator({"--model", "Gale", "--channels", "6", "--cell", "resistor:R=2", "--cell",
                                "4=resistor:R=10", "--speed", "100"});
    const QString folder = freshFolder();
    const QString up = writeExperiment(
        "{\"element\": \"ConstantCurrent\", \"current\": 0.8, \"samplingInterval\": 0.1, \"maxDuration\": 2}");
    const QString down = writeExperiment(
        "{\"element\": \"ConstantCurrent\", \"current\": -0.2, \"samplingInterval\": 0.1, \"maxDuration\": 4}");
    ClientProcess client({"run", up, down, "--port", simulator.portName(), "--link", "0,1,2,3", "--bipolar", "5,4",
                          "--out", folder, "--json"});
    QCOMPARE(client.finish(), 0);
    QCOMPARE(QJsonDocument::fromJson(client.output()).array().size(), 2);
    const auto agrees = [](double measured, double expected) {
        return qAbs(measured - expected) < 1e-6 * qAbs(expected);
    };
    const auto parallel = rows(folder + "/channel-0/dc.csv").last();
    QVERIFY(agrees(parallel[Current], 0.8) && agrees(parallel[Voltage], 1.6) &&
            agrees(3600.0 * parallel[NetCapacity], 1.6));
    const auto bipolar = rows(folder + "/channel-4/dc.csv").last();
    QVERIFY(agrees(bipolar[Current], -0.2) && agrees(bipolar[Voltage], -2.0) &&
            agrees(3600.0 * bipolar[NetCapacity], -0.8));
    QCOMPARE(rowCount(folder + "/channel-4/dc.csv"), 40);
}

void TestClient::refusesToLinkWhatCannotBeLinked()
{
    SimulatorProcess simulator({"--channels", "2"});
    const QString folder = freshFolder();
    const QString file =
        writeExperiment("{\"element\": \"OpenCircuit\", \"maxDuration\": 2, \"samplingInterval\": 0.5}");
    ClientProcess client({"run", file, "--port", simulator.portName(), "--out", folder, "--link", "0,1"});
    QCOMPARE(client.finish(), Refused);
    QCOMPARE(client.errors(), QStringLiteral("nimbrelle: channels 0,1 cannot be linked on this instrument\n"));
    QVERIFY(!QFile::exists(folder));
}

void TestClient::doesNotOverwriteARun()
{
    SimulatorProcess simulator({"--speed", "max"});
    const QString folder = freshFolder();
    const QString file =
        writeExperiment("{\"element\": \"OpenCircuit\", \"maxDuration\": 2, \"samplingInterval\": 0.5}");
    const QStringList arguments{"run", file, "--port", simulator.portName(), "--out", folder};
    QCOMPARE(ClientProcess::run(arguments), 0);
    const int before = rowCount(folder + "/dc.csv");
    ClientProcess second(arguments);
    QCOMPARE(second.finish(), 1);
    QVERIFY(second.errors().contains("dc.csv"));
    QCOMPARE(rowCount(folder + "/dc.csv"), before);
}

void TestClient::monitorsAnIdleChannel()
{
    SimulatorProcess simulator({"--cell", "battery:Q=36,soc=0.5", "--speed", "100"});
    ClientProcess client({"monitor", simulator.portName(), "--count", "3"});
    QCOMPARE(client.finish(), 0);
    const QByteArrayList lines = client.output().trimmed().split('\n');
    QCOMPARE(lines.size(), 4);
    QVERIFY(lines.first().startsWith("Time / s,Voltage / V,"));
    QVERIFY(lines.last().split(',').at(StreamedVoltage).toDouble() > 2.0); // a battery at rest
}

void TestClient::holdsASetPointByHand()
{
    SimulatorProcess simulator({"--cell", "resistor:R=1000"});
    ClientProcess client(
        {"manual", simulator.portName(), "--voltage", "-500 mV", "--interval", "50 ms", "--duration", "2 s"});
    QCOMPARE(client.finish(), 0);
    const QByteArrayList last = client.output().trimmed().split('\n').last().split(',');
    QVERIFY(qAbs(last.at(StreamedVoltage).toDouble() + 0.5) < 1e-3);
    QVERIFY(qAbs(last.at(StreamedCurrent).toDouble() + 0.0005) < 1e-6);
    // The cell is disconnected when the program has ended.
    ClientProcess next({"monitor", simulator.portName(), "--count", "1"});
    QCOMPARE(next.finish(), 0);
    const QByteArrayList idle = next.output().trimmed().split('\n').last().split(',');
    QVERIFY(qAbs(idle.at(Voltage).toDouble()) < 1e-3);
}

void TestClient::refusesByHandBeforeTheStart_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("refusal");
    const QStringList voltage{"--voltage", "1"};
    QTest::newRow("voltage") << QStringList{"--voltage", "30"}
                             << "--voltage is 30 V; the Alder takes values from -10 V to 10 V.";
    QTest::newRow("current") << QStringList{"--current", "-5"}
                             << "--current is -5 A; the Alder takes values from -1 A to 1 A.";
    QTest::newRow("current range") << voltage + QStringList{"--current-range", "8"}
                                   << "--current-range is 8; the ranges of this instrument are 0 (1 A), 1 (10";
    QTest::newRow("negative range") << voltage + QStringList{"--current-range", "-1"} << "--current-range is -1;";
    QTest::newRow("voltage range") << voltage + QStringList{"--voltage-range", "4"} << "--voltage-range is 4;";
    QTest::newRow("temperature") << voltage + QStringList{"--max-temperature", "9000"}
                                 << "the thermocouple of the Alder reads from -270 degC to 1800 degC.";
    QTest::newRow("all at once") << QStringList{"--voltage", "30", "--voltage-range", "4"}
                                 << "to 10 V.\n--voltage-range is 4;";
}

// Not one sample: nothing was begun.
void TestClient::refusesByHandBeforeTheStart()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, refusal);
    SimulatorProcess simulator({"--cell", "resistor:R=1000"});
    ClientProcess client(QStringList{"manual", simulator.portName(), "--duration", "1 s"} + arguments);
    QCOMPARE(client.finish(), Refused);
    QVERIFY2(client.errors().contains(refusal), qPrintable(client.errors()));
    QVERIFY2(!client.errors().contains("stopped"), qPrintable(client.errors()));
    QCOMPARE(client.output(), QByteArray());
}

void TestClient::examinesAPort()
{
    SimulatorProcess simulator({});
    ClientProcess good({"doctor", simulator.portName(), "--json"});
    QCOMPARE(good.finish(), 0);
    QCOMPARE(QJsonDocument::fromJson(good.output()).array().last()["level"].toString(), QStringLiteral("ok"));

    SimulatorProcess old({"--fault", "wrong-firmware"});
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("NIMBRELLE_ALLOW_STAND_IN", "1");
    ClientProcess bad({"doctor", old.portName()}, environment);
    QCOMPARE(bad.finish(), NoConnection);
    QVERIFY(bad.output().contains("Try: nimbrelle update " + old.portName().toLocal8Bit()));
    environment.remove("NIMBRELLE_ALLOW_STAND_IN");
    ClientProcess withoutImages({"doctor", old.portName()}, environment);
    QCOMPARE(withoutImages.finish(), NoConnection);
    QVERIFY(withoutImages.output().contains("maybe  firmware images: stand-ins, updates are refused\n"));
    QVERIFY(withoutImages.output().contains("Try: cmake --preset release -DNIMBRELLE_FIRMWARE_DIR=DIR"));
    ClientProcess version({"--version"}, environment);
    QCOMPARE(version.finish(), 0);
    QVERIFY(version.output().endsWith("\nfirmware images: stand-ins, updates are refused\n"));
    QCOMPARE(ClientProcess::run({"doctor", "/dev/nowhere"}), NoConnection);
}

void TestClient::showsPortsAndRanges()
{
    ClientProcess list({"list", "--json"}); // opens none of them
    QCOMPARE(list.finish(), 0);
    QVERIFY(QJsonDocument::fromJson(list.output()).isArray());

    SimulatorProcess simulator({"--model", "Cedar_2_0", "--channels", "2"});
    ClientProcess limits({"limits", simulator.portName(), "--json", "--max-current", "100 mA"});
    QCOMPARE(limits.finish(), 0);
    const QJsonArray channels = QJsonDocument::fromJson(limits.output()).array();
    QCOMPARE(channels.size(), 2);
    const QJsonArray currents = channels[1]["currentRanges"].toArray();
    QCOMPARE(currents.size(), 8);
    QCOMPARE(currents[0]["max"].toDouble(), 0.25); // the model's limit, not the converter's
    QVERIFY(currents[7]["max"].toDouble() < currents[6]["max"].toDouble());

    SimulatorProcess cycler({"--model", "Gale", "--channels", "2"});
    ClientProcess limitsOfABoard({"limits", cycler.portName(), "--json"});
    QCOMPARE(limitsOfABoard.finish(), 0);
    const QJsonArray ranges =
        QJsonDocument::fromJson(limitsOfABoard.output()).array()[1].toObject()["currentRanges"].toArray();
    QCOMPARE(ranges.size(), 4);                  // of eight, those that exist
    QCOMPARE(ranges[0]["min"].toDouble(), -5.0); // the board's limits, not the range's own
    QCOMPARE(ranges[0]["max"].toDouble(), 5.0);
    QVERIFY(ranges[1]["max"].toDouble() < 1.0);
}

void TestClient::leavesRightFirmwareAlone()
{
    SimulatorProcess simulator({});
    ClientProcess client({"update", simulator.portName()});
    QCOMPARE(client.finish(), 0);
    QVERIFY(client.errors().contains("code 4: Device has up to date firmware."));
}

void TestClient::answersWrongUsage_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("exitCode");
    QTest::newRow("nothing") << QStringList() << 2;
    QTest::newRow("unknown command") << QStringList{"rnu"} << 2;
    QTest::newRow("unknown option") << QStringList{"list", "--sloow"} << 2;
    QTest::newRow("unknown model") << QStringList{"plan", "x.json", "--model", "Alder_2_6"} << 2;
    QTest::newRow("missing file") << QStringList{"plan", "/nowhere/x.json", "--model", "Alder_2_5"} << 2;
    QTest::newRow("no interval") << QStringList{"manual", "x", "--voltage", "1", "--interval", "0 s"} << 2;
    QTest::newRow("negative duration") << QStringList{"monitor", "x", "--duration", "-1s"} << 2;
    QTest::newRow("bad unit") << QStringList{"manual", "x", "--voltage", "1 A"} << 2;
    QTest::newRow("two set points") << QStringList{"manual", "x", "--voltage", "1", "--current", "1"} << 2;
    QTest::newRow("no such port") << QStringList{"info", "/dev/nowhere"} << 3;
    QTest::newRow("update of nothing") << QStringList{"update"} << 2;
    QTest::newRow("update of no port") << QStringList{"update", "/dev/nowhere"} << 3;
    QTest::newRow("no run to draw") << QStringList{"plot", "/nowhere"} << 1;
    QTest::newRow("help") << QStringList{"run", "--help"} << 0;
    QTest::newRow("version") << QStringList{"--version"} << 0;
}

void TestClient::answersWrongUsage()
{
    QFETCH(QStringList, arguments);
    QFETCH(int, exitCode);
    ClientProcess client(arguments);
    QCOMPARE(client.finish(), exitCode);
    QCOMPARE(client.errors().isEmpty(), exitCode == 0);
}

void TestClient::namesWhatWasMistyped_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("told");
    QTest::newRow("command") << QStringList{"lst"} << "there is no command \"lst\"; did you mean \"list\"?";
    QTest::newRow("option that is needed") << QStringList{"run", "x.json", "--prot", "ttyACM0"}
                                           << "there is no option \"--prot\"; did you mean \"--port\"?";
    QTest::newRow("option of a group") << QStringList{"manual", "x", "--curent=1"}
                                       << "there is no option \"--curent\"; did you mean \"--current\"?";
    QTest::newRow("option of all") << QStringList{"list", "--quite"}
                                   << "there is no option \"--quite\"; did you mean \"--quiet\"?";
    QTest::newRow("element") << QStringList{"elements", "cv"} << "did you mean \"CyclicVoltammetry\"?";
    QTest::newRow("folder") << QStringList{"plot", "/nowhere"} << "/nowhere: there is no such folder";
    const QStringList manual{"manual", "x", "--voltage"};
    QTest::newRow("set point against the open circuit")
        << manual + QStringList{"0.1 V vs OCP"} << "An experiment file can say it: \"voltageVsOCP\" of a ConstantPot\n";
    QTest::newRow("limit against the open circuit")
        << manual + QStringList{"1", "--max-voltage", "1 V vs. ocp"} << "\"maximumVoltageVsOCP\" of a ConstantPower\n";
    QTest::newRow("what a terminal would act on") << QStringList{"info", "x", "\033[2J"} << "?[2J";
}

void TestClient::namesWhatWasMistyped()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, told);
    ClientProcess client(arguments);
    QVERIFY(client.finish() > 0);
    const QString errors = client.errors();
    QVERIFY2(errors.contains(told) && !errors.contains('\033'), qPrintable(errors));
}

NIMBRELLE_TEST_MAIN(TestClient)
#include "TestClient.moc"
