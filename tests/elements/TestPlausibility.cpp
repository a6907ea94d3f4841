#include "elements/ConstantCurrentAdvElement.h"
#include "elements/ConstantPotAdvElement.h"
#include "elements/ConstantPowerElement.h"
#include "elements/ConstantResistanceElement.h"
#include "elements/CyclicVoltammetryElement.h"
#include "elements/DCCurrentSweepElement.h"
#include "elements/DCPotentialSweepElement.h"
#include "elements/DiffPulseVoltammetryElement.h"
#include "elements/EISGalvanostaticElement.h"
#include "elements/EISPotentiostaticElement.h"
#include "elements/MottSchottkyElement.h"
#include "elements/OpenCircuitElement.h"
#include "elements/Plausibility.h"
#include "elements/SquareWaveVoltammetryElement.h"
#include "elements/StaircasePotentialVoltammetryElement.h"
#include "elements/SteppedCurrent.h"
#include "elements/SteppedVoltage.h"
#include "hardware_models/HardwareModelFactory.h"
#include "support/TestMain.h"

using Element = std::shared_ptr<AbstractBuilderElement>;
Q_DECLARE_METATYPE(Element)
Q_DECLARE_METATYPE(HardwareModel_t)

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double noNumber = std::numeric_limits<double>::quiet_NaN();

template <class Builder, class Change>
Element changed(Change change)
{
    auto element = std::make_shared<Builder>();
    change(*element);
    return element;
}

DCPotentialSweepElement sweep()
{
    DCPotentialSweepElement element;
    element.endingPot = 1;
    element.scanRate = 0.1;
    return element;
}

template <class Change>
Element changedSweep(Change change)
{
    auto element = std::make_shared<DCPotentialSweepElement>(sweep());
    change(*element);
    return element;
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
    const auto row = [](const char *name, const Element &element, const QStringList &texts,
                        HardwareModel_t model = HardwareModel_t::Alder_2_5) {
        QTest::newRow(name) << element << texts << model;
    };
    using Current = ConstantCurrentAdvElement;
    using Potential = ConstantPotAdvElement;

    row("as it comes", changed<Current>([](auto &) {}), {});
    row("no limit of time", changed<Current>([](auto &e) { e.maxDuration = infinity; }), {});
    row("a capacity counts without its sign", changed<Current>([](auto &e) { e.maxCapacity = -12; }), {});
    row("negative time", changed<Current>([](auto &e) { e.maxDuration = -1; }),
        {"maxDuration is -1 s; the Alder takes values of at least 0 s, or infinity for no limit."});
    row("no number", changed<Current>([](auto &e) { e.maxVoltage = noNumber; }),
        {"maxVoltage is not a number; the Alder takes values from -10 V to 10 V, or infinity for no limit."});
    row("a limit beyond the range", changed<Current>([](auto &e) { e.minVoltage = -10.5; }),
        {"minVoltage is -10.5 V; the Alder takes values from -10 V to 10 V, or minus infinity for no limit."});
    row("the wrong infinity", changed<Current>([](auto &e) { e.minVoltage = infinity; }),
        {"minVoltage is infinity; the Alder takes values from -10 V to 10 V, or minus infinity for no limit."});
    row("infinite interval", changed<Current>([](auto &e) { e.samplingInterval = infinity; }),
        {"samplingInterval is infinity; the Alder takes values of at least 0.0002 s."});
    row("more than a record holds", changed<Current>([](auto &e) { e.maxDuration = 1e39; }),
        {"maxDuration is 1e+39 s; the Alder takes values of at least 0 s, or infinity for no limit."});
    row("limits that cross", changed<Current>([](auto &e) {
            e.minVoltage = 5;
            e.maxVoltage = 3;
        }),
        {"minVoltage of 5 V lies above maxVoltage of 3 V."});
    row("limits that meet", changed<Current>([](auto &e) { e.minVoltage = e.maxVoltage = 3; }), {});
    row("negative filter", changed<Current>([](auto &e) { e.minSamplingVoltageDifference = -0.1; }),
        {"minSamplingVoltageDifference is -0.1 V; the Alder takes values of at least 0 V, or minus infinity for no "
         "limit."});
    row("a range beyond the model's", changed<Current>([](auto &e) {
            e.autoRange = false;
            e.approxMaxCurrent = 1.5;
        }),
        {"approxMaxCurrent is 1.5 A; the Alder takes values from -1 A to 1 A."});
    row("an unused range", changed<Current>([](auto &e) { e.approxMaxCurrent = noNumber; }), {});
    row("magnitudes that cross", changed<Potential>([](auto &e) {
            e.minAbsoluteCurrent = 0.5;
            e.maxAbsoluteCurrent = 0.1;
        }),
        {"minAbsoluteCurrent of 0.5 A lies above maxAbsoluteCurrent of 0.1 A."});
    row("rest potentials have the range of the open circuit", changed<OpenCircuitElement>([](auto &e) {
            e.minVoltage = -15;
            e.maxVoltage = 21;
        }),
        {"maxVoltage is 21 V; the Alder takes values from -20 V to 20 V, or infinity for no limit."});
    row("signed currents that cross", changed<ConstantPowerElement>([](auto &e) {
            e.minCurrent = 0.5;
            e.maxCurrent = -0.5;
        }),
        {"minCurrent of 0.5 A lies above maxCurrent of -0.5 A."});
    row("limits of different zeros do not compare", changed<ConstantResistanceElement>([](auto &e) {
            e.minVoltage = 3;
            e.maxVoltage = 1;
            e.maximumVoltageVsOCP = true;
        }),
        {});
    row("a discharge beyond the model's power", changed<ConstantPowerElement>([](auto &e) { e.power = -10.5; }),
        {"power is -10.5 W; the Alder takes values from -10 W to 10 W."});
    row("infinite resistance", changed<ConstantResistanceElement>([](auto &e) { e.resistance = infinity; }),
        {"resistance is infinity; the Alder takes values above 0 Ohm."});
    row("a sweep", changedSweep([](auto &) {}), {});
    row("a falling rate", changedSweep([](auto &e) { e.scanRate = -0.1; }), {});
    row("no rate", changedSweep([](auto &e) { e.scanRate = 0; }),
        {"scanRate is 0 V/s; the Alder takes values from -150 V/s to 150 V/s other than 0."});
    row("no rate of current", changed<DCCurrentSweepElement>([](auto &) {}),
        {"scanRate is 0 A/s; the Alder takes values that are finite and not 0."});
    row("endless quiet time", changedSweep([](auto &e) { e.quietTime = infinity; }),
        {"quietTime is infinity; the Alder takes values of at least 0 s."});
    row("an unused interval", changedSweep([](auto &e) { e.quietTimeSamplingInterval = 0; }), {});
    row("a used one", changedSweep([](auto &e) {
            e.quietTime = 1;
            e.quietTimeSamplingInterval = 0;
        }),
        {"quietTimeSamplingInterval is 0 s; the Alder takes values of at least 0.0002 s."});
    row("more than the whole interval", changedSweep([](auto &e) { e.alphaFactor = 1.1; }),
        {"alphaFactor is 110 %; the Alder takes values from 0 % to 100 %."});
    row("too fast", changed<CyclicVoltammetryElement>([](auto &e) { e.dEdt = 200; }),
        {"dEdt is 200 V/s; the Alder takes values from -150 V/s to 150 V/s other than 0."});
    row("more cycles than are counted", changed<CyclicVoltammetryElement>([](auto &e) {
            e.dEdt = 0.1;
            e.numberOfCycles = 65537;
        }),
        {"numberOfCycles is 65537; the Alder takes values from 1 to 65536."});
    row("a staircase that stands still", changed<StaircasePotentialVoltammetryElement>([](auto &e) {
            e.stepSize = 0.01;
            e.stepDuration = 0;
        }),
        {"stepDuration is 0 s; the Alder takes values above 0 s."});
    row("a pulse that leaves the range", changed<DiffPulseVoltammetryElement>([](auto &e) {
            e.endVoltage = 9.9;
            e.vStep = 0.01;
            e.pulseHeight = 0.2;
        }),
        {"endVoltage + pulseHeight is 10.1 V; the Alder takes values from -10 V to 10 V."});
    row("a square wave that leaves the range", changed<SquareWaveVoltammetryElement>([](auto &e) {
            e.startVoltage = -9.9;
            e.vStep = 0.01;
            e.pulseFreq = 10;
            e.pulseAmp = 0.2;
        }),
        {"startVoltage with pulseAmp is -10.1 V; the Alder takes values from -10 V to 10 V."});
    row("a sine that leaves the range", changed<EISPotentiostaticElement>([](auto &e) {
            e.startFreq = e.endFreq = 1;
            e.biasVoltage = -9.5;
            e.amplitude = 1;
        }),
        {"biasVoltage with amplitude is 10.5 V; the Alder takes values from 0 V to 10 V."});
    row("a sine of current that leaves the range", changed<EISGalvanostaticElement>([](auto &e) {
            e.startFreq = e.endFreq = 1;
            e.biasCurrent = -0.9;
            e.amplitude = 0.2;
        }),
        {"biasCurrent with amplitude is 1.1 A; the Alder takes values from 0 A to 1 A."});
    row("a step away from the end", changed<MottSchottkyElement>([](auto &e) {
            e.amplitude = 0.01;
            e.voltageStep = -0.1;
        }),
        {"voltageStep of -0.1 V leads away from the end."});
    row("a step on the spot", changed<MottSchottkyElement>([](auto &e) {
            e.amplitude = 0.01;
            e.endingPotential = 0;
            e.voltageStep = -0.1;
        }),
        {});
    row("no step", changed<SteppedCurrent>([](auto &) {}),
        {"stepSize is 0 A; the Alder takes values that are finite and not 0."});
    row("limits of steps that cross", changed<SteppedCurrent>([](auto &e) {
            e.stepSize = 0.1;
            e.approxMinVoltage = 2;
            e.approxMaxVoltage = 1;
        }),
        {"approxMinVoltage of 2 V lies above approxMaxVoltage of 1 V."});
    row("a cycler knows no bounds of its own", changed<Current>([](auto &e) {
            e.current = 1000;
            e.maxVoltage = 1000;
        }),
        {}, HardwareModel_t::Gale);
    row("but takes numbers only", changed<Current>([](auto &e) { e.current = infinity; }),
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
    row("no number", HardwareModel_t::Gale, true, noNumber, true);
    row("no current", HardwareModel_t::Gale, false, noNumber, true);
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
    for (const double senseless : {noNumber, infinity})
        QVERIFY(!Plausibility::faultOfManualInterval(senseless).isEmpty());
    for (const double meant : {infinity, -infinity, 4.2})
        QCOMPARE(Plausibility::faultOfSafetyLimit(meant), QString());
    QVERIFY(!Plausibility::faultOfSafetyLimit(noNumber).isEmpty());
}

NIMBRELLE_TEST_MAIN(TestPlausibility)
#include "TestPlausibility.moc"
