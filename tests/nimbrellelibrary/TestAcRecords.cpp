// SPDX-License-Identifier: MIT
#include "calibration/ComplexDataPoint.h"
#include "calibration/Records.h"
#include "calibration/TableFolder.h"
#include "nimbrellelibrary/NimbrelleLib.h"
#include "support/TestMain.h"

#include <QDir>

#include <cmath>

namespace {

constexpr double pi = 3.141592653589793;
constexpr double sampleFrequency = 1000.0;
constexpr double signalFrequency = 50.0;
constexpr int samples = 201; // ten periods and the sample behind them

struct Signal {
    double offset;
    double amplitude;
    double phaseDeg;
    double thirdHarmonic;

    double at(int n) const
    {
        const double angle = 2.0 * pi * signalFrequency * n / sampleFrequency;
        return offset + amplitude * std::cos(angle + phaseDeg * pi / 180.0) + thirdHarmonic * std::cos(3.0 * angle);
    }
};

P24ExperimentalAcData mainHead(bool hasFloats, ADC_src_t source = ADC_src_t::External16Bit)
{
    P24ExperimentalAcData head = {};
    head.tick = 250000000; // 2.5 s
    head.frequency = float(signalFrequency);
    head.samplePeriod = float(1.0 / sampleFrequency);
    head.samplesPerSignal = samples;
    head.flags = quint8((hasFloats ? 1 : 0) | (int(source) << 1));
    head.currentRange = currentRange_t(2);
    head.voltageRange = voltageRange_t(1);
    head.weGain = ACgain_t::Gain2;
    head.iGain = ACgain_t::Gain5;
    return head;
}

template <typename Sample>
QByteArray mainPacket(const P24ExperimentalAcData &head, const Signal &current, const Signal &voltage)
{
    QByteArray packet = bytesOfRecord(head);
    for (const Signal &signal : {current, voltage})
        for (int n = 0; n < head.samplesPerSignal; ++n)
            packet += bytesOfRecord(Sample(std::lround(signal.at(n))));
    return packet;
}

ComplexDataPoint_t analysed(const QByteArray &packet, const CalibrationData &calibration)
{
    return NimbrelleLib::AnalyzeFRA(packet, &calibration, HardwareModel_t::Alder_2_5, QString());
}

bool isNear(double value, double expected, double relative)
{
    return std::abs(value - expected) <= relative * std::abs(expected);
}

bool isAllZero(const ComplexDataPoint_t &point)
{
    return bytesOfRecord(point) == QByteArray(116, '\0');
}

/// A battery cycler's batch: words of current and voltage in turn, each the sum of four readings.
struct GaleBatch {
    Gale_AC_Header_t head = {};
    std::vector<int> words;

    GaleBatch(const Signal &current, const Signal &voltage)
    {
        head.tick = 175000000; // 2 s
        head.samplesPerSignal = samples;
        head.frequency = float(signalFrequency);
        head.sampleFrequency = float(sampleFrequency);
        head.nSum = 4;
        for (int n = 0; n < samples; ++n) {
            words.push_back(int(std::lround(4.0 * current.at(n))));
            words.push_back(int(std::lround(4.0 * voltage.at(n))));
        }
    }
};

std::vector<ComplexDataPoint_t> analysed(std::vector<GaleBatch> batches, const CalibrationData &calibration,
                                         bool bipolar = false, const QString &debugPath = QString())
{
    std::vector<Gale_AC_Header_t> headers;
    std::vector<std::pair<int *, int>> words;
    std::vector<const CalibrationData *> calibrations(batches.size(), &calibration);
    for (GaleBatch &batch : batches) {
        headers.push_back(batch.head);
        words.emplace_back(batch.words.data(), int(batch.words.size()));
    }
    return NimbrelleLib::AnalyzeFRA(headers, words, calibrations, bipolar, {4, 5}, debugPath, 0.5);
}

/// A mainline channel on the Alder; its tables, if any, are those of an instrument named "Bench" in the documents.
CalibrationData alder(const TableFolder &documents)
{
    CalibrationData calibration = calibrated(HardwareModel_t::Alder_2_5, roundMainRecord());
    calibration.importCalData(documents.path(), QStringLiteral("Bench"));
    return calibration;
}

void writeTable(const TableFolder &documents, const QString &name, const QByteArray &contents)
{
    QDir(documents.path()).mkpath(QStringLiteral("Calibration files/Bench"));
    documents.write(QStringLiteral("Calibration files/Bench/") + name, contents);
}

bool isInfinite(const ComplexDataPoint_t &point)
{
    return std::isinf(point.absZ) && std::isinf(point.realZ) && point.imagZ == 0.0 && point.phaseDeg == 0.0 &&
           point.currentAmplitude == 0.0;
}

/// A cycler whose amplitudes need no correction by frequency: 1/2 A and 1/4 V per unit.
CalibrationData flatCycler()
{
    cal_vc07 record = roundGaleRecord();
    record.acIMag[0][0] = record.acVMag[0][0] = 1.0f;
    return calibrated(HardwareModel_t::Gale, record);
}

const Signal galeCurrent = {100.0, 20000.0, 10.0, 0.0};
const Signal galeVoltage = {4000.0, 80000.0, -50.0, 0.0};

} // namespace

Q_DECLARE_METATYPE(ADC_src_t)

class TestAcRecords : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void computesAMainlinePoint_data();
    void computesAMainlinePoint();
    void straightensTheInternalConverterAlone();
    void eachSignalsOwnLevelSelectsItsCapacitance();
    void withoutCurrentTheImpedanceIsInfinite();
    void currentAtOneCodeStaysInfiniteBehindACable_data();
    void currentAtOneCodeStaysInfiniteBehindACable();
    void cableTakesItsCurrent();
    void refusesMalformedPackets_data();
    void refusesMalformedPackets();
    void takesAStoredTransform();
    void computesACyclerPoint();
    void parallelChannelsAddTheirCurrents();
    void groupAveragesDistortionAndKeepsTheLastPeriods();
    void shortRecordsHaveNoWholePeriod();
    void bipolarPairKeepsTheSecondChannelsMeans();
    void multiToneGivesSixPoints();
    void takesCommonModeCurrentOff();
    void currentAtOneCodeHasNoCommonMode();
    void shortCyclerDataReadAsZeros();
    void writesTheTimeSeries();
};

void TestAcRecords::computesAMainlinePoint_data()
{
    QTest::addColumn<bool>("hasFloats");
    QTest::newRow("16-bit samples") << false;
    QTest::newRow("float samples") << true;
}

// At gain 2 a unit of voltage is 0.0005 / 2 V; in range 2 at gain 5 one of current is 0.000005 / 5 A.
void TestAcRecords::computesAMainlinePoint()
{
    QFETCH(bool, hasFloats);
    const Signal current = {500.0, 10000.0, 20.0, 0.0};
    const Signal voltage = {-800.0, 20000.0, -40.0, 1000.0};
    const P24ExperimentalAcData head = mainHead(hasFloats);
    const QByteArray packet =
        hasFloats ? mainPacket<float>(head, current, voltage) : mainPacket<qint16>(head, current, voltage);
    const ComplexDataPoint_t point = analysed(packet, calibrated(HardwareModel_t::Alder_2_5, roundMainRecord()));
    QVERIFY(isNear(point.voltageAmplitude, 5.0, 1e-4));
    QVERIFY(isNear(point.currentAmplitude, 0.01, 1e-4));
    QVERIFY(isNear(point.absZ, 500.0, 1e-4));
    QVERIFY(isNear(point.phaseDeg, -60.0, 1e-4));
    QVERIFY(isNear(point.realZ, 250.0, 3e-4));
    QVERIFY(isNear(point.imagZ, -500.0 * std::sqrt(0.75), 3e-4));
    QVERIFY(isNear(point.thdPercent, 5.0, 1e-3)); // 1000 of 20000
    QVERIFY(isNear(point.rawDCvoltage, -800.0, 1e-3));
    QVERIFY(isNear(point.rawDCcurrent, 500.0, 1e-3));
    QVERIFY(isNear(point.dcVoltage, -0.2, 1e-3));
    QVERIFY(isNear(point.dcCurrent, 0.0005, 1e-3));
    QCOMPARE(point.timestamp, 2.5);
    QCOMPARE(point.frequency, 50.0);
    QCOMPARE(point.numPeriods, 10.0);
    QCOMPARE(index(point.currentRange), 2);
    QCOMPARE(index(point.voltageRange), 1);
    QCOMPARE(index(point.weGain), 1);
    QCOMPARE(index(point.iGain), 2);
}

void TestAcRecords::straightensTheInternalConverterAlone()
{
    const TableFolder documents;
    QByteArray doubled;
    for (int code = 0; code < 4096; ++code)
        doubled += QByteArray::number(2 * code) + '\n';
    writeTable(documents, QStringLiteral("PIC_ADC_LUT_current.csv"), doubled);
    const CalibrationData calibration = alder(documents);

    const Signal codes = {2000.0, 1500.0, 0.0, 0.0};
    for (const ADC_src_t source : {ADC_src_t::Internal12Bit, ADC_src_t::External16Bit}) {
        const ComplexDataPoint_t point =
            analysed(mainPacket<qint16>(mainHead(false, source), codes, codes), calibration);
        const double factor = source == ADC_src_t::Internal12Bit ? 2.0 : 1.0;
        QVERIFY(isNear(point.currentAmplitude, factor * 0.0015, 1e-3));
        QVERIFY(isNear(point.rawDCcurrent, factor * 2000.0, 1e-3));
        QVERIFY(isNear(point.rawDCvoltage, 2000.0, 1e-3));
    }
}

// At code 2048 nothing is corrected, at 3000 the capacitance weighs 2 pi * 50 Hz * 1000 ohms * 5 nF a code.
void TestAcRecords::eachSignalsOwnLevelSelectsItsCapacitance()
{
    const TableFolder documents;
    writeTable(documents, QStringLiteral("V_input_capacitance.csv"), "5000\n0\n");
    writeTable(documents, QStringLiteral("I_input_capacitance.csv"), "5000\n0\n");
    const CalibrationData calibration = alder(documents);
    const Signal atReference = {2048.0, 500.0, 0.0, 0.0};
    const Signal above = {3000.0, 500.0, 0.0, 0.0};
    const double a = 2.0 * pi * 50.0 * 1000.0 * 5e-9 * 3000.0;
    const double b = 2.0 * pi * 50.0 * 1000.0 * 5e-9 * 2048.0;
    const double divisor = std::sqrt((1.0 + b * b) / (1.0 + a * a));
    const P24ExperimentalAcData head = mainHead(false, ADC_src_t::Internal12Bit);
    // 500 codes are 0.125 V at gain 2, 0.0005 A at gain 5
    const ComplexDataPoint_t voltageAbove = analysed(mainPacket<qint16>(head, atReference, above), calibration);
    QVERIFY(isNear(voltageAbove.voltageAmplitude, 0.125 / divisor, 2e-3));
    QVERIFY(isNear(voltageAbove.currentAmplitude, 0.0005, 2e-3));
    const ComplexDataPoint_t currentAbove = analysed(mainPacket<qint16>(head, above, atReference), calibration);
    QVERIFY(isNear(currentAbove.voltageAmplitude, 0.125, 2e-3));
    QVERIFY(isNear(currentAbove.currentAmplitude, 0.0005 / divisor, 2e-3));
}

void TestAcRecords::withoutCurrentTheImpedanceIsInfinite()
{
    const QByteArray packet = mainPacket<qint16>(mainHead(false), {0.0, 0.0, 0.0, 0.0}, {0.0, 1000.0, 0.0, 0.0});
    const ComplexDataPoint_t point = analysed(packet, calibrated(HardwareModel_t::Alder_2_5, roundMainRecord()));
    QVERIFY(std::isinf(point.absZ));
    QVERIFY(std::isinf(point.realZ));
    QCOMPARE(point.imagZ, 0.0);
    QCOMPARE(point.phaseDeg, 0.0);
    QCOMPARE(point.currentAmplitude, 0.0);
    QVERIFY(point.thdPercent < 0.5);

    cal_vc07 record = roundGaleRecord();
    record.acVMag[0][0] = 1.0f; // and no factor for the current
    const auto points = analysed({GaleBatch(galeCurrent, galeVoltage)}, calibrated(HardwareModel_t::Gale, record));
    QCOMPARE(points.size(), std::size_t(1));
    QVERIFY(std::isinf(points[0].absZ));
    QCOMPARE(points[0].imagZ, 0.0);
}

void TestAcRecords::currentAtOneCodeStaysInfiniteBehindACable_data()
{
    QTest::addColumn<bool>("hasFloats");
    QTest::addColumn<ADC_src_t>("source");
    QTest::newRow("external converter") << false << ADC_src_t::External16Bit;
    QTest::newRow("internal converter") << false << ADC_src_t::Internal12Bit;
    QTest::newRow("float samples") << true << ADC_src_t::External16Bit;
}

// The cable alone would answer with its own impedance, of opposite sign: a credible one.
void TestAcRecords::currentAtOneCodeStaysInfiniteBehindACable()
{
    QFETCH(bool, hasFloats);
    QFETCH(ADC_src_t, source);
    const TableFolder documents;
    writeTable(documents, QStringLiteral("CableParallelImpedance_range2.csv"), "h\n1,1000,-90");
    const CalibrationData calibration = alder(documents);
    const Signal current = {500.0, 0.0, 0.0, 0.0};
    const Signal voltage = {2000.0, 1000.0, 0.0, 0.0};
    const P24ExperimentalAcData head = mainHead(hasFloats, source);
    const ComplexDataPoint_t point =
        analysed(hasFloats ? mainPacket<float>(head, current, voltage) : mainPacket<qint16>(head, current, voltage),
                 calibration);
    QVERIFY2(isInfinite(point), qPrintable(QString::number(point.absZ)));
    QVERIFY(isNear(point.voltageAmplitude, 0.25, 1e-3));
    QVERIFY(isNear(point.rawDCcurrent, 500.0, 1e-6));

    QByteArray stored = bytesOfRecord(head);
    for (const float number : {20000.0f, 0.0f, 0.0f, 0.0f, 1600.0f, 1000.0f})
        stored += bytesOfRecord(number);
    QVERIFY(isInfinite(NimbrelleLib::AnalyzeFourierOnRecover(stored, &calibration, HardwareModel_t::Alder_2_5, {})));
}

// 5 V and 0.01 A at -60 degrees: 500 ohms, whose admittance is (1 + i sqrt 3) / 1000. Behind a cable of -2000i ohms,
// which is i / 2000, (1 + i (sqrt 3 - 1/2)) / 1000 are left.
void TestAcRecords::cableTakesItsCurrent()
{
    const TableFolder documents;
    writeTable(documents, QStringLiteral("CableParallelImpedance_range2.csv"), "h\n1,2000,-90");
    const ComplexDataPoint_t point = analysed(
        mainPacket<qint16>(mainHead(false), {0.0, 10000.0, 20.0, 0.0}, {0.0, 20000.0, -40.0, 0.0}), alder(documents));
    const double admittance = std::hypot(1.0, std::sqrt(3.0) - 0.5) / 1000.0;
    QVERIFY(isNear(point.absZ, 1.0 / admittance, 3e-4));
    QVERIFY(isNear(point.phaseDeg, -std::atan(std::sqrt(3.0) - 0.5) * 180.0 / pi, 3e-4));
    QVERIFY(isNear(point.voltageAmplitude, 5.0, 1e-4));
    QVERIFY(isNear(point.currentAmplitude, 5.0 * admittance, 3e-4)); // the cell's alone
}

void TestAcRecords::refusesMalformedPackets_data()
{
    QTest::addColumn<QByteArray>("packet");
    const QByteArray good = mainPacket<qint16>(mainHead(false), galeCurrent, {0.0, 1000.0, 0.0, 0.0});
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("cut head") << good.left(28);
    QTest::newRow("cut samples") << good.left(good.size() - 1);
    QTest::newRow("surplus") << good + '\0';
    QTest::newRow("floats claimed") << good.left(20) + '\3' + good.mid(21);
    P24ExperimentalAcData head = mainHead(false);
    head.samplesPerSignal = 0;
    QTest::newRow("no samples") << bytesOfRecord(head);
    head.samplesPerSignal = 1;
    QTest::newRow("a single sample") << bytesOfRecord(head) + QByteArray(4, '\1');
    head.samplesPerSignal = -2; // -2 samples would be 8 bytes less than the head
    QTest::newRow("negative count in a cut head") << bytesOfRecord(head).left(21);
    head.samplesPerSignal = 0x40000000;
    QTest::newRow("count that overflows") << bytesOfRecord(head);
}

void TestAcRecords::refusesMalformedPackets()
{
    QFETCH(QByteArray, packet);
    QVERIFY(isAllZero(analysed(packet, calibrated(HardwareModel_t::Alder_2_5, roundMainRecord()))));
    const auto calibration = calibrated(HardwareModel_t::Alder_2_5, roundMainRecord());
    QVERIFY(isAllZero(NimbrelleLib::AnalyzeFourierOnRecover(packet, &calibration, HardwareModel_t::Alder_2_5, {})));
}

void TestAcRecords::takesAStoredTransform()
{
    QByteArray packet = bytesOfRecord(mainHead(true));
    for (const float number : {20000.0f, 0.0f, 0.0f, 10000.0f, 1600.0f, 1000.0f})
        packet += bytesOfRecord(number);
    const auto calibration = calibrated(HardwareModel_t::Alder_2_5, roundMainRecord());
    const ComplexDataPoint_t point =
        NimbrelleLib::AnalyzeFourierOnRecover(packet, &calibration, HardwareModel_t::Alder_2_5, QString());
    QVERIFY(isNear(point.absZ, 500.0, 1e-6));
    QVERIFY(isNear(point.phaseDeg, 90.0, 1e-6)); // the quotient is -500i, its conjugate 500i
    QVERIFY(isNear(point.rawDCvoltage, 800.0, 1e-9));
    QVERIFY(isNear(point.rawDCcurrent, 500.0, 1e-9));
    QCOMPARE(point.thdPercent, 0.0);
    QCOMPARE(point.numPeriods, 1.0);
    QCOMPARE(point.timestamp, 2.5);
    QCOMPARE(point.frequency, 50.0);
    QCOMPARE(index(point.currentRange), 2);
    QCOMPARE(index(point.iGain), 2);
}

void TestAcRecords::computesACyclerPoint()
{
    const auto points = analysed({GaleBatch(galeCurrent, galeVoltage)}, flatCycler());
    QCOMPARE(points.size(), std::size_t(1));
    const ComplexDataPoint_t &point = points[0];
    QVERIFY(isNear(point.currentAmplitude, 10000.0, 1e-4));
    QVERIFY(isNear(point.voltageAmplitude, 20000.0, 1e-4));
    QVERIFY(isNear(point.absZ, 2.0, 1e-4));
    QVERIFY(isNear(point.phaseDeg, -60.0, 1e-4));
    QVERIFY(isNear(point.realZ, 1.0, 3e-4));
    QVERIFY(isNear(point.imagZ, -std::sqrt(3.0), 3e-4));
    QVERIFY(isNear(point.dcCurrent, 50.0, 1e-2));
    QVERIFY(isNear(point.dcVoltage, 1000.0, 1e-2));
    QCOMPARE(point.timestamp, 2.0);
    QCOMPARE(point.numPeriods, 10.0);

    GaleBatch first(galeCurrent, galeVoltage); // its ranges are the group's
    first.head.currentRange = currentRange_t(1);
    first.head.voltageRange = voltageRange_t(2);
    const auto group = analysed({first, GaleBatch(galeCurrent, galeVoltage)}, flatCycler());
    QCOMPARE(index(group[0].currentRange), 1);
    QCOMPARE(index(group[0].voltageRange), 2);
}

void TestAcRecords::parallelChannelsAddTheirCurrents()
{
    const GaleBatch batch(galeCurrent, galeVoltage);
    const auto points = analysed({batch, batch}, flatCycler());
    QVERIFY(isNear(points[0].currentAmplitude, 20000.0, 1e-4));
    QVERIFY(isNear(points[0].voltageAmplitude, 20000.0, 1e-4));
    QVERIFY(isNear(points[0].absZ, 1.0, 1e-4));
    QVERIFY(isNear(points[0].dcCurrent, 50.0, 1e-2)); // not added up: the last channel's
    QVERIFY(isNear(points[0].dcVoltage, 500.0, 1e-2));
}

void TestAcRecords::groupAveragesDistortionAndKeepsTheLastPeriods()
{
    const GaleBatch twoPercent(galeCurrent, {4000.0, 80000.0, -50.0, 1600.0});
    GaleBatch fivePercent({100.0, 20000.0, 10.0, 1000.0}, galeVoltage); // the current's distortion is the larger one
    fivePercent.head.samplesPerSignal = 141;
    const auto points = analysed({twoPercent, fivePercent}, flatCycler());
    QVERIFY(isNear(points[0].thdPercent, 3.5, 1e-2));
    QCOMPARE(points[0].numPeriods, 7.0);
    const auto pair = analysed({fivePercent, twoPercent}, flatCycler(), true);
    QVERIFY(isNear(pair[0].thdPercent, 3.5, 1e-2));
    QCOMPARE(pair[0].numPeriods, 10.0);
}

void TestAcRecords::shortRecordsHaveNoWholePeriod()
{
    GaleBatch batch(galeCurrent, galeVoltage);
    batch.head.samplesPerSignal = 19; // of 20 samples a period
    QCOMPARE(analysed({batch}, flatCycler())[0].numPeriods, 0.0);

    P24ExperimentalAcData head = mainHead(false);
    head.samplesPerSignal = 19;
    const Signal signal = {0.0, 1000.0, 0.0, 0.0};
    const auto calibration = calibrated(HardwareModel_t::Alder_2_5, roundMainRecord());
    QCOMPARE(analysed(mainPacket<qint16>(head, signal, signal), calibration).numPeriods, 1.0); // what it is taken for
}

void TestAcRecords::bipolarPairKeepsTheSecondChannelsMeans()
{
    const auto points = analysed(
        {GaleBatch(galeCurrent, galeVoltage), GaleBatch({200.0, 20000.0, 10.0, 0.0}, galeVoltage)}, flatCycler(), true);
    QVERIFY(isNear(points[0].dcCurrent, -50.0, 1e-2)); // half of -100 A
    QVERIFY(isNear(points[0].dcVoltage, -1000.0, 1e-2));
    QVERIFY(isNear(points[0].currentAmplitude, 10000.0, 1e-4));
    QVERIFY(isNear(points[0].voltageAmplitude, 40000.0, 1e-4));
}

void TestAcRecords::multiToneGivesSixPoints()
{
    GaleBatch batch(galeCurrent, galeVoltage);
    batch.head.driveMode = 2;
    batch.head.frequency = 25.0f; // the signal is at twice the base
    const auto points = analysed({batch}, flatCycler());
    QCOMPARE(points.size(), std::size_t(6));
    const double frequencies[] = {50.0, 75.0, 100.0, 125.0, 150.0, 200.0};
    for (std::size_t i = 0; i < 6; ++i)
        QCOMPARE(double(points[i].frequency), frequencies[i]);
    QVERIFY(isNear(points[0].absZ, 2.0, 1e-4));
}

void TestAcRecords::takesCommonModeCurrentOff()
{
    cal_vc07 record = roundGaleRecord();
    record.acIMag[0][0] = record.acVMag[0][0] = 1.0f;
    record.cmImag[1] = 0.5f / float(signalFrequency); // half a siemens at 50 Hz, halved by the current's gain
    const auto points = analysed({GaleBatch({0.0, 20000.0, 0.0, 0.0}, {0.0, 80000.0, 0.0, 0.0})},
                                 calibrated(HardwareModel_t::Gale, record));
    // 10000 A - 20000 V * 0.25i S = (10000 - 5000i) A
    QVERIFY(isNear(points[0].currentAmplitude, std::sqrt(1.25e8), 1e-4));
    QVERIFY(isNear(points[0].phaseDeg, std::atan2(-0.5, 1.0) * 180.0 / pi, 1e-3));
}

// Common mode alone would answer with the impedance that drives it: a credible one.
void TestAcRecords::currentAtOneCodeHasNoCommonMode()
{
    cal_vc07 record = roundGaleRecord();
    record.acIMag[0][0] = record.acVMag[0][0] = 1.0f;
    record.cmReal[0] = 0.5f;
    const CalibrationData calibration = calibrated(HardwareModel_t::Gale, record);
    const GaleBatch still({100.0, 0.0, 0.0, 0.0}, galeVoltage);
    const GaleBatch alive(galeCurrent, galeVoltage);
    const auto points = analysed({still, still}, calibration);
    QVERIFY2(isInfinite(points[0]), qPrintable(QString::number(points[0].absZ)));
    QVERIFY(isNear(points[0].voltageAmplitude, 20000.0, 1e-4));
    QVERIFY(std::isfinite(analysed({still, alive}, calibration)[0].absZ));
    QVERIFY(std::isfinite(analysed({alive, still}, calibration)[0].absZ));
}

void TestAcRecords::shortCyclerDataReadAsZeros()
{
    GaleBatch batch(galeCurrent, galeVoltage);
    batch.words.resize(101); // an odd word is no pair
    batch.words.shrink_to_fit();
    QCOMPARE(analysed({batch}, flatCycler()).size(), std::size_t(1));

    batch.head.samplesPerSignal = 0;
    QVERIFY(analysed({batch}, flatCycler()).empty());
    batch.head.samplesPerSignal = 0xFFFFFFFFu; // nobody has that many samples
    QVERIFY(analysed({batch}, flatCycler()).empty());
    QVERIFY(analysed(std::vector<GaleBatch>(), flatCycler()).empty());
}

void TestAcRecords::writesTheTimeSeries()
{
    const QTemporaryDir folder;
    const GaleBatch batch(galeCurrent, galeVoltage);
    const auto points = analysed({batch, batch}, flatCycler(), false, folder.path() + "/new/");
    QFile file(folder.path() + "/new/TimeSeriesData_1.5s_50Hz.csv");
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QList<QByteArray> lines = file.readAll().split('\n');
    QCOMPARE(lines.size(), 4 + samples + 1); // heading, values, blank, heading, samples; a closing line feed
    QVERIFY(lines[0].startsWith("Elapsed Experiment Time(s),Signal Frequency,"));
    QVERIFY(lines[0].endsWith(",Z' (Ohms),-Z\" (Ohms), THD(%), Amplitude(A), Amplitude(V)"));
    const QList<QByteArray> values = lines[1].split(',');
    QCOMPARE(values.size(), 14); // 13 and a closing comma
    QCOMPARE(values[0].toDouble(), 1.5);
    QCOMPARE(values[3].toDouble(), 20.0);
    QCOMPARE(values[4], QByteArray("4"));
    QVERIFY(isNear(values[9].toDouble(), -points[0].imagZ, 1e-12));
    QCOMPARE(lines[3], QByteArray("Elapsed Time (s), Channel 5 Current(A), Channel 5 Voltage(V),"
                                  " Channel 6 Current(A), Channel 6 Voltage(V)"));
    QVERIFY(lines[4].startsWith("0.000000000,"));
    QCOMPARE(lines[5].split(',').size(), 5);
    QVERIFY(lines[5].startsWith("0.001000000,"));
    QVERIFY(isNear(lines[5].split(',')[1].toDouble(), 0.5 * galeCurrent.at(1), 1e-4));
}

NIMBRELLE_TEST_MAIN(TestAcRecords)
#include "TestAcRecords.moc"
