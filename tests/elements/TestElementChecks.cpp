#include "elements/ChargeDischargeElement.h"
#include "elements/ConstantCurrentAdvElement.h"
#include "elements/ConstantCurrentElement.h"
#include "elements/ConstantPotAdvElement.h"
#include "elements/ConstantPotElement.h"
#include "elements/ConstantPowerElement.h"
#include "elements/ConstantResistanceElement.h"
#include "elements/CyclicVoltammetryElement.h"
#include "elements/DCCurrentSweepElement.h"
#include "elements/DCPotentialSweepElement.h"
#include "elements/DiffPulseVoltammetryElement.h"
#include "elements/EISGalvanostaticElement.h"
#include "elements/EISPotentiostaticElement.h"
#include "elements/MottSchottkyElement.h"
#include "elements/NormalPulseVoltammetryElement.h"
#include "elements/OpenCircuitElement.h"
#include "elements/SquareWaveVoltammetryElement.h"
#include "elements/StaircasePotentialVoltammetryElement.h"
#include "elements/SteppedCurrent.h"
#include "elements/SteppedVoltage.h"
#include "hardware_models/HardwareVersion.h"
#include "logging/ErrorStringList.h"
#include "support/TestMain.h"

using Element = std::shared_ptr<AbstractBuilderElement>;
Q_DECLARE_METATYPE(Element)
Q_DECLARE_METATYPE(HardwareModel_t)

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

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

/// An element that no limit of an Alder 2.5 refuses, and which the row then spoils.
template <class Builder, class Spoil>
Element spoilt(Spoil spoil)
{
    auto element = std::make_shared<Builder>();
    spoil(*element);
    return element;
}

template <class Builder>
void makeAcceptable(Builder &element)
{
    element.startFreq = 1000;
    element.endFreq = 1;
    element.stepsPerDecade = 10;
    element.amplitude = 0.01;
}

void makeAcceptable(MottSchottkyElement &element)
{
    element.amplitude = 0.01;
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

    const auto row = [](const char *name, const Element &element, const QStringList &complaints,
                        HardwareModel_t model = HardwareModel_t::Alder_2_5) {
        QTest::newRow(name) << element << model << complaints;
    };

    row("constant current", spoilt<ConstantCurrentElement>([](auto &e) {
            e.samplingInterval = 0.0001;
            e.current = 10;
        }),
        {sampling, current});
    row("constant current, at the limit", spoilt<ConstantCurrentAdvElement>([](auto &e) {
            e.samplingInterval = 0.0002;
            e.current = -1;
        }),
        {});
    row("constant current, advanced", spoilt<ConstantCurrentAdvElement>([](auto &e) {
            e.samplingInterval = 0;
            e.current = -1.01;
        }),
        {sampling, current});
    row("constant potential", spoilt<ConstantPotElement>([](auto &e) {
            e.samplingInterval = 0.0001;
            e.potential = 15;
        }),
        {sampling, controlled});
    row("a potential vs OCP has the open circuit's limits", spoilt<ConstantPotAdvElement>([](auto &e) {
            e.voltageVsOCP = true;
            e.potential = 15;
        }),
        {});
    row("constant potential vs OCP", spoilt<ConstantPotAdvElement>([](auto &e) {
            e.voltageVsOCP = true;
            e.potential = 25;
        }),
        {openCircuit});
    row("open circuit", spoilt<OpenCircuitElement>([](auto &e) { e.samplingInterval = 0; }), {sampling});
    row("potential sweep", spoilt<DCPotentialSweepElement>([](auto &e) {
            e.startingPot = 11;
            e.endingPot = 21;
            e.endVoltageVsOCP = true;
            e.samplingInterval = 0;
        }),
        {controlled, openCircuit, sampling});
    row("current sweep has one text for both ends", spoilt<DCCurrentSweepElement>([](auto &e) {
            e.startingCurrent = -2;
            e.endingCurrent = infinity;
            e.samplingInterval = 0;
        }),
        {current, sampling});
    row("stepped voltage blames the current", spoilt<SteppedVoltage>([](auto &e) {
            e.samplingInterval = 0;
            e.startVoltage = 15;
            e.startVoltageVsOCP = true;
            e.endVoltage = -15;
            e.stepDuration = 0;
        }),
        {sampling, current, current, voltageStep, duration});
    row("stepped current names the count", spoilt<SteppedCurrent>([](auto &e) {
            e.endCurrent = 1;
            e.stepSize = 0.0001;
        }),
        {QStringLiteral("Current step size should greater then10000A")});
    row("stepped current", spoilt<SteppedCurrent>([](auto &e) {
            e.samplingInterval = 0;
            e.startCurrent = 2;
            e.endCurrent = -2;
            e.stepSize = 0.001;
            e.stepDuration = -1;
        }),
        {sampling, current, current, QStringLiteral("Current step size should greater then4000A"), duration});
    row("stepped current, as many as go", spoilt<SteppedCurrent>([](auto &e) {
            e.endCurrent = 2047.0 / 4096.0;
            e.stepSize = 1.0 / 4096.0;
        }),
        {});
    row("cyclic voltammetry", spoilt<CyclicVoltammetryElement>([](auto &e) {
            e.samplingInterval = 0;
            e.startVoltage = 11;
            e.firstVoltageLimit = 21;
            e.firstVoltageLimitVsOCP = true;
            e.secondVoltageLimit = -11;
            e.endVoltage = -21;
            e.endVoltageVsOCP = true;
            e.numberOfCycles = 0;
            e.alphaFactor = 1.01;
        }),
        {sampling, controlled, openCircuit, controlled, openCircuit,
         QStringLiteral("Cycle number should be positive for %1."),
         QStringLiteral("alphaFactor should be in range of 0 to 100 for %1.")});
    row("negative alpha factor", spoilt<CyclicVoltammetryElement>([](auto &e) { e.alphaFactor = -0.01; }),
        {QStringLiteral("alphaFactor should be in range of 0 to 100 for %1.")});
    row("staircase voltammetry", spoilt<StaircasePotentialVoltammetryElement>([](auto &e) {
            e.startVoltage = 11;
            e.firstVoltageLimit = 21;
            e.firstVoltageLimitVsOCP = true;
            e.secondVoltageLimit = -11;
            e.endVoltage = -21;
            e.endVoltageVsOCP = true;
            e.samplingInterval = 0;
            e.approxMaxCurrent = 2;
        }),
        {controlled, openCircuit, controlled, openCircuit, voltageStep, sampling, current});
    row("staircase voltammetry with an automatic range", spoilt<StaircasePotentialVoltammetryElement>([](auto &e) {
            e.stepSize = -0.01;
            e.approxMaxCurrent = 2;
            e.autoRange = true;
        }),
        {});
    row("normal pulses", spoilt<NormalPulseVoltammetryElement>([](auto &e) {
            e.startVoltage = 11;
            e.endVoltage = 21;
            e.endVoltageVsOCP = true;
            e.pulseWidth = 0;
            e.pulsePeriod = 0;
            e.autoRange = false;
        }),
        {controlled, voltageStep, openCircuit, QStringLiteral("Lengths of time must be positive."),
         QStringLiteral("Pulse width must be at least 1 ms."),
         QStringLiteral("Lengths(pulsePeriod) of time must be positive."),
         QStringLiteral("Pulse period must be greater than pulse width."), current});
    row("differential pulses tell the end by the start's flag", spoilt<DiffPulseVoltammetryElement>([](auto &e) {
            e.startVoltage = 21;
            e.startVoltageVsOCP = true;
            e.endVoltage = 11;
            e.pulseWidth = 0.0009;
            e.pulsePeriod = 0.0009;
            e.autoRange = false;
        }),
        {openCircuit, openCircuit, voltageStep, QStringLiteral("For the %1, width of pulse must be at least 1 ms."),
         QStringLiteral("For the %1, pulse period must be greater than pulse width."), current});
    row("square wave", spoilt<SquareWaveVoltammetryElement>([](auto &e) {
            e.startVoltage = 11;
            e.endVoltage = -11;
            e.autoRange = false;
        }),
        {controlled, voltageStep, controlled, QStringLiteral("Frequency must be positive"), current});
    row("square wave too fast", spoilt<SquareWaveVoltammetryElement>([](auto &e) {
            e.vStep = 0.01;
            e.pulseFreq = 3501;
        }),
        {QStringLiteral("Frequency must not exceed 3500 Hz")});
    row("potentiostatic EIS blames the current", spoilt<EISPotentiostaticElement>([](auto &e) {
            e.startFreq = 0;
            e.endFreq = 3e6;
            e.biasVoltage = 11;
            e.stepsPerDecade = 10.5;
            e.minimumCycles = 1001;
        }),
        {frequency, frequency, current, density, cycles, QStringLiteral("AC voltage amplitude must be positive.")});
    row("potentiostatic EIS, its end frequency alone", spoilt<EISPotentiostaticElement>([](auto &e) {
            makeAcceptable(e);
            e.endFreq = 1e-6;
        }),
        {frequency});
    row("galvanostatic EIS, its end frequency alone", spoilt<EISGalvanostaticElement>([](auto &e) {
            makeAcceptable(e);
            e.endFreq = 3e6;
        }),
        {frequency});
    row("Mott-Schottky, its end frequency alone", spoilt<MottSchottkyElement>([](auto &e) {
            makeAcceptable(e);
            e.endFrequency = 1e-6;
        }),
        {frequency});
    row("current sweep, its end alone", spoilt<DCCurrentSweepElement>([](auto &e) { e.endingCurrent = 2; }), {current});
    row("potentiostatic EIS, amplitude", spoilt<EISPotentiostaticElement>([](auto &e) {
            makeAcceptable(e);
            e.minimumCycles = 1;
            e.amplitude = 1e-5;
        }),
        {QStringLiteral("%1 has a voltage amplitude range of 1.5e-05 to 10 V")});
    row("galvanostatic EIS", spoilt<EISGalvanostaticElement>([](auto &e) {
            e.startFreq = 3e6;
            e.endFreq = 0;
            e.biasCurrent = 2;
            e.stepsPerDecade = 101;
            e.minimumCycles = 0;
        }),
        {frequency, frequency, current, density, cycles, QStringLiteral("AC current amplitude must be positive.")});
    row("galvanostatic EIS, amplitude", spoilt<EISGalvanostaticElement>([](auto &e) {
            makeAcceptable(e);
            e.amplitude = 1.5;
        }),
        {QStringLiteral("%1 has a current amplitude range of 2.4e-13A to 1 A")});
    row("impedance on a model without AC", spoilt<EISPotentiostaticElement>([](auto &e) {
            makeAcceptable(e);
            e.minimumCycles = 0;
        }),
        {QStringLiteral("The %1 does not support AC Experiments"), cycles}, HardwareModel_t::Cedar_2_0);
    row("Mott-Schottky", spoilt<MottSchottkyElement>([](auto &e) {
            e.startingPotential = 11;
            e.endingPotential = 21;
            e.endVoltageVsOCP = true;
            e.quietTimeSampInterval = 0;
            e.startFrequency = 0;
            e.endFrequency = 0;
            e.voltageStep = 0;
            e.stepsPerDecade = 0;
            e.minCycles = 0;
            e.amplitude = 0;
        }),
        {controlled, openCircuit, QStringLiteral("StartVoltageVsOCP and EndVoltageVsOCP must have the same value"),
         sampling, frequency, frequency, voltageStep, density, cycles,
         QStringLiteral("AC voltage amplitude must be positive.")});
    row("Mott-Schottky does not ask for AC", spoilt<MottSchottkyElement>([](auto &e) { makeAcceptable(e); }), {},
        HardwareModel_t::Cedar_2_0);
    row("constant power", spoilt<ConstantPowerElement>([](auto &e) {
            e.power = 10.5;
            e.samplingInterval = 0;
            e.minVoltage = -11;
            e.maxVoltage = 11;
            e.minCurrent = -2;
            e.maxCurrent = 2;
        }),
        {QStringLiteral("%1 has a maximum power delivery of 10 mW"), sampling, controlled, current});
    row("a negative power and infinite limits pass", spoilt<ConstantPowerElement>([](auto &e) { e.power = -1000; }),
        {});
    row("the wrong infinity is no missing limit", spoilt<ConstantPowerElement>([](auto &e) {
            e.minVoltage = infinity;
            e.maxCurrent = -infinity;
        }),
        {controlled, current});
    row("a limit vs OCP", spoilt<ConstantPowerElement>([](auto &e) {
            e.maxVoltage = 15;
            e.maximumVoltageVsOCP = true;
        }),
        {});
    row("constant resistance", spoilt<ConstantResistanceElement>([](auto &e) {
            e.resistance = 0;
            e.samplingInterval = 0;
            e.minVoltage = -15;
            e.minCurrent = -2;
        }),
        {QStringLiteral("%1 Resistance must be greater than 0"), sampling, controlled, current});
    row("constant resistance, upper limits", spoilt<ConstantResistanceElement>([](auto &e) {
            e.resistance = 10;
            e.minVoltage = -15;
            e.minimumVoltageVsOCP = true;
            e.maxVoltage = 11;
            e.maxCurrent = 2;
        }),
        {controlled, current});
    row("constant resistance as it comes", spoilt<ConstantResistanceElement>([](auto &) {}), {});
    row("charge and discharge check the model alone",
        spoilt<ChargeDischargeElement>([](auto &e) { e.charge.current = 1e6; }), {});
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
