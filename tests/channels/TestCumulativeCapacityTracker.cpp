// SPDX-License-Identifier: MIT
#include "channels/CumulativeCapacityTracker.h"
#include "support/TestMain.h"

#include <cmath>

using Vector = std::vector<double>;
using VectorOfVectors = std::vector<std::vector<double>>;
Q_DECLARE_METATYPE(Vector)

/// All charges are whole coulombs, so that sums are exact.
class TestCumulativeCapacityTracker : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void countsNothingWithoutAnOpenNode();
    void countsTheFirstReadingFromZero();
    void fallingChargeGrowsAbsAndShrinksNet();
    void nodeWithoutChargeLimitGoesOnFromTheLastReading();
    void nodeWithChargeLimitCountsFromZero();
    void sumsUpStepsAndSubsteps();
    void samplesBetweenNodesAreBookedOnTheNextNode();
    void stepThatIsEnteredAgainIsCountedAnew();
    void stepWithoutChargeLeavesZero();
    void smallChangesAreDropped();
    void readingsThatAreNoNumbersCostNothing_data();
    void readingsThatAreNoNumbersCostNothing();
    void endKeepsTotalsUntilTheNextBegin();
    void survivesNodesWithoutNumber();
};

void TestCumulativeCapacityTracker::countsNothingWithoutAnOpenNode()
{
    CumulativeCapacityTracker tracker;
    tracker.beginExperiment();
    tracker.onDcDataReceived(5.0);
    tracker.onDcDataReceived(9.0);
    tracker.onNodeCompleted();
    QCOMPARE(tracker.getLiveExperimentAbs_C(), 0.0);
    QCOMPARE(tracker.getExperimentAbs_C(), 0.0);
}

void TestCumulativeCapacityTracker::countsTheFirstReadingFromZero()
{
    CumulativeCapacityTracker tracker;
    tracker.onNodeBeginning(1, false);
    tracker.onDcDataReceived(-3.0);
    QCOMPARE(tracker.getLiveExperimentAbs_C(), 3.0);
    QCOMPARE(tracker.getLiveExperimentNet_C(), -3.0);
    QCOMPARE(tracker.getExperimentAbs_C(), 0.0); // the node is open
}

void TestCumulativeCapacityTracker::fallingChargeGrowsAbsAndShrinksNet()
{
    CumulativeCapacityTracker tracker;
    tracker.onNodeBeginning(1, false);
    for (const double reading : {2.0, 7.0, 4.0, 4.0, -1.0})
        tracker.onDcDataReceived(reading);
    QCOMPARE(tracker.getLiveExperimentAbs_C(), 2.0 + 5.0 + 3.0 + 5.0);
    QCOMPARE(tracker.getLiveExperimentNet_C(), -1.0);
}

void TestCumulativeCapacityTracker::nodeWithoutChargeLimitGoesOnFromTheLastReading()
{
    CumulativeCapacityTracker tracker;
    tracker.onNodeBeginning(1, false);
    tracker.onDcDataReceived(10.0);
    tracker.onNodeCompleted();
    tracker.onNodeBeginning(2, false);
    tracker.onDcDataReceived(14.0);
    QCOMPARE(tracker.getLiveExperimentAbs_C(), 14.0);
    QCOMPARE(tracker.getCurrentStepAbs_C(), 4.0);
    QCOMPARE(tracker.getCurrentSubstepNet_C(), 4.0);
}

void TestCumulativeCapacityTracker::nodeWithChargeLimitCountsFromZero()
{
    CumulativeCapacityTracker tracker;
    tracker.onNodeBeginning(1, false);
    tracker.onDcDataReceived(10.0);
    tracker.onNodeCompleted();
    tracker.onNodeBeginning(2, true);
    tracker.onDcDataReceived(3.0);
    QCOMPARE(tracker.getLiveExperimentAbs_C(), 13.0);
    QCOMPARE(tracker.getCurrentStepNet_C(), 3.0);
}

void TestCumulativeCapacityTracker::sumsUpStepsAndSubsteps()
{
    CumulativeCapacityTracker tracker;
    const auto runNode = [&tracker](int step, std::initializer_list<double> readings) {
        tracker.onNodeBeginning(step, true);
        for (const double reading : readings)
            tracker.onDcDataReceived(reading);
        tracker.onNodeCompleted();
    };
    runNode(1, {1.0, 3.0}); // +3
    runNode(1, {-1.0});     // -1
    runNode(2, {4.0, 2.0}); // abs 6, net 2
    runNode(2, {});         // nothing
    runNode(2, {5.0});      // +5
    tracker.endExperiment();

    QCOMPARE(tracker.getExperimentAbs_C(), 15.0);
    QCOMPARE(tracker.getExperimentNet_C(), 9.0);
    QCOMPARE(tracker.getPerStepAbs_C(), (Vector{4.0, 11.0}));
    QCOMPARE(tracker.getPerStepNet_C(), (Vector{2.0, 7.0}));
    QCOMPARE(tracker.getPerSubstepAbs_C(), (VectorOfVectors{{3.0, 1.0}, {6.0, 0.0, 5.0}}));
    QCOMPARE(tracker.getPerSubstepNet_C(), (VectorOfVectors{{3.0, -1.0}, {2.0, 0.0, 5.0}}));
}

void TestCumulativeCapacityTracker::samplesBetweenNodesAreBookedOnTheNextNode()
{
    CumulativeCapacityTracker tracker;
    tracker.onNodeBeginning(1, false);
    tracker.onDcDataReceived(2.0);
    tracker.onNodeCompleted();
    tracker.onDcDataReceived(3.0); // still on its way when the node was done
    QCOMPARE(tracker.getLiveExperimentAbs_C(), 2.0);
    tracker.onNodeBeginning(1, false);
    tracker.onDcDataReceived(4.0);
    QCOMPARE(tracker.getLiveExperimentAbs_C(), 4.0);
}

void TestCumulativeCapacityTracker::stepThatIsEnteredAgainIsCountedAnew()
{
    CumulativeCapacityTracker tracker;
    for (const int step : {1, 2, 1}) {
        tracker.onNodeBeginning(step, true);
        tracker.onDcDataReceived(step == 2 ? 10.0 : 1.0);
        tracker.onNodeCompleted();
    }
    QCOMPARE(tracker.getCurrentStepAbs_C(), 1.0);
    QCOMPARE(tracker.getExperimentAbs_C(), 12.0);
    tracker.endExperiment();
    QCOMPARE(tracker.getPerStepAbs_C(), (Vector{1.0, 10.0}));
}

void TestCumulativeCapacityTracker::stepWithoutChargeLeavesZero()
{
    CumulativeCapacityTracker tracker;
    tracker.onNodeBeginning(2, false);
    tracker.onNodeBeginning(3, false);
    QCOMPARE(tracker.getPerStepAbs_C(), (Vector{0.0, 0.0, 0.0}));
    QCOMPARE(tracker.getPerSubstepNet_C(), (VectorOfVectors{{}, {0.0}, {0.0}}));
}

void TestCumulativeCapacityTracker::smallChangesAreDropped()
{
    CumulativeCapacityTracker tracker;
    tracker.setDeltaEpsilon(2.0);
    tracker.setDeltaEpsilon(-7.0); // ignored
    tracker.beginExperiment();     // keeps it
    tracker.onNodeBeginning(1, false);
    for (const double reading : {1.0, 2.0, 4.0, 5.0})
        tracker.onDcDataReceived(reading);
    QCOMPARE(tracker.getLiveExperimentAbs_C(), 2.0);
}

void TestCumulativeCapacityTracker::readingsThatAreNoNumbersCostNothing_data()
{
    QTest::addColumn<Vector>("first"); // readings of two nodes without a charge limit
    QTest::addColumn<Vector>("second");

    for (const double bad : {std::nan(""), HUGE_VAL, -HUGE_VAL}) {
        const auto row = [bad](const char *where, const Vector &first, const Vector &second) {
            QTest::addRow("%f %s", bad, where) << first << second;
        };
        row("first of all", {bad, 2.0, 7.0}, {4.0});
        row("between", {2.0, bad, 7.0}, {4.0});
        row("last of its node", {2.0, 7.0, bad}, {4.0});
        row("first of the next", {2.0, 7.0}, {bad, 4.0});
        row("last of all", {2.0, 7.0}, {4.0, bad});
    }
}

void TestCumulativeCapacityTracker::readingsThatAreNoNumbersCostNothing()
{
    QFETCH(Vector, first);
    QFETCH(Vector, second);
    CumulativeCapacityTracker tracker;
    int step = 0;
    for (const Vector &readings : {first, second}) {
        tracker.onNodeBeginning(++step, false);
        for (const double reading : readings)
            tracker.onDcDataReceived(reading);
        tracker.onNodeCompleted();
    }
    QCOMPARE(tracker.getLiveExperimentAbs_C(), 10.0);
    QCOMPARE(tracker.getLiveExperimentNet_C(), 4.0);
    tracker.endExperiment();
    QCOMPARE(tracker.getPerStepAbs_C(), (Vector{7.0, 3.0}));
}

void TestCumulativeCapacityTracker::endKeepsTotalsUntilTheNextBegin()
{
    CumulativeCapacityTracker tracker;
    tracker.onNodeBeginning(1, false);
    tracker.onDcDataReceived(6.0);
    tracker.endExperiment(); // the node is still open
    tracker.onDcDataReceived(8.0);
    QCOMPARE(tracker.getExperimentAbs_C(), 6.0);
    QCOMPARE(tracker.getPerStepAbs_C(), (Vector{6.0}));
    tracker.beginExperiment();
    QCOMPARE(tracker.getExperimentAbs_C(), 0.0);
    QVERIFY(tracker.getPerStepAbs_C().empty());
    tracker.onNodeBeginning(1, false);
    tracker.onDcDataReceived(1.0);
    QCOMPARE(tracker.getLiveExperimentAbs_C(), 1.0); // no baseline is left of the last experiment
}

void TestCumulativeCapacityTracker::survivesNodesWithoutNumber()
{
    CumulativeCapacityTracker tracker;
    tracker.onNodeBeginning(-1, false);
    tracker.onDcDataReceived(1.0);
    tracker.onNodeCompleted();
    tracker.onNodeBeginning(0, false);
    tracker.endExperiment();
    QCOMPARE(tracker.getExperimentAbs_C(), 1.0);
    QVERIFY(tracker.getPerStepAbs_C().empty());
}

NIMBRELLE_TEST_MAIN(TestCumulativeCapacityTracker)
#include "TestCumulativeCapacityTracker.moc"
