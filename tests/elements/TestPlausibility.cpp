// SPDX-License-Identifier: MIT
#include "elements/Elements.h"
#include "elements/Plausibility.h"
#include "hardware_models/HardwareModelFactory.h"
#include "numerics/Constants.h"
#include "support/TestMain.h"

namespace {

Sweep sweep()
{
    return with(Sweep(), &Sweep::endingPot, 1, &Sweep::scanRate, 0.1);
}

} // namespace

/// What an element may ask for and cannot mean. That no property is left out is tested from the public side.
class TestPlausibility : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void finds_data();
    void finds();
    void manualSetPoints_data();
    void manualSetPoints();
    void manualIntervalsAndLimits();
};

void TestPlausibility::finds_data()
{
    QTest::addColumn<Element>("element");
    QTest::addColumn<QStringList>("texts");
    QTest::addColumn<HardwareModel_t>("model");
    const auto row = [](const char *name, const AbstractBuilderElement &element, const QStringList &texts,
                        HardwareModel_t model = HardwareModel_t::Alder_2_5) {
        QTest::newRow(name) << element.clone() << texts << model;
    };

    row("as it comes", Current(), {});
    row("no limit of time", with(Current(), &Current::maxDuration, infinity), {});
    row("a capacity counts without its sign", with(Current(), &Current::maxCapacity, -12), {});
    row("negative time", with(Current(), &Current::maxDuration, -1),
        {"maxDuration is -1 s; the Alder takes values of at least 0 s, or infinity for no limit."});
    row("no number", with(Current(), &Current::maxVoltage, notANumber),
        {"maxVoltage is not a number; the Alder takes values from -10 V to 10 V, or infinity for no limit."});
    row("a limit beyond the range", with(Current(), &Current::minVoltage, -10.5),
        {"minVoltage is -10.5 V; the Alder takes values from -10 V to 10 V, or minus infinity for no limit."});
    row("the wrong infinity", with(Current(), &Current::minVoltage, infinity),
        {"minVoltage is infinity; the Alder takes values from -10 V to 10 V, or minus infinity for no limit."});
    row("infinite interval", with(Current(), &Current::samplingInterval, infinity),
        {"samplingInterval is infinity; the Alder takes values of at least 0.0002 s."});
    row("more than a record holds", with(Current(), &Current::maxDuration, 1e39),
        {"maxDuration is 1e+39 s; the Alder takes values of at least 0 s, or infinity for no limit."});
    row("limits that cross", with(Current(), &Current::minVoltage, 5, &Current::maxVoltage, 3),
        {"minVoltage of 5 V lies above maxVoltage of 3 V."});
    row("limits that meet", with(Current(), &Current::minVoltage, 3, &Current::maxVoltage, 3), {});
    row("negative filter", with(Current(), &Current::minSamplingVoltageDifference, -0.1),
        {"minSamplingVoltageDifference is -0.1 V; the Alder takes values of at least 0 V, or minus infinity for no "
         "limit."});
    row("a range beyond the model's", with(Current(), &Current::autoRange, false, &Current::approxMaxCurrent, 1.5),
        {"approxMaxCurrent is 1.5 A; the Alder takes values from -1 A to 1 A."});
    row("an unused range", with(Current(), &Current::approxMaxCurrent, notANumber), {});
    row("magnitudes that cross", with(Hold(), &Hold::minAbsoluteCurrent, 0.5, &Hold::maxAbsoluteCurrent, 0.1),
        {"minAbsoluteCurrent of 0.5 A lies above maxAbsoluteCurrent of 0.1 A."});
    row("rest potentials have the range of the open circuit",
        with(Rest(), &Rest::minVoltage, -15, &Rest::maxVoltage, 21),
        {"maxVoltage is 21 V; the Alder takes values from -20 V to 20 V, or infinity for no limit."});
    row("signed currents that cross", with(Power(), &Power::minCurrent, 0.5, &Power::maxCurrent, -0.5),
        {"minCurrent of 0.5 A lies above maxCurrent of -0.5 A."});
    row("limits of different zeros do not compare",
        with(Resistance(), &Resistance::minVoltage, 3, &Resistance::maxVoltage, 1, &Resistance::maximumVoltageVsOCP,
             true),
        {});
    row("a discharge beyond the model's power", with(Power(), &Power::power, -10.5),
        {"power is -10.5 W; the Alder takes values from -10 W to 10 W."});
    row("infinite resistance", with(Resistance(), &Resistance::resistance, infinity),
        {"resistance is infinity; the Alder takes values above 0 Ohm."});
    row("a sweep", sweep(), {});
    row("a falling rate", with(sweep(), &Sweep::scanRate, -0.1), {});
    row("no rate", with(sweep(), &Sweep::scanRate, 0),
        {"scanRate is 0 V/s; the Alder takes values from -150 V/s to 150 V/s other than 0."});
    row("no rate of current", CurrentSweep(), {"scanRate is 0 A/s; the Alder takes values that are finite and not 0."});
    row("endless quiet time", with(sweep(), &Sweep::quietTime, infinity),
        {"quietTime is infinity; the Alder takes values of at least 0 s."});
    row("an unused interval", with(sweep(), &Sweep::quietTimeSamplingInterval, 0), {});
    row("a used one", with(sweep(), &Sweep::quietTime, 1, &Sweep::quietTimeSamplingInterval, 0),
        {"quietTimeSamplingInterval is 0 s; the Alder takes values of at least 0.0002 s."});
    row("more than the whole interval", with(sweep(), &Sweep::alphaFactor, 1.1),
        {"alphaFactor is 110 %; the Alder takes values from 0 % to 100 %."});
    row("too fast", with(Cyclic(), &Cyclic::dEdt, 200),
        {"dEdt is 200 V/s; the Alder takes values from -150 V/s to 150 V/s other than 0."});
    row("more cycles than are counted", with(Cyclic(), &Cyclic::dEdt, 0.1, &Cyclic::numberOfCycles, 65537),
        {"numberOfCycles is 65537; the Alder takes values from 1 to 65536."});
    row("a staircase that stands still", with(Staircase(), &Staircase::stepSize, 0.01, &Staircase::stepDuration, 0),
        {"stepDuration is 0 s; the Alder takes values above 0 s."});
    row("a pulse that leaves the range",
        with(DiffPulses(), &DiffPulses::endVoltage, 9.9, &DiffPulses::vStep, 0.01, &DiffPulses::pulseHeight, 0.2),
        {"endVoltage + pulseHeight is 10.1 V; the Alder takes values from -10 V to 10 V."});
    row("a square wave that leaves the range",
        with(SquareWave(), &SquareWave::startVoltage, -9.9, &SquareWave::vStep, 0.01, &SquareWave::pulseFreq, 10,
             &SquareWave::pulseAmp, 0.2),
        {"startVoltage with pulseAmp is -10.1 V; the Alder takes values from -10 V to 10 V."});
    row("a sine that leaves the range",
        with(VoltageEis(), &VoltageEis::startFreq, 1, &VoltageEis::endFreq, 1, &VoltageEis::biasVoltage, -9.5,
             &VoltageEis::amplitude, 1),
        {"biasVoltage with amplitude is 10.5 V; the Alder takes values from 0 V to 10 V."});
    row("a sine of current that leaves the range",
        with(CurrentEis(), &CurrentEis::startFreq, 1, &CurrentEis::endFreq, 1, &CurrentEis::biasCurrent, -0.9,
             &CurrentEis::amplitude, 0.2),
        {"biasCurrent with amplitude is 1.1 A; the Alder takes values from 0 A to 1 A."});
    row("a step away from the end",
        with(MottSchottky(), &MottSchottky::amplitude, 0.01, &MottSchottky::voltageStep, -0.1),
        {"voltageStep of -0.1 V leads away from the end."});
    row("a step on the spot",
        with(MottSchottky(), &MottSchottky::amplitude, 0.01, &MottSchottky::endingPotential, 0,
             &MottSchottky::voltageStep, -0.1),
        {});
    row("no step", SteppedCurrent(), {"stepSize is 0 A; the Alder takes values that are finite and not 0."});
    row("limits of steps that cross",
        with(SteppedCurrent(), &SteppedCurrent::stepSize, 0.1, &SteppedCurrent::approxMinVoltage, 2,
             &SteppedCurrent::approxMaxVoltage, 1),
        {"approxMinVoltage of 2 V lies above approxMaxVoltage of 1 V."});
    row("a cycler knows no bounds of its own", with(Current(), &Current::current, 1000, &Current::maxVoltage, 1000), {},
        HardwareModel_t::Gale);
    row("but takes numbers only", with(Current(), &Current::current, infinity),
        {"current is infinity; the Gale takes values that are finite."}, HardwareModel_t::Gale);
}

void TestPlausibility::finds()
{
    QFETCH(const Element, element);
    QFETCH(const HardwareModel_t, model);
    QStringList texts;
    for (const auto &finding : Plausibility::findings(*element, *HardwareModelFactory::getHardwareModel(model)))
        texts += finding.text;
    QTEST(texts, "texts");
}

void TestPlausibility::manualSetPoints_data()
{
    QTest::addColumn<HardwareModel_t>("model");
    QTest::addColumn<double>("value");
    QTest::addColumn<bool>("isVoltage");
    QTest::addColumn<bool>("isRefused");
    const auto row = [](const char *name, HardwareModel_t model, bool isVoltage, double value, bool isRefused) {
        QTest::newRow(name) << model << value << isVoltage << isRefused;
    };
    row("highest voltage", HardwareModel_t::Alder_2_5, true, 10.0, false);
    row("higher", HardwareModel_t::Alder_2_5, true, 10.001, true);
    row("lower than the lowest", HardwareModel_t::Ibis_1_0, true, -6.001, true);
    row("lowest current", HardwareModel_t::Alder_2_5, false, -1.0, false);
    row("lower", HardwareModel_t::Alder_2_5, false, -1.001, true);
    row("no number", HardwareModel_t::Gale, true, notANumber, true);
    row("no current", HardwareModel_t::Gale, false, notANumber, true);
    row("infinity", HardwareModel_t::Gale, false, infinity, true);
    row("what a cycler's board decides", HardwareModel_t::Gale, false, 100.0, false);
}

void TestPlausibility::manualSetPoints()
{
    QFETCH(const HardwareModel_t, model);
    QFETCH(const double, value);
    QFETCH(const bool, isVoltage);
    const auto numbers = HardwareModelFactory::getHardwareModel(model);
    const QString fault = isVoltage ? Plausibility::faultOfManualVoltage(value, *numbers)
                                    : Plausibility::faultOfManualCurrent(value, *numbers);
    QTEST(!fault.isEmpty(), "isRefused");
}

void TestPlausibility::manualIntervalsAndLimits()
{
    for (const double tooShort : {0.0, -1.0, 1e-9})
        QCOMPARE(Plausibility::faultOfManualInterval(tooShort), QString());
    for (const double senseless : {notANumber, infinity})
        QVERIFY(!Plausibility::faultOfManualInterval(senseless).isEmpty());
    for (const double meant : {infinity, -infinity, 4.2})
        QCOMPARE(Plausibility::faultOfSafetyLimit(meant), QString());
    QVERIFY(!Plausibility::faultOfSafetyLimit(notANumber).isEmpty());
}

NIMBRELLE_TEST_MAIN(TestPlausibility)
#include "TestPlausibility.moc"
