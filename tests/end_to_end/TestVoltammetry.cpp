// SPDX-License-Identifier: MIT
#include "ConnectedInstrument.h"

#include "support/TestMain.h"

#include <VekCyclicVoltammetryElement.h>

#include <algorithm>
#include <cmath>

namespace {

/// The couple of the cell, in SI units.
constexpr double formalPotential = 0.15;
constexpr double concentration = 2.0;
constexpr double diffusivity = 8e-10;
constexpr double area = 7e-6;
constexpr double temperature = 298.0;
const QString redoxCell = QStringLiteral("redox:E0=0.15,n=1,cR=2,cO=0.0002,D=8e-10,A=7e-6,k0=0.01,Rs=2,T=298");

/// Randles and Sevcik: the peak current of a reversible couple at a scan rate in V/s.
double peakCurrent(double scanRate)
{
    constexpr double faraday = 96485.33212;
    constexpr double gasConstant = 8.314462618;
    return 0.4463 * faraday * area * concentration *
           std::sqrt(faraday * scanRate * diffusivity / (gasConstant * temperature));
}

struct Peaks {
    VekDCData anodic;
    VekDCData cathodic;
};

bool hasLessCurrent(const VekDCData &left, const VekDCData &right)
{
    return left.current < right.current;
}

} // namespace

/// Sweeps of a reversible couple as a client of the library gets them, held against theory.
class TestVoltammetry : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void peaksOfAReversibleCoupleLie57mVApart();
    void peakCurrentGrowsWithTheRootOfTheScanRate_data();
    void peakCurrentGrowsWithTheRootOfTheScanRate();
    void cyclesAreCountedAsTheyAreSwept();

private:
    /// Sweeps from far below the formal potential to far above and back, with a sample each half millivolt.
    Peaks peaksAt(double scanRate);
    QString newName() { return QStringLiteral("AlderVoltammetry%1").arg(++_count); }

    int _count = 0;
};

Peaks TestVoltammetry::peaksAt(double scanRate)
{
    ConnectedInstrument instrument(newName(), {"--speed", "max", "--cell", redoxCell});
    VekCyclicVoltammetryElement sweep(-0.2, 0.5, -0.2, -0.2, scanRate, 0.0005 / scanRate);
    VekExperiment experiment;
    experiment.appendElement(sweep, 1);
    if (!instrument.isReady() || !instrument.complete(experiment) || instrument.samples.empty())
        return {};
    const auto &samples = instrument.samples;
    const auto [lowest, highest] =
        std::minmax_element(samples.begin(), samples.end(),
                            [](const auto &left, const auto &right) { return hasLessCurrent(left.data, right.data); });
    return {highest->data, lowest->data};
}

void TestVoltammetry::peaksOfAReversibleCoupleLie57mVApart()
{
    const Peaks peaks = peaksAt(0.1);
    const double anodic = peaks.anodic.workingElectrodeVoltage;
    const double cathodic = peaks.cathodic.workingElectrodeVoltage;
    QVERIFY2(std::abs(anodic - cathodic - 0.057) <= 0.003, qPrintable(QString::number(anodic - cathodic)));
    const double middle = (anodic + cathodic) / 2.0;
    QVERIFY2(std::abs(middle - formalPotential) <= 0.003, qPrintable(QString::number(middle)));
}

void TestVoltammetry::peakCurrentGrowsWithTheRootOfTheScanRate_data()
{
    QTest::addColumn<double>("scanRate");
    QTest::newRow("20 mV/s") << 0.02;
    QTest::newRow("50 mV/s") << 0.05;
    QTest::newRow("100 mV/s") << 0.1;
    QTest::newRow("200 mV/s") << 0.2;
}

void TestVoltammetry::peakCurrentGrowsWithTheRootOfTheScanRate()
{
    QFETCH(double, scanRate);
    const double ratio = peaksAt(scanRate).anodic.current / peakCurrent(scanRate);
    QVERIFY2(std::abs(ratio - 1.0) < 0.02, qPrintable(QString::number(ratio)));
}

// Legs of 0.5 V: to the first vertex, then down and up, down and up, down, and up to the end.
void TestVoltammetry::cyclesAreCountedAsTheyAreSwept()
{
    ConnectedInstrument instrument(newName(), {"--speed", "max", "--cell", redoxCell});
    VekCyclicVoltammetryElement sweep(-0.1, 0.4, -0.1, 0.4, 0.1, 0.1);
    sweep.setNumberOfCycles(3);
    VekExperiment experiment;
    experiment.appendElement(sweep, 1);
    QVERIFY(instrument.isReady());
    QVERIFY(instrument.complete(experiment));
    const auto &samples = instrument.samples;
    double direction = 1.0;
    int turns = 0;
    for (std::size_t i = 1; i < samples.size(); ++i) {
        const double change = samples[i].data.workingElectrodeVoltage - samples[i - 1].data.workingElectrodeVoltage;
        if (change * direction < -0.005) { // half a sample's; at a vertex two samples may be alike
            direction = -direction;
            ++turns;
        }
    }
    QCOMPARE(turns, 6);
    QVERIFY(std::abs(samples.back().data.timestamp - 7 * 5.0) <= 0.2);
    QVERIFY(std::abs(samples.back().data.workingElectrodeVoltage - 0.4) < 0.011);
}

NIMBRELLE_TEST_MAIN(TestVoltammetry)
#include "TestVoltammetry.moc"
