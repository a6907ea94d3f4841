// SPDX-License-Identifier: MIT
#include "support/ClientProcess.h"
#include "support/RunFolder.h"
#include "support/SimulatorProcess.h"
#include "support/TestMain.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>

using namespace RunFolder;

namespace {

/// When the last row came, in seconds.
double endOf(const QString &csv)
{
    const auto table = QFile::exists(csv) ? rows(csv) : QVector<QVector<double>>();
    return table.isEmpty() ? 0.0 : table.last()[Time];
}

bool isNear(double actual, double expected)
{
    return qAbs(actual - expected) <= 1e-3 * expected;
}

/// What a plan expects of one element, all its runs together.
struct Expected {
    double rows = 0.0;
    double duration = 0.0;
};

QMap<int, Expected> expectedOf(const QJsonObject &plan)
{
    QMap<int, Expected> steps;
    for (const QJsonValue &value : plan["nodes"].toArray()) {
        const QJsonObject node = value.toObject();
        Expected &step = steps[node["stepNumber"].toInt()];
        step.rows += node["runs"].toDouble() * node["expectedRows"].toDouble();
        step.duration += node["runs"].toDouble() * node["expectedDuration"].toDouble();
    }
    return steps;
}

} // namespace

/// Experiment files, planned and run through the client: those of the examples, and one of all techniques.
class TestExampleFiles : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void giveTheRowsOfTheirPlan_data();
    void giveTheRowsOfTheirPlan();
    void eachTechniqueKeepsToItsPlan();

private:
    QJsonObject planOf(const QString &file) const;
    QTemporaryDir _home;
};

void TestExampleFiles::giveTheRowsOfTheirPlan_data()
{
    const QString redox = QStringLiteral("redox:E0=0.2,n=1,cR=1,cO=0.0001,D=1e-9,A=1e-5,k0=0.01,Rs=5");
    QTest::addColumn<QString>("cell");
    QTest::newRow("first-light") << "resistor:R=1000";
    QTest::newRow("cyclic-voltammetry") << redox;
    QTest::newRow("differential-pulse") << redox;
    QTest::newRow("square-wave") << redox;
    QTest::newRow("impedance") << "randles";
    QTest::newRow("mott-schottky") << "semiconductor";
}

void TestExampleFiles::giveTheRowsOfTheirPlan()
{
    QFETCH(QString, cell);
    const QString name = QTest::currentDataTag();
    const QString file = QString("%1/%2.json").arg(NIMBRELLE_EXPERIMENTS_DIR, name);
    const QJsonObject plan = planOf(file);

    SimulatorProcess simulator({"--cell", cell, "--speed", "max"});
    const QString folder = _home.filePath(name);
    ClientProcess client({"run", file, "--port", simulator.portName(), "--out", folder});
    const int exitCode = client.finish(120000);
    QVERIFY2(exitCode == 0, qPrintable(client.errors()));
    const int acRows = QFile::exists(folder + "/ac.csv") ? rowCount(folder + "/ac.csv") : 0;
    QCOMPARE(double(rowCount(folder + "/dc.csv") + acRows), plan["expectedRows"].toDouble());
    const double end = std::max(endOf(folder + "/dc.csv"), endOf(folder + "/ac.csv"));
    const double expected = plan["expectedDuration"].toDouble();
    QVERIFY2(isNear(end, expected), qPrintable(QString("%1 s, not %2 s").arg(end).arg(expected)));
}

// A rest behind each impedance brings a row at a known time.
void TestExampleFiles::eachTechniqueKeepsToItsPlan()
{
    const QByteArray rest = R"({"element": "OpenCircuit", "maxDuration": 1, "samplingInterval": 1})";
    const QByteArrayList elements{
        R"({"element": "OpenCircuit", "maxDuration": 2.3, "samplingInterval": 0.5, "repeats": 3})",
        R"({"element": "ConstantCurrent", "current": "1 mA", "maxDuration": 10, "samplingInterval": 0.1, "maxCapacity": "2.55 mC"})",
        R"({"element": "ConstantPot", "potential": 0.5, "maxDuration": 8, "samplingInterval": 4})",
        R"({"element": "ConstantPower", "power": "1 mW", "maxDuration": 2.26, "samplingInterval": 0.1})",
        R"({"element": "ConstantResistance", "resistance": 1000, "maxDuration": 3.05, "samplingInterval": 0.25})",
        R"({"element": "CyclicVoltammetry", "startVoltage": 0, "firstVoltageLimit": 0.31, "secondVoltageLimit": -0.2,
            "endVoltage": 0.1, "dEdt": 0.15, "samplingInterval": 0.03, "numberOfCycles": 3, "quietTime": 1.5})",
        R"({"element": "DCCurrentSweep", "startingCurrent": 0, "endingCurrent": 0.001, "scanRate": 0.0003, "samplingInterval": 0.07})",
        R"({"element": "DCPotentialSweep", "startingPot": 0.5, "endingPot": -0.1, "scanRate": 0.13, "samplingInterval": 0.05, "quietTime": 1})",
        R"({"element": "DiffPulseVoltammetry", "startVoltage": 0, "endVoltage": 0.1, "vStep": 0.007, "pulseHeight": 0.05,
            "pulseWidth": 0.05, "pulsePeriod": 0.2, "quietTime": 1})",
        R"({"element": "NormalPulseVoltammetry", "startVoltage": 0, "endVoltage": -0.2, "vStep": 0.01, "pulseWidth": 0.05, "pulsePeriod": 0.3})",
        R"({"element": "SquareWaveVoltammetry", "startVoltage": -0.2, "endVoltage": 0.2, "vStep": 0.006, "pulseAmp": 0.025, "pulseFreq": 15})",
        R"({"element": "EISGalvanostatic", "startFreq": 1000, "endFreq": 0.3, "stepsPerDecade": 7, "biasCurrent": 0, "amplitude": "10 uA"})",
        rest,
        R"({"element": "EISPotentiostatic", "startFreq": 0.5, "endFreq": 90000, "stepsPerDecade": 5, "biasVoltage": 0.1,
            "amplitude": 0.01, "quietTime": 2.5, "minimumCycles": 11})",
        rest,
        R"({"element": "MottSchottky", "startingPotential": 0.3, "endingPotential": 0, "voltageStep": -0.07, "stepQuietTime": 0.5,
            "startFrequency": 100, "endFrequency": 20, "stepsPerDecade": 4, "amplitude": 0.01, "minCycles": 2})",
        rest,
        R"({"element": "StaircasePotentialVoltammetry", "startVoltage": 0, "firstVoltageLimit": 0.1, "secondVoltageLimit": -0.1,
            "endVoltage": 0, "stepSize": 0.03, "stepDuration": 0.25, "samplingInterval": 0.1, "numberOfCycles": 2,
            "approxMaxCurrent": 0.001})",
        R"({"element": "SteppedCurrent", "startCurrent": 0, "endCurrent": 0.001, "stepSize": 0.0003, "stepDuration": 0.5, "samplingInterval": 0.3})",
        R"({"element": "SteppedVoltage", "startVoltage": 0.4, "endVoltage": 0, "stepSize": 0.1, "stepDuration": 0.5, "samplingInterval": 0.1})",
    };
    const QString file = writeExperiment(_home.filePath("techniques.json"), elements.join(",\n"));
    const QMap<int, Expected> steps = expectedOf(planOf(file));
    SimulatorProcess simulator({"--cell", "resistor:R=1000", "--speed", "max"});
    const QString folder = _home.filePath("techniques");
    ClientProcess client({"run", file, "--port", simulator.portName(), "--out", folder});
    QVERIFY2(client.finish(120000) == 0, qPrintable(client.errors()));

    QMap<int, int> dcRows;
    QMap<int, double> ends;
    for (const QVector<double> &row : rows(folder + "/dc.csv")) {
        ++dcRows[int(row[Step])];
        ends[int(row[Step])] = row[Time];
    }
    double end = 0.0;
    double acRows = 0.0;
    for (int step = 1; step <= elements.size(); ++step) {
        const Expected &expected = steps[step];
        end += expected.duration;
        const QByteArray &element = elements[step - 1];
        const QString words = QString("step %1: %2 rows until %3 s, not %4 until %5 s")
                                  .arg(step)
                                  .arg(dcRows[step])
                                  .arg(ends[step])
                                  .arg(expected.rows)
                                  .arg(end);
        if (element.contains("EIS") || element.contains("Mott")) {
            acRows += expected.rows - dcRows[step]; // those of its quiet times
            continue;
        }
        QVERIFY2(dcRows[step] == expected.rows && isNear(ends[step], end), qPrintable(words));
    }
    QCOMPARE(double(rowCount(folder + "/ac.csv")), acRows);
}

QJsonObject TestExampleFiles::planOf(const QString &file) const
{
    ClientProcess plan({"plan", file, "--model", "Alder_2_5", "--json"});
    return plan.finish() == 0 ? QJsonDocument::fromJson(plan.output()).object() : QJsonObject();
}

NIMBRELLE_TEST_MAIN(TestExampleFiles)
#include "TestExampleFiles.moc"
