// SPDX-License-Identifier: MIT
#include "VekConstantCurrentElement.h"
#include "VekConstantPotElement.h"
#include "VekConstantPowerElement.h"
#include "VekCyclicVoltammetryElement.h"
#include "VekDCPotentialSweepElement.h"
#include "VekEISPotentiostaticElement.h"
#include "VekExperiment.h"
#include "VekExperimentPlan.h"
#include "VekInstrumentDescription.h"
#include "VekMottSchottkyElement.h"
#include "VekOpenCircuitElement.h"
#include "VekSquareWaveVoltammetryElement.h"
#include "VekSteppedCurrentElement.h"
#include "VekVersion.h"
#include "lab/experiments/ElementCatalogue.h"
#include "lab/experiments/ExperimentCheck.h"
#include "lab/experiments/ExperimentFile.h"

#include "support/TestMain.h"

#include <cmath>

namespace {

const QString model = QStringLiteral("Alder_2_5");

VekExperimentPlan planOf(VekAbstractElement &&element, unsigned int repeats = 1)
{
    VekExperiment experiment;
    experiment.appendElement(element, repeats);
    return VekExperimentPlan::forModel(experiment, model);
}

lab::Complaints complaintsOf(const lab::ExperimentFile &file)
{
    const int number = VekExperimentPlan::modelNumber(model);
    return lab::complaintsOf(file, VekExperimentPlan::forModel(file.experiment, number), number);
}

bool isNear(double actual, double expected)
{
    return std::abs(actual - expected) <= 1e-6 * std::abs(expected);
}

} // namespace

class TestExperimentPlan : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void countsTimeChargeAndRowsOfLoops();
    void endsACurrentByItsChargeLimit();
    void leavesOpenWhatDependsOnTheCell();
    void estimatesEachCourse();
    void countsThePotentialsOfMottSchottky();
    void roundsRowsAsTheInstrumentDoes();
    void tellsRangesAndLimits();
    void complainsOfEveryBrokenLimit();
    void refusesWhatCannotBeMeant_data();
    void refusesWhatCannotBeMeant();
    void placesComplaintsInTheFile();
    void tellsFileAndModelTogether_data();
    void tellsFileAndModelTogether();
    void findsAPropertyForEachLimit_data();
    void findsAPropertyForEachLimit();
    void placesComplaintsAtTheirProperty();
    void knowsModelsByNameAndNumber_data();
    void knowsModelsByNameAndNumber();
    void plansForADescribedInstrument();
    void tellsTheVersion();
};

// 3 x (10 s at 20 mA, a row each 0.1 s; 5 s at rest potential, a row each second)
void TestExperimentPlan::countsTimeChargeAndRowsOfLoops()
{
    VekConstantCurrentElement current(0.02, 0.1, 10.0);
    VekConstantPotElement potential(0.5, 1.0, 5.0);
    VekExperiment cycle;
    cycle.appendElement(current, 1);
    cycle.appendElement(potential, 2);
    VekExperiment experiment;
    experiment.appendSubExperiment(cycle, 3);
    const VekExperimentPlan plan = VekExperimentPlan::forModel(experiment, model);

    const auto nodes = plan.nodes();
    QCOMPARE(nodes.size(), std::size_t(4)); // two elements, loop, end
    QCOMPARE(nodes[0].runs(), 3.0);
    QCOMPARE(nodes[1].runs(), 6.0);
    QCOMPARE(nodes[2].loopTarget(), 0);
    QVERIFY(isNear(nodes[0].expectedCharge(), 0.2));
    QVERIFY(isNear(plan.expectedDuration(), 3 * (10.0 + 2 * 5.0)));
    QCOMPARE(plan.expectedRows(), 3 * (100.0 + 2 * 5.0));
    QVERIFY(std::isnan(plan.expectedCharge())); // the cell decides it in the second element
}

void TestExperimentPlan::endsACurrentByItsChargeLimit()
{
    VekConstantCurrentElement discharge(-0.5, 10.0, 3600.0);
    discharge.setMaxCapacity(100.0);
    const VekExperimentPlan plan = planOf(std::move(discharge));
    QVERIFY(isNear(plan.expectedDuration(), 200.0));
    QVERIFY(isNear(plan.expectedCharge(), -100.0));
    QCOMPARE(plan.expectedRows(), 20.0); // thinned by the host: 10 s, though the instrument samples each 0.5 s
    QCOMPARE(plan.nodes().front().downsampleFactor(), 20u);
}

void TestExperimentPlan::leavesOpenWhatDependsOnTheCell()
{
    VekDCPotentialSweepElement sweep(0.0, 1.0, 0.1, 0.01);
    sweep.setStartVoltageVsOCP(true);
    const VekExperimentPlan plan = planOf(std::move(sweep));
    QVERIFY(plan.nodes().front().isStartVersusOcp());
    QVERIFY(std::isnan(plan.expectedDuration()));
    QVERIFY(std::isnan(plan.expectedRows()));

    QVERIFY(!plan.nodes().front().isEndVersusOcp());
    VekDCPotentialSweepElement back(1.0, 0.0, 0.1, 0.01);
    back.setEndVoltageVsOCP(true);
    const VekPlannedNode fallen = planOf(std::move(back)).nodes().front();
    QVERIFY(fallen.isEndVersusOcp() && !fallen.isStartVersusOcp());

    VekConstantPotElement endless(0.5, 1.0, std::numeric_limits<double>::infinity());
    QVERIFY(std::isinf(planOf(std::move(endless)).expectedDuration()));
}

void TestExperimentPlan::estimatesEachCourse()
{
    // 0 V to 0.5 V, three times between 0.5 V and -0.5 V and twice back, to 0 V: 6 V at 0.1 V/s
    VekCyclicVoltammetryElement cycles(0.0, 0.5, -0.5, 0.0, 0.1, 0.01);
    cycles.setNumberOfCycles(3);
    const VekExperimentPlan cyclic = planOf(std::move(cycles));
    QVERIFY(isNear(cyclic.expectedDuration(), 60.0));
    QCOMPARE(cyclic.expectedRows(), 6000.0);

    // 11 levels of 2 s; mean current 50 mA
    const VekExperimentPlan steps = planOf(VekSteppedCurrentElement(0.0, 0.1, 0.01, 2.0, 0.5));
    QVERIFY(isNear(steps.expectedDuration(), 22.0));
    QVERIFY(isNear(steps.expectedCharge(), 1.1));

    // 0 V to 0.5 V by 5 mV: 101 periods of 40 ms with two levels each
    const VekExperimentPlan pulses = planOf(VekSquareWaveVoltammetryElement(0.0, 0.5, 0.005, 0.025, 25.0));
    QVERIFY(isNear(pulses.expectedDuration(), 101 * 0.04));
    QCOMPARE(pulses.expectedRows(), 202.0);

    // 10 Hz to 0.1 Hz, one point a decade, each with a period to settle, eight periods from 1 Hz on, below two, and one
    // sample more of 64 a period
    const VekExperimentPlan impedance = planOf(VekEISPotentiostaticElement(10.0, 0.1, 1.0, 0.0, 0.01));
    QCOMPARE(impedance.expectedRows(), 3.0);
    const double periods = 9.0 + 1.0 / 64.0;
    QVERIFY(isNear(impedance.expectedDuration(), periods * 0.1 + periods * 1.0 + (3.0 + 1.0 / 64.0) * 10.0));
    // a sweep stops before its end where the ratio does not meet it
    QCOMPARE(planOf(VekEISPotentiostaticElement(1000.0, 15.0, 1.0, 0.0, 0.01)).expectedRows(), 2.0);
}

// 0 V to 0.5 V by 0.2 V: 0, 0.2, 0.4, 0.5 V, each with 2 frequencies
void TestExperimentPlan::countsThePotentialsOfMottSchottky()
{
    const VekExperimentPlan plan = planOf(VekMottSchottkyElement(0.0, 0.5, 0.2, 1000.0, 100.0, 1.0, 0.01, 2));
    QCOMPARE(plan.expectedRows(), 8.0);
}

// A sample more where the end lies between two, none more where it lies on one.
void TestExperimentPlan::roundsRowsAsTheInstrumentDoes()
{
    QCOMPARE(planOf(VekOpenCircuitElement(10.5, 1.0)).expectedRows(), 11.0);
    QCOMPARE(planOf(VekOpenCircuitElement(10.0005, 1.0)).expectedRows(), 10.0);
    QCOMPARE(planOf(VekOpenCircuitElement(10.0, 0.1)).expectedRows(), 100.0);
    QCOMPARE(planOf(VekOpenCircuitElement(0.5, 1.0)).expectedRows(), 1.0);
    QCOMPARE(planOf(VekOpenCircuitElement(10.0, 3.0)).expectedRows(), 3.0); // 10 samples, of which each third
    QCOMPARE(planOf(VekOpenCircuitElement(2.0, 3.0)).expectedRows(), 0.0);  // no full group
}

void TestExperimentPlan::tellsRangesAndLimits()
{
    VekConstantCurrentElement current(-0.2, 1.0, 10.0);
    current.setMinVoltage(-3.0);
    current.setMaxVoltage(4.0);
    current.setApproxMaxCurrent(0.1); // widened by the current itself
    const VekPlannedNode charge = planOf(std::move(current)).nodes().front();
    QCOMPARE(charge.minVoltage(), -3.0);
    QCOMPARE(charge.maxVoltage(), 4.0);
    QVERIFY(isNear(charge.fixedCurrentRange(), 0.2));
    QCOMPARE(charge.voltageRange(), -1);

    VekConstantPotElement potential(0.5, 1.0, 10.0);
    potential.setMinCurrent(0.01);
    potential.setMaxCurrent(0.5);
    potential.setVoltageRange(2);
    const VekPlannedNode hold = planOf(std::move(potential)).nodes().front();
    QVERIFY(isNear(hold.minCurrent(), 0.01) && isNear(hold.maxCurrent(), 0.5));
    QVERIFY(hold.areCurrentLimitsMagnitudes());
    QCOMPARE(hold.voltageRange(), 2);
    QVERIFY(std::isnan(hold.fixedCurrentRange()));

    VekConstantPowerElement power(0.1, 10.0, 1.0);
    power.setMaxVoltage(1.0);
    power.setMaximumVoltageVsOCP(true);
    power.setMinCurrent(-0.25);
    const VekPlannedNode load = planOf(std::move(power)).nodes().front();
    QVERIFY(load.isMaxVoltageVersusOcp() && !load.isMinVoltageVersusOcp());
    QVERIFY(!load.areCurrentLimitsMagnitudes());
    QCOMPARE(load.minCurrent(), -0.25);
}

void TestExperimentPlan::complainsOfEveryBrokenLimit()
{
    VekConstantCurrentElement element(5.0, 1e-6, -1.0);
    VekConstantPotElement harmless(0.5, 1.0, 5.0);
    VekExperiment experiment;
    experiment.appendElement(harmless, 1);
    experiment.appendElement(element, 1);
    const VekExperimentPlan plan = VekExperimentPlan::forModel(experiment, model);
    const auto complaints = plan.complaints();
    // Interval and current break limits of the model, and the second check then names them, and the time.
    QCOMPARE(complaints.size(), std::size_t(5));
    QCOMPARE(complaints[2].code(), VekErrorCode::ImplausibleParameters);
    QVERIFY(complaints[0].text().startsWith("Constant Current, Advanced::"));
    QVERIFY(complaints[0].text().contains("Alder"));
    QCOMPARE(complaints[1].stepNumber(), 2);
    QCOMPARE(plan.result(), VekErrorCode::InvalidParameters);
    QCOMPARE(plan.result().message(), complaints[0].text() + '\n' + complaints[1].text());
    QVERIFY(plan.nodes().empty());
    QCOMPARE(VekExperimentPlan::forModel(VekExperiment(), model).complaints().size(), std::size_t(1));
}

void TestExperimentPlan::refusesWhatCannotBeMeant_data()
{
    QTest::addColumn<QString>("element");
    for (const QString &name : lab::elementNames())
        QTest::newRow(qPrintable(name)) << name;
}

/// A value that goes with those of all other properties.
static double acceptableValue(const lab::PropertyRow &property)
{
    static const QHash<QString, double> values = {
        {"endVoltage", 0.2},   {"firstVoltageLimit", 0.3}, {"secondVoltageLimit", -0.3}, {"endCurrent", 0.02},
        {"endingPot", 0.2},    {"endingCurrent", 0.02},    {"endingPotential", 0.2},     {"voltageStep", 0.1},
        {"pulsePeriod", 2.0},  {"startFreq", 100.0},       {"startFrequency", 100.0},    {"numberOfCycles", 2.0},
        {"voltageRange", 5.0}, {"stepsPerDecade", 10.0},   {"alphaFactor", 50.0},        {"minimumCycles", 2.0},
        {"minCycles", 2.0},
    };
    const bool isFlag = property.kind == lab::PropertyKind::Flag || property.kind == lab::PropertyKind::Automatic;
    const bool isLower = QByteArray(property.name).startsWith("min") || QByteArray(property.name).contains("MinV");
    return values.value(property.name, isFlag ? 0.0 : isLower ? 0.001 : 0.01);
}

// Each quantity of each element, with all others as they should be.
void TestExperimentPlan::refusesWhatCannotBeMeant()
{
    QFETCH(const QString, element);
    const lab::ElementRow &row = *lab::findElement(element);
    const auto resultWith = [&row](const lab::PropertyRow *spoilt, double value) {
        const auto made = row.make();
        for (const lab::PropertyRow &property : row.properties)
            property.set(*made, acceptableValue(property));
        if (spoilt)
            spoilt->set(*made, value); // last: two properties of the open circuit are one value
        VekExperiment experiment;
        experiment.appendElement(*made, 1);
        return VekExperimentPlan::forModel(experiment, model).result();
    };
    const VekErrorCode asItShould = resultWith(nullptr, 0.0);
    QVERIFY2(asItShould == VekErrorCode::Success, qPrintable(asItShould.message()));
    for (const lab::PropertyRow &property : row.properties) {
        if (property.kind != lab::PropertyKind::Quantity)
            continue;
        for (const double value : {qQNaN(), qInf(), -qInf()}) {
            const VekErrorCode result = resultWith(&property, value);
            // Of the open circuit this is the upper limit, too.
            const bool isLimit = element == "OpenCircuit" && qstrcmp(property.name, "approxMaxVoltage") == 0;
            const bool isMagnitude = QByteArray(property.name).contains("Absolute");
            const bool isMeant = (isMagnitude ? std::abs(value) : value) == (isLimit ? qInf() : property.none);
            const bool isRefused =
                result == VekErrorCode::InvalidParameters || result == VekErrorCode::ImplausibleParameters;
            if (!isMeant)
                QVERIFY2(isRefused, qPrintable(QStringLiteral("%1 %2").arg(property.name).arg(value)));
        }
        if (property.mayBeNone()) {
            const VekErrorCode result = resultWith(&property, property.none);
            QVERIFY2(result == VekErrorCode::Success, qPrintable(result.message()));
        }
        if (property.dimension == lab::Dimension::Time)
            QVERIFY2(resultWith(&property, -1.0) != VekErrorCode::Success, property.name);
    }
}

void TestExperimentPlan::placesComplaintsInTheFile()
{
    const lab::ExperimentFile file = lab::parseExperiment(
        "{\"schemaVersion\": 1, \"elements\": [\n"
        "{\"element\": \"ConstantCurrent\", \"current\": 1, \"samplingInterval\": 1, \"maxDuration\": 1},\n"
        "{\"group\": [\n"
        "{\"element\": \"ConstantCurrent\", \"current\": 2, \"samplingInterval\": 1, \"maxDuration\": 1}]}]}",
        "file");
    QVERIFY(file.isUsable());
    const lab::Complaints complaints = complaintsOf(file);
    QCOMPARE(complaints.size(), std::size_t(1));
    QCOMPARE(complaints.front().line, 4);
    QVERIFY(complaints.front().text.contains("current is 2 A; the Alder takes values from -1 A to 1 A"));
}

// Each row: the file's lines from the second on, and what is complained about, as "line: words of it".
void TestExperimentPlan::tellsFileAndModelTogether_data()
{
    QTest::addColumn<QByteArray>("element");
    QTest::addColumn<QStringList>("complaints");

    const QByteArray eis = "{\"element\": \"EISPotentiostatic\", \"amplitude\": 0.01, ";
    QTest::newRow("one frequency of two")
        << eis + "\"biasVoltage\": 0, \"stepsPerDecade\": 10,\n\"startFreq\": 10,\n\"endFreq\": \"1 GHz\"}"
        << QStringList{"4: \"endFreq\": "};
    QTest::newRow("both frequencies, steps and bias")
        << eis + "\n\"biasVoltage\": 30,\n\"stepsPerDecade\": 2.5,\n\"startFreq\": 0,\n\"endFreq\": \"1 GHz\"}"
        << QStringList{"2: biasVoltage with amplitude is 30.01 V", "3: biasVoltage is 30 V",
                       "4: \"stepsPerDecade\": ", "5: startFreq is 0 Hz", "6: \"endFreq\": "};
    QTest::newRow("values that do not go with each other")
        << QByteArray("{\"element\": \"NormalPulseVoltammetry\", \"startVoltage\": 0, \"endVoltage\": 1,\n"
                      "\"vStep\": 0.1, \"pulseWidth\": 2,\n\"pulsePeriod\": 1}")
        << QStringList{"4: \"pulsePeriod\": "};
    QTest::newRow("a count in the text")
        << QByteArray("{\"element\": \"SteppedCurrent\", \"startCurrent\": 0, \"endCurrent\": 1,\n"
                      "\"stepSize\": 1e-9,\n\"stepDuration\": 1, \"samplingInterval\": 1}")
        << QStringList{"3: \"stepSize\": "};

    const QByteArray power = "{\"element\": \"ConstantPower\", \"samplingInterval\": 1,\n";
    QTest::newRow("another element has a wrong unit")
        << power + "\"power\": -5e7, \"maxDuration\": 1},\n" + power + "\"power\": 1, \"maxDuration\": \"1 V\"}"
        << QStringList{"3: power is -50 MW; the Alder takes values from -10 W to 10 W", "5: is not a unit of a time"};
    QTest::newRow("the same element has a wrong unit")
        << power + "\"power\": 11,\n\"maxDuration\": \"1 V\"}"
        << QStringList{"3: power is 11 W;", "4: is not a unit of a time"};
    QTest::newRow("just beyond the limit")
        << power + "\"power\": 10.0001, \"maxDuration\": 1}" << QStringList{"3: power is 10.0001 W;"};
    QTest::newRow("the same element has an unknown property")
        << power + "\"power\": 1, \"maxDuration\": 1,\n\"minVoltage\": -50,\n\"colour\": 1}"
        << QStringList{"4: from -10 V to 10 V, or \"none\" for no limit.", "5: has no \"colour\""};
    QTest::newRow("a value that could not be read is not judged")
        << power + "\"power\": \"11 X\", \"maxDuration\": 1}" << QStringList{"3: is not a unit of a power"};
    QTest::newRow("nor one that is missing, and the others are")
        << eis + "\"biasVoltage\": 0,\n\"stepsPerDecade\": 10,\n\"startFreq\": \"1 GHz\"}"
        << QStringList{"2: needs \"endFreq\"", "4: \"startFreq\": "};
    // 12 V are in reach where they count from the open circuit.
    const QByteArray pot = "{\"element\": \"ConstantPot\", \"samplingInterval\": 1, \"maxDuration\": 1,\n";
    QTest::newRow("what hangs on a misspelt flag is not judged")
        << pot + "\"potential\": 12,\n\"voltageVsOPC\": true}" << QStringList{"4: did you mean \"voltageVsOCP\"?"};
    QTest::newRow("what does not is") << pot + "\"potential\": 30,\n\"voltageVsOPC\": true}"
                                      << QStringList{"3: potential is 30 V", "4: did you mean \"voltageVsOCP\"?"};
    QTest::newRow("nor what does not go with the first of two")
        << QByteArray(
               "{\"element\": \"NormalPulseVoltammetry\", \"startVoltage\": 0, \"endVoltage\": 1, \"vStep\": 0.1,\n"
               "\"pulseWidth\": 2, \"pulsePeriod\": 1,\n\"pulseWidth\": 0.5}")
        << QStringList{"4: \"pulseWidth\" stands twice"};
    QTest::newRow("nor is what hangs on the first of two")
        << power + "\"power\": 1, \"maxDuration\": 1, \"minVoltage\": 5,\n\"maxVoltage\": 1,\n\"maxVoltage\": 9}"
        << QStringList{"5: \"maxVoltage\" stands twice"};
}

void TestExperimentPlan::tellsFileAndModelTogether()
{
    QFETCH(QByteArray, element);
    QFETCH(QStringList, complaints);
    const lab::Complaints told =
        complaintsOf(lab::parseExperiment("{\"schemaVersion\": 1, \"elements\": [\n" + element + "]}", "file"));
    QStringList lines;
    for (const lab::Complaint &each : told)
        lines.append(QStringLiteral("%1: %2").arg(QString::number(each.line), each.text));
    QVERIFY2(lines.size() == complaints.size(), qPrintable(lines.join('\n')));
    for (int index = 0; index < lines.size(); ++index) {
        const QString line = complaints[index].section(' ', 0, 0);
        QVERIFY2(lines[index].startsWith(line + ' '), qPrintable(lines[index]));
        QVERIFY2(lines[index].contains(complaints[index].section(' ', 1)), qPrintable(lines[index]));
    }
}

void TestExperimentPlan::findsAPropertyForEachLimit_data()
{
    refusesWhatCannotBeMeant_data();
}

// Whatever is out of reach: nothing is left at the line of the element, where people would have to guess.
void TestExperimentPlan::findsAPropertyForEachLimit()
{
    QFETCH(const QString, element);
    const lab::ElementRow &row = *lab::findElement(element);
    for (const lab::PropertyRow &spoilt : row.properties) {
        const bool isNumber = spoilt.kind == lab::PropertyKind::Quantity || spoilt.kind == lab::PropertyKind::Count;
        for (const double value : {-1e9, 0.0, 1e-9, 1e9}) {
            if (!isNumber || (value < 0.0 && spoilt.kind == lab::PropertyKind::Count))
                continue;
            lab::ExperimentFile file;
            lab::FileElement made{1, element, row.make(), {}, {}};
            for (const lab::PropertyRow &property : row.properties) {
                property.set(*made.element, &property == &spoilt ? value : acceptableValue(property));
                made.propertyLines[property.name] = 2;
            }
            made.propertyLines[spoilt.name] = 3;
            file.experiment.appendElement(*made.element, 1);
            file.elements.push_back(made);
            for (const lab::Complaint &complaint : complaintsOf(file))
                QVERIFY2(complaint.line > 1, qPrintable(QString(spoilt.name) + ": " + complaint.text));
        }
    }
}

void TestExperimentPlan::placesComplaintsAtTheirProperty()
{
    const lab::ExperimentFile file =
        lab::parseExperiment("{\"schemaVersion\": 1, \"elements\": [\n"
                             "{\"element\": \"OpenCircuit\", \"samplingInterval\": 1, \"maxDuration\": 1},\n"
                             "{\"element\": \"ConstantCurrent\", \"current\": 1, \"samplingInterval\": 1,\n"
                             "\"minVoltage\": 1,\n\"maxVoltage\": -1, \"maxDuration\": 1}]}",
                             "file");
    QVERIFY(file.isUsable());
    const VekExperimentPlan plan = VekExperimentPlan::forModel(file.experiment, model);
    QCOMPARE(plan.result(), VekErrorCode::ImplausibleParameters);
    QCOMPARE(plan.complaints().at(0).property(), QStringLiteral("maxVoltage"));
    const lab::Complaints complaints = complaintsOf(file);
    QCOMPARE(complaints.size(), std::size_t(1));
    QCOMPARE(complaints.front().line, 5);
}

void TestExperimentPlan::knowsModelsByNameAndNumber_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("number");
    QTest::addColumn<QString>("complaint");
    QTest::newRow("name") << "Alder_2_5" << 35 << "";
    QTest::newRow("name in another case") << "alder_2_5" << 35 << "";
    QTest::newRow("number") << "4" << 4 << "";
    QTest::newRow("name of one kind") << "gale" << 18 << "";
    QTest::newRow("unknown") << "Oak" << -1 << "There is no model \"Oak\".";
    QTest::newRow("number of none") << "36" << -1 << "There is no model \"36\".";
    QTest::newRow("nothing") << "" << -1 << "There is no model \"\".";
    QTest::newRow("name of two") << "Birch" << -1
                                 << "\"Birch\" is the name of several models, with different limits. Which one? "
                                    "Birch_2_2, Birch_2_3b.";
    QTest::newRow("name of one and of others") << "Cedar" << -1
                                               << "\"Cedar\" is the name of several models, with different limits. "
                                                  "Which one? Cedar (number 0), Cedar_2_0.";
}

void TestExperimentPlan::knowsModelsByNameAndNumber()
{
    QFETCH(const QString, text);
    QFETCH(const int, number);
    QFETCH(const QString, complaint);
    QString told;
    QCOMPARE(VekExperimentPlan::modelNumber(text, &told), number);
    QCOMPARE(told, complaint);
    VekConstantCurrentElement element(0.1, 1.0, 1.0);
    VekExperiment experiment;
    experiment.appendElement(element, 1);
    QCOMPARE(VekExperimentPlan::forModel(experiment, text).result().message(),
             complaint.isEmpty() ? VekErrorCode(VekErrorCode::Success).message() : complaint);
}

// The number alone decides: what an instrument is called is shared by models with other limits.
void TestExperimentPlan::plansForADescribedInstrument()
{
    QCOMPARE(VekExperimentPlan::modelName(35), QStringLiteral("Alder_2_5"));
    QCOMPARE(VekExperimentPlan::modelName(36), QString());
    VekEISPotentiostaticElement element(1000.0, 1.0, 1.0, 0.0, 0.01);
    VekExperiment experiment;
    experiment.appendElement(element, 1);
    VekInstrumentDescription instrument;
    instrument.vanityName = QStringLiteral("Alder");
    instrument.modelNumber = 35;
    QCOMPARE(VekExperimentPlan::forModel(experiment, instrument).result(), VekErrorCode::Success);
    instrument.modelNumber = 4; // has no AC
    QCOMPARE(VekExperimentPlan::forModel(experiment, instrument).result(), VekErrorCode::InvalidParameters);
    QCOMPARE(VekExperimentPlan::forModel(experiment, VekInstrumentDescription()).complaints().at(0).text(),
             QStringLiteral("There is no model with the number -1."));
}

void TestExperimentPlan::tellsTheVersion()
{
    QCOMPARE(VekVersion::ofLibrary(), QStringLiteral(NIMBRELLE_VERSION_STRING));
    QCOMPARE(VekVersion::ofLibrary(), QStringLiteral("%1.%2.%3")
                                          .arg(NIMBRELLE_VERSION_MAJOR)
                                          .arg(NIMBRELLE_VERSION_MINOR)
                                          .arg(NIMBRELLE_VERSION_PATCH));
}

NIMBRELLE_TEST_MAIN(TestExperimentPlan)
#include "TestExperimentPlan.moc"
