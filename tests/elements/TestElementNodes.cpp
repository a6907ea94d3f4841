// SPDX-License-Identifier: MIT
#include "calibration/Records.h"
#include "elements/Elements.h"
#include "elements/NodeText.h"
#include "support/TestMain.h"

#include <cstring>

namespace {

/// A channel whose range r holds 1.6 A / 10^r, and 10.9, 5.4, 1.0 and 0.5 V.
CalibrationData calibration()
{
    cal_v4 record = roundMainRecord();
    record.maxACSignal = 32000.0f;
    record.weStage2Gain = record.weStage3Gain = record.iStage2Gain = record.iStage3Gain = 1.0f;
    for (int i = 0; i < 3; ++i)
        record.weStage1Gain[i] = record.iStage1Gain[i] = 1.0f;
    record.vCtrlGain[2] = 32000.0f;
    record.vCtrlGain[3] = 64000.0f;
    record.eweGainBase = 1.0f; // reading limits no range
    for (float &gain : record.currentGain)
        gain /= 10.0f;
    return calibrated(HardwareModel_t::Alder_2_5, record);
}

NodeList nodesOf(const AbstractBuilderElement &element, HardwareModel_t model = HardwareModel_t::Alder_2_5)
{
    return element.GetNodesData(calibration(), hardwareOf(model));
}

float parameter(const Node &node, int index)
{
    float value;
    std::memcpy(&value, node.hwNode.parameters + 4 * index, sizeof value);
    return value;
}

/// Q for a quiet time, else "from>to"; loops as "loop jump x count", marks for new steps (s) and cycles (c).
QString outline(const NodeList &list)
{
    QStringList words;
    for (const auto &node : list.getNodeList()) {
        const int from = node->hwNode.nodeType() == NodeType_t::SweepVoltage ? 2 : 1;
        QString word = QStringLiteral("%1>%2").arg(parameter(*node, from)).arg(parameter(*node, from + 1));
        if (node->hwNode.flags2 & NodeFlag2::quietTime)
            word = QStringLiteral("Q");
        else if (node->hwNode.nodeType() == NodeType_t::Loop)
            word = QStringLiteral("loop %1x%2").arg(node->hwNode.jump).arg(node->hwNode.repeats);
        words += word + QLatin1String(node->newSubStep ? "s" : "") + QLatin1String(node->newCycle ? "c" : "");
    }
    return words.join(QStringLiteral(", "));
}

template <class Voltammetry>
Voltammetry along(const QVector<double> &path, unsigned cycles, double quietTime)
{
    return with(Voltammetry(), &Voltammetry::startVoltage, path[0], &Voltammetry::firstVoltageLimit, path[1],
                &Voltammetry::secondVoltageLimit, path[2], &Voltammetry::endVoltage, path[3],
                &Voltammetry::numberOfCycles, cycles, &Voltammetry::quietTime, quietTime);
}

/// Pulses from 0.25 V to 1 V vs OCP after a quiet time.
template <class Pulses>
Pulses train(const Pulses &pulses)
{
    return with(pulses, &Pulses::startVoltage, 0.25, &Pulses::endVoltage, 1, &Pulses::endVoltageVsOCP, true,
                &Pulses::vStep, 0.125, &Pulses::quietTime, 2, &Pulses::autoRange, false, &Pulses::approxMaxCurrent,
                0.01);
}

} // namespace

/// What each element makes of its values.
class TestElementNodes : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void makes_data();
    void makes();
    void cyclicLegs_data();
    void cyclicLegs();
    void kindsOfData();
};

void TestElementNodes::makes_data()
{
    QTest::addColumn<Element>("element");
    QTest::addColumn<HardwareModel_t>("model");
    QTest::addColumn<QStringList>("nodes");
    const auto row = [](const char *name, const AbstractBuilderElement &element, const QStringList &nodes,
                        HardwareModel_t model = HardwareModel_t::Alder_2_5) {
        QTest::newRow(name) << element.clone() << model << nodes;
    };

    row("constant current, whose range also holds the current itself",
        with(Current(), &Current::current, -0.1, &Current::maxDuration, 60, &Current::maxVoltage, 4.2,
             &Current::minVoltage, 3, &Current::maxCapacity, -12, &Current::autoRange, false,
             &Current::autoVoltageRange, false, &Current::approxMaxCurrent, 0.01, &Current::approxMaxVoltage, -5),
        {"1s Constant Current: 5(0.5 -0.1), ranges 11, 3..4.2 V, 60 s, 12 C, every 2, filter -inf"});
    row("constant current with a filter samples fast",
        with(Current(), &Current::samplingInterval, 10, &Current::minSamplingVoltageDifference, 0.005),
        {"1s Constant Current: 5(0.0002), 0 s, filter 0.005"});
    row("constant current samples twice a second",
        with(ConstantCurrentElement(), &ConstantCurrentElement::samplingInterval, 10),
        {"1s Constant Current: 5(0.5), 0 s, every 20"});

    const auto plainHold = with(ConstantPotElement(), &ConstantPotElement::potential, -0.5,
                                &ConstantPotElement::samplingInterval, 3, &ConstantPotElement::maxDuration, 12);
    row("constant potential", plainHold, {"1s Constant Potential: 4(1 -0.5), 12 s, every 3"});
    row("constant potential vs OCP", with(plainHold, &ConstantPotElement::voltageVsOCP, true),
        {"1s Constant Potential: 4(1 -0.5), flags 34, 12 s, every 3"});
    row("constant potential with limits",
        with(Hold(), &Hold::potential, 1.5, &Hold::voltageVsOCP, true, &Hold::samplingInterval, 10, &Hold::maxDuration,
             30, &Hold::maxAbsoluteCurrent, -0.5, &Hold::minAbsoluteCurrent, 0.1, &Hold::maxCapacity, -24,
             &Hold::mindIdt, -2, &Hold::autoRange, false, &Hold::approxMaxCurrent, 0.01, &Hold::voltageRange, 3),
        {"1s Constant Potential: 4(1 1.5 2), ranges 32, flags 34, 0.1..0.5 A, 30 s, 24 C, every 10"});
    const auto pseudo = with(Hold(), &Hold::samplingInterval, 10, &Hold::pseudoControl, true);
    row("pseudo control, which keeps its interval", with(pseudo, &Hold::pseudoValue, -0.25),
        {"1s Constant Potential: 40(10 0 0 0 -0.25), 0 s"});
    row("pseudo control of a charge", with(pseudo, &Hold::pseudoValue, 0.25),
        {"1s Constant Potential: 40(10 0 0 0 0.25 #1), 0 s"});
    row("no pseudo control on a cycler", pseudo, {"1s Constant Potential: 4(1), 0 s, every 10"}, HardwareModel_t::Gale);
    row("open circuit",
        with(Rest(), &Rest::maxDuration, 5, &Rest::autoVoltageRange, false, &Rest::maxVoltage, -0.4, &Rest::minVoltage,
             -1, &Rest::mindVdt, -0.25),
        {"1s Open Circuit Potential: 1(1 0 0 0.25), ranges 3f, -1..-0.4 V, 5 s"});

    row("potential sweep after a quiet time",
        with(Sweep(), &Sweep::quietTime, 7, &Sweep::quietTimeSamplingInterval, 3, &Sweep::startingPot, 0.25,
             &Sweep::startVoltageVsOCP, true, &Sweep::endingPot, 1, &Sweep::scanRate, 0.125, &Sweep::alphaFactor, 0.5,
             &Sweep::autoRange, false, &Sweep::approxMaxCurrent, 0.01, &Sweep::maxAbsoluteCurrent, 0.5),
        {"1s Quiet Time: 4(1 0.25), ranges f2, flags 34, flags2 7, 7 s, every 3",
         "2s Potential Linear Sweep: 2(1 0.5 0.25 1 0.125), ranges f2, flags 34, 0..0.5 A"});
    const auto currentSweep = with(CurrentSweep(), &CurrentSweep::startingCurrent, -0.5, &CurrentSweep::endingCurrent,
                                   0.5, &CurrentSweep::scanRate, 0.25, &CurrentSweep::maxVoltage, 2);
    row("current sweep", currentSweep, {"1s Current Linear Sweep: 3(1 1 -0.5 0.5 0.25), -inf..2 V"});
    row("current sweep after a quiet time", with(currentSweep, &CurrentSweep::quietTime, 1),
        {"1s Quiet Time: 5(1 -0.5), flags2 7, 1 s", "2s Current Linear Sweep: 3(1 1 -0.5 0.5 0.25), -inf..2 V"});
    row("stepped voltage, at its 0 A in the smallest range",
        with(SteppedVoltage(), &SteppedVoltage::endVoltage, 1, &SteppedVoltage::endVoltageVsOCP, true,
             &SteppedVoltage::stepSize, 0.25, &SteppedVoltage::stepDuration, 4, &SteppedVoltage::samplingInterval, 0.5,
             &SteppedVoltage::autoRange, false),
        {"1s Stepped Voltage: 34(0.5 0 1 0.25 4), ranges f7, flags 38"});
    row("stepped current",
        with(SteppedCurrent(), &SteppedCurrent::endCurrent, 1, &SteppedCurrent::stepSize, 0.25,
             &SteppedCurrent::samplingInterval, 3, &SteppedCurrent::approxMaxVoltage, 3,
             &SteppedCurrent::approxMinVoltage, -2),
        {"1s Stepped Current: 35(1 0 1 0.25 1), -2..3 V, every 3"});

    row("cyclic voltammetry, whose range holds all potentials", // 5 V needs range 1, the others range 3 or 2
        with(along<Cyclic>({0.25, 5, -0.75, 0.25}, 1, 1), &Cyclic::dEdt, 0.1, &Cyclic::autoRange, false,
             &Cyclic::approxMaxCurrent, 0.001),
        {"1s Quiet Time: 4(1 0.25), ranges 13, flags2 7, 1 s", "2sc Cyclic Voltammetry: 2(1 1 0.25 5 0.1), ranges 13",
         "2 Cyclic Voltammetry: 2(1 1 5 -0.75 0.1), ranges 13",
         "2 Cyclic Voltammetry: 2(1 1 -0.75 0.25 0.1), ranges 13"});
    row("cyclic voltammetry, its start and vertex apart by their flags",
        with(along<Cyclic>({0.5, 0.75, -0.75, -0.75}, 1, 0), &Cyclic::firstVoltageLimit, 0.5,
             &Cyclic::firstVoltageLimitVsOCP, true),
        {"1sc Cyclic Voltammetry: 2(1 1 0.5 0.5), ranges 2f, flags 38",
         "1 Cyclic Voltammetry: 2(1 1 0.5 -0.75), ranges 2f, flags 34"});
    row("staircase voltammetry, each leg but the first continued",
        with(along<Staircase>({0, 1, -1, 0}, 3, 0), &Staircase::stepSize, 0.25, &Staircase::stepDuration, 3,
             &Staircase::samplingInterval, 0.5),
        {"1s Staircase Voltammetry: 34(0.5 0 1 0.25 3), ranges f7",
         "1c Staircase Voltammetry: 34(0.5 1 -1 0.25 3 #1), ranges f7",
         "1 Staircase Voltammetry: 34(0.5 -1 1 0.25 3 #1), ranges f7", "1 : 20(), to -2, x2, 0 s",
         "1c Staircase Voltammetry: 34(0.5 1 -1 0.25 3 #1), ranges f7",
         "1 Staircase Voltammetry: 34(0.5 -1 0 0.25 3 #1), ranges f7"});

    const QString quietBeforePulses = QStringLiteral("1s Quiet Time: 4(1 0.25), ranges f2, flags2 7, 2 s");
    row("normal pulses", train(with(NormalPulses(), &NormalPulses::pulseWidth, 0.25)),
        {quietBeforePulses,
         "2s NP Potential Voltammetry: 6(0.25 1 0 0.125 0.5625 0.75 0.1875 0.25), ranges f2, flags 38"});
    row("differential pulses",
        train(with(DiffPulses(), &DiffPulses::pulseWidth, 0.25, &DiffPulses::pulseHeight, 0.0625)),
        {quietBeforePulses,
         "2s DP Potential Voltammetry: 8(0.25 1 0.0625 0.125 0.5625 0.75 0.1875 0.25), ranges f2, flags 38"});
    row("square wave", train(with(SquareWave(), &SquareWave::pulseAmp, 0.0625, &SquareWave::pulseFreq, 10)),
        {quietBeforePulses,
         "2s SW Potential Voltammetry: 10(0.25 1 0.0625 0.125 0.0375 0.05 0.0375 0.05), ranges f2, flags 38"});

    row("potentiostatic EIS",
        with(VoltageEis(), &VoltageEis::startFreq, 1000, &VoltageEis::endFreq, 10, &VoltageEis::stepsPerDecade, 1,
             &VoltageEis::biasVoltage, 0.25, &VoltageEis::biasVoltageVsOCP, true, &VoltageEis::amplitude, 0.125,
             &VoltageEis::timeSeriesData, true, &VoltageEis::quietTime, 1),
        {"1s Quiet Time: 4(1 0.25), flags 34, flags2 7, 1 s",
         "2st Potentiostatic EIS: 16(0.25 0.125 1000 10 0.1 2 0.5), flags 34"});
    row("galvanostatic EIS, 20 mA at its largest: range 1 holds it, range 2 ends at 16 mA",
        with(CurrentEis(), &CurrentEis::startFreq, 10, &CurrentEis::endFreq, 1000, &CurrentEis::stepsPerDecade, 1,
             &CurrentEis::biasCurrent, -0.012, &CurrentEis::amplitude, 0.008, &CurrentEis::quietTime, 1),
        {"1s Quiet Time: 5(1 -0.012), ranges f1, flags2 7, 1 s",
         "2s Galvanostatic EIS: 17(-0.012 0.008 10 1000 10 2 0.5)"});
    row("Mott-Schottky",
        with(MottSchottky(), &MottSchottky::quietTime, 1, &MottSchottky::stepQuietTime, 2,
             &MottSchottky::startingPotential, 1, &MottSchottky::endingPotential, 0, &MottSchottky::voltageStep, -0.25),
        {"1s Quiet Time: 4(1 1), flags2 7, 1 s", "2s Mott Schottky: 16(1 10 10 1 0.7943282 2 0.5)",
         "3s Quiet Time: 4(1 0.75), flags2 7, 2 s", "4s Mott Schottky: 16(0.75 10 10 1 0.7943282 2 0.5)",
         "4 Quiet Time: 31(0.75 0 -0.25 #1fffe), to 1, 0 s",     // aims at the hold
         "4 Quiet Time: 31(0.75 0 -0.25 #15fffe), to -3, 0 s"}); // aims at the sweep
    row("Mott-Schottky without quiet times, cut at its end",
        with(MottSchottky(), &MottSchottky::endingPotential, 0.05, &MottSchottky::voltageStep, 0.1),
        {"1s Mott Schottky: 16(0 10 10 1 0.7943282 2 0.5)", "2s Mott Schottky: 16(0.05 10 10 1 0.7943282 2 0.5)",
         "2 Quiet Time: 31(0.05 0.05 0.1 #15ffff), to -1, 0 s"});
    row("Mott-Schottky on the spot",
        with(MottSchottky(), &MottSchottky::endingPotential, 0, &MottSchottky::quietTime, 1),
        {"1s Quiet Time: 4(1), flags2 7, 1 s", "2s Mott Schottky: 16(0 10 10 1 0.7943282 2 0.5)"});

    const QString limits = QStringLiteral(", flags 70, -inf..inf A");
    const auto told = [](double power, bool isCharge) {
        return with(Power(), &Power::power, power, &Power::isChargeSet, true, &Power::isCharge, isCharge);
    };
    row("positive power",
        with(Power(), &Power::power, 5, &Power::maxVoltage, 4, &Power::minVoltage, 3, &Power::maximumVoltageVsOCP, true,
             &Power::minCurrent, -2, &Power::maxCurrent, 1, &Power::maxDuration, 60, &Power::maxCapacity, 30),
        {"1s Constant Power Charge: 14(1 5), flags 72, -2..1 A, 3..4 V, 60 s, 30 C"});
    row("no power", Power(), {"1s Constant Power Charge: 14(1)" + limits});
    row("negative power", with(Power(), &Power::power, -5), {"1s Constant Power Discharge: 14(1 -5)" + limits});
    row("discharge is told", told(5, false), {"1s Constant Power Discharge: 14(1 -5)" + limits});
    row("charge is told", told(-5, true), {"1s Constant Power Charge: 14(1 5)" + limits});
    row("constant resistance",
        with(Resistance(), &Resistance::resistance, 50, &Resistance::minVoltage, 3, &Resistance::minimumVoltageVsOCP,
             true),
        {"1s Constant Resistance Discharge: 13(1 50), flags 71, -inf..inf A, 3..inf V"});

    const Half charge = with(Half(), &Half::current, -0.5, &Half::voltage, 4.25, &Half::endCurrent, 0.125,
                             &Half::durationTotal, 100); // which ends the current, not the potential
    const Half discharge = with(Half(), &Half::current, 0.25, &Half::voltage, 3, &Half::endCurrent, 0.0625,
                                &Half::durationCC, 40, &Half::durationCV, 20);
    const Battery battery = with(Battery(), &Battery::charge, charge, &Battery::discharge, discharge);
    const QString currentCharge =
        QStringLiteral("1s Constant Current Charge: 5(0.5 0.5), -300..4.25 V, 100 s, every 2, filter -inf");
    const QString currentDischarge =
        QStringLiteral("2s Constant Current Discharge: 5(0.5 -0.25), 3..300 V, 40 s, every 2, filter -inf");
    row("three cycles of charge and discharge", with(battery, &Battery::cycles, 3, &Battery::restDuration, 5),
        {"1c : 21(0 0 #4), to 1, x65535, -inf..4.25 V", currentCharge,
         "1 Constant Potential Charge: 40(1 4.25 0 0 0.5 #1), flags 40, 0.125..inf A, 100 s",
         "1r Rest Period: 1(0.5), 5 s, every 2", currentDischarge,
         "2 Constant Potential Discharge: 40(1 3 0 0 -0.25), flags 50, -inf..-0.0625 A, 20 s",
         "2r Rest Period: 1(0.5), 5 s, every 2", "2 : 20(), to -7, x3, 0 s"});
    const Battery discharged = with(battery, &Battery::chargeFirst, false);
    row("discharge first, on a cycler, with loops of no pass for rests", discharged,
        {"1c : 21(0 0 #4), to 1, x65535, 3..inf V", currentDischarge,
         "2 Constant Potential Discharge: 4(0.5 3), flags 50, -inf..-0.0625 A, 20 s, every 2",
         "2r Rest Period: 20(), x0, 0 s", currentCharge,
         "1 Constant Potential Charge: 4(0.5 4.25), flags 40, 0.125..inf A, 100 s, every 2",
         "1r Rest Period: 20(), x0, 0 s"},
        HardwareModel_t::Gale);
    row("discharge first, without constant potentials", with(discharged, &Battery::skipConstantVoltage, true),
        {"1c : 21(0 0 #3), to 1, x65535, 3..inf V", currentDischarge, "2r Rest Period: 20(), x0, 0 s", currentCharge,
         "1r Rest Period: 20(), x0, 0 s"});
}

void TestElementNodes::makes()
{
    QFETCH(const Element, element);
    QFETCH(const HardwareModel_t, model);
    QTEST(textOf(nodesOf(*element, model)), "nodes");
}

void TestElementNodes::cyclicLegs_data()
{
    QTest::addColumn<QVector<double>>("path");
    QTest::addColumn<unsigned>("cycles");
    QTest::addColumn<double>("quietTime");
    QTest::addColumn<QString>("legs");
    const auto row = [](const char *name, const QVector<double> &path, unsigned cycles, double quietTime,
                        const char *legs) { QTest::newRow(name) << path << cycles << quietTime << QString(legs); };
    row("three cycles", {0, 1, -1, 0.5}, 3, 2, "Qs, 0>1s, 1>-1c, -1>1, loop -2x2, 1>-1c, -1>0.5");
    row("two cycles", {0, 1, -1, 0.5}, 2, 0, "0>1s, 1>-1c, -1>1, loop -2x1, 1>-1c, -1>0.5");
    row("one cycle", {0, 1, -1, 0.5}, 1, 0, "0>1sc, 1>-1, -1>0.5");
    row("one cycle from a vertex", {1, 1, -1, 0.5}, 1, 0, "1>-1c, -1>0.5");
    row("one cycle to a vertex", {1, 1, -1, -1}, 1, 0, "1>-1c");
    row("two cycles between vertices", {1, 1, -1, -1}, 2, 0, "1>-1c, -1>1, loop -2x1, 1>-1c");
    row("no cycle is one cycle", {1, 1, -1, -1}, 0, 0, "1>-1c");
}

void TestElementNodes::cyclicLegs()
{
    QFETCH(const QVector<double>, path);
    QFETCH(const unsigned, cycles);
    QFETCH(const double, quietTime);
    QTEST(outline(nodesOf(along<Cyclic>(path, cycles, quietTime))), "legs");
    QTEST(outline(nodesOf(along<Staircase>(path, cycles, quietTime))), "legs");
}

void TestElementNodes::kindsOfData()
{
    QCOMPARE(Sweep().GetTypes(), QList<quint8>({measuresDc}));
    QCOMPARE(VoltageEis().GetTypes(), QList<quint8>({measuresAc}));
    QCOMPARE(MottSchottky().GetTypes(), QList<quint8>({measuresDc, measuresAc}));
}

NIMBRELLE_TEST_MAIN(TestElementNodes)
#include "TestElementNodes.moc"
