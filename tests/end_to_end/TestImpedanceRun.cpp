// SPDX-License-Identifier: MIT
#include "ConnectedInstrument.h"

#include "support/TestMain.h"

#include <VekEISGalvanostaticElement.h>
#include <VekEISPotentiostaticElement.h>
#include <VekExperiment.h>
#include <VekMottSchottkyElement.h>

#include <array>
#include <cmath>
#include <complex>

using Complex = std::complex<double>;

namespace {

constexpr double degrees = 180.0 / M_PI;
constexpr double tightMagnitude = 0.005;
constexpr double tightPhase = 0.3; ///< degrees

/// The cell of the sweeps: Randles' circuit with a semi-infinite Warburg element.
const QString warburgCell = QStringLiteral("warburg:Rs=20,Rct=200,C=2e-5,W=50");

Complex cellImpedance(double frequency)
{
    const double w = 2.0 * M_PI * frequency;
    const Complex diffusion = 50.0 * Complex(1.0, -1.0) / std::sqrt(w);
    return 20.0 + 1.0 / (Complex(0.0, w * 2e-5) + 1.0 / (200.0 + diffusion));
}

/// What a point makes of the cell, as a share of what the cell is.
struct Error {
    double ratio;
    double phase; ///< degrees
};

Error errorOf(const VekACData &point)
{
    const Complex expected = cellImpedance(point.frequency);
    return {point.absoluteImpedance / std::abs(expected), point.phaseAngle - std::arg(expected) * degrees};
}

bool isRight(const VekACData &point)
{
    const Error error = errorOf(point);
    return std::abs(error.ratio - 1.0) < tightMagnitude && std::abs(error.phase) < tightPhase;
}

QByteArray described(const VekACData &point)
{
    const Error error = errorOf(point);
    return QStringLiteral("%1 Hz: %2 times the magnitude, %3 degrees off")
        .arg(point.frequency)
        .arg(error.ratio)
        .arg(error.phase)
        .toUtf8();
}

VekExperiment potentiostatic(double lowest, double perDecade)
{
    VekExperiment experiment;
    VekEISPotentiostaticElement sweep(1e6, lowest, perDecade, 0.0, 0.01);
    experiment.appendElement(sweep, 1);
    return experiment;
}

VekExperiment galvanostatic(double lowest, double perDecade)
{
    VekExperiment experiment;
    VekEISGalvanostaticElement sweep(1e6, lowest, perDecade, 0.0, 1e-4);
    experiment.appendElement(sweep, 1);
    return experiment;
}

/// Runs an experiment on channel 0 of a new instrument. @return its points; none when it did not complete
std::vector<VekACData> pointsOf(const QString &name, const VekExperiment &experiment, const QString &cell,
                                const QStringList &further = {})
{
    ConnectedInstrument instrument(name, QStringList{"--speed", "max", "--cell", cell} + further);
    if (!instrument.isReady() || !instrument.complete(experiment))
        return {};
    return instrument.points;
}

} // namespace

/// Impedance points as a client of the library gets them, held against closed forms.
class TestImpedanceRun : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void tablesOfTheCardMakeASweepRight_data();
    void tablesOfTheCardMakeASweepRight();
    void brokenTransferKeepsTheEarlierTables_data();
    void brokenTransferKeepsTheEarlierTables();
    void badTableLeavesTheOthersInForce();
    void distortionIsThatOfTheHarmonics();
    void mottSchottkySweepsAtEachPotential();

private:
    /// A name that no instrument had before: there are no tables in its folder.
    QString newName() { return QStringLiteral("Alder%1").arg(++_count); }

    int _count = 0;
};

void TestImpedanceRun::tablesOfTheCardMakeASweepRight_data()
{
    QTest::addColumn<bool>("isGalvanostatic");
    QTest::newRow("potentiostatic") << false;
    QTest::newRow("galvanostatic") << true;
}

void TestImpedanceRun::tablesOfTheCardMakeASweepRight()
{
    QFETCH(bool, isGalvanostatic);
    const VekExperiment experiment = isGalvanostatic ? galvanostatic(0.01, 5.0) : potentiostatic(0.01, 5.0);
    const auto points = pointsOf(newName(), experiment, warburgCell);
    QCOMPARE(points.size(), std::size_t(41)); // eight decades
    for (const VekACData &point : points)
        QVERIFY2(isRight(point), described(point));

    const QString name = newName();
    QTest::ignoreMessage(QtWarningMsg, qPrintable(name + " channel 0: Error loading calibration data."));
    const auto uncorrected = pointsOf(name, experiment, warburgCell, {"--fault", "sd-magic"});
    QCOMPARE(uncorrected.size(), points.size());
    QVERIFY2(std::abs(errorOf(uncorrected.front()).phase) > 10.0 * tightPhase, described(uncorrected.front()));
    QVERIFY2(isRight(uncorrected.back()), described(uncorrected.back())); // no stage acts at 10 mHz
}

void TestImpedanceRun::brokenTransferKeepsTheEarlierTables_data()
{
    QTest::addColumn<QString>("fault");
    QTest::addColumn<QString>("warning");
    QTest::addColumn<bool>("hasEarlierTables");
    const QString refused = QStringLiteral("%1 channel 0: Error loading calibration data.");
    const QString silent = QStringLiteral("[%1] SD calibration read timed out on channel(s): 0");
    QTest::newRow("wrong magic") << "sd-magic" << refused << true;
    QTest::newRow("cut short") << "sd-cut" << silent << true;
    QTest::newRow("cut short, none before") << "sd-cut" << silent << false;
}

void TestImpedanceRun::brokenTransferKeepsTheEarlierTables()
{
    QFETCH(QString, fault);
    QFETCH(QString, warning);
    QFETCH(bool, hasEarlierTables);
    const QString name = newName();
    if (hasEarlierTables)
        QVERIFY(ConnectedInstrument(name, {}).isReady());
    QTest::ignoreMessage(QtWarningMsg, qPrintable(warning.arg(name)));
    const auto points = pointsOf(name, potentiostatic(1e5, 5.0), warburgCell, {"--fault", fault});
    QCOMPARE(points.size(), std::size_t(6));
    QVERIFY2(isRight(points.front()) == hasEarlierTables, described(points.front()));
}

// The spoiled table is that of the voltage's input buffer. Its last row, out of order, makes the buffer answer its lowest
// frequency; what remains uncorrected is a low-pass of 5 MHz, give or take 15 %, and nothing else.
void TestImpedanceRun::badTableLeavesTheOthersInForce()
{
    const QString name = newName();
    QTest::ignoreMessage(QtWarningMsg, qPrintable(name + " channel 0: Error in calibration data."));
    const auto points = pointsOf(name, potentiostatic(1e5, 5.0), warburgCell, {"--fault", "sd-file"});
    QCOMPARE(points.size(), std::size_t(6));
    const Error error = errorOf(points.front());
    const double corner = -1e6 / std::tan(error.phase / degrees);
    QVERIFY2(std::abs(corner / 5e6 - 1.0) < 0.15, described(points.front()));
    QVERIFY2(std::abs(error.ratio * std::hypot(1.0, 1e6 / corner) - 1.0) < tightMagnitude, described(points.front()));
}

// 16-bit words above 100 Hz, floats below, undersampled above 50 kHz.
void TestImpedanceRun::distortionIsThatOfTheHarmonics()
{
    const auto points = pointsOf(newName(), potentiostatic(1.0, 2.0), QStringLiteral("resistor:R=200"),
                                 {"--harmonic", "2=0.03", "--harmonic", "3=0.04", "--harmonic", "12=0.12"});
    QCOMPARE(points.size(), std::size_t(13));
    for (const VekACData &point : points) // 3, 4 and 12 % add up to 13 %
        QVERIFY2(std::abs(point.totalHarmonicDistortion / 13.0 - 1.0) < 0.01,
                 qPrintable(QStringLiteral("%1 Hz: %2 %").arg(point.frequency).arg(point.totalHarmonicDistortion)));
}

// 1 / C^2 = 2 (E - Efb - kT/e) / (e eps eps0 N A^2); behind a series resistance and beside a negligible leak.
void TestImpedanceRun::mottSchottkySweepsAtEachPotential()
{
    constexpr double donors = 3e23;
    VekMottSchottkyElement element(0.8, -0.2, -0.25, 10000.0, 100.0, 1.0, 0.01, 2);
    VekExperiment experiment;
    experiment.appendElement(element, 1);
    const auto points =
        pointsOf(newName(), experiment, QStringLiteral("semiconductor:Rs=20,R=1e9,Efb=-0.6,N=3e23,eps=8,A=2e-5"));
    QCOMPARE(points.size(), std::size_t(15)); // five potentials, three frequencies
    const double slope = 2.0 / (1.602176634e-19 * 8.0 * 8.8541878128e-12 * donors * 2e-5 * 2e-5);
    const double bandEdge = -0.6 + 1.380649e-23 * 298.15 / 1.602176634e-19;
    std::array<double, 3> before = {};
    for (std::size_t i = 0; i < points.size(); ++i) {
        const double potential = 0.8 - 0.25 * double(i / 3);
        const double frequency = std::pow(10.0, 4.0 - double(i % 3));
        QVERIFY2(std::abs(points[i].dcVoltageBias - potential) < 1e-4, QByteArray::number(points[i].dcVoltageBias));
        QVERIFY2(std::abs(points[i].frequency / frequency - 1.0) < 1e-4, QByteArray::number(points[i].frequency));
        const double inverse = std::pow(2.0 * M_PI * points[i].frequency * points[i].imagImpedance, 2);
        QVERIFY2(std::abs(inverse / (slope * (potential - bandEdge)) - 1.0) < 0.02, QByteArray::number(int(i)));
        if (i >= 3)
            QVERIFY2(std::abs((before[i % 3] - inverse) / 0.25 / slope - 1.0) < 0.02, QByteArray::number(int(i)));
        before[i % 3] = inverse;
    }
}

NIMBRELLE_TEST_MAIN(TestImpedanceRun)
#include "TestImpedanceRun.moc"
