#include "support/ClientProcess.h"
#include "support/RunFolder.h"
#include "support/SimulatorProcess.h"
#include "support/TestMain.h"

#include <VekDataManipulator.h>

#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>
#include <cmath>
#include <complex>

using namespace RunFolder;

namespace {

constexpr double pi = 3.14159265358979323846;
constexpr double faraday = 96485.33212;
constexpr double gasConstant = 8.314462618;
constexpr double temperature = 298.15;

/// Positions of the columns of ac.csv.
enum AcColumn { AcTime, Frequency, Magnitude, RealPart, ImaginaryPart, Phase, Distortion, Periods, Bias };

using Table = QVector<QVector<double>>;
using Complex = std::complex<double>;

const QString redoxCell = QStringLiteral("redox:E0=0.2,n=1,cR=1,cO=0.0001,D=1e-9,A=1e-5,k0=0.01,Rs=5");
constexpr double formalPotential = 0.2;

/// Randles and Sevcik: the peak current of a reversible couple at a scan rate in V/s.
double peakCurrent(double scanRate)
{
    const double perVolt = faraday / (gasConstant * temperature);
    return 0.4463 * faraday * 1e-5 * 1.0 * std::sqrt(perVolt * scanRate * 1e-9);
}

QVector<double> rowOfLargest(const Table &rows, int column)
{
    return *std::max_element(rows.begin(), rows.end(),
                             [column](const auto &left, const auto &right) { return left[column] < right[column]; });
}

QVector<double> rowOfSmallest(const Table &rows, int column)
{
    return *std::min_element(rows.begin(), rows.end(),
                             [column](const auto &left, const auto &right) { return left[column] < right[column]; });
}

VekDCData sampleOf(const QVector<double> &row)
{
    VekDCData data;
    data.timestamp = row[Time];
    data.workingElectrodeVoltage = row[Voltage];
    data.current = row[Current];
    return data;
}

struct Pulse {
    double baseVoltage;
    double pulseVoltage;
    double baseCurrent;
    double pulseCurrent;
};

/// What the library's own reduction makes of the samples of a pulse element.
QVector<Pulse> pulsesOf(const Table &rows, VekDataManipulator &manipulator)
{
    QVector<Pulse> pulses;
    for (const QVector<double> &row : rows) {
        manipulator.loadPrimaryData(sampleOf(row));
        if (manipulator.isPulseCompleted())
            pulses.append({manipulator.getBaseVoltage(), manipulator.getPulseVoltage(), manipulator.getBaseCurrent(),
                           manipulator.getPulseCurrent()});
    }
    return pulses;
}

double difference(const Pulse &pulse)
{
    return pulse.pulseCurrent - pulse.baseCurrent;
}

Pulse largestDifference(const QVector<Pulse> &pulses)
{
    return *std::max_element(pulses.begin(), pulses.end(), [](const Pulse &left, const Pulse &right) {
        return difference(left) < difference(right);
    });
}

/// The potential at which the currents of the pulses reach a value, between two of them.
double potentialAt(const QVector<Pulse> &pulses, double current)
{
    const auto above = std::find_if(pulses.begin() + 1, pulses.end(),
                                    [current](const Pulse &pulse) { return pulse.pulseCurrent >= current; });
    const auto below = above - 1;
    const double share = (current - below->pulseCurrent) / (above->pulseCurrent - below->pulseCurrent);
    return below->pulseVoltage + share * (above->pulseVoltage - below->pulseVoltage);
}

/// Whether a point lies within half a percent of a magnitude and 0.3 degrees of a phase.
bool agrees(const QVector<double> &point, Complex expected)
{
    return std::abs(point[Magnitude] / std::abs(expected) - 1.0) < 0.005 &&
           std::abs(point[Phase] - std::arg(expected) * 180.0 / pi) < 0.3;
}

} // namespace

/// What each technique measures on a cell whose theory is known, from the experiment file to the recorded numbers.
class TestTechniques : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyExampleGivesTheRowsOfItsPlan_data();
    void everyExampleGivesTheRowsOfItsPlan();
    void aReversibleCoupleHasThePeaksOfTheory();
    void thePeakGrowsWithTheRootOfTheScanRate();
    void differentialPulsesPeakHalfAPulseBeforeThePotential();
    void aSquareWavePeaksAtThePotential();
    void normalPulsesHaveTheirWaveAtThePotential();
    void powerAndResistanceHoldTheirValue();
    void cyclingCountsTheChargeThatTheCellLoses();
    void impedanceIsThatOfTheCircuit_data();
    void impedanceIsThatOfTheCircuit();
    void mottSchottkyFindsTheDonors();

private:
    /// Runs an experiment on a simulated cell. @return the folder of the run; empty when it did not complete
    QString runFile(const QString &file, const QString &cell);
    /// The same for a list of elements.
    QString runElements(const QByteArray &elements, const QString &cell);
    Table sweep(double scanRate);

    QTemporaryDir _home;
    int _count = 0;
};

QString TestTechniques::runFile(const QString &file, const QString &cell)
{
    SimulatorProcess simulator({"--cell", cell, "--speed", "max"});
    const QString folder = _home.filePath(QString("run-%1").arg(++_count));
    ClientProcess client({"run", file, "--port", simulator.portName(), "--out", folder});
    const int exitCode = client.finish(120000);
    if (exitCode != 0)
        qWarning("exit code %d: %s", exitCode, qPrintable(client.errors()));
    return exitCode == 0 ? folder : QString();
}

QString TestTechniques::runElements(const QByteArray &elements, const QString &cell)
{
    return runFile(writeExperiment(_home.filePath(QString("experiment-%1.json").arg(++_count)), elements), cell);
}

void TestTechniques::everyExampleGivesTheRowsOfItsPlan_data()
{
    QTest::addColumn<QString>("cell");
    QTest::newRow("first-light") << "resistor:R=1000";
    QTest::newRow("cyclic-voltammetry") << redoxCell;
    QTest::newRow("differential-pulse") << redoxCell;
    QTest::newRow("square-wave") << redoxCell;
    QTest::newRow("impedance") << "randles";
    QTest::newRow("mott-schottky") << "semiconductor";
}

void TestTechniques::everyExampleGivesTheRowsOfItsPlan()
{
    QFETCH(QString, cell);
    const QString file = QString("%1/%2.json").arg(NIMBRELLE_EXPERIMENTS_DIR, QTest::currentDataTag());
    ClientProcess plan({"plan", file, "--model", "Alder_2_5", "--json"});
    QCOMPARE(plan.finish(), 0);
    const double expected = QJsonDocument::fromJson(plan.output()).object()["expectedRows"].toDouble();
    const QString folder = runFile(file, cell);
    QVERIFY(!folder.isEmpty());
    const int acRows = QFile::exists(folder + "/ac.csv") ? rowCount(folder + "/ac.csv") : 0;
    QCOMPARE(double(rowCount(folder + "/dc.csv") + acRows), expected);
}

/// From -0.1 V to 0.5 V and back, with a row each millivolt.
Table TestTechniques::sweep(double scanRate)
{
    const QByteArray elements = QString("{\"element\": \"CyclicVoltammetry\", \"startVoltage\": -0.1, "
                                        "\"firstVoltageLimit\": 0.5, \"secondVoltageLimit\": -0.1, "
                                        "\"endVoltage\": -0.1, \"dEdt\": %1, \"samplingInterval\": %2}")
                                    .arg(scanRate)
                                    .arg(0.001 / scanRate)
                                    .toLatin1();
    const QString folder = runElements(elements, redoxCell);
    return folder.isEmpty() ? Table() : rows(folder + "/dc.csv");
}

void TestTechniques::aReversibleCoupleHasThePeaksOfTheory()
{
    const Table cycle = sweep(0.1);
    QVERIFY(!cycle.isEmpty());
    const QVector<double> anodic = rowOfLargest(cycle, Current);
    const QVector<double> cathodic = rowOfSmallest(cycle, Current);
    const double separation = anodic[Voltage] - cathodic[Voltage];
    QVERIFY2(std::abs(separation - 0.057) <= 0.003, qPrintable(QString::number(separation)));
    QVERIFY2(std::abs(anodic[Current] / peakCurrent(0.1) - 1.0) < 0.02, qPrintable(QString::number(anodic[Current])));
}

void TestTechniques::thePeakGrowsWithTheRootOfTheScanRate()
{
    const Table slow = sweep(0.02);
    const Table fast = sweep(0.2);
    QVERIFY(!slow.isEmpty() && !fast.isEmpty());
    const double ratio = rowOfLargest(fast, Current)[Current] / rowOfLargest(slow, Current)[Current];
    QVERIFY2(std::abs(ratio / std::sqrt(10.0) - 1.0) < 0.02, qPrintable(QString::number(ratio)));
}

void TestTechniques::differentialPulsesPeakHalfAPulseBeforeThePotential()
{
    const QString folder = runElements("{\"element\": \"DiffPulseVoltammetry\", \"startVoltage\": -0.1, "
                                       "\"endVoltage\": 0.5, \"vStep\": 0.005, \"pulseHeight\": 0.025, "
                                       "\"pulseWidth\": 0.05, \"pulsePeriod\": 0.2}",
                                       redoxCell);
    QVERIFY(!folder.isEmpty());
    VekDataManipulator manipulator;
    QCOMPARE(manipulator.setPulseType(DifferentialPulse, 0.05, 0.2), VekErrorCode::Success);
    const QVector<Pulse> pulses = pulsesOf(rows(folder + "/dc.csv"), manipulator);
    QCOMPARE(pulses.size(), 121); // -0.1 V to 0.5 V by 5 mV
    const double peak = largestDifference(pulses).baseVoltage + 0.025 / 2.0;
    QVERIFY2(std::abs(peak - formalPotential) <= 0.005, qPrintable(QString::number(peak)));
}

void TestTechniques::aSquareWavePeaksAtThePotential()
{
    const QString folder = runElements("{\"element\": \"SquareWaveVoltammetry\", \"startVoltage\": -0.1, "
                                       "\"endVoltage\": 0.5, \"vStep\": 0.005, \"pulseAmp\": 0.025, \"pulseFreq\": 15}",
                                       redoxCell);
    QVERIFY(!folder.isEmpty());
    VekDataManipulator manipulator;
    QCOMPARE(manipulator.setPulseType(SquarewavePulse, 15.0), VekErrorCode::Success);
    const QVector<Pulse> pulses = pulsesOf(rows(folder + "/dc.csv"), manipulator);
    QCOMPARE(pulses.size(), 121);
    const Pulse highest = largestDifference(pulses);
    const double peak = (highest.baseVoltage + highest.pulseVoltage) / 2.0;
    QVERIFY2(std::abs(peak - formalPotential) <= 0.005, qPrintable(QString::number(peak)));
}

void TestTechniques::normalPulsesHaveTheirWaveAtThePotential()
{
    const QString folder = runElements("{\"element\": \"NormalPulseVoltammetry\", \"startVoltage\": -0.1, "
                                       "\"endVoltage\": 0.5, \"vStep\": 0.005, \"pulseWidth\": 0.05, "
                                       "\"pulsePeriod\": 1}",
                                       redoxCell);
    QVERIFY(!folder.isEmpty());
    VekDataManipulator manipulator;
    QCOMPARE(manipulator.setPulseType(NormalPulse, 0.05, 1.0), VekErrorCode::Success);
    const QVector<Pulse> pulses = pulsesOf(rows(folder + "/dc.csv"), manipulator);
    QCOMPARE(pulses.size(), 121);
    const double halfWave = potentialAt(pulses, pulses.last().pulseCurrent / 2.0);
    QVERIFY2(std::abs(halfWave - formalPotential) <= 0.005, qPrintable(QString::number(halfWave)));
}

void TestTechniques::powerAndResistanceHoldTheirValue()
{
    const QString folder = runElements(
        "{\"element\": \"ConstantPower\", \"power\": -0.5, \"maxDuration\": 600, \"samplingInterval\": 1},\n"
        "{\"element\": \"ConstantResistance\", \"resistance\": 20, \"maxDuration\": 7200, \"samplingInterval\": 1,\n"
        "\"minVoltage\": 3.5}",
        "battery:Q=1000,soc=0.9,Rs=0.1,R=0.05,C=80");
    QVERIFY(!folder.isEmpty());
    const Table table = rows(folder + "/dc.csv");
    for (const QVector<double> &row : table) {
        const double held = row[Step] == 1.0 ? row[Voltage] * row[Current] / -0.5 : row[Voltage] / -row[Current] / 20.0;
        QVERIFY2(std::abs(held - 1.0) < 0.002, qPrintable(QString::number(row[Time])));
    }
    QVERIFY(table.last()[Time] < 600.0 + 7200.0); // ended by its voltage
    QVERIFY(std::abs(table.last()[Voltage] - 3.5) < 0.01);
}

// Each full cycle gives back 97 % of what it took.
void TestTechniques::cyclingCountsTheChargeThatTheCellLoses()
{
    const QString folder = runElements(
        "{\"repeats\": 10, \"group\": [\n"
        "{\"element\": \"ConstantCurrent\", \"current\": 0.5, \"samplingInterval\": 1, \"maxDuration\": \"3 h\",\n"
        "\"maxVoltage\": 4.1},\n"
        "{\"element\": \"ConstantCurrent\", \"current\": -0.5, \"samplingInterval\": 1, \"maxDuration\": \"3 h\",\n"
        "\"minVoltage\": 3.2}]}",
        "battery:Q=900,soc=0.5,Rs=0.1,R=0.05,C=80,efficiency=0.97");
    QVERIFY(!folder.isEmpty());
    double charged[11] = {};
    double discharged[11] = {};
    double before = 0.0;
    for (const QVector<double> &row : rows(folder + "/dc.csv")) {
        const double moved = row[NetCharge] - before;
        (row[Step] == 1.0 ? charged : discharged)[int(row[Cycle])] += std::abs(moved);
        before = row[NetCharge];
    }
    for (int cycle = 2; cycle <= 10; ++cycle) {
        const double efficiency = discharged[cycle] / charged[cycle];
        QVERIFY2(std::abs(efficiency / 0.97 - 1.0) < 0.005, qPrintable(QString::number(efficiency)));
    }
    QStringList order;
    for (const QJsonValue &each : summary(folder)["elements"].toArray())
        order << QString("%1/%2").arg(each["stepNumber"].toInt()).arg(each["cycleNumber"].toInt());
    QCOMPARE(order.size(), 20);
    QCOMPARE(order.mid(0, 3), QStringList({"1/1", "2/1", "1/2"}));
    QCOMPARE(order.last(), QStringLiteral("2/10"));
}

void TestTechniques::impedanceIsThatOfTheCircuit_data()
{
    QTest::addColumn<QByteArray>("control");
    QTest::newRow("potentiostatic") << QByteArray("\"element\": \"EISPotentiostatic\", \"biasVoltage\": 0, "
                                                  "\"amplitude\": 0.01");
    QTest::newRow("galvanostatic") << QByteArray("\"element\": \"EISGalvanostatic\", \"biasCurrent\": 0, "
                                                 "\"amplitude\": 1e-4");
}

void TestTechniques::impedanceIsThatOfTheCircuit()
{
    QFETCH(QByteArray, control);
    const QString folder =
        runElements("{" + control + ", \"startFreq\": \"1 MHz\", \"endFreq\": \"10 mHz\", \"stepsPerDecade\": 5}",
                    "warburg:Rs=20,Rct=200,C=2e-5,W=50");
    QVERIFY(!folder.isEmpty());
    const Table points = rows(folder + "/ac.csv");
    QCOMPARE(points.size(), 41); // eight decades
    for (const QVector<double> &point : points) {
        const double w = 2.0 * pi * point[Frequency];
        const Complex diffusion = 50.0 * Complex(1.0, -1.0) / std::sqrt(w);
        const Complex expected = 20.0 + 1.0 / (Complex(0.0, w * 2e-5) + 1.0 / (200.0 + diffusion));
        QVERIFY2(agrees(point, expected), qPrintable(QString("%1 Hz: %2 Ohm, %3 deg instead of %4 Ohm, %5 deg")
                                                         .arg(point[Frequency])
                                                         .arg(point[Magnitude])
                                                         .arg(point[Phase])
                                                         .arg(std::abs(expected))
                                                         .arg(std::arg(expected) * 180.0 / pi)));
    }
}

void TestTechniques::mottSchottkyFindsTheDonors()
{
    const QString folder = runFile(QStringLiteral(NIMBRELLE_EXPERIMENTS_DIR "/mott-schottky.json"),
                                   "semiconductor:Rs=20,R=1e7,Efb=-0.5,N=1e24,eps=10,A=1e-5");
    QVERIFY(!folder.isEmpty());
    const Table points = rows(folder + "/ac.csv");
    QCOMPARE(points.size(), 33); // eleven potentials, three frequencies
    QVector<QPointF> curve;
    for (const QVector<double> &point : points) {
        if (std::abs(point[Frequency] / 1000.0 - 1.0) < 1e-3)
            curve.append({point[Bias], std::pow(2.0 * pi * point[Frequency] * point[ImaginaryPart], 2)});
    }
    for (int index = 0; index < curve.size(); ++index)
        QVERIFY(std::abs(curve[index].x() - 0.1 * index) < 1e-4);
    const double slope = (curve.last().y() - curve.first().y()) / (curve.last().x() - curve.first().x());
    // 2 / (e eps eps0 N A^2)
    const double donors = 2.0 / (1.602176634e-19 * 10.0 * 8.8541878128e-12 * slope * 1e-10);
    QVERIFY2(std::abs(donors / 1e24 - 1.0) < 0.02, qPrintable(QString::number(donors)));
}

NIMBRELLE_TEST_MAIN(TestTechniques)
#include "TestTechniques.moc"
