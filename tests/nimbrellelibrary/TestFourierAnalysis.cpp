// SPDX-License-Identifier: MIT
#include "benchmarks/reference/PlainFourier.h"
#include "calibration/DataRecords.h"
#include "nimbrellelibrary/FourierAnalysis.h"
#include "nimbrellelibrary/NimbrelleLib.h"
#include "support/TestMain.h"

#include <random>

namespace {

constexpr double pi = 3.141592653589793;

/// offset + amplitude cos(2 pi f t + phase), sampled at fs.
std::vector<float> sampledCosine(int samples, double fs, double f, double amplitude, double phaseDeg, double offset)
{
    std::vector<float> data;
    for (int n = 0; n < samples; ++n)
        data.push_back(float(offset + amplitude * std::cos(2.0 * pi * f * n / fs + phaseDeg * pi / 180.0)));
    return data;
}

std::complex<double> phasor(double amplitude, double phaseDeg)
{
    return std::polar(amplitude, phaseDeg * pi / 180.0);
}

/// Rough codes, as a converter gives them.
std::vector<float> noisyCodes(int samples, unsigned seed)
{
    std::mt19937 generator(seed);
    std::uniform_int_distribution<int> code(-20000, 20000);
    std::vector<float> data;
    for (int n = 0; n < samples; ++n)
        data.push_back(float(code(generator)) + 9000.0f * float(std::sin(0.01 * n)));
    return data;
}

double largestDeviation(const Spectrum &one, const Spectrum &reference)
{
    double largest = 0.0;
    for (std::size_t k = 0; k < reference.size(); ++k)
        largest = std::max(largest, std::abs(one[k] - reference[k]));
    return largest / std::abs(reference[1]);
}

} // namespace

class TestFourierAnalysis : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void foldsFrequenciesIntoTheirAlias_data();
    void foldsFrequenciesIntoTheirAlias();
    void findsAmplitudeAndPhase_data();
    void findsAmplitudeAndPhase();
    void separatesHarmonics();
    void integratesATriangleByHand();
    void agreesWithThePlainForm_data();
    void agreesWithThePlainForm();
    void distortionIsThatOfTheWorseSignal();
    void refusesTooFewSamples();
    void standaloneTransformsFindTheHarmonic();
    void standaloneTransformEndsBetweenSamples();
    void noticesClipping_data();
    void noticesClipping();
    void averagesImpedances();
};

void TestFourierAnalysis::foldsFrequenciesIntoTheirAlias_data()
{
    QTest::addColumn<double>("frequency");
    QTest::addColumn<double>("period");
    QTest::newRow("below half the sample frequency") << 100.0 << 10.0;
    QTest::newRow("direct current") << 0.0 << std::numeric_limits<double>::infinity();
    QTest::newRow("half the sample frequency") << 500.0 << -2.0;
    QTest::newRow("backwards") << 900.0 << -10.0;
    QTest::newRow("forwards again") << 1100.0 << 10.0;
    QTest::newRow("second fold, backwards") << 1900.0 << -10.0;
}

void TestFourierAnalysis::foldsFrequenciesIntoTheirAlias()
{
    QFETCH(double, frequency);
    QFETCH(double, period);
    QCOMPARE(NimbrelleLib::getRelativePeriod(1000.0, frequency), period);
    QCOMPARE(NimbrelleLib::getRelativePeriod_pos(1000.0, frequency), std::abs(period));
}

void TestFourierAnalysis::findsAmplitudeAndPhase_data()
{
    QTest::addColumn<int>("samples");
    QTest::addColumn<double>("frequency"); // of 1000 Hz samples
    QTest::addColumn<double>("tolerance"); // single precision, and a trapezoid's end between two samples
    QTest::newRow("whole periods") << 1000 << 10.0 << 2e-3;
    QTest::newRow("a fraction left over") << 1000 << 10.7 << 2e-2;
    QTest::newRow("undersampled") << 1000 << 1010.0 << 2e-3;
    QTest::newRow("undersampled, alias runs backwards") << 1000 << 990.0 << 2e-3;
    QTest::newRow("many folds") << 5000 << 7003.0 << 2e-3;
    QTest::newRow("short record") << 21 << 50.0 << 2e-2;
}

void TestFourierAnalysis::findsAmplitudeAndPhase()
{
    QFETCH(int, samples);
    QFETCH(double, frequency);
    QFETCH(double, tolerance);
    for (const double phaseDeg : {0.0, 35.0, -120.0}) {
        const auto data = sampledCosine(samples, 1000.0, frequency, 800.0, phaseDeg, 55.0);
        const auto spectrum = NimbrelleLib::MultiFrequencyFourier(data, 1000.0, frequency, 12);
        QCOMPARE(spectrum.size(), std::size_t(14));
        QVERIFY(std::abs(spectrum[0].real() / 2.0 - 55.0) < 800.0 * tolerance);
        QVERIFY(std::abs(std::conj(spectrum[1]) - phasor(800.0, phaseDeg)) < 800.0 * tolerance);
    }
}

void TestFourierAnalysis::separatesHarmonics()
{
    std::vector<float> data;
    for (int n = 0; n <= 2000; ++n) {
        const double angle = 2.0 * pi * n / 200.0;
        data.push_back(
            float(1000.0 * std::cos(angle + 0.4) + 30.0 * std::cos(2.0 * angle) + 7.0 * std::cos(13.0 * angle - 1.0)));
    }
    const auto spectrum = NimbrelleLib::MultiFrequencyFourier(data, 200.0, 1.0, 12);
    QVERIFY(std::abs(std::conj(spectrum[1]) - std::polar(1000.0, 0.4)) < 0.01);
    QVERIFY(std::abs(std::conj(spectrum[2]) - std::polar(30.0, 0.0)) < 0.01);
    QVERIFY(std::abs(std::conj(spectrum[13]) - std::polar(7.0, -1.0)) < 0.01);
    for (int k = 3; k < 13; ++k)
        QVERIFY2(std::abs(spectrum[std::size_t(k)]) < 0.01, qPrintable(QString::number(k)));
}

// Period 4, five samples 3 4 3 2 3: relative to the first 0 1 0 -1 0, angles 0, 90, 180, 270 degrees.
void TestFourierAnalysis::integratesATriangleByHand()
{
    const auto spectrum = NimbrelleLib::MultiFrequencyFourier({3.0f, 4.0f, 3.0f, 2.0f, 3.0f}, 4.0, 1.0, 1);
    QCOMPARE(spectrum.size(), std::size_t(3));
    QVERIFY(std::abs(spectrum[0] - 6.0) < 1e-6);
    QVERIFY(std::abs(spectrum[1] - std::complex<double>(0.0, 1.0)) < 1e-6); // (1 * 1 + (-1) * (-1)) * 2 / 4
    // Five samples of period 5: a window of min(4, 5). Samples 0 0 0 0 8 add half of the last one, at angle 0.
    const auto tail = NimbrelleLib::MultiFrequencyFourier({0.0f, 0.0f, 0.0f, 0.0f, 8.0f}, 5.0, 1.0, 0);
    QVERIFY(std::abs(tail[1] - std::complex<double>(2.0, 0.0)) < 1e-6);
}

void TestFourierAnalysis::agreesWithThePlainForm_data()
{
    QTest::addColumn<int>("samples");
    QTest::addColumn<double>("frequency");
    QTest::newRow("two samples") << 2 << 10.0;
    QTest::newRow("fewer than a vector") << 7 << 200.0;
    QTest::newRow("short") << 103 << 33.3;
    QTest::newRow("many samples a turn") << 5003 << 7.3; // harmonics share their angles
    QTest::newRow("one sample more than a power of two") << 4097 << 11.9;
    QTest::newRow("folded from the fourth harmonic on") << 3001 << 130.0;
    QTest::newRow("many turns") << 20011 << 437.77;
    QTest::newRow("undersampled") << 5003 << 12345.6;
    QTest::newRow("whole window") << 1000 << 0.2;
}

void TestFourierAnalysis::agreesWithThePlainForm()
{
    QFETCH(int, samples);
    QFETCH(double, frequency);
    const std::vector<float> current = noisyCodes(samples, 1);
    const std::vector<float> voltage = noisyCodes(samples, 2);
    std::vector<const FourierKernel *> kernels = {&baselineKernel};
    if (isAvx2Usable())
        kernels.push_back(avx2Kernel);
    for (const FourierKernel *kernel : kernels) {
        const RecordSpectra spectra = analyseRecord(current, voltage, 1000.0, frequency, 12, *kernel);
        QVERIFY(largestDeviation(spectra.current, plainFourier(current, 1000.0, frequency, 12)) < 1e-9);
        QVERIFY(largestDeviation(spectra.voltage, plainFourier(voltage, 1000.0, frequency, 12)) < 1e-9);
    }
}

void TestFourierAnalysis::distortionIsThatOfTheWorseSignal()
{
    RecordSpectra spectra = {{50.0, 100.0, 3.0, {0.0, 4.0}}, {70.0, 200.0, 2.0, 0.0}};
    QCOMPARE(spectra.thdPercent(), 5.0);
    spectra.current = {50.0, 0.0, 0.0, 0.0}; // no current at all: the voltage's remains
    QCOMPARE(spectra.thdPercent(), 1.0);
    spectra.voltage[1] = 0.0;
    QCOMPARE(spectra.thdPercent(), 0.0);
}

void TestFourierAnalysis::refusesTooFewSamples()
{
    QVERIFY(NimbrelleLib::MultiFrequencyFourier({}, 1000.0, 10.0, 12).empty());
    QVERIFY(NimbrelleLib::MultiFrequencyFourier({1.0f}, 1000.0, 10.0, 12).empty());
    QVERIFY(analyseRecord({1.0f, 2.0f}, {1.0f, 2.0f, 3.0f}, 1000.0, 10.0, 12).isEmpty());
}

void TestFourierAnalysis::standaloneTransformsFindTheHarmonic()
{
    std::vector<double> data;
    for (int n = 0; n <= 400; ++n)
        data.push_back(20.0 * std::cos(2.0 * pi * n / 100.0 - 0.5) + 3.0 * std::cos(6.0 * pi * n / 100.0 + 1.0));
    const ComplexDataPoint_t fundamental = NimbrelleLib::SingleFrequencyFourier(data, 400.0, 100.0, 0);
    QVERIFY(std::abs(fundamental.absZ - 20.0) < 1e-9);
    QVERIFY(std::abs(fundamental.phaseDeg - 0.5 * 180.0 / pi) < 1e-9); // the conjugate's
    QVERIFY(std::abs(NimbrelleLib::SingleFrequencyFourier(data, 400.0, 100.0, 2).absZ - 3.0) < 1e-9);

    const ComplexDataPoint_t whole = NimbrelleLib::SingleFrequencyFourier(data, 100.0, 2);
    QVERIFY(std::abs(whole.absZ - 3.0) < 1e-9);
    QVERIFY(std::abs(whole.phaseDeg + 180.0 / pi) < 1e-7);
    QCOMPARE(NimbrelleLib::SingleFrequencyFourier({}, 100.0, 2).absZ, 0.0);
    QCOMPARE(NimbrelleLib::SingleFrequencyFourier({}, 10.0, 100.0, 2).absZ, 0.0);
}

// A ramp at angle 0: the integral of n from 0 to 2.5 is 3.125, doubled and divided by the length.
void TestFourierAnalysis::standaloneTransformEndsBetweenSamples()
{
    const std::vector<double> ramp = {0.0, 1.0, 2.0, 3.0, 4.0};
    const ComplexDataPoint_t mean =
        NimbrelleLib::SingleFrequencyFourier(ramp, 2.5, std::numeric_limits<double>::infinity(), 0);
    QVERIFY(std::abs(mean.realZ - 2.5) < 1e-12);
    QVERIFY(std::abs(mean.imagZ) < 1e-12);
}

void TestFourierAnalysis::noticesClipping_data()
{
    QTest::addColumn<int>("source");
    QTest::addColumn<double>("stuckAt");
    QTest::addColumn<int>("times");
    QTest::addColumn<int>("found");
    QTest::newRow("12 bit, top") << 0 << 4095.0 << 20 << 4; // the run began at 5
    QTest::newRow("12 bit, bottom") << 0 << 0.0 << 25 << 4;
    QTest::newRow("one too short") << 0 << 4095.0 << 19 << 29;
    QTest::newRow("16 bit, top") << 1 << 32767.0 << 20 << 4;
    QTest::newRow("16 bit samples under a 12-bit name") << 0 << -32768.0 << 20 << 4;
    QTest::newRow("12-bit top is none of 16 bit") << 1 << 4095.0 << 20 << 30;
}

void TestFourierAnalysis::noticesClipping()
{
    QFETCH(int, source);
    QFETCH(double, stuckAt);
    QFETCH(int, times);
    QFETCH(int, found);
    std::vector<double> data(5, 100.0);
    data.insert(data.end(), std::size_t(times), stuckAt);
    data.insert(data.end(), 5, 100.0);
    QCOMPARE(NimbrelleLib::catchClipping(data, 0.0, ADC_src_t(source)), found);
}

void TestFourierAnalysis::averagesImpedances()
{
    ComplexDataPoint_t one;
    one.realZ = 2.0;
    one.imagZ = -8.0;
    one.frequency = 10.0;
    ComplexDataPoint_t other;
    other.realZ = 4.0;
    const ComplexDataPoint_t average = NimbrelleLib::getAvgComplexDataPoint({one, other});
    QCOMPARE(average.realZ, 3.0);
    QCOMPARE(average.imagZ, -4.0);
    QCOMPARE(average.absZ, 5.0);
    QVERIFY(std::abs(average.phaseDeg + 53.13010235415598) < 1e-9);
    QCOMPARE(average.frequency, 0.0);
    QVERIFY(std::isnan(NimbrelleLib::getAvgComplexDataPoint({}).absZ));
}

NIMBRELLE_TEST_MAIN(TestFourierAnalysis)
#include "TestFourierAnalysis.moc"
