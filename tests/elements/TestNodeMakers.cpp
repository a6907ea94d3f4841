#include "elements/NodeMakers.h"

#include "support/TestMain.h"

#include <QVector>

#include <cstring>
#include <limits>

using Floats = QVector<float>;
Q_DECLARE_METATYPE(ExpNode_t)

namespace {

constexpr float infinity = std::numeric_limits<float>::infinity();

QByteArray bytesOf(const ExpNode_t &node)
{
    return QByteArray(reinterpret_cast<const char *>(&node), sizeof node);
}

/// The eight parameter words as floats.
Floats parametersOf(const ExpNode_t &node)
{
    Floats values(8);
    std::memcpy(values.data(), node.parameters, sizeof node.parameters);
    return values;
}

template <typename Value>
Value valueAt(const ExpNode_t &node, int offset)
{
    Value value;
    std::memcpy(&value, reinterpret_cast<const char *>(&node) + offset, sizeof value);
    return value;
}

} // namespace

/// The bytes of the records that the instrument executes; a misplaced value would run another experiment.
class TestNodeMakers : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void writesTheWholeRecord();
    void putsEachArgumentInItsPlace_data();
    void putsEachArgumentInItsPlace();
    void cutsPulseSpansToTheirTime();
    void stepsFrequenciesTowardsTheEnd();
    void packsSmallFields();
    void keepsSettingsOfFixedImpedance();
    void stepsTheReadyMadeListBackToItsHold();
    void setsLimits();
    void packsRanges_data();
    void packsRanges();
};

void TestNodeMakers::writesTheWholeRecord()
{
    ExpNode_t node = Vek_Node_Constant_Current(0.5f, -2.0f, -0.25f);
    Vek_Node_SetTimeLimit(node, 3600.0f, true);
    const QByteArray expected = QByteArray::fromHex("05ff000001003003" // type, ranges, jump, repeats, flags
                                                    "0000003f000000c0" // 0.5, -2
                                                    "000000000000803e" // 0, 0.25
                                                    "0000000000000000"
                                                    "0000000000000000"
                                                    "000000000000807f"   // current limits 0, infinity
                                                    "000080ff0000807f"   // voltage limits -infinity, infinity
                                                    "000061450000807f"); // 3600 s, infinity
    QCOMPARE(bytesOf(node).toHex(), expected.toHex());
}

void TestNodeMakers::putsEachArgumentInItsPlace_data()
{
    QTest::addColumn<ExpNode_t>("node");
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("flags"); // beyond the active time and charge limits
    QTest::addColumn<Floats>("parameters");

    const auto row = [](const char *name, const ExpNode_t &node, int type, int flags, Floats parameters) {
        parameters.resize(8);
        QTest::newRow(name) << node << type << flags << parameters;
    };
    row("open circuit", Vek_Node_Open_Circuit(1, -2), 1, 0, {1, 0, 0, 2});
    row("voltage sweep", Vek_Node_Sweep_Voltage(1, 2, 3, true, 4, false, 5), 2, 4, {1, 2, 3, 4, 5});
    row("voltage sweep, end vs OCP", Vek_Node_Sweep_Voltage(1, 2, 3, false, 4, true, 5), 2, 8, {1, 2, 3, 4, 5});
    row("current sweep", Vek_Node_Sweep_Current(1, 2, 3, 4, 5), 3, 0, {1, 2, 3, 4, 5});
    row("constant voltage", Vek_Node_Constant_Voltage(1, 2, true, -3), 4, 4, {1, 2, 3});
    row("constant current", Vek_Node_Constant_Current(1, 2, -3), 5, 0, {1, 2, 0, 3});
    row("normal pulse V, start vs OCP", Vek_Node_Pulse_Normal_Voltage(1, true, 2, false, 3, 4, 5, 6, 7), 6, 4,
        {1, 2, 0, 3, 4, 5, 6, 7});
    row("normal pulse V, end vs OCP", Vek_Node_Pulse_Normal_Voltage(1, false, 2, true, 3, 4, 5, 6, 7), 6, 8,
        {1, 2, 0, 3, 4, 5, 6, 7});
    row("normal pulse I", Vek_Node_Pulse_Normal_Current(1, 2, 3, 4, 5, 6, 7), 7, 0, {1, 2, 0, 3, 4, 5, 6, 7});
    row("differential pulse V", Vek_Node_Pulse_Diff_Voltage(1, true, 2, false, 3, 4, 5, 6, 7, 8), 8, 4,
        {1, 2, 3, 4, 5, 6, 7, 8});
    row("differential pulse V, end vs OCP", Vek_Node_Pulse_Diff_Voltage(1, false, 2, true, 3, 4, 5, 6, 7, 8), 8, 8,
        {1, 2, 3, 4, 5, 6, 7, 8});
    row("differential pulse I", Vek_Node_Pulse_Diff_Current(1, 2, 3, 4, 5, 6, 7, 8), 9, 0, {1, 2, 3, 4, 5, 6, 7, 8});
    row("square wave V", Vek_Node_Pulse_Sqr_Voltage(1, false, 2, true, 3, 4, 5, 6, 7, 8), 10, 8,
        {1, 2, 3, 4, 5, 6, 7, 8});
    row("square wave V, start vs OCP", Vek_Node_Pulse_Sqr_Voltage(1, true, 2, false, 3, 4, 5, 6, 7, 8), 10, 4,
        {1, 2, 3, 4, 5, 6, 7, 8});
    row("square wave I", Vek_Node_Pulse_Sqr_Current(1, 2, 3, 4, 5, 6, 7, 8), 11, 0, {1, 2, 3, 4, 5, 6, 7, 8});
    row("resistance", Vek_Node_Constant_Resistance(1, 2), 13, 0, {1, 2});
    row("power keeps its sign", Vek_Node_Constant_Power(1, -2), 14, 0, {1, -2});
    row("power point", Vek_Node_MPPT(1), 15, 0, {1});
    row("EIS V", Vek_Node_EIS_Voltage(1, true, 2, 3, 4, 1, 0.5f, 6), 16, 4, {1, 2, 3, 4, 10, 6, 0.5f});
    row("EIS I", Vek_Node_EIS_Current(1, 2, 3, 4, 1, 0.5f, 6), 17, 0, {1, 2, 3, 4, 10, 6, 0.5f});
    row("PITT", Vek_Node_PITT(1, 2, 3, 4, 5, 6), 29, 4, {2, 1, 6, 5, 4, 3});
    row("GITT", Vek_Node_GITT(1, 2, 3, 4, 5, 6), 30, 0, {2, 1, 6, 5, 4, 3});
    row("voltage steps, start vs OCP", Vek_Node_Step_Voltage(1, 2, true, 3, false, 4, 5, false), 34, 4,
        {1, 2, 3, 4, 5});
    row("voltage steps, end vs OCP", Vek_Node_Step_Voltage(1, 2, false, 3, true, 4, 5, false), 34, 8, {1, 2, 3, 4, 5});
    row("current steps", Vek_Node_Step_Current(1, 2, 3, 4, 5, false), 35, 0, {1, 2, 3, 4, 5});
    row("multi-sine V", Vek_Node_MultiSine_Voltage(1, true, 2, 3, 4), 38, 4, {1, 2, 0.5f, 457.5f, 5.5f, 3, 4});
    row("multi-sine I", Vek_Node_MultiSine_Current(1, 2, 3, 4), 39, 0, {1, 2, 0.5f, 457.5f, 5.5f, 3, 4});
    row("pseudo constant voltage", Vek_Node_Pseudo_Constant_Voltage(1, 2, true, 3, false, -4), 40, 4, {1, 2, 4, 0, 3});
}

void TestNodeMakers::putsEachArgumentInItsPlace()
{
    QFETCH(const ExpNode_t, node);
    QTEST(int(node.type), "type");
    QTEST(node.flags & ~(NodeFlag::timeLimit | NodeFlag::chargeLimit), "flags");
    QTEST(parametersOf(node), "parameters");
    QCOMPARE(int(node.flags2), 3);
    QCOMPARE(node.timeLimit, infinity);
}

void TestNodeMakers::cutsPulseSpansToTheirTime()
{
    const Floats parameters = parametersOf(Vek_Node_Pulse_Normal_Voltage(0, false, 1, false, 0.01f, 9, 0.5f, 7, 0.25f));
    QCOMPARE(parameters.mid(4), (Floats{0.5f, 0.5f, 0.25f, 0.25f}));
}

void TestNodeMakers::stepsFrequenciesTowardsTheEnd()
{
    const auto ratio = [](float start, float end) {
        return valueAt<float>(Vek_Node_EIS_Current(0, 1, start, end, 10, 0.5f, 2), 24);
    };
    QCOMPARE(ratio(1000, 10), 0.79432823f);
    QCOMPARE(ratio(10, 1000), 1.2589254f);
    QCOMPARE(ratio(10, 10), 0.79432823f);
}

void TestNodeMakers::packsSmallFields()
{
    const ExpNode_t loop = Vek_Node_Loop(-3, 5);
    QCOMPARE(bytesOf(loop).left(8).toHex(), QByteArray("14fffdff05003003"));
    QCOMPARE(loop.timeLimit, 0.0f);

    const ExpNode_t branch = Vek_Node_BranchLogic(1, 4);
    QCOMPARE(bytesOf(branch).left(18).toHex(), QByteArray("15ff0100ffff3003"
                                                          "0000000000000000"
                                                          "0400"));

    const ExpNode_t modify = Vek_Node_Modify(1, 2, 3, -2, ModTarget_t::BiasPotential, ModType_t::Step, -3);
    QCOMPARE(bytesOf(modify).left(24).toHex(), QByteArray("1ffffdff01003003"
                                                          "0000803f00000040"
                                                          "00004040"
                                                          "feff1500"));
    QCOMPARE(modify.timeLimit, 0.0f);

    QCOMPARE(bytesOf(Vek_Node_NonlinearADCcal(1, 2, 3, 0xFFFE)).mid(8, 8).toHex(), QByteArray("010002000300feff"));
    QCOMPARE(valueAt<quint8>(Vek_Node_Step_Voltage(1, 2, false, 3, false, 4, 5, true), 28), quint8(1));
    QCOMPARE(valueAt<quint8>(Vek_Node_Step_Current(1, 2, 3, 4, 5, true), 28), quint8(1));
    QCOMPARE(valueAt<quint8>(Vek_Node_Pseudo_Constant_Voltage(1, 2, false, 3, true, 0), 28), quint8(1));
}

void TestNodeMakers::keepsSettingsOfFixedImpedance()
{
    const auto make = [](bool rangeOff) {
        return Vek_Node_EIS_Voltage_FixedSettings(1, true, 2, 3, 4, 1, 0.5f, currentRange_t(4), voltageRange_t(2),
                                                  ACgain_t::Gain5, ACgain_t::Gain200, 9, 6, rangeOff);
    };
    QCOMPARE(bytesOf(make(false)).left(2).toHex(), QByteArray("1724"));
    QCOMPARE(bytesOf(make(false)).mid(36, 4).toHex(), QByteArray("02070900"));
    QCOMPARE(bytesOf(make(true)).left(2).toHex(), QByteArray("172f"));
    QCOMPARE(bytesOf(make(true)).mid(36, 4).toHex(), QByteArray("02070901"));
    QCOMPARE(parametersOf(make(true)).mid(0, 7), (Floats{1, 2, 3, 4, 10, 6, 0.5f}));
}

void TestNodeMakers::stepsTheReadyMadeListBackToItsHold()
{
    const auto nodes = AI_Nodes_MottSchottky(0.1f, false, 1, 0.1f, 5, 1, 0.01f, 1000, 10, 10, 2);
    QCOMPARE(nodes.size(), 4);
    QCOMPARE(nodes[0].timeLimit, 5.0f);
    for (const int position : {2, 3}) {
        const ExpNode_t &aim = nodes[position + valueAt<qint16>(nodes[position], 20)];
        const bool aimsAtHold = valueAt<quint8>(nodes[position], 22) == quint8(ModTarget_t::FirstValue);
        QVERIFY(aim.nodeType() == (aimsAtHold ? NodeType_t::ConstantVoltage : NodeType_t::EisVoltage));
    }
    QCOMPARE(3 + nodes[3].jump, 0);
}

void TestNodeMakers::setsLimits()
{
    ExpNode_t node = Vek_Node_Constant_Voltage(1, 0, false, 0);
    Vek_Node_SetILimits(node, -1, -2);
    QCOMPARE(int(node.flags), 0x70);
    QCOMPARE(node.iLimitMin, -1.0f);
    QCOMPARE(node.iLimitMax, -2.0f);
    Vek_Node_SetILimits_Abs(node, -1, -2);
    QCOMPARE(int(node.flags), 0x30);
    QCOMPARE(node.iLimitMin, 1.0f);
    QCOMPARE(node.iLimitMax, 2.0f);
    Vek_Node_SetChargeLimit(node, 7, false); // one flag at a time
    QCOMPARE(int(node.flags), 0x10);
    Vek_Node_SetChargeLimit(node, 7, true);
    QCOMPARE(int(node.flags), 0x30);
    Vek_Node_SetTimeLimit(node, 8, false);
    QCOMPARE(int(node.flags), 0x20);
    Vek_Node_SetTimeLimit(node, 8, true);
    Vek_Node_SetVLimits(node, -3, false, 4, true);
    QCOMPARE(int(node.flags), 0x32);
    Vek_Node_SetVLimits(node, -3, true, 4, false);
    QCOMPARE(int(node.flags), 0x31);
    QCOMPARE(node.vLimitMin, -3.0f);
    QCOMPARE(node.vLimitMax, 4.0f);
    Vek_Node_SetTimeLimit(node, -5, false);
    QCOMPARE(int(node.flags), 0x21);
    QCOMPARE(node.timeLimit, 5.0f);
    Vek_Node_SetChargeLimit(node, -6, false);
    QCOMPARE(int(node.flags), 0x01);
    QCOMPARE(node.chargeLimit, 6.0f);
}

void TestNodeMakers::packsRanges_data()
{
    QTest::addColumn<int>("current");
    QTest::addColumn<int>("voltage");
    QTest::addColumn<int>("ranges");
    QTest::newRow("fixed") << 3 << 2 << 0x23;
    QTest::newRow("both automatic") << 10 << 5 << 0xFF;
    QTest::newRow("current off") << 255 << 0 << 0x0F;
    QTest::newRow("smallest current range") << 9 << 1 << 0x19;
}

void TestNodeMakers::packsRanges()
{
    QFETCH(const int, current);
    QFETCH(const int, voltage);
    ExpNode_t node = Vek_Node_MPPT(1);
    Vek_Node_SetCurrentRange(node, currentRange_t(current));
    Vek_Node_SetVoltageRange(node, voltageRange_t(voltage));
    QTEST(int(node.ranges), "ranges");
}

NIMBRELLE_TEST_MAIN(TestNodeMakers)
#include "TestNodeMakers.moc"
