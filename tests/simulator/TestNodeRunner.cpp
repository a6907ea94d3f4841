// SPDX-License-Identifier: MIT
#include "RecordingRun.h"

#include "simulator/cells/BatteryCell.h"
#include "simulator/cells/RcCell.h"
#include "simulator/cells/ResistorCell.h"

#include "support/TestMain.h"

#include <cmath>

namespace {

constexpr float unlimited = std::numeric_limits<float>::infinity();

std::unique_ptr<Cell> resistor(double ohms = 1000.0)
{
    return std::make_unique<ResistorCell>(ohms);
}

/// 10 ohms and 1 mF in series.
std::unique_ptr<Cell> capacitor()
{
    return std::make_unique<RcCell>(10.0, RcElement{std::numeric_limits<double>::infinity(), 1e-3});
}

ExpNode_t constantCurrent(float amperes, float seconds, float interval = 0.1f)
{
    return timed(Vek_Node_Constant_Current(interval, amperes, 0.0f), seconds);
}

} // namespace

class TestNodeRunner : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void samplesAtMultiplesAndAtTheEnd_data();
    void samplesAtMultiplesAndAtTheEnd();
    void followsRepeatsAndNestedLoops();
    void endsANodeWhereTheVoltageLimitLies();
    void endsANodeWhereTheCurrentLimitLies();
    void endsANodeAtItsCharge();
    void endsANodeThatHasSettled();
    void countsChargeOnAcrossANodeWithoutChargeLimit();
    void stopsAtASafetyLimit_data();
    void stopsAtASafetyLimit();
    void branchesByTheVoltage_data();
    void branchesByTheVoltage();
    void stepsAModifiedValueToItsEnd();
    void sweepsFromStartToEnd();
    void averagesASweepOverItsShareOfTheInterval();
    void climbsAStaircase_data();
    void climbsAStaircase();
    void samplesEachLevelOfAStaircaseAlike_data();
    void samplesEachLevelOfAStaircaseAlike();
    void standsAtTheEndsOfWhatCanBeSet();
    void pulses_data();
    void pulses();
    void countsVoltagesFromTheOpenCircuit();
    void holdsPower();
    void holdsALoad();
    void findsTheMaximumPower();
    void capsTheCurrentOnTheWayToTheVoltage();
    void standsStillInAPause();
    void skipsAllPassesOfANode();
    void stopsWithALastSample();
    void stopsWithoutOneThatWouldBearTheSameTime();
    void refusesALoopOutOfTheList();
    void refusesANodeWithoutAnInterval();
    void chargeIsTheIntegralOfTheCurrent();
};

void TestNodeRunner::samplesAtMultiplesAndAtTheEnd_data()
{
    QTest::addColumn<float>("interval");
    QTest::addColumn<float>("duration");
    QTest::addColumn<int>("count");
    QTest::newRow("whole number of intervals") << 0.1f << 10.0f << 100;
    QTest::newRow("interval a little short in single precision") << 0.7f << 7.0f << 10;
    QTest::newRow("interval a little long") << 0.3f << 3.0f << 10;
    QTest::newRow("rest at the end") << 0.1f << 1.05f << 11;
    QTest::newRow("shorter than one interval") << 1.0f << 0.25f << 1;
    QTest::newRow("no time at all") << 1.0f << 0.0f << 1;
}

void TestNodeRunner::samplesAtMultiplesAndAtTheEnd()
{
    QFETCH(float, interval);
    QFETCH(float, duration);
    RecordingRun run(resistor(), {constantCurrent(1e-3f, duration, interval), endNode()});
    run.run();
    QTEST(run.samples.size(), "count");
    for (int k = 0; k + 1 < run.samples.size(); ++k)
        QVERIFY(std::abs(run.sampleTimes().at(k) - (k + 1) * double(interval)) < 1e-8);
    QVERIFY(std::abs(run.sampleTimes().last() - double(duration)) < 1e-8);
    QCOMPARE(run.stopType, STOP_COMPLETED);
}

void TestNodeRunner::followsRepeatsAndNestedLoops()
{
    ExpNode_t twice = constantCurrent(1e-3f, 1.0f, 1.0f);
    Vek_Node_SetRepeats(twice, 2);
    RecordingRun run(resistor(), {twice, constantCurrent(2e-3f, 1.0f, 1.0f), Vek_Node_Loop(-1, 2), Vek_Node_Loop(-3, 2),
                                  Vek_Node_Loop(0, 0), endNode()});
    run.run();
    QCOMPARE(run.begun, (QList<int>{0, 0, 1, 2, 1, 2, 3, 0, 0, 1, 2, 1, 2, 3, 4, 5}));
    QCOMPARE(run.done, (QList<int>{0, 0, 1, 1, 0, 0, 1, 1}));
    QCOMPARE(run.endTick, quint64(8e8));
    QCOMPARE(run.ends, 1);
}

void TestNodeRunner::endsANodeWhereTheVoltageLimitLies()
{
    // V = 10 ohms x 1 mA + t x 1 V/s, so 0.51 V stands after half a second
    ExpNode_t node = constantCurrent(1e-3f, unlimited, 0.2f);
    Vek_Node_SetVLimits(node, -unlimited, false, 0.51f, false);
    RecordingRun run(capacitor(), {node, endNode()});
    run.run();
    QCOMPARE(run.samples.size(), 3);
    QVERIFY(std::abs(run.sampleTimes().last() - 0.5) < 1e-7);
    QVERIFY(std::abs(run.samples.last().reading.voltage - 0.51) < 1e-7);
}

void TestNodeRunner::endsANodeWhereTheCurrentLimitLies()
{
    // I = 100 mA exp(-t / 10 ms) falls to 1 mA after 10 ms x ln 100
    ExpNode_t node = Vek_Node_Constant_Voltage(1e-3f, 1.0f, false, 0.0f);
    Vek_Node_SetILimits_Abs(node, 1e-3f, unlimited);
    RecordingRun run(capacitor(), {node, endNode()});
    run.run();
    QVERIFY(std::abs(run.sampleTimes().last() - 0.01 * std::log(100.0)) < 1e-7);
    QCOMPARE(run.stopType, STOP_COMPLETED);
}

void TestNodeRunner::endsANodeAtItsCharge()
{
    ExpNode_t node = constantCurrent(-2e-3f, unlimited, 1.0f);
    Vek_Node_SetChargeLimit(node, 5e-3f, true);
    RecordingRun run(resistor(), {node, node, endNode()});
    run.run();
    QVERIFY(std::abs(run.sampleTimes().last() - 5.0) < 1e-5);
    QVERIFY(std::abs(run.samples.last().charge + 5e-3) < 1e-9);
    QCOMPARE(run.samples.size(), 6);
}

void TestNodeRunner::endsANodeThatHasSettled()
{
    // V rises by 1 mA / 1 mF exp(-t) volts a second on 1 kohm: below 0.1 V/s in the fourth second,
    // when it gains exp(-3) - exp(-4) = 31 mV; in the third it gains 86 mV, in the second 233 mV
    auto cell = std::make_unique<RcCell>(10.0, RcElement{1000.0, 1e-3});
    RecordingRun run(std::move(cell), {Vek_Node_Constant_Current(1.0f, 1e-3f, 0.05f), endNode()});
    run.run();
    QCOMPARE(run.sampleTimes(), (QList<double>{1.0, 2.0, 3.0, 4.0}));
}

void TestNodeRunner::countsChargeOnAcrossANodeWithoutChargeLimit()
{
    ExpNode_t goesOn = constantCurrent(1e-3f, 1.0f, 1.0f);
    Vek_Node_SetChargeLimit(goesOn, 0.0f, false);
    const ExpNode_t restarts = constantCurrent(1e-3f, 1.0f, 1.0f);
    RecordingRun run(resistor(), {restarts, goesOn, goesOn, restarts, endNode()});
    run.run();
    QList<double> millicoulombs;
    for (const RunSample &sample : run.samples)
        millicoulombs += std::round(sample.charge * 1e6) / 1e3;
    QCOMPARE(millicoulombs, (QList<double>{1.0, 2.0, 3.0, 1.0}));
}

void TestNodeRunner::stopsAtASafetyLimit_data()
{
    QTest::addColumn<float>("current");
    QTest::addColumn<int>("limit"); // which of the four
    QTest::addColumn<float>("value");
    QTest::addColumn<int>("stopType");
    QTest::newRow("current minimum") << -2e-3f << 0 << -1e-3f << int(STOP_CURRENT_MIN);
    QTest::newRow("current maximum") << 2e-3f << 1 << 1e-3f << int(STOP_CURRENT_MAX);
    QTest::newRow("voltage minimum") << -2e-3f << 2 << -1.0f << int(STOP_VOLTAGE_MIN);
    QTest::newRow("voltage maximum") << 2e-3f << 3 << 1.0f << int(STOP_VOLTAGE_MAX);
    QTest::newRow("instrument's current") << 2.0f << 3 << unlimited << int(STOP_CURRENT_INSTRUMENT);
    QTest::newRow("instrument's voltage") << 0.5f << 3 << unlimited << int(STOP_VOLTAGE_INSTRUMENT);
}

void TestNodeRunner::stopsAtASafetyLimit()
{
    QFETCH(float, current);
    QFETCH(int, limit);
    QFETCH(float, value);
    RecordingRun run(resistor(), {constantCurrent(current, 5.0f), endNode()});
    SafetyLimits limits;
    (&limits.currentMin)[limit] = value;
    run.runner.setSafetyLimits(limits);
    run.runner.setInstrumentLimits(1.0, 20.0);
    run.run();
    QTEST(int(run.stopType), "stopType");
    QCOMPARE(run.samples.size(), 1);
    QCOMPARE(run.done, QList<int>{0});
}

void TestNodeRunner::branchesByTheVoltage_data()
{
    QTest::addColumn<float>("highest");
    QTest::addColumn<QList<int>>("begun");
    QTest::newRow("inside") << 4.0f << QList<int>{0, 1, 2, 3};
    QTest::newRow("outside") << 3.0f << QList<int>{0, 2, 3};
}

void TestNodeRunner::branchesByTheVoltage()
{
    QFETCH(float, highest);
    ExpNode_t branch = Vek_Node_BranchLogic(1, 2);
    Vek_Node_SetVLimits(branch, -unlimited, false, highest, false);
    const ExpNode_t rest = timed(Vek_Node_Open_Circuit(1.0f, 0.0f), 1.0f);
    RecordingRun run(std::make_unique<BatteryCell>(BatteryCell::Parameters()), {branch, rest, rest, endNode()});
    run.run();
    QTEST(run.begun, "begun");
}

void TestNodeRunner::stepsAModifiedValueToItsEnd()
{
    // the list of a Mott-Schottky run with holds in the place of impedance
    const auto hold = [](float volts) { return timed(Vek_Node_Constant_Voltage(1.0f, volts, false, 0.0f), 1.0f); };
    RecordingRun run(resistor(),
                     {hold(0.0f), hold(0.1f),
                      Vek_Node_Modify(0.1f, 0.25f, 0.1f, -1, ModTarget_t::FirstValue, ModType_t::Step, -1), endNode()});
    run.run();
    QList<double> volts;
    for (const RunSample &sample : run.samples)
        volts += std::round(sample.reading.voltage * 1e6) / 1e6;
    QCOMPARE(volts, (QList<double>{0.0, 0.1, 0.2, 0.25}));
    QCOMPARE(run.stopType, STOP_COMPLETED);
}

void TestNodeRunner::sweepsFromStartToEnd()
{
    RecordingRun run(resistor(), {Vek_Node_Sweep_Voltage(0.1f, 0.0f, 0.5f, false, -0.5f, false, 1.0f), endNode()});
    run.run();
    QCOMPARE(run.samples.size(), 10);
    for (int k = 1; k <= 10; ++k)
        QVERIFY(std::abs(run.samples.at(k - 1).reading.current - (0.5 - 0.1 * k) / 1000.0) < 1e-10);
}

void TestNodeRunner::averagesASweepOverItsShareOfTheInterval()
{
    // over the last half of an interval of 0.1 s at 1 V/s the mean lies 25 mV before the end
    RecordingRun run(resistor(), {Vek_Node_Sweep_Voltage(0.1f, 0.5f, 0.0f, false, 1.0f, false, 1.0f), endNode()});
    run.run();
    QVERIFY(std::abs(run.samples.at(4).reading.voltage - 0.475) < 1e-7);
    QVERIFY(std::abs(run.samples.at(4).reading.current - 0.475e-3) < 1e-10);
    QVERIFY(std::abs(run.sampleTimes().at(4) - 0.5) < 2e-8);
    QVERIFY(std::abs(run.samples.at(4).charge - 0.125e-3) < 1e-10);
}

void TestNodeRunner::climbsAStaircase_data()
{
    QTest::addColumn<float>("end");
    QTest::addColumn<bool>("continues");
    QTest::addColumn<QList<double>>("levels");
    QTest::newRow("up") << 0.3f << false << QList<double>{0.0, 0.1, 0.2, 0.3};
    QTest::newRow("down, whatever the step's sign") << -0.2f << false << QList<double>{0.0, -0.1, -0.2};
    QTest::newRow("end between two levels") << 0.25f << false << QList<double>{0.0, 0.1, 0.2};
    QTest::newRow("goes on from an earlier leg") << 0.3f << true << QList<double>{0.1, 0.2, 0.3};
    QTest::newRow("start is end") << 0.0f << false << QList<double>{0.0};
}

void TestNodeRunner::climbsAStaircase()
{
    QFETCH(float, end);
    QFETCH(bool, continues);
    RecordingRun run(resistor(),
                     {Vek_Node_Step_Voltage(0.5f, 0.0f, false, end, false, 0.1f, 1.0f, continues), endNode()});
    run.run();
    QList<double> levels;
    for (int i = 1; i < run.samples.size(); i += 2)
        levels += std::round(run.samples.at(i).reading.voltage * 1e6) / 1e6 + 0.0;
    QTEST(levels, "levels");
}

void TestNodeRunner::samplesEachLevelOfAStaircaseAlike_data()
{
    QTest::addColumn<float>("interval");
    QTest::addColumn<QList<double>>("times"); // after the begin of each level of one second
    QTest::newRow("no exact part") << 0.3f << QList<double>{0.3, 0.6, 0.9, 1.0};
    QTest::newRow("exact part") << 0.25f << QList<double>{0.25, 0.5, 0.75, 1.0};
    QTest::newRow("exact but for its rounding")
        << 0.1f << QList<double>{0.1, 0.2, 0.3, 0.4, 0.5, 0.6, 0.7, 0.8, 0.9, 1.0};
    QTest::newRow("last one too close to the end") << 0.33325f << QList<double>{0.33325, 0.6665, 1.0};
    QTest::newRow("longer than the level") << 1.7f << QList<double>{1.0};
}

void TestNodeRunner::samplesEachLevelOfAStaircaseAlike()
{
    QFETCH(float, interval);
    QFETCH(QList<double>, times);
    RecordingRun run(resistor(),
                     {Vek_Node_Step_Voltage(interval, 0.1f, false, 0.35f, false, 0.1f, 1.0f, false), endNode()});
    run.run();
    QCOMPARE(run.samples.size(), 3 * times.size());
    for (int i = 0; i < run.samples.size(); ++i) {
        const int level = i / times.size();
        QVERIFY(std::abs(run.sampleTimes().at(i) - level - times.at(i % times.size())) < 1e-7);
        QVERIFY(std::abs(run.samples.at(i).reading.voltage - 0.1 * (level + 1)) < 1e-7);
    }
    QVERIFY(std::abs(run.samples.last().charge - 0.6e-3) < 1e-9);
}

/// From -1 to 1 mA at 1 mA/s, of which -0.25 to 0.5 mA can be set, on 1 mF behind 10 ohms.
void TestNodeRunner::standsAtTheEndsOfWhatCanBeSet()
{
    RecordingRun run(capacitor(), {Vek_Node_Sweep_Current(0.5f, 0.0f, -1e-3f, 1e-3f, 1e-3f), endNode()});
    run.regulator.setSpans({-0.25e-3, 0.5e-3}, {-10.0, 10.0});
    run.run();
    const QList<double> microamperes{-250, 0, 500, 500};
    const QList<double> microcoulombs{-125, -250 * 0.75 - 31.25, -250 * 0.75 - 31.25 + 125, -250 * 0.75 - 31.25 + 375};
    QCOMPARE(run.samples.size(), 4);
    for (int i = 0; i < 4; ++i) {
        const RunSample &sample = run.samples.at(i);
        QVERIFY(std::abs(1e6 * sample.reading.current - microamperes.at(i)) < 1e-3);
        QVERIFY(std::abs(1e6 * sample.charge - microcoulombs.at(i)) < 1e-3);
        QVERIFY(std::abs(sample.reading.voltage - 10.0 * sample.reading.current - 1e3 * sample.charge) < 1e-9);
    }
}

void TestNodeRunner::pulses_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QList<double>>("millivolts"); // base and pulse by turns
    QTest::newRow("normal") << int(NodeType_t::PulseNormalVoltage) << QList<double>{0, 0, 0, 100, 0, 200};
    QTest::newRow("differential") << int(NodeType_t::PulseDiffVoltage) << QList<double>{0, 50, 100, 150, 200, 250};
    QTest::newRow("square wave") << int(NodeType_t::PulseSqrVoltage) << QList<double>{50, -50, 150, 50, 250, 150};
}

void TestNodeRunner::pulses()
{
    QFETCH(int, type);
    ExpNode_t node = Vek_Node_Pulse_Diff_Voltage(0.0f, false, 0.2f, false, 0.05f, 0.1f, 0.1f, 0.4f, 0.1f, 0.1f);
    node.type = quint8(type);
    RecordingRun run(resistor(), {node, endNode()});
    run.run();
    QList<double> millivolts;
    for (const RunSample &sample : run.samples)
        millivolts += std::round(sample.reading.voltage * 1e6) / 1e3 + 0.0;
    QTEST(millivolts, "millivolts");
    QVERIFY(std::abs(run.sampleTimes().at(0) - 0.4) < 1e-7);
    QVERIFY(std::abs(run.sampleTimes().at(1) - 0.5) < 1e-7);
    QVERIFY(std::abs(run.sampleTimes().at(4) - 1.4) < 1e-7);
}

void TestNodeRunner::countsVoltagesFromTheOpenCircuit()
{
    const double rest = 3.6 + 0.45 * 0.5;
    RecordingRun run(std::make_unique<BatteryCell>(BatteryCell::Parameters()),
                     {timed(Vek_Node_Constant_Voltage(1.0f, 0.01f, true, 0.0f), 1.0f), endNode()});
    run.run();
    QVERIFY(std::abs(run.samples.first().reading.voltage - (rest + 0.01)) < 1e-8);
}

void TestNodeRunner::holdsPower()
{
    const ExpNode_t node = timed(Vek_Node_Constant_Power(10.0f, -0.1f), 100.0f);
    RecordingRun run(std::make_unique<BatteryCell>(BatteryCell::Parameters()), {node, endNode()});
    run.run();
    double energy = 0.0;
    for (const RunSample &sample : run.samples)
        energy += sample.reading.voltage * sample.reading.current * 10.0;
    QVERIFY(std::abs(energy + 10.0) < 1e-6);
    QVERIFY(run.samples.last().reading.current < run.samples.first().reading.current); // the voltage has fallen
}

void TestNodeRunner::holdsALoad()
{
    const ExpNode_t node = timed(Vek_Node_Constant_Resistance(1.0f, 47.0f), 20.0f);
    RecordingRun run(std::make_unique<BatteryCell>(BatteryCell::Parameters()), {node, endNode()});
    run.run();
    for (const RunSample &sample : run.samples)
        QVERIFY(std::abs(sample.reading.voltage + 47.0 * sample.reading.current) < 1e-9);
    QVERIFY(run.samples.last().reading.current < -0.07);
}

/// A source of voltage U behind R gives most at half its voltage; here behind what the limit of the current leaves.
void TestNodeRunner::findsTheMaximumPower()
{
    for (const double limit : {1.0, 10.0}) {
        RecordingRun run(std::make_unique<BatteryCell>(BatteryCell::Parameters()),
                         {timed(Vek_Node_MPPT(0.01f), 0.01f), endNode()});
        run.runner.setInstrumentLimits(limit, 20.0);
        run.run();
        const double expected = limit < 3.825 ? -limit : -3.825;
        QVERIFY(std::abs(run.samples.first().reading.current - expected) < 5e-3);
    }
}

void TestNodeRunner::capsTheCurrentOnTheWayToTheVoltage()
{
    // 1 mA into 1 mF reaches 0.5 V less the series resistor's 10 mV after 0.49 s; then it decays with 10 ms
    ExpNode_t node = timed(Vek_Node_Pseudo_Constant_Voltage(0.25f, 0.5f, false, 1e-3f, true, 0.0f), 0.5f);
    RecordingRun run(capacitor(), {node, endNode()});
    run.run();
    QVERIFY(std::abs(run.samples.first().reading.current - 1e-3) < 1e-10);
    QVERIFY(std::abs(run.samples.first().reading.voltage - 0.26) < 1e-7);
    QVERIFY(std::abs(run.samples.last().reading.current - 1e-3 * std::exp(-1.0)) < 1e-8);
}

void TestNodeRunner::standsStillInAPause()
{
    RecordingRun run(capacitor(), {constantCurrent(1e-3f, 1.0f, 0.5f), endNode()});
    run.runner.start(0);
    run.stepUntil(0.6);
    run.runner.pause(quint64(0.75e8));
    QVERIFY(run.runner.isPaused());
    run.stepUntil(5.0);
    QCOMPARE(run.samples.size(), 1);
    run.runner.resume(quint64(10.75e8));
    run.stepUntil(20.0);
    QCOMPARE(run.samples.size(), 2);
    QVERIFY(std::abs(run.sampleTimes().last() - 11.0) < 1e-7);
    QVERIFY(std::abs(run.samples.last().reading.voltage - 1.01) < 1e-7); // one second of current in all
}

void TestNodeRunner::skipsAllPassesOfANode()
{
    ExpNode_t often = constantCurrent(1e-3f, 1.0f, 0.4f);
    Vek_Node_SetRepeats(often, 100);
    RecordingRun run(resistor(), {often, constantCurrent(2e-3f, 1.0f, 1.0f), endNode()});
    run.runner.start(0);
    run.stepUntil(0.9);
    run.runner.skip(quint64(0.95e8));
    run.stepUntil(10.0);
    QCOMPARE(run.begun, (QList<int>{0, 1, 2}));
    QCOMPARE(run.done, (QList<int>{0, 1}));
    QCOMPARE(run.skipped, 1);
    QVERIFY(std::abs(run.sampleTimes().at(2) - 0.95) < 1e-8);
    QVERIFY(std::abs(run.samples.at(2).charge - 0.95e-3) < 1e-10);
    QVERIFY(std::abs(run.sampleTimes().last() - 1.95) < 1e-8);
}

void TestNodeRunner::stopsWithALastSample()
{
    RecordingRun run(resistor(), {constantCurrent(1e-3f, 10.0f, 1.0f), endNode()});
    run.runner.start(0);
    run.stepUntil(2.1);
    run.runner.stop(quint64(2.5e8), STOP_BY_USER);
    QCOMPARE(run.samples.size(), 3);
    QVERIFY(std::abs(run.samples.last().charge - 2.5e-3) < 1e-9);
    QCOMPARE(run.done, QList<int>{0});
    QCOMPARE(run.stopType, STOP_BY_USER);
    QCOMPARE(run.ends, 1);
}

void TestNodeRunner::stopsWithoutOneThatWouldBearTheSameTime()
{
    for (const quint64 ticksLater : {0, 1, 2}) {
        RecordingRun run(resistor(), {constantCurrent(1e-3f, 10.0f, 1.0f), endNode()});
        run.runner.start(0);
        run.stepUntil(2.1);
        run.runner.stop(run.samples.last().tick + ticksLater, STOP_BY_USER);
        QCOMPARE(run.samples.size(), ticksLater < 2 ? 2 : 3);
        QCOMPARE(run.ends, 1);
    }
}

void TestNodeRunner::refusesALoopOutOfTheList()
{
    RecordingRun run(resistor(), {Vek_Node_Loop(-5, 2), endNode()});
    run.run();
    QCOMPARE(run.stopType, STOP_BAD_NODE);
}

void TestNodeRunner::refusesANodeWithoutAnInterval()
{
    RecordingRun run(resistor(), {constantCurrent(1e-3f, 1.0f, 0.0f), endNode()});
    run.run();
    QCOMPARE(run.stopType, STOP_BAD_NODE);
    QCOMPARE(run.samples.size(), 0);
}

void TestNodeRunner::chargeIsTheIntegralOfTheCurrent()
{
    // a step of 1 V on 10 ohms + (1 kohm parallel to 1 mF): V/R (t + R/Rs tau (1 - exp(-t/tau)))
    auto cell = std::make_unique<RcCell>(10.0, RcElement{1000.0, 1e-3});
    RecordingRun run(std::move(cell), {timed(Vek_Node_Constant_Voltage(0.037f, 1.0f, false, 0.0f), 1.0f), endNode()});
    run.run();
    const double tau = 10.0 / 1010.0;
    QVERIFY(std::abs(run.samples.last().charge - (1.0 + 100.0 * tau) / 1010.0) < 1e-9);
}

NIMBRELLE_TEST_MAIN(TestNodeRunner)
#include "TestNodeRunner.moc"
