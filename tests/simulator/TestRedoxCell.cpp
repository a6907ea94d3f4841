// SPDX-License-Identifier: MIT
#include "RecordingRun.h"

#include "simulator/cells/RedoxCell.h"

#include "support/TestMain.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double faraday = 96485.33212;
constexpr double gasConstant = 8.314462618;

/// How far apart the peaks lie of a sweep from -0.2 V to 0.6 V and back, in the middle of which E0 = 0.2 V lies.
double peakSeparation(const RedoxCell::Parameters &parameters, float rate)
{
    const float interval = 0.5e-3f / rate;
    RecordingRun run(std::make_unique<RedoxCell>(parameters),
                     {Vek_Node_Sweep_Voltage(interval, 0.0f, -0.2f, false, 0.6f, false, rate),
                      Vek_Node_Sweep_Voltage(interval, 0.0f, 0.6f, false, -0.2f, false, rate), endNode()});
    run.run();
    const auto byCurrent = [](const RunSample &a, const RunSample &b) { return a.reading.current < b.reading.current; };
    const auto [lowest, highest] = std::minmax_element(run.samples.begin(), run.samples.end(), byCurrent);
    return highest->reading.voltage - lowest->reading.voltage;
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

/// The cell itself; what sweeps and pulses make of it is tested from the client's side.
class TestRedoxCell : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void slowKineticsPullThePeaksApart();
    void potentialStepFollowsCottrell();
    void currentStepLastsForSandsTime();
    void restsAtNernstsPotential();
    void doubleLayerAddsItsChargingCurrent();
};

void TestRedoxCell::slowKineticsPullThePeaksApart()
{
    // Nicholson's parameter psi = k0 / sqrt(pi D n F v / RT) = 1 gives 84 mV
    RedoxCell::Parameters parameters;
    const double f = faraday / (gasConstant * parameters.temperature);
    parameters.rate = std::sqrt(M_PI * parameters.diffusivity * f * 0.1);
    QVERIFY(std::abs(peakSeparation(parameters, 0.1f) - 0.084) < 0.002);
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

NIMBRELLE_TEST_MAIN(TestRedoxCell)
#include "TestRedoxCell.moc"
