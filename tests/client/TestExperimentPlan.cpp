#include "ExperimentCheck.h"
#include "ExperimentFile.h"
#include "VekConstantCurrentElement.h"
#include "VekConstantPotElement.h"
#include "VekCyclicVoltammetryElement.h"
#include "VekDCPotentialSweepElement.h"
#include "VekEISPotentiostaticElement.h"
#include "VekExperiment.h"
#include "VekExperimentPlan.h"
#include "VekMottSchottkyElement.h"
#include "VekSquareWaveVoltammetryElement.h"
#include "VekSteppedCurrentElement.h"

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
    void complainsOfEveryBrokenLimit();
    void placesComplaintsInTheFile();
    void doesNotKnowEveryName();
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
    QCOMPARE(nodes[0].runs, 3.0);
    QCOMPARE(nodes[1].runs, 6.0);
    QCOMPARE(nodes[2].loopTarget, 0);
    QVERIFY(isNear(nodes[0].expectedCharge, 0.2));
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
    QCOMPARE(plan.nodes().front().downsampleFactor, 20u);
}

void TestExperimentPlan::leavesOpenWhatDependsOnTheCell()
{
    VekDCPotentialSweepElement sweep(0.0, 1.0, 0.1, 0.01);
    sweep.setStartVoltageVsOCP(true);
    const VekExperimentPlan plan = planOf(std::move(sweep));
    QVERIFY(plan.nodes().front().isVersusOcp);
    QVERIFY(std::isnan(plan.expectedDuration()));
    QVERIFY(std::isnan(plan.expectedRows()));

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

    // 1 kHz to 10 Hz, one point a decade, two periods each: 2 ms + 20 ms + 200 ms
    const VekExperimentPlan impedance = planOf(VekEISPotentiostaticElement(1000.0, 10.0, 1.0, 0.0, 0.01));
    QCOMPARE(impedance.expectedRows(), 3.0);
    QVERIFY(isNear(impedance.expectedDuration(), 0.222));
}

// 0 V to 0.5 V by 0.2 V: 0, 0.2, 0.4, 0.5 V, each with 2 frequencies
void TestExperimentPlan::countsThePotentialsOfMottSchottky()
{
    const VekExperimentPlan plan = planOf(VekMottSchottkyElement(0.0, 0.5, 0.2, 1000.0, 100.0, 1.0, 0.01, 2));
    QCOMPARE(plan.expectedRows(), 8.0);
}

void TestExperimentPlan::complainsOfEveryBrokenLimit()
{
    const VekExperimentPlan plan = planOf(VekConstantCurrentElement(5.0, 1e-6, 1.0));
    QCOMPARE(plan.complaints().size(), 2); // interval and current
    QVERIFY(plan.complaints().front().startsWith("Constant Current, Advanced::"));
    QVERIFY(plan.complaints().front().contains("Alder"));
    QVERIFY(plan.nodes().empty());
    QCOMPARE(VekExperimentPlan::forModel(VekExperiment(), model).complaints().size(), 1);
}

void TestExperimentPlan::placesComplaintsInTheFile()
{
    const client::ExperimentFile file = client::parseExperiment(
        "{\"schemaVersion\": 1, \"elements\": [\n"
        "{\"element\": \"ConstantCurrent\", \"current\": 1, \"samplingInterval\": 1, \"maxDuration\": 1},\n"
        "{\"group\": [\n"
        "{\"element\": \"ConstantCurrent\", \"current\": 2, \"samplingInterval\": 1, \"maxDuration\": 1}]}]}",
        "file");
    QVERIFY(file.isUsable());
    const client::Complaints complaints = client::complaintsOfModel(file, model);
    QCOMPARE(complaints.size(), std::size_t(1));
    QCOMPARE(complaints.front().line, 4);
}

void TestExperimentPlan::doesNotKnowEveryName()
{
    QCOMPARE(VekExperimentPlan::modelName(35), QStringLiteral("Alder_2_5"));
    QCOMPARE(VekExperimentPlan::modelName(36), QString());
    VekConstantCurrentElement element(0.1, 1.0, 1.0);
    VekExperiment experiment;
    experiment.appendElement(element, 1);
    QVERIFY(VekExperimentPlan::forModel(experiment, "alder_2_5").complaints().isEmpty());
    QCOMPARE(VekExperimentPlan::forModel(experiment, "Oak").complaints(), QStringList("There is no model \"Oak\"."));
}

NIMBRELLE_TEST_MAIN(TestExperimentPlan)
#include "TestExperimentPlan.moc"
