// SPDX-License-Identifier: MIT
#include "RecordingRun.h"

#include "simulator/cells/RedoxCell.h"

#include "support/TestMain.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double faraday = 96485.33212;
constexpr double gasConstant = 8.314462618;

struct Peak {
    double voltage;
    double current;
};

struct Cycle {
    Peak forward;
    Peak backward;
};

/// Sweeps from -0.2 V to 0.6 V and back, in the middle of which E0 = 0.2 V lies.
Cycle sweepCycle(const RedoxCell::Parameters &parameters, float rate)
{
    const float interval = 0.5e-3f / rate;
    RecordingRun run(std::make_unique<RedoxCell>(parameters),
                     {Vek_Node_Sweep_Voltage(interval, 0.0f, -0.2f, false, 0.6f, false, rate),
                      Vek_Node_Sweep_Voltage(interval, 0.0f, 0.6f, false, -0.2f, false, rate), endNode()});
    run.run();
    const auto byCurrent = [](const RunSample &a, const RunSample &b) { return a.reading.current < b.reading.current; };
    const RunSample highest = *std::max_element(run.samples.begin(), run.samples.end(), byCurrent);
    const RunSample lowest = *std::min_element(run.samples.begin(), run.samples.end(), byCurrent);
    return {{highest.reading.voltage, highest.reading.current}, {lowest.reading.voltage, lowest.reading.current}};
}

double randlesSevcik(const RedoxCell::Parameters &p, double rate)
{
    const double f = p.electrons * faraday / (gasConstant * p.temperature);
    return 0.4463 * p.electrons * faraday * p.area * p.reduced * std::sqrt(f * rate * p.diffusivity);
}

double cottrell(const RedoxCell::Parameters &p, double seconds)
{
    return p.electrons * faraday * p.area * p.reduced * std::sqrt(p.diffusivity / (M_PI * seconds));
}

bool isNear(double value, double expected, double relative)
{
    return std::abs(value - expected) <= relative * std::abs(expected);
}

} // namespace

class TestRedoxCell : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void reversibleCycleHasItsPeaksWhereTheoryHasThem();
    void peakGrowsWithTheRootOfTheRate();
    void slowKineticsPullThePeaksApart();
    void potentialStepFollowsCottrell();
    void currentStepLastsForSandsTime();
    void restsAtNernstsPotential();
    void doubleLayerAddsItsChargingCurrent();
    void pulsesGiveTheHalfWavePotential_data();
    void pulsesGiveTheHalfWavePotential();
};

void TestRedoxCell::reversibleCycleHasItsPeaksWhereTheoryHasThem()
{
    const RedoxCell::Parameters parameters;
    const Cycle cycle = sweepCycle(parameters, 0.1f);
    QVERIFY(isNear(cycle.forward.current, randlesSevcik(parameters, 0.1), 0.01));
    QVERIFY(std::abs(cycle.forward.voltage - cycle.backward.voltage - 0.057) < 0.003);
    QVERIFY(std::abs(0.5 * (cycle.forward.voltage + cycle.backward.voltage) - 0.2) < 0.002);
}

void TestRedoxCell::peakGrowsWithTheRootOfTheRate()
{
    const RedoxCell::Parameters parameters;
    const double slow = sweepCycle(parameters, 0.02f).forward.current;
    const double fast = sweepCycle(parameters, 0.2f).forward.current;
    QVERIFY(isNear(fast / slow, std::sqrt(10.0), 0.01));
}

void TestRedoxCell::slowKineticsPullThePeaksApart()
{
    // Nicholson's parameter psi = k0 / sqrt(pi D n F v / RT) = 1 gives 84 mV
    RedoxCell::Parameters parameters;
    const double f = faraday / (gasConstant * parameters.temperature);
    parameters.rate = std::sqrt(M_PI * parameters.diffusivity * f * 0.1);
    const Cycle cycle = sweepCycle(parameters, 0.1f);
    QVERIFY(std::abs(cycle.forward.voltage - cycle.backward.voltage - 0.084) < 0.002);
}

void TestRedoxCell::potentialStepFollowsCottrell()
{
    const RedoxCell::Parameters parameters;
    RedoxCell cell(parameters);
    double charge = 0.0;
    double time = 0.0;
    for (const double end : {1e-3, 1e-2, 0.1, 1.0, 10.0}) {
        charge += cell.holdVoltage(0.8, 0.0, end - time);
        time = end;
        QVERIFY(isNear(cell.currentAt(0.8), cottrell(parameters, time), time < 5e-3 ? 0.02 : 0.003));
    }
    QVERIFY(isNear(charge, 2.0 * 10.0 * cottrell(parameters, 10.0), 0.003));
}

void TestRedoxCell::currentStepLastsForSandsTime()
{
    // tau = pi D (n F A c / (2 I))^2; a quarter of it has passed at E0
    const RedoxCell::Parameters parameters;
    RedoxCell cell(parameters);
    const double current = 10e-6;
    const double tau = M_PI * parameters.diffusivity * std::pow(faraday * parameters.area / (2.0 * current), 2);
    const double charge = cell.passCurrent(current, 0.0, 0.25 * tau);
    QVERIFY(isNear(charge, current * 0.25 * tau, 1e-9));
    QVERIFY(std::abs(cell.voltageAt(current) - 0.2) < 1e-3);
    cell.passCurrent(current, 0.0, 0.73 * tau);
    QVERIFY(cell.voltageAt(current) < 0.4);
    cell.passCurrent(current, 0.0, 0.04 * tau);
    QVERIFY(cell.voltageAt(current) > 0.8);
}

void TestRedoxCell::restsAtNernstsPotential()
{
    RedoxCell::Parameters parameters;
    parameters.electrons = 2.0;
    parameters.oxidised = 0.1;
    RedoxCell cell(parameters);
    cell.passCurrent(0.0, 0.0, 100.0);
    const double expected = 0.2 + gasConstant * 298.15 / (2.0 * faraday) * std::log(0.1);
    QVERIFY(std::abs(cell.openCircuitVoltage() - expected) < 1e-7);
    QVERIFY(std::abs(cell.currentAt(expected)) < 1e-9);
}

void TestRedoxCell::doubleLayerAddsItsChargingCurrent()
{
    RedoxCell::Parameters parameters;
    parameters.capacitance = 1e-5;
    parameters.reduced = parameters.oxidised = 1e-9;
    RedoxCell layer(parameters);
    const double rest = layer.openCircuitVoltage();
    layer.holdVoltage(rest, 1.0, 0.1);
    QVERIFY(isNear(layer.currentAt(rest + 0.1), 1e-5, 1e-3));
}

void TestRedoxCell::pulsesGiveTheHalfWavePotential_data()
{
    QTest::addColumn<int>("type");
    QTest::newRow("normal") << int(NodeType_t::PulseNormalVoltage);
    QTest::newRow("differential") << int(NodeType_t::PulseDiffVoltage);
    QTest::newRow("square wave") << int(NodeType_t::PulseSqrVoltage);
}

/// A reversible couple with equal diffusivities has its half-wave potential at E0.
void TestRedoxCell::pulsesGiveTheHalfWavePotential()
{
    QFETCH(int, type);
    const float height = type == int(NodeType_t::PulseSqrVoltage) ? 0.025f : 0.05f;
    ExpNode_t node = Vek_Node_Pulse_Diff_Voltage(-0.1f, false, 0.5f, false, height, 0.005f, 0.0f, 0.45f, 0.0f, 0.05f);
    node.type = quint8(type);
    if (type == int(NodeType_t::PulseSqrVoltage)) {
        const float half = 0.02f;
        node = Vek_Node_Pulse_Sqr_Voltage(-0.1f, false, 0.5f, false, height, 0.005f, 0.0f, half, 0.0f, half);
    }
    RecordingRun run(std::make_unique<RedoxCell>(RedoxCell::Parameters()), {node, endNode()});
    run.run();
    QCOMPARE(run.samples.size(), 242);
    double halfWave = 0.0;
    double highest = 0.0;
    for (int i = 0; i + 1 < run.samples.size(); i += 2) {
        const CellReading base = run.samples.at(i).reading;
        const CellReading pulse = run.samples.at(i + 1).reading;
        const double difference =
            type == int(NodeType_t::PulseSqrVoltage) ? base.current - pulse.current : pulse.current - base.current;
        if (type == int(NodeType_t::PulseNormalVoltage)) {
            const double plateau = run.samples.last().reading.current;
            if (pulse.current < 0.5 * plateau)
                halfWave = pulse.voltage;
        } else if (difference > highest) {
            highest = difference;
            halfWave = 0.5 * (base.voltage + pulse.voltage);
        }
    }
    QVERIFY(std::abs(halfWave - 0.2) <= 0.0051); // one step
}

NIMBRELLE_TEST_MAIN(TestRedoxCell)
#include "TestRedoxCell.moc"
