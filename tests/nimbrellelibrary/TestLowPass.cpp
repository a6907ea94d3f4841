// SPDX-License-Identifier: MIT
#include "nimbrellelibrary/LowPass.h"
#include "support/TestMain.h"

#include <cmath>

namespace {

constexpr double sampleFrequency = 10000.0;
constexpr double corner = 50.0;
constexpr double pi = 3.14159265358979323846;

/// Amplitude of a settled sine behind the filter, by correlation over whole periods.
double gainAt(LowPass &filter, double frequency)
{
    double real = 0.0;
    double imaginary = 0.0;
    constexpr int settling = 20000;
    constexpr int counted = 10000; // whole periods of every frequency here
    for (int i = 0; i < settling + counted; ++i) {
        const double phase = 2.0 * pi * frequency * i / sampleFrequency;
        const double output = filter.Filter(std::sin(phase));
        if (i >= settling) {
            real += output * std::sin(phase) * 2.0 / counted;
            imaginary += output * std::cos(phase) * 2.0 / counted;
        }
    }
    return std::hypot(real, imaginary);
}

/// Butterworth's formula, at the frequencies that the bilinear transform maps to each other.
double butterworth(int order, double frequency)
{
    const double ratio = std::tan(pi * frequency / sampleFrequency) / std::tan(pi * corner / sampleFrequency);
    return 1.0 / std::sqrt(1.0 + std::pow(ratio, 2 * order));
}

} // namespace

class TestLowPass : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void responseIsButterworths_data();
    void responseIsButterworths();
    void constantInputSettles();
    void withoutSectionsTheInputPasses();
    void setupForgetsTheSamples();
};

void TestLowPass::responseIsButterworths_data()
{
    QTest::addColumn<unsigned>("order");
    QTest::addColumn<int>("realOrder");
    QTest::addColumn<double>("frequency");
    QTest::newRow("second order, corner") << 2u << 2 << 50.0; // 0.7071
    QTest::newRow("second order, a decade below") << 2u << 2 << 5.0;
    QTest::newRow("second order, a decade above") << 2u << 2 << 500.0; // 40 dB down
    QTest::newRow("third order is second") << 3u << 2 << 500.0;
    QTest::newRow("fourth order, corner") << 4u << 4 << 50.0;
    QTest::newRow("fourth order, a decade above") << 4u << 4 << 500.0; // 80 dB down
    QTest::newRow("fifth order is fourth") << 5u << 4 << 100.0;
    QTest::newRow("sixth order, an octave above") << 6u << 6 << 100.0;
}

void TestLowPass::responseIsButterworths()
{
    QFETCH(unsigned, order);
    QFETCH(int, realOrder);
    QFETCH(double, frequency);
    LowPass filter;
    filter.setup(order, sampleFrequency, corner);
    const double expected = butterworth(realOrder, frequency);
    const double gain = gainAt(filter, frequency);
    QVERIFY2(std::abs(gain - expected) < 1e-9, qPrintable(QString("%1 instead of %2").arg(gain).arg(expected)));
}

void TestLowPass::constantInputSettles()
{
    for (const unsigned order : {0u, 2u, 3u, 4u, 6u}) {
        LowPass filter;
        filter.setup(order, sampleFrequency, corner);
        double output = 0.0;
        for (int i = 0; i < 10000; ++i)
            output = filter.Filter(2.5);
        QCOMPARE(output, 2.5);
    }
}

void TestLowPass::withoutSectionsTheInputPasses()
{
    LowPass filter;
    QCOMPARE(filter.Filter(1.25), 1.25);
    for (const unsigned order : {0u, 1u}) {
        filter.setup(order, sampleFrequency, corner);
        QCOMPARE(filter.Filter(1.25), 1.25);
    }
}

void TestLowPass::setupForgetsTheSamples()
{
    LowPass used;
    LowPass fresh;
    used.setup(2, sampleFrequency, corner);
    used.Filter(1e6);
    used.setup(2, sampleFrequency, corner);
    fresh.setup(2, sampleFrequency, corner);
    QCOMPARE(used.Filter(1.0), fresh.Filter(1.0));
}

NIMBRELLE_TEST_MAIN(TestLowPass)
#include "TestLowPass.moc"
