// SPDX-License-Identifier: MIT
#include "elements/Elements.h"
#include "logging/ErrorStringList.h"
#include "numerics/Constants.h"
#include "support/TestMain.h"

namespace {

// What an Alder 2.5 says: 0.2 ms, 10 V under control, 20 V in open circuit, 1 A, 2 MHz.
const QString sampling = QStringLiteral("The %1 has a minimum sampling rate of 0.0002 s.");
const QString current = QStringLiteral("The %1 has a minimum current of -1A and a maximum current of 1A.");
const QString controlled = QStringLiteral("The %1 has a minimum voltage of -10V and a maximum voltage of 10V.");
const QString openCircuit =
    QStringLiteral("In an open circuit The %1 has a minimum voltage of -20V and a maximum voltage of 20V.");
const QString voltageStep = QStringLiteral("The %1 has a minimum voltage step of 0.0003 V");
const QString frequency =
    QStringLiteral("The %1 has a minimum frequency of 10.0 uHz and a maximum frequency of 2.00 MHz");
const QString density = QStringLiteral("%1 The steps per decade must be an integer between 1 and 100");
const QString cycles = QStringLiteral("%1 The minimum cycles must be an integer between 1 and 1000");
const QString duration = QStringLiteral("Duration must be greater than 0.");

/// An impedance sweep that no limit refuses.
template <class Sweep>
Sweep acceptable()
{
    return with(Sweep(), &Sweep::startFreq, 1000, &Sweep::endFreq, 1, &Sweep::stepsPerDecade, 10, &Sweep::amplitude,
                0.01);
}

template <>
MottSchottky acceptable()
{
    return with(MottSchottky(), &MottSchottky::amplitude, 0.01);
}

} // namespace

/// Every complaint of every validator, in its order.
class TestElementChecks : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void complains_data();
    void complains();
    void anUnknownModelIsTheOnlyComplaint();
};

void TestElementChecks::complains_data()
{
    QTest::addColumn<Element>("element");
    QTest::addColumn<HardwareModel_t>("model");
    QTest::addColumn<QStringList>("complaints");

    const auto row = [](const char *name, const AbstractBuilderElement &element, const QStringList &complaints,
                        HardwareModel_t model = HardwareModel_t::Alder_2_5) {
        QTest::newRow(name) << element.clone() << model << complaints;
    };

    row("constant current",
        with(ConstantCurrentElement(), &ConstantCurrentElement::samplingInterval, 0.0001,
             &ConstantCurrentElement::current, 10),
        {sampling, current});
    row("constant current, at the limit", with(Current(), &Current::samplingInterval, 0.0002, &Current::current, -1),
        {});
    row("constant current, advanced", with(Current(), &Current::samplingInterval, 0, &Current::current, -1.01),
        {sampling, current});
    row("constant potential",
        with(ConstantPotElement(), &ConstantPotElement::samplingInterval, 0.0001, &ConstantPotElement::potential, 15),
        {sampling, controlled});
    row("a potential vs OCP has the open circuit's limits",
        with(Hold(), &Hold::voltageVsOCP, true, &Hold::potential, 15), {});
    row("constant potential vs OCP", with(Hold(), &Hold::voltageVsOCP, true, &Hold::potential, 25), {openCircuit});
    row("open circuit", with(Rest(), &Rest::samplingInterval, 0), {sampling});
    row("potential sweep",
        with(Sweep(), &Sweep::startingPot, 11, &Sweep::endingPot, 21, &Sweep::endVoltageVsOCP, true,
             &Sweep::samplingInterval, 0),
        {controlled, openCircuit, sampling});
    row("current sweep has one text for both ends",
        with(CurrentSweep(), &CurrentSweep::startingCurrent, -2, &CurrentSweep::endingCurrent, infinity,
             &CurrentSweep::samplingInterval, 0),
        {current, sampling});
    row("stepped voltage blames the current",
        with(SteppedVoltage(), &SteppedVoltage::samplingInterval, 0, &SteppedVoltage::startVoltage, 15,
             &SteppedVoltage::startVoltageVsOCP, true, &SteppedVoltage::endVoltage, -15, &SteppedVoltage::stepDuration,
             0),
        {sampling, current, current, voltageStep, duration});
    row("stepped current names the count",
        with(SteppedCurrent(), &SteppedCurrent::endCurrent, 1, &SteppedCurrent::stepSize, 0.0001),
        {QStringLiteral("Current step size should greater then10000A")});
    row("stepped current",
        with(SteppedCurrent(), &SteppedCurrent::samplingInterval, 0, &SteppedCurrent::startCurrent, 2,
             &SteppedCurrent::endCurrent, -2, &SteppedCurrent::stepSize, 0.001, &SteppedCurrent::stepDuration, -1),
        {sampling, current, current, QStringLiteral("Current step size should greater then4000A"), duration});
    row("stepped current, as many as go",
        with(SteppedCurrent(), &SteppedCurrent::endCurrent, 2047.0 / 4096.0, &SteppedCurrent::stepSize, 1.0 / 4096.0),
        {});
    row("cyclic voltammetry",
        with(Cyclic(), &Cyclic::samplingInterval, 0, &Cyclic::startVoltage, 11, &Cyclic::firstVoltageLimit, 21,
             &Cyclic::firstVoltageLimitVsOCP, true, &Cyclic::secondVoltageLimit, -11, &Cyclic::endVoltage, -21,
             &Cyclic::endVoltageVsOCP, true, &Cyclic::numberOfCycles, 0, &Cyclic::alphaFactor, 1.01),
        {sampling, controlled, openCircuit, controlled, openCircuit,
         QStringLiteral("Cycle number should be positive for %1."),
         QStringLiteral("alphaFactor should be in range of 0 to 100 for %1.")});
    row("negative alpha factor", with(Cyclic(), &Cyclic::alphaFactor, -0.01),
        {QStringLiteral("alphaFactor should be in range of 0 to 100 for %1.")});
    row("staircase voltammetry",
        with(Staircase(), &Staircase::startVoltage, 11, &Staircase::firstVoltageLimit, 21,
             &Staircase::firstVoltageLimitVsOCP, true, &Staircase::secondVoltageLimit, -11, &Staircase::endVoltage, -21,
             &Staircase::endVoltageVsOCP, true, &Staircase::samplingInterval, 0, &Staircase::approxMaxCurrent, 2),
        {controlled, openCircuit, controlled, openCircuit, voltageStep, sampling, current});
    row("staircase voltammetry with an automatic range",
        with(Staircase(), &Staircase::stepSize, -0.01, &Staircase::approxMaxCurrent, 2, &Staircase::autoRange, true),
        {});
    row("normal pulses",
        with(NormalPulses(), &NormalPulses::startVoltage, 11, &NormalPulses::endVoltage, 21,
             &NormalPulses::endVoltageVsOCP, true, &NormalPulses::pulseWidth, 0, &NormalPulses::pulsePeriod, 0,
             &NormalPulses::autoRange, false),
        {controlled, voltageStep, openCircuit, QStringLiteral("Lengths of time must be positive."),
         QStringLiteral("Pulse width must be at least 1 ms."),
         QStringLiteral("Lengths(pulsePeriod) of time must be positive."),
         QStringLiteral("Pulse period must be greater than pulse width."), current});
    row("differential pulses tell the end by the start's flag",
        with(DiffPulses(), &DiffPulses::startVoltage, 21, &DiffPulses::startVoltageVsOCP, true, &DiffPulses::endVoltage,
             11, &DiffPulses::pulseWidth, 0.0009, &DiffPulses::pulsePeriod, 0.0009, &DiffPulses::autoRange, false),
        {openCircuit, openCircuit, voltageStep, QStringLiteral("For the %1, width of pulse must be at least 1 ms."),
         QStringLiteral("For the %1, pulse period must be greater than pulse width."), current});
    row("square wave",
        with(SquareWave(), &SquareWave::startVoltage, 11, &SquareWave::endVoltage, -11, &SquareWave::autoRange, false),
        {controlled, voltageStep, controlled, QStringLiteral("Frequency must be positive"), current});
    row("square wave too fast", with(SquareWave(), &SquareWave::vStep, 0.01, &SquareWave::pulseFreq, 3501),
        {QStringLiteral("Frequency must not exceed 3500 Hz")});
    row("potentiostatic EIS blames the current",
        with(VoltageEis(), &VoltageEis::startFreq, 0, &VoltageEis::endFreq, 3e6, &VoltageEis::biasVoltage, 11,
             &VoltageEis::stepsPerDecade, 10.5, &VoltageEis::minimumCycles, 1001),
        {frequency, frequency, current, density, cycles, QStringLiteral("AC voltage amplitude must be positive.")});
    row("potentiostatic EIS, its end frequency alone", with(acceptable<VoltageEis>(), &VoltageEis::endFreq, 1e-6),
        {frequency});
    row("galvanostatic EIS, its end frequency alone", with(acceptable<CurrentEis>(), &CurrentEis::endFreq, 3e6),
        {frequency});
    row("Mott-Schottky, its end frequency alone", with(acceptable<MottSchottky>(), &MottSchottky::endFrequency, 1e-6),
        {frequency});
    row("current sweep, its end alone", with(CurrentSweep(), &CurrentSweep::endingCurrent, 2), {current});
    row("potentiostatic EIS, amplitude",
        with(acceptable<VoltageEis>(), &VoltageEis::minimumCycles, 1, &VoltageEis::amplitude, 1e-5),
        {QStringLiteral("%1 has a voltage amplitude range of 1.5e-05 to 10 V")});
    row("galvanostatic EIS",
        with(CurrentEis(), &CurrentEis::startFreq, 3e6, &CurrentEis::endFreq, 0, &CurrentEis::biasCurrent, 2,
             &CurrentEis::stepsPerDecade, 101, &CurrentEis::minimumCycles, 0),
        {frequency, frequency, current, density, cycles, QStringLiteral("AC current amplitude must be positive.")});
    row("galvanostatic EIS, amplitude", with(acceptable<CurrentEis>(), &CurrentEis::amplitude, 1.5),
        {QStringLiteral("%1 has a current amplitude range of 2.4e-13A to 1 A")});
    row("impedance on a model without AC", with(acceptable<VoltageEis>(), &VoltageEis::minimumCycles, 0),
        {QStringLiteral("The %1 does not support AC Experiments"), cycles}, HardwareModel_t::Cedar_2_0);
    row("Mott-Schottky",
        with(MottSchottky(), &MottSchottky::startingPotential, 11, &MottSchottky::endingPotential, 21,
             &MottSchottky::endVoltageVsOCP, true, &MottSchottky::quietTimeSampInterval, 0,
             &MottSchottky::startFrequency, 0, &MottSchottky::endFrequency, 0, &MottSchottky::voltageStep, 0,
             &MottSchottky::stepsPerDecade, 0, &MottSchottky::minCycles, 0, &MottSchottky::amplitude, 0),
        {controlled, openCircuit, QStringLiteral("StartVoltageVsOCP and EndVoltageVsOCP must have the same value"),
         sampling, frequency, frequency, voltageStep, density, cycles,
         QStringLiteral("AC voltage amplitude must be positive.")});
    row("Mott-Schottky does not ask for AC", acceptable<MottSchottky>(), {}, HardwareModel_t::Cedar_2_0);
    row("constant power",
        with(Power(), &Power::power, 10.5, &Power::samplingInterval, 0, &Power::minVoltage, -11, &Power::maxVoltage, 11,
             &Power::minCurrent, -2, &Power::maxCurrent, 2),
        {QStringLiteral("%1 has a maximum power delivery of 10 mW"), sampling, controlled, current});
    row("a negative power and infinity limits pass", with(Power(), &Power::power, -1000), {});
    row("the wrong infinity is no missing lower voltage",
        with(Power(), &Power::minVoltage, infinity, &Power::maxCurrent, -infinity), {controlled, current});
    row("nor a missing upper one", with(Power(), &Power::maxVoltage, -infinity, &Power::minCurrent, infinity),
        {controlled, current});
    row("a limit vs OCP", with(Power(), &Power::maxVoltage, 15, &Power::maximumVoltageVsOCP, true), {});
    row("constant resistance",
        with(Resistance(), &Resistance::resistance, 0, &Resistance::samplingInterval, 0, &Resistance::minVoltage, -15,
             &Resistance::minCurrent, -2),
        {QStringLiteral("%1 Resistance must be greater than 0"), sampling, controlled, current});
    row("constant resistance, upper limits",
        with(Resistance(), &Resistance::resistance, 10, &Resistance::minVoltage, -15, &Resistance::minimumVoltageVsOCP,
             true, &Resistance::maxVoltage, 11, &Resistance::maxCurrent, 2),
        {controlled, current});
    row("constant resistance as it comes", Resistance(), {});
    row("charge and discharge check the model alone",
        with(Battery(), &Battery::charge, with(Half(), &Half::current, 1e6)), {});
}

void TestElementChecks::complains()
{
    QFETCH(const Element, element);
    QFETCH(const HardwareModel_t, model);
    HardwareVersion hardware;
    hardware.hwModel = model;
    QStringList complaints;
    for (const QString &complaint : element->validateInput(hardware).getErrorList())
        complaints += complaint;
    QTEST(complaints, "complaints");
    QCOMPARE(element->clone()->validateInput(hardware).getErrorList().size(), std::size_t(complaints.size()));
}

void TestElementChecks::anUnknownModelIsTheOnlyComplaint()
{
    HardwareVersion unknown;
    unknown.hwModel = HardwareModel_t(36);
    const auto complaintsOf = [&unknown](const AbstractBuilderElement &element) {
        return element.validateInput(unknown).getErrorListSingleString(QStringLiteral("Invalid"));
    };
    const QString expected = QStringLiteral("Device: Invalid is not supported by the API");
    EISPotentiostaticElement impedance; // its defaults break several limits
    QCOMPARE(complaintsOf(impedance), expected);
    QCOMPARE(complaintsOf(ChargeDischargeElement()), expected);
    SteppedVoltage steps;
    steps.startVoltage = 100;
    QCOMPARE(complaintsOf(steps), expected);
}

NIMBRELLE_TEST_MAIN(TestElementChecks)
#include "TestElementChecks.moc"
