// SPDX-License-Identifier: MIT
#include "ConnectedInstrument.h"

#include "support/TestMain.h"

#include <VekDataManipulator.h>
#include <VekDiffPulseVoltammetryElement.h>
#include <VekNormalPulseVoltammetryElement.h>
#include <VekSquareWaveVoltammetryElement.h>

#include <algorithm>
#include <cmath>

namespace {

// Both forms diffuse alike, so that the half-wave potential is the formal one.
constexpr double halfWavePotential = 0.2136;
constexpr double tolerance = 0.005;
constexpr double step = 0.004;
constexpr int steps = 151; // 0.6 V, both ends included

struct Pulse {
    double baseVoltage;
    double pulseVoltage;
    double baseCurrent;
    double pulseCurrent;

    double difference() const { return pulseCurrent - baseCurrent; }
};

using Pulses = std::vector<Pulse>;

const Pulse &peakOf(const Pulses &pulses)
{
    return *std::max_element(pulses.begin(), pulses.end(), [](const Pulse &left, const Pulse &right) {
        return std::abs(left.difference()) < std::abs(right.difference());
    });
}

/// The potential at which the current of the pulses passes half of its last value.
double halfWaveOf(const Pulses &pulses)
{
    const double half = pulses.back().pulseCurrent / 2.0;
    const auto after = std::find_if(pulses.begin() + 1, pulses.end(),
                                    [half](const Pulse &pulse) { return pulse.pulseCurrent / half >= 1.0; });
    const auto before = after - 1;
    const double share = (half - before->pulseCurrent) / (after->pulseCurrent - before->pulseCurrent);
    return before->pulseVoltage + share * (after->pulseVoltage - before->pulseVoltage);
}

} // namespace

/// Pulses on a reversible couple, reduced by the library itself: from low to high on the reduced form, and back on the
/// oxidised one.
class TestPulses : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void normalPulsesHaveTheirWaveAtTheHalfWavePotential_data() { addDirections(); }
    void normalPulsesHaveTheirWaveAtTheHalfWavePotential();
    void differentialPulsesPeakHalfAPulseBeforeIt_data() { addDirections(); }
    void differentialPulsesPeakHalfAPulseBeforeIt();
    void squareWavesPeakAtIt_data() { addDirections(); }
    void squareWavesPeakAtIt();

private:
    static void addDirections();
    template <class Element>
    Pulses pulsesOf(Element element, const QString &cell);

    int _count = 0;
};

void TestPulses::addDirections()
{
    QTest::addColumn<QString>("cell");
    QTest::addColumn<double>("start");
    QTest::addColumn<double>("end");
    QTest::addColumn<double>("direction");
    const QString cell = QStringLiteral("redox:E0=0.2136,n=1,%1,D=1e-9,A=1e-5,k0=0.01,Rs=2");
    QTest::newRow("oxidation") << cell.arg("cR=1,cO=0.0001") << -0.1 << 0.5 << 1.0;
    QTest::newRow("reduction") << cell.arg("cR=0.0001,cO=1") << 0.5 << -0.1 << -1.0;
}

template <class Element>
Pulses TestPulses::pulsesOf(Element element, const QString &cell)
{
    ConnectedInstrument instrument(QStringLiteral("AlderPulses%1").arg(++_count), {"--speed", "max", "--cell", cell});
    VekExperiment experiment;
    experiment.appendElement(element, 1);
    if (!instrument.isReady() || !instrument.complete(experiment))
        return {};
    VekDataManipulator manipulator(element);
    Pulses pulses;
    for (const auto &sample : instrument.samples) {
        manipulator.loadPrimaryData(sample.data);
        if (manipulator.isPulseCompleted())
            pulses.push_back({manipulator.getBaseVoltage(), manipulator.getPulseVoltage(), manipulator.getBaseCurrent(),
                              manipulator.getPulseCurrent()});
    }
    return pulses;
}

void TestPulses::normalPulsesHaveTheirWaveAtTheHalfWavePotential()
{
    QFETCH(QString, cell);
    QFETCH(double, start);
    QFETCH(double, end);
    const Pulses pulses = pulsesOf(VekNormalPulseVoltammetryElement(start, end, step, 0.05, 1.0), cell);
    QCOMPARE(int(pulses.size()), steps);
    const double potential = halfWaveOf(pulses);
    QVERIFY2(std::abs(potential - halfWavePotential) <= tolerance, qPrintable(QString::number(potential)));
}

void TestPulses::differentialPulsesPeakHalfAPulseBeforeIt()
{
    QFETCH(QString, cell);
    QFETCH(double, start);
    QFETCH(double, end);
    QFETCH(double, direction);
    const double height = 0.05 * direction;
    const Pulses pulses = pulsesOf(VekDiffPulseVoltammetryElement(start, end, step, height, 0.05, 0.2), cell);
    QCOMPARE(int(pulses.size()), steps);
    const Pulse &peak = peakOf(pulses);
    QVERIFY(peak.difference() * direction > 0.0);
    QVERIFY(std::abs(peak.pulseVoltage - peak.baseVoltage - height) < 1e-3);
    const double potential = peak.baseVoltage + height / 2.0;
    QVERIFY2(std::abs(potential - halfWavePotential) <= tolerance, qPrintable(QString::number(potential)));
}

void TestPulses::squareWavesPeakAtIt()
{
    QFETCH(QString, cell);
    QFETCH(double, start);
    QFETCH(double, end);
    const double amplitude = 0.025;
    const Pulses pulses = pulsesOf(VekSquareWaveVoltammetryElement(start, end, step, amplitude, 15.0), cell);
    QCOMPARE(int(pulses.size()), steps);
    const Pulse &peak = peakOf(pulses);
    QVERIFY(std::abs(std::abs(peak.pulseVoltage - peak.baseVoltage) - 2.0 * amplitude) < 1e-3);
    const double potential = (peak.baseVoltage + peak.pulseVoltage) / 2.0;
    QVERIFY2(std::abs(potential - halfWavePotential) <= tolerance, qPrintable(QString::number(potential)));
}

NIMBRELLE_TEST_MAIN(TestPulses)
#include "TestPulses.moc"
