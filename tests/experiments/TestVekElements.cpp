// SPDX-License-Identifier: MIT
#include "VekConstantCurrentElement.h"
#include "VekConstantPotElement.h"
#include "VekConstantPowerElement.h"
#include "VekCyclicVoltammetryElement.h"
#include "VekDiffPulseVoltammetryElement.h"
#include "VekEISGalvanostaticElement.h"
#include "VekMottSchottkyElement.h"
#include "VekOpenCircuitElement.h"
#include "VekStaircasePotentialVoltammetryElement.h"
#include "VekSteppedCurrentElement.h"
#include "VekSteppedVoltageElement.h"

#include "support/TestMain.h"

#include <limits>

/// Where the public elements do more than hand a value through.
class TestVekElements : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void argumentsKeepTheirOrder();
    void copiesAreIndependent();
    void alphaFactorIsAPercentage();
    void fixedAndAutomaticRanges();
    void openCircuitHasOneUpperVoltage();
    void intervalTurnsTheVoltageFilterOff();
    void potentialElementDropsSigns();
    void potentialElementKnowsItsVoltageRanges();
    void powerDirectionIsDeprecated();
};

void TestVekElements::argumentsKeepTheirOrder()
{
    // Duration and interval change places among the classes.
    const VekConstantCurrentElement current(1, 2, 3);
    QCOMPARE(current.getSamplingInterval(), 2.0);
    QCOMPARE(current.getMaxDuration(), 3.0);
    const VekConstantPowerElement power(1, 2, 3);
    QCOMPARE(power.getMaxDuration(), 2.0);
    QCOMPARE(power.getSamplingInterval(), 3.0);
    const VekOpenCircuitElement rest(1, 2);
    QCOMPARE(rest.getMaxDuration(), 1.0);
    const VekSteppedCurrentElement currentSteps(1, 2, 3, 4, 5);
    QCOMPARE(currentSteps.getStepDuration(), 4.0);
    QCOMPARE(currentSteps.getSamplingInterval(), 5.0);
    const VekSteppedVoltageElement voltageSteps(1, 2, 3, 4, 5);
    QCOMPARE(voltageSteps.getSamplingInterval(), 4.0);
    QCOMPARE(voltageSteps.getStepDuration(), 5.0);
    const VekEISGalvanostaticElement galvanostatic(1, 2, 3, 4, 5);
    QCOMPARE(galvanostatic.getStartFreq(), 1.0);
    QCOMPARE(galvanostatic.getEndFreq(), 2.0);
    QCOMPARE(galvanostatic.getStepsPerDecade(), 3.0);
    QCOMPARE(galvanostatic.getBiasCurrent(), 4.0);
    QCOMPARE(galvanostatic.getAmplitude(), 5.0);
    const VekMottSchottkyElement impedance(1, 2, 3, 4, 5, 6, 7, 8, 9);
    QCOMPARE(impedance.getStepQuietTime(), 4.0);
    QCOMPARE(impedance.getStartFrequency(), 5.0);
    QCOMPARE(impedance.getMinCycles(), 9u);
}

void TestVekElements::copiesAreIndependent()
{
    VekCyclicVoltammetryElement source(0, 1, -1, 0, 0.1, 0.01);
    VekCyclicVoltammetryElement copy(source);
    copy.setStartVoltage(0.5);
    copy.setStartVoltageVsOCP(true);
    QCOMPARE(source.getStartVoltage(), 0.0);
    QVERIFY(!source.isStartVoltageVsOCP());

    VekCyclicVoltammetryElement assigned(9, 9, 9, 9, 9, 9);
    assigned = copy;
    QCOMPARE(assigned.getStartVoltage(), 0.5);
    assigned.setStartVoltage(0.25);
    QCOMPARE(copy.getStartVoltage(), 0.5);
    QCOMPARE(assigned.getName(), QStringLiteral("Cyclic Voltammetry"));
}

void TestVekElements::alphaFactorIsAPercentage()
{
    VekDiffPulseVoltammetryElement element(0, 1, 0.01, 0.05, 0.1, 0.5);
    QCOMPARE(element.getAlphaFactor(), 75.0);
    element.setAlphaFactor(80);
    QCOMPARE(element.getAlphaFactor(), 80.0);
}

void TestVekElements::fixedAndAutomaticRanges()
{
    VekConstantCurrentElement element(1, 1, 1);
    QVERIFY(element.isAutoRange());
    element.setApproxMaxCurrent(0.5);
    QVERIFY(!element.isAutoRange());
    element.setAutoRange();
    QVERIFY(element.isAutoRange());
    QCOMPARE(element.getApproxMaxCurrent(), 0.5);
    QVERIFY(element.isAutoVoltageRange());
    element.setApproxMaxVoltage(3);
    QVERIFY(!element.isAutoVoltageRange());
    QVERIFY(element.isAutoRange());

    const VekDiffPulseVoltammetryElement fixed(0, 1, 0.01, 0.05, 0.1, 0.5, 0.001);
    QVERIFY(!fixed.isAutoRange());
    QCOMPARE(fixed.getApproxMaxCurrent(), 0.001);
    VekStaircasePotentialVoltammetryElement staircase(0, 1, -1, 0, 0.01, 0.1, 0.1);
    QVERIFY(!staircase.isAutorange());
    staircase.setAutorange();
    QVERIFY(staircase.isAutorange());
}

void TestVekElements::openCircuitHasOneUpperVoltage()
{
    VekOpenCircuitElement element(1, 1);
    element.setApproxMaxVoltage(3);
    QCOMPARE(element.getMaxVoltage(), 3.0);
    QVERIFY(!element.isAutoVoltageRange());
    element.setAutoVoltageRange();
    element.setMaxVoltage(4);
    QCOMPARE(element.getApproxMaxVoltage(), 4.0);
    QVERIFY(element.isAutoVoltageRange());
}

void TestVekElements::intervalTurnsTheVoltageFilterOff()
{
    VekConstantCurrentElement element(1, 1, 1);
    element.setMinSamplingVoltageDifference(0.01);
    QCOMPARE(element.getMinSamplingVoltageDifference(), 0.01);
    element.setSamplingInterval(2);
    QCOMPARE(element.getMinSamplingVoltageDifference(), -std::numeric_limits<double>::infinity());
}

void TestVekElements::potentialElementDropsSigns()
{
    VekConstantPotElement element(1, 1, 1);
    element.setMaxAbsoluteCurrent(-0.1);
    QCOMPARE(element.getMaxCurrent(), 0.1);
    element.setMinCurrent(-0.01);
    QCOMPARE(element.getMinAbsoluteCurrent(), 0.01);
    QCOMPARE(element.getMaxAbsoluteCurrent(), 0.1);
}

void TestVekElements::potentialElementKnowsItsVoltageRanges()
{
    VekConstantPotElement element(1, 1, 1);
    QCOMPARE(element.getVoltageRange(), 5);
    for (const int accepted : {0, 3, 5}) {
        element.setVoltageRange(accepted);
        QCOMPARE(element.getVoltageRange(), accepted);
    }
    element.setVoltageRange(2);
    for (const int ignored : {-1, 4, 6, 258}) {
        element.setVoltageRange(ignored);
        QCOMPARE(element.getVoltageRange(), 2);
    }
}

void TestVekElements::powerDirectionIsDeprecated()
{
    QTest::ignoreMessage(QtDebugMsg,
                         "DEPRECATION WARNING: Use of the VekConstantPowerElement constructor with the 'isCharge' "
                         "parameter will not be supported in a future version. Use the alternative constructor and set "
                         "power to either positive or negative values instead.");
    QTest::ignoreMessage(QtDebugMsg, "If you continue to use this function, the state of 'isCharge' will still be used "
                                     "to set the sign of the power.");
    VekConstantPowerElement element(true, 1, 2, 3);
    QVERIFY(element.isCharge());
    QCOMPARE(element.getPower(), 1.0);
    QTest::ignoreMessage(QtDebugMsg,
                         "DEPRECATION WARNING: VekConstantPowerElement:setCharge will not be supported in a future "
                         "version. When this function is not called, positive or negative values powers should be used "
                         "instead.");
    element.setCharge(false);
    QVERIFY(!element.isCharge());
}

NIMBRELLE_TEST_MAIN(TestVekElements)
#include "TestVekElements.moc"
