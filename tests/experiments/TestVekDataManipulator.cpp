// SPDX-License-Identifier: MIT
#include "VekDataManipulator.h"

#include "VekDiffPulseVoltammetryElement.h"
#include "VekNormalPulseVoltammetryElement.h"
#include "VekSquareWaveVoltammetryElement.h"
#include "support/TestMain.h"

namespace {

VekDCData sample(double time, double current, double voltage)
{
    VekDCData data;
    data.timestamp = time;
    data.current = current;
    data.workingElectrodeVoltage = voltage;
    return data;
}

} // namespace

/// Telling the two levels of a pulse apart by time alone.
class TestVekDataManipulator : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void takesTheTimingOfItsElement();
    void refusesTheWrongTypeAndKeepsItsState();
    void pairsBaseAndPulse();
    void countsOnePulseForEachStep();
    void keepsThePaceOfAnUnsteadyClock();
    void squareWaveLevelsAreTheOtherWayRound();
    void squareWaveWaitsForItsFirstLevel();
    void startsAnewWithASetting();
};

void TestVekDataManipulator::takesTheTimingOfItsElement()
{
    const VekDataManipulator differential(VekDiffPulseVoltammetryElement(0, 1, 0.01, 0.05, 0.1, 0.5));
    QCOMPARE(differential.getPulseWidth(), 0.1);
    QCOMPARE(differential.getPulsePeriod(), 0.5);
    const VekDataManipulator normal(VekNormalPulseVoltammetryElement(0, 1, 0.01, 0.2, 0.6));
    QCOMPARE(normal.getPulseWidth(), 0.2);
    QCOMPARE(normal.getPulsePeriod(), 0.6);
    const VekDataManipulator square(VekSquareWaveVoltammetryElement(0, 1, 0.01, 0.05, 25));
    QCOMPARE(square.getFrequency(), 25.0);
}

void TestVekDataManipulator::refusesTheWrongTypeAndKeepsItsState()
{
    VekDataManipulator manipulator;
    QVERIFY(manipulator.setPulseType(NormalPulse, 0.25, 1) == VekErrorCode::Success);
    manipulator.loadPrimaryData(sample(10, 1, 2));
    const VekErrorCode timing = manipulator.setPulseType(SquarewavePulse, 9, 9);
    QCOMPARE(int(timing.value()), 254);
    QCOMPARE(timing.message(), QStringLiteral("Pulse type is not DifferentialPulse or NormalPulse"));
    const VekErrorCode frequency = manipulator.setPulseType(DifferentialPulse, 9);
    QCOMPARE(int(frequency.value()), 254);
    QCOMPARE(frequency.message(), QStringLiteral("Pulse type is not SquarewavePulse"));
    QCOMPARE(manipulator.getPulseWidth(), 0.25);
    QCOMPARE(manipulator.getFrequency(), 0.0);
    QCOMPARE(manipulator.getBaseCurrent(), 1.0);
}

void TestVekDataManipulator::pairsBaseAndPulse()
{
    VekDataManipulator manipulator;
    manipulator.setPulseType(DifferentialPulse, 0.25, 1);
    manipulator.loadPrimaryData(sample(10, 1, 0.1)); // the first sample is at the base
    QVERIFY(!manipulator.isPulseCompleted());
    manipulator.loadPrimaryData(sample(10.25, 5, 0.2));
    QVERIFY(manipulator.isPulseCompleted());
    QCOMPARE(manipulator.getBaseCurrent(), 1.0);
    QCOMPARE(manipulator.getBaseVoltage(), 0.1);
    QCOMPARE(manipulator.getPulseCurrent(), 5.0);
    QCOMPARE(manipulator.getPulseVoltage(), 0.2);
    manipulator.loadPrimaryData(sample(11, 2, 0.3));
    QVERIFY(!manipulator.isPulseCompleted());
    QCOMPARE(manipulator.getBaseCurrent(), 2.0);
    QCOMPARE(manipulator.getPulseCurrent(), 5.0);
}

void TestVekDataManipulator::countsOnePulseForEachStep()
{
    VekDataManipulator manipulator;
    manipulator.setPulseType(NormalPulse, 0.25, 1);
    int completed = 0;
    for (int step = 0; step < 1000; ++step) {
        manipulator.loadPrimaryData(sample(100 + step, -1, 0));
        manipulator.loadPrimaryData(sample(100.25 + step, step, 0));
        if (manipulator.isPulseCompleted() && manipulator.getPulseCurrent() == step)
            ++completed;
    }
    QCOMPARE(completed, 1000);
}

void TestVekDataManipulator::keepsThePaceOfAnUnsteadyClock()
{
    // Each base sample becomes the next reference: an error of the clock does not add up.
    VekDataManipulator manipulator;
    manipulator.setPulseType(NormalPulse, 0.25, 1);
    double time = 10;
    for (int step = 0; step < 1000; ++step, time += 1.001) {
        manipulator.loadPrimaryData(sample(time, 0, 0));
        QVERIFY(!manipulator.isPulseCompleted());
        manipulator.loadPrimaryData(sample(time + 0.25, 0, 0));
        QVERIFY(manipulator.isPulseCompleted());
    }
}

void TestVekDataManipulator::squareWaveLevelsAreTheOtherWayRound()
{
    VekDataManipulator manipulator;
    manipulator.setPulseType(SquarewavePulse, 0.5); // half periods of 1 s
    manipulator.loadPrimaryData(sample(10, 5, 0.2));
    QVERIFY(!manipulator.isPulseCompleted());
    QCOMPARE(manipulator.getPulseCurrent(), 5.0);
    manipulator.loadPrimaryData(sample(11, 1, 0.1));
    QVERIFY(manipulator.isPulseCompleted());
    QCOMPARE(manipulator.getBaseCurrent(), 1.0);
    QCOMPARE(manipulator.getBaseVoltage(), 0.1);
    QCOMPARE(manipulator.getPulseVoltage(), 0.2);
    manipulator.loadPrimaryData(sample(12, 6, 0.3));
    QVERIFY(!manipulator.isPulseCompleted());
    QCOMPARE(manipulator.getPulseCurrent(), 6.0);
}

void TestVekDataManipulator::squareWaveWaitsForItsFirstLevel()
{
    VekDataManipulator manipulator;
    manipulator.setPulseType(SquarewavePulse, 0.5);
    manipulator.loadPrimaryData(sample(10, 0, 0)); // a first level of nothing counts as none
    manipulator.loadPrimaryData(sample(11, 1, 0.1));
    QVERIFY(!manipulator.isPulseCompleted());
    QCOMPARE(manipulator.getBaseCurrent(), 0.0);
}

void TestVekDataManipulator::startsAnewWithASetting()
{
    VekDataManipulator manipulator;
    manipulator.setPulseType(NormalPulse, 0.25, 1);
    manipulator.loadPrimaryData(sample(10, 1, 1));
    manipulator.loadPrimaryData(sample(10.25, 1, 1));
    manipulator.setPulseType(NormalPulse, 0.25, 1);
    QVERIFY(!manipulator.isPulseCompleted());
    QCOMPARE(manipulator.getBaseCurrent() + manipulator.getPulseCurrent() + manipulator.getBaseVoltage() +
                 manipulator.getPulseVoltage(),
             0.0);
    manipulator.loadPrimaryData(sample(20.25, 3, 1)); // a new reference
    QCOMPARE(manipulator.getBaseCurrent(), 3.0);
}

NIMBRELLE_TEST_MAIN(TestVekDataManipulator)
#include "TestVekDataManipulator.moc"
