// SPDX-License-Identifier: MIT
#include "VekFourier.h"
#include "VekLowPass.h"
#include "support/TestMain.h"

#include <cmath>
#include <limits>

namespace {

constexpr double pi = 3.14159265358979323846;
constexpr double noNumber = std::numeric_limits<double>::quiet_NaN();
constexpr double endless = std::numeric_limits<double>::infinity();

/// A cos(2 pi n / period - phase) around a mean.
template <typename Number>
std::vector<Number> cosine(int count, double period, double amplitude, double phase, double mean = 0.0)
{
    std::vector<Number> samples;
    for (int n = 0; n < count; ++n)
        samples.push_back(Number(mean + amplitude * std::cos(2.0 * pi * n / period - phase)));
    return samples;
}

/// Output for 1, which has lasted so many samples.
double stepResponse(VekLowPass &lowPass, int samples)
{
    double output = 0.0;
    for (int i = 0; i < samples; ++i)
        output = lowPass.filter(1.0);
    return output;
}

bool isNone(std::complex<double> number)
{
    return std::isnan(number.real()) && std::isnan(number.imag());
}

} // namespace

/// What clients have of the numerics.
class TestPublicNumerics : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void lowPassTakesDesignsThatCanBe_data();
    void lowPassTakesDesignsThatCanBe();
    void lowPassLagsBySoMuch_data();
    void lowPassLagsBySoMuch();
    void copiesOfALowPassGoOnByThemselves();
    void lowPassForgetsNaNWithTheNextDesign();
    void spectrumHasMeanAndHarmonics();
    void amplitudeOfOneFrequency();
    void whatCannotBeTransformedGivesNothing();
};

void TestPublicNumerics::lowPassTakesDesignsThatCanBe_data()
{
    QTest::addColumn<int>("order");
    QTest::addColumn<double>("sampleFrequency");
    QTest::addColumn<double>("corner");
    QTest::addColumn<bool>("isTaken");
    QTest::newRow("second order") << 2 << 1000.0 << 10.0 << true;
    QTest::newRow("highest order") << 20 << 1000.0 << 499.0 << true;
    QTest::newRow("odd") << 3 << 1000.0 << 10.0 << false;
    QTest::newRow("none") << 0 << 1000.0 << 10.0 << false;
    QTest::newRow("negative") << -2 << 1000.0 << 10.0 << false;
    QTest::newRow("too high") << 22 << 1000.0 << 10.0 << false;
    QTest::newRow("half the sample frequency") << 2 << 1000.0 << 500.0 << false;
    QTest::newRow("corner of 0") << 2 << 1000.0 << 0.0 << false;
    QTest::newRow("no corner") << 2 << 1000.0 << noNumber << false;
    QTest::newRow("no sample frequency") << 2 << noNumber << 10.0 << false;
    QTest::newRow("infinite") << 2 << endless << 10.0 << false;
}

void TestPublicNumerics::lowPassTakesDesignsThatCanBe()
{
    QFETCH(int, order);
    QFETCH(double, sampleFrequency);
    QFETCH(double, corner);
    QFETCH(bool, isTaken);
    VekLowPass lowPass;
    QCOMPARE(lowPass.filter(3.0), 3.0);
    QCOMPARE(lowPass.setUp(order, sampleFrequency, corner) == VekErrorCode::Success, isTaken);
    QCOMPARE(lowPass.filter(3.0) != 3.0, isTaken); // what was refused changes nothing
}

// The analogue filter's delay at low frequencies: the sum of 2 sin(pi (2 k - 1) / 2 n) over k up to n / 2, over 2 pi times
// the corner, which pre-warping hardly changes where the samples are dense.
void TestPublicNumerics::lowPassLagsBySoMuch_data()
{
    QTest::addColumn<int>("order");
    QTest::addColumn<double>("delay"); // in periods of the corner
    QTest::newRow("2") << 2 << std::sqrt(2.0) / (2.0 * pi);
    QTest::newRow("4") << 4 << 2.0 * (std::sin(pi / 8.0) + std::sin(3.0 * pi / 8.0)) / (2.0 * pi);
    QTest::newRow("6") << 6
                       << 2.0 * (std::sin(pi / 12.0) + std::sin(3.0 * pi / 12.0) + std::sin(5.0 * pi / 12.0)) /
                              (2.0 * pi);
}

void TestPublicNumerics::lowPassLagsBySoMuch()
{
    QFETCH(int, order);
    QFETCH(double, delay);
    VekLowPass lowPass;
    QCOMPARE(lowPass.setUp(order, 1000.0, 1.0), VekErrorCode::Success);
    double lag = 0.0; // of a ramp, in samples
    for (int n = 0; n < 20000; ++n)
        lag = n - lowPass.filter(n);
    QVERIFY2(std::abs(lag / 1000.0 - delay) < 1e-4, qPrintable(QString::number(lag / 1000.0 / delay, 'g', 9)));
}

void TestPublicNumerics::copiesOfALowPassGoOnByThemselves()
{
    VekLowPass original;
    QCOMPARE(original.setUp(4, 1000.0, 50.0), VekErrorCode::Success);
    stepResponse(original, 5);
    VekLowPass copy(original);
    VekLowPass assigned;
    assigned = original;
    const double next = stepResponse(original, 10);
    QCOMPARE(stepResponse(copy, 10), next);
    QCOMPARE(stepResponse(assigned, 10), next);
}

void TestPublicNumerics::lowPassForgetsNaNWithTheNextDesign()
{
    VekLowPass lowPass;
    QCOMPARE(lowPass.setUp(2, 1000.0, 50.0), VekErrorCode::Success);
    lowPass.filter(noNumber);
    QVERIFY(std::isnan(stepResponse(lowPass, 1000)));
    QCOMPARE(lowPass.setUp(2, 1000.0, 50.0), VekErrorCode::Success);
    QCOMPARE(stepResponse(lowPass, 1000), 1.0);
}

void TestPublicNumerics::spectrumHasMeanAndHarmonics()
{
    std::vector<float> samples = cosine<float>(1001, 100.0, 2.0, 0.5, 0.25);
    const std::vector<float> third = cosine<float>(1001, 100.0 / 3.0, 0.5, -1.0);
    for (std::size_t n = 0; n < samples.size(); ++n)
        samples[n] += third[n];
    const auto spectrum = VekFourier::spectrum(samples, 5000.0, 50.0, 2);
    QCOMPARE(spectrum.size(), std::size_t(4));
    QVERIFY(std::abs(spectrum[0] - 0.5) < 1e-5); // twice the mean
    QVERIFY(std::abs(spectrum[1] - std::polar(2.0, 0.5)) < 1e-5);
    QVERIFY(std::abs(spectrum[2]) < 1e-5);
    QVERIFY(std::abs(spectrum[3] - std::polar(0.5, -1.0)) < 1e-5);
}

void TestPublicNumerics::amplitudeOfOneFrequency()
{
    const std::vector<double> samples = cosine<double>(431, 100.0, 3.0, 0.75); // four periods and a bit
    QVERIFY(std::abs(VekFourier::amplitude(samples, 100.0) - std::polar(3.0, 0.75)) < 1e-9);
    QVERIFY(std::abs(VekFourier::amplitude(samples, 100.0, 300.0) - std::polar(3.0, 0.75)) < 1e-9);
    // Half a period integrates to half of what a whole one does, and is divided by half of its length.
    QVERIFY(std::abs(VekFourier::amplitude(samples, 100.0, 50.0) - std::polar(3.0, 0.75)) < 1e-2);
    QVERIFY(std::abs(VekFourier::amplitude(samples, 50.0)) < 1e-9); // nothing at twice the frequency
}

void TestPublicNumerics::whatCannotBeTransformedGivesNothing()
{
    const std::vector<double> samples = cosine<double>(100, 10.0, 1.0, 0.0);
    QVERIFY(isNone(VekFourier::amplitude({}, 10.0)));
    QVERIFY(isNone(VekFourier::amplitude({}, 10.0, 5.0)));
    QVERIFY(isNone(VekFourier::amplitude(samples, 101.0))); // no whole period
    for (const double none : {0.0, -10.0, noNumber, endless}) {
        QVERIFY(isNone(VekFourier::amplitude(samples, none)));
        QVERIFY(isNone(VekFourier::amplitude(samples, none, 50.0)));
    }
    for (const double none : {0.0, -10.0, noNumber})
        QVERIFY(isNone(VekFourier::amplitude(samples, 10.0, none)));
    QVERIFY(std::abs(VekFourier::amplitude(samples, 10.0, endless) - 1.0) < 0.1); // all of them

    const std::vector<float> floats = cosine<float>(100, 10.0, 1.0, 0.0);
    QVERIFY(VekFourier::spectrum({1.0f}, 1000.0, 100.0, 3).empty());
    for (const double none : {0.0, -10.0, noNumber, endless}) {
        QVERIFY(VekFourier::spectrum(floats, none, 100.0, 3).empty());
        QVERIFY(VekFourier::spectrum(floats, 1000.0, none, 3).empty());
    }
    for (const int none : {-1, 1001})
        QVERIFY(VekFourier::spectrum(floats, 1000.0, 100.0, none).empty());
    QCOMPARE(VekFourier::spectrum(floats, 1000.0, 100.0, 0).size(), std::size_t(2));
}

NIMBRELLE_TEST_MAIN(TestPublicNumerics)
#include "TestPublicNumerics.moc"
