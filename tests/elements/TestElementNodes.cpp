#include "calibration/Records.h"
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
#include "elements/NodeList.h"
#include "elements/NormalPulseVoltammetryElement.h"
#include "elements/OpenCircuitElement.h"
#include "elements/SquareWaveVoltammetryElement.h"
#include "elements/StaircasePotentialVoltammetryElement.h"
#include "elements/SteppedCurrent.h"
#include "elements/SteppedVoltage.h"
#include "hardware_models/HardwareVersion.h"
#include "support/TestMain.h"

#include <cstring>

using Floats = QVector<float>;

namespace {

constexpr float infinity = std::numeric_limits<float>::infinity();

/// A channel whose range r holds 1.6 A / 10^r, and 10.9, 5.4, 1.0 and 0.5 V.
CalibrationData calibration()
{
    cal_v4 record = {};
    record.calMagic = CalMagic::v4;
    record.maxACSignal = 32000.0f;
    record.weStage2Gain = record.weStage3Gain = record.iStage2Gain = record.iStage3Gain = 1.0f;
    for (int i = 0; i < 3; ++i)
        record.weStage1Gain[i] = record.iStage1Gain[i] = 1.0f;
    const float codesPerVolt[] = {3000.0f, 6000.0f, 32000.0f, 64000.0f};
    std::copy(std::begin(codesPerVolt), std::end(codesPerVolt), record.vCtrlGain);
    record.eweGainBase = 1.0f; // reading limits no range
    float decade = 1.0f;
    for (int i = 0; i < 10; ++i, decade *= 10.0f) {
        record.iCtrlGain[i] = 20000.0f * decade;
        record.currentGain[i] = 0.00005f / decade;
    }
    return calibrated(HardwareModel_t::Alder_2_5, record);
}

NodeList nodesOf(const AbstractBuilderElement &element, HardwareModel_t model = HardwareModel_t::Alder_2_5)
{
    HardwareVersion hardware;
    hardware.hwModel = model;
    return element.GetNodesData(calibration(), hardware);
}

Floats parametersOf(const Node &node)
{
    Floats values(8);
    std::memcpy(values.data(), node.hwNode.parameters, sizeof node.hwNode.parameters);
    return values;
}

qint16 wordAt(const Node &node, int offset)
{
    qint16 value;
    std::memcpy(&value, reinterpret_cast<const char *>(&node.hwNode) + offset, sizeof value);
    return value;
}

/// Q for a quiet time, else "type from>to"; loops as "loop jump x count", marks for new steps (s) and cycles (c).
QString outline(const NodeList &list)
{
    QStringList words;
    for (const auto &node : list.getNodeList()) {
        const Floats values = parametersOf(*node);
        const NodeType_t type = node->hwNode.nodeType();
        QString word;
        if (node->hwNode.flags2 & NodeFlag2::quietTime)
            word = QStringLiteral("Q");
        else if (type == NodeType_t::Loop)
            word = QStringLiteral("loop %1x%2").arg(node->hwNode.jump).arg(node->hwNode.repeats);
        else
            word = QStringLiteral("%1>%2")
                       .arg(values[type == NodeType_t::SweepVoltage ? 2 : 1])
                       .arg(values[type == NodeType_t::SweepVoltage ? 3 : 2]);
        words += word + (node->newSubStep ? QStringLiteral("s") : QString()) +
                 (node->newCycle ? QStringLiteral("c") : QString());
    }
    return words.join(QStringLiteral(", "));
}

CyclicVoltammetryElement cyclic(double start, double first, double second, double end, quint32 cycles)
{
    CyclicVoltammetryElement element;
    element.startVoltage = start;
    element.firstVoltageLimit = first;
    element.secondVoltageLimit = second;
    element.endVoltage = end;
    element.numberOfCycles = cycles;
    element.dEdt = 0.1;
    return element;
}

} // namespace

/// What each element makes of its values.
class TestElementNodes : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void constantCurrentSetsItsLimits();
    void constantCurrentWithAFilterSamplesFast();
    void constantCurrentSamplesTwiceASecond();
    void constantPotential();
    void plainConstantPotential();
    void constantPotentialByPseudoControl();
    void openCircuit();
    void sweepsAfterAQuietTime();
    void sweepsAtOnceWithoutAQuietTime();
    void stepsPotentialAndCurrent();
    void cyclicLegs_data();
    void cyclicLegs();
    void cyclicRangeHoldsAllPotentials();
    void staircaseContinuesAfterItsFirstLeg();
    void pulseTimes_data();
    void pulseTimes();
    void impedance();
    void mottSchottkySteps();
    void mottSchottkyWithoutQuietTimes();
    void constantPower_data();
    void constantPower();
    void constantResistance();
    void chargeThenDischarge();
    void dischargeFirstOnGale();
};

void TestElementNodes::constantCurrentSetsItsLimits()
{
    ConstantCurrentAdvElement element;
    element.current = -0.1;
    element.maxDuration = 60;
    element.maxVoltage = 4.2;
    element.minVoltage = 3;
    element.maxCapacity = -12;
    element.autoRange = element.autoVoltageRange = false;
    element.approxMaxCurrent = 0.01; // the current itself is larger
    element.approxMaxVoltage = -5;
    const NodeList list = nodesOf(element);
    QCOMPARE(list.size(), 1);
    const ExpNode_t &node = list[0]->hwNode;
    QCOMPARE(parametersOf(*list[0]), (Floats{0.5f, -0.1f, 0, 0, 0, 0, 0, 0}));
    QCOMPARE(list[0]->downsampleFactor, 2u);
    QCOMPARE(int(node.ranges), 0x11);
    QCOMPARE(int(node.flags), 0x30);
    QCOMPARE(node.timeLimit, 60.0f);
    QCOMPARE(node.vLimitMin, 3.0f);
    QCOMPARE(node.vLimitMax, 4.2f);
    QCOMPARE(node.chargeLimit, 12.0f);
    QCOMPARE(list[0]->stepName, QStringLiteral("Constant Current"));
    QVERIFY(list[0]->newSubStep);
    QCOMPARE(list[0]->voltageDifferent, -double(infinity));
}

void TestElementNodes::constantCurrentWithAFilterSamplesFast()
{
    ConstantCurrentAdvElement element;
    element.samplingInterval = 10;
    element.minSamplingVoltageDifference = 0.005;
    const NodeList list = nodesOf(element);
    QCOMPARE(parametersOf(*list[0])[0], 0.0002f);
    QCOMPARE(list[0]->voltageDifferent, 0.005);
    QCOMPARE(int(list[0]->hwNode.ranges), 0xFF);
}

void TestElementNodes::constantCurrentSamplesTwiceASecond()
{
    ConstantCurrentElement element;
    element.samplingInterval = 10;
    const NodeList list = nodesOf(element);
    QCOMPARE(parametersOf(*list[0])[0], 0.5f);
    QCOMPARE(list[0]->downsampleFactor, 20u);
}

void TestElementNodes::constantPotential()
{
    ConstantPotAdvElement element;
    element.potential = 1.5;
    element.voltageVsOCP = true;
    element.samplingInterval = 10;
    element.maxDuration = 30;
    element.maxAbsoluteCurrent = -0.5;
    element.minAbsoluteCurrent = 0.1;
    element.maxCapacity = -24;
    element.mindIdt = -2;
    element.autoRange = false;
    element.approxMaxCurrent = 0.01;
    element.voltageRange = 3;
    const NodeList list = nodesOf(element);
    const ExpNode_t &node = list[0]->hwNode;
    QCOMPARE(parametersOf(*list[0]), (Floats{1, 1.5f, 2, 0, 0, 0, 0, 0}));
    QCOMPARE(list[0]->downsampleFactor, 10u);
    QCOMPARE(int(node.ranges), 0x32);
    QCOMPARE(int(node.flags), 0x34);
    QCOMPARE(node.iLimitMin, 0.1f);
    QCOMPARE(node.iLimitMax, 0.5f);
    QCOMPARE(node.timeLimit, 30.0f);
    QCOMPARE(node.chargeLimit, 24.0f);
}

void TestElementNodes::plainConstantPotential()
{
    ConstantPotElement element;
    element.potential = -0.5;
    element.voltageVsOCP = true;
    element.samplingInterval = 3;
    element.maxDuration = 12;
    const NodeList list = nodesOf(element);
    QCOMPARE(list.size(), 1);
    QCOMPARE(parametersOf(*list[0]), (Floats{1, -0.5f, 0, 0, 0, 0, 0, 0}));
    QCOMPARE(list[0]->downsampleFactor, 3u);
    const ExpNode_t &node = list[0]->hwNode;
    QCOMPARE(int(node.type), 4);
    QCOMPARE(int(node.flags), 0x34);
    QCOMPARE(int(node.ranges), 0xFF);
    QCOMPARE(node.timeLimit, 12.0f);
    QCOMPARE(list[0]->stepName, QStringLiteral("Constant Potential"));
    QVERIFY(list[0]->newSubStep);
    element.voltageVsOCP = false;
    QCOMPARE(int(nodesOf(element)[0]->hwNode.flags), 0x30);
}

void TestElementNodes::constantPotentialByPseudoControl()
{
    ConstantPotAdvElement element;
    element.samplingInterval = 10;
    element.pseudoControl = true;
    element.pseudoValue = -0.25;
    const NodeList list = nodesOf(element);
    QCOMPARE(int(list[0]->hwNode.type), 40);
    // The interval of this type stays: the longest period leaves it alone.
    QCOMPARE(parametersOf(*list[0]), (Floats{10, 0, 0, 0, -0.25f, 0, 0, 0}));
    QCOMPARE(list[0]->downsampleFactor, 1u);
    QCOMPARE(int(nodesOf(element, HardwareModel_t::Gale)[0]->hwNode.type), 4);
}

void TestElementNodes::openCircuit()
{
    OpenCircuitElement element;
    element.maxDuration = 5;
    element.autoVoltageRange = false;
    element.maxVoltage = -0.4;
    element.minVoltage = -1;
    element.mindVdt = -0.25;
    const NodeList list = nodesOf(element);
    QCOMPARE(parametersOf(*list[0]), (Floats{1, 0, 0, 0.25f, 0, 0, 0, 0}));
    QCOMPARE(int(list[0]->hwNode.ranges), 0x3F);
    QCOMPARE(list[0]->hwNode.vLimitMax, -0.4f);
    QCOMPARE(list[0]->hwNode.vLimitMin, -1.0f);
}

void TestElementNodes::sweepsAfterAQuietTime()
{
    DCPotentialSweepElement element;
    element.quietTime = 7;
    element.quietTimeSamplingInterval = 3;
    element.startingPot = 0.25;
    element.startVoltageVsOCP = true;
    element.endingPot = 1;
    element.scanRate = 0.125;
    element.alphaFactor = 0.5;
    element.autoRange = false;
    element.approxMaxCurrent = 0.01;
    element.maxAbsoluteCurrent = 0.5;
    const NodeList list = nodesOf(element);
    QCOMPARE(list.size(), 2);

    const ExpNode_t &quiet = list[0]->hwNode;
    QCOMPARE(int(quiet.type), 4);
    QCOMPARE(parametersOf(*list[0]), (Floats{1, 0.25f, 0, 0, 0, 0, 0, 0}));
    QCOMPARE(list[0]->downsampleFactor, 3u);
    QCOMPARE(quiet.timeLimit, 7.0f);
    QCOMPARE(int(quiet.flags), 0x34);
    QCOMPARE(int(quiet.flags2), 0x07);
    QCOMPARE(int(quiet.ranges), 0xF2);
    QCOMPARE(list[0]->stepName, QStringLiteral("Quiet Time"));

    const ExpNode_t &sweep = list[1]->hwNode;
    QCOMPARE(parametersOf(*list[1]), (Floats{1, 0.5f, 0.25f, 1, 0.125f, 0, 0, 0}));
    QCOMPARE(int(sweep.flags), 0x34);
    QCOMPARE(int(sweep.flags2), 0x03);
    QCOMPARE(int(sweep.ranges), 0xF2);
    QCOMPARE(sweep.iLimitMax, 0.5f);
    QCOMPARE(sweep.timeLimit, infinity);
    QCOMPARE(list[1]->stepNumber, 2);
}

void TestElementNodes::sweepsAtOnceWithoutAQuietTime()
{
    DCCurrentSweepElement element;
    element.startingCurrent = -0.5;
    element.endingCurrent = 0.5;
    element.scanRate = 0.25;
    element.maxVoltage = 2;
    const NodeList list = nodesOf(element);
    QCOMPARE(list.size(), 1);
    QCOMPARE(parametersOf(*list[0]), (Floats{1, 1, -0.5f, 0.5f, 0.25f, 0, 0, 0}));
    QCOMPARE(list[0]->hwNode.vLimitMax, 2.0f);

    element.quietTime = 1;
    const NodeList withQuietTime = nodesOf(element);
    QCOMPARE(int(withQuietTime[0]->hwNode.type), 5);
    QCOMPARE(parametersOf(*withQuietTime[0])[1], -0.5f);
}

void TestElementNodes::stepsPotentialAndCurrent()
{
    SteppedVoltage voltage;
    voltage.endVoltage = 1;
    voltage.endVoltageVsOCP = true;
    voltage.stepSize = 0.25;
    voltage.stepDuration = 4;
    voltage.samplingInterval = 0.5;
    voltage.autoRange = false; // with its 0 A, the smallest range
    const NodeList steps = nodesOf(voltage);
    QCOMPARE(parametersOf(*steps[0]), (Floats{0.5f, 0, 1, 0.25f, 4, 0, 0, 0}));
    QCOMPARE(int(steps[0]->hwNode.flags), 0x38);
    QCOMPARE(int(steps[0]->hwNode.ranges), 0xF7);

    SteppedCurrent current;
    current.endCurrent = 1;
    current.stepSize = 0.25;
    current.approxMaxVoltage = 3;
    current.approxMinVoltage = -2;
    const NodeList currentSteps = nodesOf(current);
    QCOMPARE(int(currentSteps[0]->hwNode.type), 35);
    QCOMPARE(currentSteps[0]->hwNode.vLimitMax, 3.0f);
    QCOMPARE(currentSteps[0]->hwNode.vLimitMin, -2.0f);
    QCOMPARE(int(currentSteps[0]->hwNode.flags), 0x30);
}

void TestElementNodes::cyclicLegs_data()
{
    QTest::addColumn<QVector<double>>("path");
    QTest::addColumn<unsigned>("cycles");
    QTest::addColumn<double>("quietTime");
    QTest::addColumn<QString>("legs");
    using Path = QVector<double>;
    QTest::newRow("three cycles") << Path{0, 1, -1, 0.5} << 3u << 2.0
                                  << QStringLiteral("Qs, 0>1s, 1>-1c, -1>1, loop -2x2, 1>-1c, -1>0.5");
    QTest::newRow("two cycles") << Path{0, 1, -1, 0.5} << 2u << 0.0
                                << QStringLiteral("0>1s, 1>-1c, -1>1, loop -2x1, 1>-1c, -1>0.5");
    QTest::newRow("one cycle") << Path{0, 1, -1, 0.5} << 1u << 0.0 << QStringLiteral("0>1sc, 1>-1, -1>0.5");
    QTest::newRow("one cycle from a vertex") << Path{1, 1, -1, 0.5} << 1u << 0.0 << QStringLiteral("1>-1c, -1>0.5");
    QTest::newRow("one cycle to a vertex") << Path{1, 1, -1, -1} << 1u << 0.0 << QStringLiteral("1>-1c");
    QTest::newRow("two cycles between vertices")
        << Path{1, 1, -1, -1} << 2u << 0.0 << QStringLiteral("1>-1c, -1>1, loop -2x1, 1>-1c");
    QTest::newRow("no cycle is one cycle") << Path{1, 1, -1, -1} << 0u << 0.0 << QStringLiteral("1>-1c");
}

void TestElementNodes::cyclicLegs()
{
    QFETCH(const QVector<double>, path);
    QFETCH(const unsigned, cycles);
    QFETCH(const double, quietTime);
    CyclicVoltammetryElement sweeps = cyclic(path[0], path[1], path[2], path[3], cycles);
    sweeps.quietTime = quietTime;
    QTEST(outline(nodesOf(sweeps)), "legs");

    StaircasePotentialVoltammetryElement steps;
    steps.startVoltage = path[0];
    steps.firstVoltageLimit = path[1];
    steps.secondVoltageLimit = path[2];
    steps.endVoltage = path[3];
    steps.numberOfCycles = cycles;
    steps.quietTime = quietTime;
    QTEST(outline(nodesOf(steps)), "legs");
}

void TestElementNodes::cyclicRangeHoldsAllPotentials()
{
    // 5 V needs range 1, the others range 3 or 2.
    CyclicVoltammetryElement element = cyclic(0.25, 5, -0.75, 0.25, 1);
    element.quietTime = 1;
    element.autoRange = false;
    element.approxMaxCurrent = 0.001;
    for (const auto &node : nodesOf(element).getNodeList())
        QCOMPARE(int(node->hwNode.ranges), 0x13);

    // Only the flags differ: the first leg is needed.
    CyclicVoltammetryElement flagged = cyclic(1, 1, -1, -1, 1);
    flagged.firstVoltageLimitVsOCP = true;
    QCOMPARE(outline(nodesOf(flagged)), QStringLiteral("1>1sc, 1>-1"));
}

void TestElementNodes::staircaseContinuesAfterItsFirstLeg()
{
    StaircasePotentialVoltammetryElement element;
    element.firstVoltageLimit = 1;
    element.secondVoltageLimit = -1;
    element.stepSize = 0.25;
    element.stepDuration = 3;
    element.samplingInterval = 0.5;
    element.numberOfCycles = 2;
    const NodeList list = nodesOf(element);
    QCOMPARE(parametersOf(*list[0]).mid(0, 5), (Floats{0.5f, 0, 1, 0.25f, 3}));
    QList<int> continued;
    for (const auto &node : list.getNodeList())
        if (node->hwNode.nodeType() == NodeType_t::StepVoltage)
            continued += node->hwNode.parameters[20];
    QCOMPARE(continued, QList<int>({0, 1, 1, 1, 1}));
    QCOMPARE(int(list[0]->hwNode.ranges), 0xF7); // not automatic, with its 0 A the smallest range
    QCOMPARE(list[1]->stepName, QStringLiteral("Staircase Voltammetry"));
}

void TestElementNodes::pulseTimes_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<Floats>("parameters");
    QTest::newRow("normal") << 6 << Floats{0.25f, 1, 0, 0.125f, 0.375f, 0.5f, 0.375f, 0.5f};
    QTest::newRow("differential") << 8 << Floats{0.25f, 1, 0.0625f, 0.125f, 0.375f, 0.5f, 0.375f, 0.5f};
    QTest::newRow("square wave") << 10 << Floats{0.25f, 1, 0.0625f, 0.125f, 0.0375f, 0.05f, 0.0375f, 0.05f};
}

template <class Pulse>
static NodeList pulseNodesOf(Pulse element)
{
    element.startVoltage = 0.25;
    element.endVoltage = 1;
    element.endVoltageVsOCP = true;
    element.vStep = 0.125;
    element.quietTime = 2;
    element.autoRange = false;
    element.approxMaxCurrent = 0.01;
    return nodesOf(element);
}

void TestElementNodes::pulseTimes()
{
    QFETCH(const int, type);
    DiffPulseVoltammetryElement differential;
    differential.pulseHeight = 0.0625;
    SquareWaveVoltammetryElement square;
    square.pulseAmp = 0.0625;
    square.pulseFreq = 10;
    const NodeList list = type == 6   ? pulseNodesOf(NormalPulseVoltammetryElement())
                          : type == 8 ? pulseNodesOf(differential)
                                      : pulseNodesOf(square);
    QCOMPARE(list.size(), 2);
    QCOMPARE(list[0]->stepName, QStringLiteral("Quiet Time"));
    QCOMPARE(parametersOf(*list[0])[1], 0.25f);
    QCOMPARE(int(list[1]->hwNode.type), type);
    QCOMPARE(int(list[1]->hwNode.flags), 0x38);
    QCOMPARE(int(list[1]->hwNode.ranges), 0xF2);
    QCOMPARE(list[1]->hwNode.timeLimit, infinity);
    QTEST(parametersOf(*list[1]), "parameters");
}

void TestElementNodes::impedance()
{
    EISPotentiostaticElement potentiostatic;
    potentiostatic.startFreq = 1000;
    potentiostatic.endFreq = 10;
    potentiostatic.stepsPerDecade = 1;
    potentiostatic.biasVoltage = 0.25;
    potentiostatic.biasVoltageVsOCP = true;
    potentiostatic.amplitude = 0.125;
    potentiostatic.timeSeriesData = true;
    potentiostatic.quietTime = 1;
    const NodeList list = nodesOf(potentiostatic);
    QCOMPARE(list.size(), 2);
    QCOMPARE(parametersOf(*list[1]), (Floats{0.25f, 0.125f, 1000, 10, 0.1f, 2, 0.5f, 0}));
    QCOMPARE(int(list[1]->hwNode.flags), 0x34);
    QVERIFY(list[1]->timeSeriesData && !list[0]->timeSeriesData);
    QCOMPARE(potentiostatic.GetTypes(), QList<quint8>({0}));

    EISGalvanostaticElement galvanostatic;
    galvanostatic.stepsPerDecade = 1;
    galvanostatic.biasCurrent = -0.012; // 20 mA at its largest: range 1 holds it, range 2 ends at 16 mA
    galvanostatic.amplitude = 0.008;
    galvanostatic.quietTime = 1;
    const NodeList quietList = nodesOf(galvanostatic);
    QCOMPARE(int(quietList[0]->hwNode.type), 5);
    QCOMPARE(int(quietList[0]->hwNode.ranges & 0x0F), 1);
    QCOMPARE(int(quietList[1]->hwNode.ranges), 0xFF);
}

void TestElementNodes::mottSchottkySteps()
{
    MottSchottkyElement element;
    element.quietTime = 1;
    element.stepQuietTime = 2;
    element.startingPotential = 1;
    element.endingPotential = 0;
    element.voltageStep = -0.25;
    const NodeList list = nodesOf(element);
    QList<int> types;
    for (const auto &node : list.getNodeList())
        types += node->hwNode.type;
    QCOMPARE(types, QList<int>({4, 16, 4, 16, 31, 31}));
    QCOMPARE(parametersOf(*list[1])[0], 1.0f);
    QCOMPARE(parametersOf(*list[2])[1], 0.75f);
    QCOMPARE(parametersOf(*list[3])[0], 0.75f);
    for (const int position : {4, 5}) {
        QCOMPARE(parametersOf(*list[position]).mid(0, 3), (Floats{0.75f, 0, -0.25f}));
        QVERIFY(!list[position]->newSubStep);
    }
    QCOMPARE(wordAt(*list[4], 20), qint16(-2)); // at the hold
    QCOMPARE(wordAt(*list[4], 22), qint16(1));
    QCOMPARE(int(list[4]->hwNode.jump), 1);
    QCOMPARE(wordAt(*list[5], 20), qint16(-2)); // at the sweep
    QCOMPARE(wordAt(*list[5], 22), qint16(21));
    QCOMPARE(int(list[5]->hwNode.jump), -3);
    QCOMPARE(element.GetTypes(), QList<quint8>({1, 0}));
}

void TestElementNodes::mottSchottkyWithoutQuietTimes()
{
    MottSchottkyElement element;
    element.endingPotential = 0.05;
    element.voltageStep = 0.1;
    const NodeList list = nodesOf(element);
    QCOMPARE(list.size(), 3);
    QCOMPARE(parametersOf(*list[1])[0], 0.05f); // cut at the end
    QCOMPARE(wordAt(*list[2], 20), qint16(-1));
    QCOMPARE(int(list[2]->hwNode.jump), -1);

    element.endingPotential = element.startingPotential;
    element.quietTime = 1;
    QCOMPARE(nodesOf(element).size(), 2);
}

void TestElementNodes::constantPower_data()
{
    QTest::addColumn<double>("power");
    QTest::addColumn<int>("direction"); // 1 charge, -1 discharge, 0 not set
    QTest::addColumn<float>("signedPower");
    QTest::addColumn<QString>("name");
    const QString charge = QStringLiteral("Constant Power Charge");
    const QString discharge = QStringLiteral("Constant Power Discharge");
    QTest::newRow("positive") << 5.0 << 0 << 5.0f << charge;
    QTest::newRow("zero") << 0.0 << 0 << 0.0f << charge;
    QTest::newRow("negative") << -5.0 << 0 << -5.0f << discharge;
    QTest::newRow("discharge is told") << 5.0 << -1 << -5.0f << discharge;
    QTest::newRow("charge is told") << -5.0 << 1 << 5.0f << charge;
}

void TestElementNodes::constantPower()
{
    QFETCH(const double, power);
    QFETCH(const int, direction);
    ConstantPowerElement element;
    element.power = power;
    element.isChargeSet = direction != 0;
    element.isCharge = direction == 1;
    element.maxVoltage = 4;
    element.minVoltage = 3;
    element.maximumVoltageVsOCP = true;
    element.minCurrent = -2;
    element.maxCurrent = 1;
    element.maxDuration = 60;
    element.maxCapacity = 30;
    const NodeList list = nodesOf(element);
    const ExpNode_t &node = list[0]->hwNode;
    QTEST(parametersOf(*list[0])[1], "signedPower");
    QTEST(list[0]->stepName, "name");
    QCOMPARE(int(node.flags), 0x72);
    QCOMPARE(node.iLimitMin, -2.0f);
    QCOMPARE(node.iLimitMax, 1.0f);
    QCOMPARE(node.vLimitMin, 3.0f);
    QCOMPARE(node.vLimitMax, 4.0f);
    QCOMPARE(node.timeLimit, 60.0f);
    QCOMPARE(node.chargeLimit, 30.0f);
}

void TestElementNodes::constantResistance()
{
    ConstantResistanceElement element;
    element.resistance = 50;
    element.minVoltage = 3;
    element.minimumVoltageVsOCP = true;
    const NodeList list = nodesOf(element);
    QCOMPARE(int(list[0]->hwNode.type), 13);
    QCOMPARE(parametersOf(*list[0])[1], 50.0f);
    QCOMPARE(int(list[0]->hwNode.flags), 0x71);
    QCOMPARE(list[0]->hwNode.iLimitMin, -infinity);
}

static ChargeDischargeElement batteryCycle()
{
    ChargeDischargeElement element;
    element.cycles = 3;
    element.charge.current = -0.5;
    element.charge.voltage = 4.25;
    element.charge.endCurrent = 0.125;
    element.charge.durationTotal = 100;
    element.discharge.current = 0.25;
    element.discharge.voltage = 3;
    element.discharge.endCurrent = 0.0625;
    element.discharge.durationCC = 40;
    element.discharge.durationCV = 20;
    element.restDuration = 5;
    return element;
}

void TestElementNodes::chargeThenDischarge()
{
    const NodeList list = nodesOf(batteryCycle());
    QCOMPARE(list.size(), 8);
    const ExpNode_t &branch = list[0]->hwNode;
    QCOMPARE(int(branch.type), 21);
    QCOMPARE(int(branch.jump), 1);
    QCOMPARE(wordAt(*list[0], 16), qint16(4));
    QCOMPARE(branch.vLimitMin, -infinity);
    QCOMPARE(branch.vLimitMax, 4.25f);
    QVERIFY(list[0]->newCycle);

    const ExpNode_t &charge = list[1]->hwNode;
    QCOMPARE(parametersOf(*list[1]).mid(0, 2), (Floats{0.5f, 0.5f}));
    QCOMPARE(charge.vLimitMin, -300.0f);
    QCOMPARE(charge.vLimitMax, 4.25f);
    QCOMPARE(charge.timeLimit, 100.0f);
    QCOMPARE(list[1]->stepName, QStringLiteral("Constant Current Charge"));

    const ExpNode_t &hold = list[2]->hwNode;
    QCOMPARE(int(hold.type), 40);
    QCOMPARE(parametersOf(*list[2]).mid(0, 5), (Floats{1, 4.25f, 0, 0, 0.5f}));
    QCOMPARE(int(hold.parameters[20]), 1);
    QCOMPARE(int(hold.flags), 0x40); // neither time nor charge ends it
    QCOMPARE(hold.iLimitMin, 0.125f);

    QCOMPARE(int(list[3]->hwNode.type), 1);
    QVERIFY(list[3]->restPeriod);
    QCOMPARE(list[3]->hwNode.timeLimit, 5.0f);

    const ExpNode_t &discharge = list[4]->hwNode;
    QCOMPARE(parametersOf(*list[4])[1], -0.25f);
    QCOMPARE(discharge.vLimitMin, 3.0f);
    QCOMPARE(discharge.vLimitMax, 300.0f);
    QCOMPARE(discharge.timeLimit, 40.0f);
    QCOMPARE(list[4]->stepNumber, 2);

    const ExpNode_t &dischargeHold = list[5]->hwNode;
    QCOMPARE(parametersOf(*list[5])[4], -0.25f);
    QCOMPARE(int(dischargeHold.parameters[20]), 0);
    QCOMPARE(int(dischargeHold.flags), 0x50);
    QCOMPARE(dischargeHold.timeLimit, 20.0f);
    QCOMPARE(dischargeHold.iLimitMax, -0.0625f);

    QCOMPARE(int(list[7]->hwNode.jump), -7);
    QCOMPARE(int(list[7]->hwNode.repeats), 3);
}

void TestElementNodes::dischargeFirstOnGale()
{
    ChargeDischargeElement element = batteryCycle();
    element.chargeFirst = false;
    element.cycles = 1;
    element.restDuration = 0;
    const NodeList list = nodesOf(element, HardwareModel_t::Gale);
    QCOMPARE(list.size(), 7);
    QCOMPARE(list[0]->hwNode.vLimitMin, 3.0f);
    QCOMPARE(list[0]->hwNode.vLimitMax, infinity);
    QCOMPARE(list[1]->stepName, QStringLiteral("Constant Current Discharge"));
    QCOMPARE(int(list[2]->hwNode.type), 4);
    QCOMPARE(int(list[3]->hwNode.type), 20); // no rest: a loop of no pass
    QCOMPARE(int(list[3]->hwNode.jump), 0);
    QCOMPARE(int(list[3]->hwNode.repeats), 0);

    element.skipConstantVoltage = true;
    const NodeList currentOnly = nodesOf(element);
    QCOMPARE(currentOnly.size(), 5);
    QCOMPARE(wordAt(*currentOnly[0], 16), qint16(3));
    QCOMPARE(currentOnly[3]->stepName, QStringLiteral("Constant Current Charge"));
}

NIMBRELLE_TEST_MAIN(TestElementNodes)
#include "TestElementNodes.moc"
