// SPDX-License-Identifier: MIT
#include "elements/NodeMakers.h"

#include "elements/NodeText.h"
#include "support/TestMain.h"

Q_DECLARE_METATYPE(ExpNode_t)

namespace {

ExpNode_t fixedImpedance(bool rangeOff)
{
    return Vek_Node_EIS_Voltage_FixedSettings(1, true, 2, 3, 4, 1, 0.5f, currentRange_t(4), voltageRange_t(2),
                                              ACgain_t::Gain5, ACgain_t::Gain200, 9, 6, rangeOff);
}

ExpNode_t ranged(int current, int voltage)
{
    ExpNode_t node = Vek_Node_MPPT(1);
    Vek_Node_SetCurrentRange(node, currentRange_t(current));
    Vek_Node_SetVoltageRange(node, voltageRange_t(voltage));
    return node;
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
    void stepsTheReadyMadeListBackToItsHold();
    void setsLimits();
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
    QCOMPARE(QByteArray(reinterpret_cast<const char *>(&node), sizeof node).toHex(), expected.toHex());
}

void TestNodeMakers::putsEachArgumentInItsPlace_data()
{
    QTest::addColumn<ExpNode_t>("node");
    QTest::addColumn<QString>("text");
    const auto row = [](const char *name, const ExpNode_t &node, const char *text) {
        QTest::newRow(name) << node << QString(text);
    };

    row("open circuit", Vek_Node_Open_Circuit(1, -2), "1(1 0 0 2)");
    row("voltage sweep", Vek_Node_Sweep_Voltage(1, 2, 3, true, 4, false, 5), "2(1 2 3 4 5), flags 34");
    row("voltage sweep, end vs OCP", Vek_Node_Sweep_Voltage(1, 2, 3, false, 4, true, 5), "2(1 2 3 4 5), flags 38");
    row("current sweep", Vek_Node_Sweep_Current(1, 2, 3, 4, 5), "3(1 2 3 4 5)");
    row("constant voltage", Vek_Node_Constant_Voltage(1, 2, true, -3), "4(1 2 3), flags 34");
    row("constant current", Vek_Node_Constant_Current(1, 2, -3), "5(1 2 0 3)");
    row("normal pulse V, start vs OCP", Vek_Node_Pulse_Normal_Voltage(1, true, 2, false, 3, 4, 5, 6, 7),
        "6(1 2 0 3 4 5 6 7), flags 34");
    row("normal pulse V, end vs OCP", Vek_Node_Pulse_Normal_Voltage(1, false, 2, true, 3, 4, 5, 6, 7),
        "6(1 2 0 3 4 5 6 7), flags 38");
    row("spans end with their times", Vek_Node_Pulse_Normal_Voltage(0, false, 1, false, 0.01f, 9, 0.5f, 7, 0.25f),
        "6(0 1 0 0.01 0.5 0.5 0.25 0.25)");
    row("normal pulse I", Vek_Node_Pulse_Normal_Current(1, 2, 3, 4, 5, 6, 7), "7(1 2 0 3 4 5 6 7)");
    row("differential pulse V", Vek_Node_Pulse_Diff_Voltage(1, true, 2, false, 3, 4, 5, 6, 7, 8),
        "8(1 2 3 4 5 6 7 8), flags 34");
    row("differential pulse V, end vs OCP", Vek_Node_Pulse_Diff_Voltage(1, false, 2, true, 3, 4, 5, 6, 7, 8),
        "8(1 2 3 4 5 6 7 8), flags 38");
    row("differential pulse I", Vek_Node_Pulse_Diff_Current(1, 2, 3, 4, 5, 6, 7, 8), "9(1 2 3 4 5 6 7 8)");
    row("square wave V", Vek_Node_Pulse_Sqr_Voltage(1, false, 2, true, 3, 4, 5, 6, 7, 8),
        "10(1 2 3 4 5 6 7 8), flags 38");
    row("square wave V, start vs OCP", Vek_Node_Pulse_Sqr_Voltage(1, true, 2, false, 3, 4, 5, 6, 7, 8),
        "10(1 2 3 4 5 6 7 8), flags 34");
    row("square wave I", Vek_Node_Pulse_Sqr_Current(1, 2, 3, 4, 5, 6, 7, 8), "11(1 2 3 4 5 6 7 8)");
    row("resistance", Vek_Node_Constant_Resistance(1, 2), "13(1 2)");
    row("power keeps its sign", Vek_Node_Constant_Power(1, -2), "14(1 -2)");
    row("power point", Vek_Node_MPPT(1), "15(1)");
    row("EIS V", Vek_Node_EIS_Voltage(1, true, 2, 3, 4, 1, 0.5f, 6), "16(1 2 3 4 10 6 0.5), flags 34");
    row("EIS I, upwards", Vek_Node_EIS_Current(1, 2, 10, 1000, 10, 0.5f, 6), "17(1 2 10 1000 1.258925 6 0.5)");
    row("EIS I, downwards", Vek_Node_EIS_Current(1, 2, 1000, 10, 10, 0.5f, 6), "17(1 2 1000 10 0.7943282 6 0.5)");
    row("EIS I, on the spot", Vek_Node_EIS_Current(1, 2, 10, 10, 10, 0.5f, 6), "17(1 2 10 10 0.7943282 6 0.5)");
    row("EIS V, fixed settings", fixedImpedance(false), "23(1 2 3 4 10 6 0.5 #90702), ranges 24, flags 34");
    row("EIS V, fixed settings, range off", fixedImpedance(true), "23(1 2 3 4 10 6 0.5 #1090702), ranges 2f, flags 34");
    row("loop", Vek_Node_Loop(-3, 5), "20(), to -3, x5, 0 s");
    row("branch", Vek_Node_BranchLogic(1, 4), "21(0 0 #4), to 1, x65535");
    row("PITT", Vek_Node_PITT(1, 2, 3, 4, 5, 6), "29(2 1 6 5 4 3), flags 34");
    row("GITT", Vek_Node_GITT(1, 2, 3, 4, 5, 6), "30(2 1 6 5 4 3)");
    row("modify", Vek_Node_Modify(1, 2, 3, -2, ModTarget_t::BiasPotential, ModType_t::Step, -3),
        "31(1 2 3 #15fffe), to -3, 0 s");
    row("ADC calibration", Vek_Node_NonlinearADCcal(1, 2, 3, 0xFFFE), "32(#20001 #fffe0003)");
    row("voltage steps, start vs OCP", Vek_Node_Step_Voltage(1, 2, true, 3, false, 4, 5, false),
        "34(1 2 3 4 5), flags 34");
    row("voltage steps, end vs OCP", Vek_Node_Step_Voltage(1, 2, false, 3, true, 4, 5, false),
        "34(1 2 3 4 5), flags 38");
    row("voltage steps that go on", Vek_Node_Step_Voltage(1, 2, false, 3, false, 4, 5, true), "34(1 2 3 4 5 #1)");
    row("current steps", Vek_Node_Step_Current(1, 2, 3, 4, 5, false), "35(1 2 3 4 5)");
    row("current steps that go on", Vek_Node_Step_Current(1, 2, 3, 4, 5, true), "35(1 2 3 4 5 #1)");
    row("multi-sine V", Vek_Node_MultiSine_Voltage(1, true, 2, 3, 4), "38(1 2 0.5 457.5 5.5 3 4), flags 34");
    row("multi-sine I", Vek_Node_MultiSine_Current(1, 2, 3, 4), "39(1 2 0.5 457.5 5.5 3 4)");
    row("pseudo constant voltage", Vek_Node_Pseudo_Constant_Voltage(1, 2, true, 3, false, -4),
        "40(1 2 4 0 3), flags 34");
    row("positive pseudo constant voltage", Vek_Node_Pseudo_Constant_Voltage(1, 2, false, 3, true, 0),
        "40(1 2 0 0 3 #1)");

    row("fixed ranges", ranged(3, 2), "15(1), ranges 23");
    row("both ranges automatic", ranged(10, 5), "15(1)");
    row("current off", ranged(255, 0), "15(1), ranges f");
    row("smallest current range", ranged(9, 1), "15(1), ranges 19");
}

void TestNodeMakers::putsEachArgumentInItsPlace()
{
    QFETCH(const ExpNode_t, node);
    QTEST(textOf(node), "text");
}

void TestNodeMakers::stepsTheReadyMadeListBackToItsHold()
{
    QStringList texts;
    for (const ExpNode_t &node : AI_Nodes_MottSchottky(0.25f, false, 1, 0.125f, 5, 1, 0.01f, 1000, 10, 1, 2))
        texts += textOf(node);
    const QStringList expected{"4(1 0.25), 5 s", "16(0.25 0.01 1000 10 0.1 2 0.5)",
                               "31(0.25 1 0.125 #1fffe), to 1, 0 s",    // two back: the hold's potential
                               "31(0.25 1 0.125 #15fffe), to -3, 0 s"}; // two back: the sweep's bias
    QCOMPARE(texts, expected);
}

void TestNodeMakers::setsLimits()
{
    ExpNode_t node = Vek_Node_Constant_Voltage(1, 0, false, 0);
    Vek_Node_SetILimits(node, -1, -2);
    QCOMPARE(textOf(node), QString("4(1), flags 70, -1..-2 A"));
    Vek_Node_SetILimits_Abs(node, -1, -2);
    QCOMPARE(textOf(node), QString("4(1), 1..2 A"));
    Vek_Node_SetVLimits(node, -3, false, 4, true);
    QCOMPARE(textOf(node), QString("4(1), flags 32, 1..2 A, -3..4 V"));
    Vek_Node_SetVLimits(node, -3, true, 4, false);
    QCOMPARE(textOf(node), QString("4(1), flags 31, 1..2 A, -3..4 V"));

    node = Vek_Node_MPPT(1);
    Vek_Node_SetChargeLimit(node, -7, false); // one flag at a time
    QCOMPARE(textOf(node), QString("15(1), flags 10, 7 C"));
    Vek_Node_SetChargeLimit(node, 6, true);
    QCOMPARE(textOf(node), QString("15(1), 6 C"));
    Vek_Node_SetTimeLimit(node, -8, false);
    QCOMPARE(textOf(node), QString("15(1), flags 20, 8 s, 6 C"));
    Vek_Node_SetTimeLimit(node, 9, true);
    QCOMPARE(textOf(node), QString("15(1), 9 s, 6 C"));
}

NIMBRELLE_TEST_MAIN(TestNodeMakers)
#include "TestNodeMakers.moc"
