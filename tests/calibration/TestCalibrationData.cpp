// SPDX-License-Identifier: MIT
#include "calibration/Records.h"
#include "support/TestMain.h"

#include <cmath>
#include <cstring>

namespace {

CalibrationData mainline(const cal_v4 &record = roundMainRecord())
{
    return calibrated(HardwareModel_t::Alder_2_5, record);
}

CalibrationData gale(const cal_vc07 &record = roundGaleRecord())
{
    return calibrated(HardwareModel_t::Gale, record);
}

template <typename Number>
void put(QByteArray &bytes, int offset, Number number)
{
    std::memcpy(bytes.data() + offset, &number, sizeof number);
}

/// A sample as it comes over the wire, each field at its offset.
QByteArray mainSample()
{
    QByteArray bytes(44, 0);
    put(bytes, 0, 3.0f);                 // working-electrode term
    put(bytes, 4, 20000.0f);             // voltage
    put(bytes, 8, 1000.0f);              // current
    put(bytes, 12, 8.0f);                // counter electrode
    put(bytes, 16, 12.5);                // charge
    put(bytes, 24, quint64(3) << 62);    // tick, top bit set
    put(bytes, 32, qint16(-16));         // voltage reference
    put(bytes, 34, qint16(40));          // current reference
    put(bytes, 36, quint32(0x01900000)); // 25 degrees
    put(bytes, 40, quint8(2));           // current range
    put(bytes, 41, quint8(1));           // voltage range
    put(bytes, 42, quint8(3));           // voltage gain, 10
    put(bytes, 43, quint8(2));           // current gain, 5
    return bytes;
}

QByteArray galeSample(quint8 currentRange = 0, quint8 voltageRange = 1)
{
    QByteArray bytes(36, 0);
    put(bytes, 0, quint64(175000000)); // tick, 2 s
    put(bytes, 8, 100.0f);             // current
    put(bytes, 12, 1000.0f);           // voltage
    put(bytes, 16, 16250.0f);          // temperature, half the supply
    put(bytes, 21, quint8(200));       // counter
    put(bytes, 22, currentRange);
    put(bytes, 23, voltageRange);
    put(bytes, 24, qint16(8));    // current reference
    put(bytes, 26, qint16(-16));  // voltage reference
    put(bytes, 28, qint64(6400)); // charge
    return bytes;
}

/// A cycler whose ranges have nothing in common.
cal_vc07 unevenGaleRecord()
{
    cal_vc07 record = {};
    record.calMagic = CalMagic::vc07;
    for (int r = 0; r < 8; ++r) {
        const auto n = float(r + 1);
        record.iGain[r] = 100.0f * n;
        record.iRefCoeff[r] = 10.0f * n;
        record.iOffset[r] = 1000.0f * n;
        record.iQuadratic[r] = n / 1024.0f;
        record.iCubic[r] = n / 4194304.0f;
    }
    for (int r = 0; r < 4; ++r) {
        const auto n = float(r + 1);
        record.vGain[r] = 100.0f * n;
        record.vRefCoeff[r] = 10.0f * n;
        record.vOffset[r] = 1000.0f * n;
    }
    return record;
}

bool isNear(double value, double expected)
{
    return std::abs(value - expected) <= 1e-6 * std::abs(expected);
}

ProcessedDCData processed(const CalibrationData &calibration, const QByteArray &payload)
{
    return calibration.ProcessDCDataPoint(ExperimentalDcData::fromPayload(payload));
}

} // namespace

class TestCalibrationData : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void takesRecordsOfAnyLength();
    void unknownRecordAnswersNeutrally();
    void convertsMainlineSamples();
    void temperatureNeedsAModelThatMeasuresIt();
    void mainlineFormulasTakeTheModelsCounts_data();
    void mainlineFormulasTakeTheModelsCounts();
    void convertsCyclerSamples();
    void everyCyclerRangeReadsItsOwnCurrent_data();
    void everyCyclerRangeReadsItsOwnCurrent();
    void everyCyclerRangeReadsItsOwnVoltage();
    void cyclerRangesOutsideTheRecordReadAsRange0();
    void boardDecidesTheChargeTick();
    void shortSamplesReadAsZero();
    void clampsMainlineSetpointsToTheModel();
    void cyclerVoltageRoundsAndCurrentTruncates();
    void choosesCyclerRanges();
    void listsMainlineSpans();
    void listsCyclerSpans();
    void tareReplacesOffsetsOfCyclersAlone();
    void convertsTemperatureLimits();
    void newModelHasAnUnconfiguredBoard();
};

void TestCalibrationData::takesRecordsOfAnyLength()
{
    const cal_vc07 record = roundGaleRecord();
    QByteArray bytes(reinterpret_cast<const char *>(&record), int(sizeof record));
    bytes.append(QByteArray(100, '\xFF'));
    CalibrationData calibration;
    calibration.setModelType(HardwareModel_t::Gale);
    calibration.importCalData(bytes.constData(), bytes.size());
    QCOMPARE(calibration.getCalVersion(), 5);
    QCOMPARE(processed(calibration, galeSample()).current, 52.0);

    const QByteArray head = bytes.left(8); // on the heap, so that reading on would be noticed
    calibration.importCalData(head.constData(), head.size());
    QCOMPARE(calibration.getCalVersion(), 5);
    QCOMPARE(processed(calibration, galeSample()).current, 50.0); // the factor of the reference word is missing

    calibration.importCalData(head.constData(), 3);
    QCOMPARE(calibration.getCalVersion(), 0);
}

void TestCalibrationData::unknownRecordAnswersNeutrally()
{
    CalibrationData calibration = mainline();
    QCOMPARE(calibration.getCalVersion(), 4);
    calibration.importCalData("abcd", 4);
    QCOMPARE(calibration.getCalVersion(), 0);

    const ProcessedDCData point = processed(calibration, mainSample());
    QCOMPARE(point.timestamp, 0.0);
    QCOMPARE(point.workingElectrodeVoltage, 0.0);
    QCOMPARE(point.counterElectrodeVoltage, 0.0);
    QCOMPARE(point.current, 0.0);
    QCOMPARE(point.charge, 0.0);
    QCOMPARE(point.temperature, 0.0);
    QCOMPARE(point.counter, quint16(0));
    QCOMPARE(index(point.currentRange), 255);
    QCOMPARE(index(point.voltageRange), 0);
    QCOMPARE(index(point.weGain), 255);
    QCOMPARE(index(point.iGain), 255);
    QCOMPARE(calibration.GetBINVoltageForDAC(1.0, voltageRange_t::Auto), 0);
    QCOMPARE(calibration.GetBINCurrentForDAC(currentRange_t::Auto, 1.0), 0);
    QCOMPARE(calibration.getMinCurrentRange_dc(1.0f), currentRange_t::OFF);
    QCOMPARE(calibration.getMinCurrentRange_GalvEIS(1.0f, 1.0f), currentRange_t::OFF);
    QCOMPARE(index(calibration.getMinVoltageRange(1.0f)), 0);
    QVERIFY(calibration.getCurrentMinMaxList().empty());
}

void TestCalibrationData::convertsMainlineSamples()
{
    const ProcessedDCData point = processed(mainline(), mainSample());
    QCOMPARE(point.timestamp, 13835058055282163712.0 / 1e8);
    QCOMPARE(float(point.workingElectrodeVoltage), 0.00005f * 20000.0f - 1.0f);
    QCOMPARE(point.counterElectrodeVoltage, 1.0 + 16.0 - 1.5 - 0.25);
    QCOMPARE(float(point.current), 0.000005f * (200.0f + 20.0f)); // a low-side range, without common mode
    QCOMPARE(point.charge, 12.5);
    QVERIFY(std::isnan(point.temperature)); // the Alder has no sensor
    QCOMPARE(index(point.currentRange), 2);
    QCOMPARE(index(point.voltageRange), 1);
    QCOMPARE(index(point.weGain), 3);
    QCOMPARE(index(point.iGain), 2);
    QCOMPARE(point.counter, quint16(0));
    QCOMPARE(point.spare, 0.0);
}

void TestCalibrationData::temperatureNeedsAModelThatMeasuresIt()
{
    QCOMPARE(processed(calibrated(HardwareModel_t::Heron_2_0, roundMainRecord()), mainSample()).temperature, 25.0);
    CalibrationData calibration = mainline();
    calibration.setModelType(HardwareModel_t::Heron_2_0); // behind the record
    QCOMPARE(processed(calibration, mainSample()).temperature, 25.0);
}

void TestCalibrationData::mainlineFormulasTakeTheModelsCounts_data()
{
    QTest::addColumn<int>("model");
    QTest::addColumn<int>("highSideRanges");
    QTest::addColumn<int>("dcRanges");
    QTest::addColumn<int>("voltageRanges");
    QTest::addColumn<int>("rangeFor4Volts"); // the smaller ones read to 8.2 V with gain 2, to 3.3 V with gain 5
    QTest::newRow("Alder 2.5, ten ranges in all") << 35 << 2 << 8 << 4 << 1;
    QTest::newRow("Heron 2.2, ten ranges in all") << 28 << 3 << 8 << 4 << 1;
    QTest::newRow("Ibis 1.0, three voltage ranges") << 15 << 4 << 9 << 3 << 0;
    QTest::newRow("Dune 2.0, one voltage range") << 10 << 1 << 8 << 1 << 0;
}

void TestCalibrationData::mainlineFormulasTakeTheModelsCounts()
{
    QFETCH(int, model);
    QFETCH(int, highSideRanges);
    const CalibrationData calibration = calibrated(HardwareModel_t(model), roundMainRecord());
    QFETCH(int, dcRanges);
    QCOMPARE(index(calibration.getMinCurrentRange_dc(0.0f)), dcRanges - 1);
    QCOMPARE(index(calibration.getMinCurrentRange_GalvEIS(0.0f, 0.0f)), dcRanges - 1);
    QFETCH(int, voltageRanges);
    QCOMPARE(index(calibration.getMinVoltageRange(0.0f)), voltageRanges - 1);
    QTEST(index(calibration.getMinVoltageRange(4.0f)), "rangeFor4Volts");
    for (int range = 0; range < 10; ++range) {
        MainDcRecord_t record = {};
        record.currentRange = currentRange_t(range);
        record.secondRaw = 8.0f; // common mode, all that there is of the current
        const ExperimentalDcData data(record);
        QCOMPARE(calibration.getCurrent(&data) != 0.0, range < highSideRanges);
    }
}

void TestCalibrationData::convertsCyclerSamples()
{
    cal_vc07 record = roundGaleRecord();
    record.iQuadratic[0] = 0.5f;
    record.iCubic[0] = 0.25f;
    record.vOffset[1] = 4.0f;
    const ProcessedDCData point = processed(gale(record), galeSample());
    QCOMPARE(point.timestamp, 2.0);
    QCOMPARE(point.workingElectrodeVoltage, 4.0 + 125.0 - 2.0);
    QVERIFY(std::isnan(point.counterElectrodeVoltage));
    QCOMPARE(point.current, 0.25 * 140608.0 + 0.5 * 2704.0 + 52.0); // of x = 0.5 * 100 + 0.25 * 8
    QVERIFY(std::abs(point.charge - 0.05) < 1e-12);
    QVERIFY(std::abs(point.temperature - 25.0) < 1e-4);
    QByteArray cooler = galeSample();
    put(cooler, 16, 32500.0f * 2.0f / 3.0f); // twice the resistance
    QVERIFY(std::abs(processed(gale(record), cooler).temperature - 9.8877) < 1e-3);
    QCOMPARE(point.counter, quint16(200));
    QCOMPARE(index(point.voltageRange), 1);
    QCOMPARE(index(point.weGain), 255);
    QCOMPARE(index(point.iGain), 255);
}

// With n one more than the range and a reference word of 3: (1000 + 100 * 2 + 3 * 10) n, read directly, in a batch and
// as a mean; for the current the x of its cubic.
void TestCalibrationData::everyCyclerRangeReadsItsOwnCurrent_data()
{
    QTest::addColumn<int>("range");
    for (int range = 0; range < 8; ++range)
        QTest::addRow("%d", range) << range;
}

void TestCalibrationData::everyCyclerRangeReadsItsOwnCurrent()
{
    QFETCH(int, range);
    const CalibrationData cycler = gale(unevenGaleRecord());
    const double n = range + 1;
    const auto x = 1230.0 * n;
    const double amperes = n / 4194304.0 * x * x * x + n / 1024.0 * x * x + x;
    GaleDcRecord_t sample = {};
    sample.rawCurrent = 2.0f;
    sample.currentRef = 3;
    sample.currentRange = currentRange_t(range);
    const ExperimentalDcData data(sample);
    QVERIFY(isNear(cycler.getCurrent(&data), amperes));
    Gale_AC_Header_t head = {};
    head.samplesPerSignal = 1;
    head.currentRef = 3;
    head.currentRange = currentRange_t(range);
    QVERIFY(isNear(cycler.getCurrent_DCbias(2.0, &head), amperes));
    std::vector<float> batch(1);
    cycler.getGaleBatchDCCurrent(head, {2.0f}, batch);
    QVERIFY(isNear(double(batch[0]), amperes));

    const double setpoint = 2000.0 * n;
    const double straight = setpoint - setpoint * setpoint * n / 1024.0 - n / 4194304.0 * std::pow(setpoint, 3.0);
    QCOMPARE(cycler.GetBINCurrentForDAC(currentRange_t(range), setpoint), int((straight - 1000.0 * n) / (100.0 * n)));
}

void TestCalibrationData::everyCyclerRangeReadsItsOwnVoltage()
{
    const CalibrationData cycler = gale(unevenGaleRecord());
    for (int range = 0; range < 4; ++range) {
        const double n = range + 1;
        GaleDcRecord_t sample = {};
        sample.rawVoltage = 2.0f;
        sample.voltageRef = 3;
        sample.voltageRange = voltageRange_t(range);
        const ExperimentalDcData data(sample);
        QVERIFY(isNear(cycler.getEWE(&data), 1230.0 * n));
        Gale_AC_Header_t head = {};
        head.samplesPerSignal = 1;
        head.voltageRef = 3;
        head.voltageRange = voltageRange_t(range);
        QVERIFY(isNear(cycler.getEWE_DCbias(2.0, &head), 1230.0 * n));
        std::vector<float> batch(1);
        cycler.getGaleBatchDCVoltage(head, {2.0f}, batch);
        QVERIFY(isNear(double(batch[0]), 1230.0 * n));

        const double volts = (7280.0 + 1000.0 + 500.0) * n; // 5 counts above the nominal reference word of 728
        QCOMPARE(cycler.GetBINVoltageForDAC(volts, voltageRange_t(range)), 5);
        QVERIFY(isNear(cycler.GetVCtrlFromDAC_BINcode(5, voltageRange_t(range)), volts));
    }
}

void TestCalibrationData::cyclerRangesOutsideTheRecordReadAsRange0()
{
    const CalibrationData calibration = gale();
    QCOMPARE(processed(calibration, galeSample(9, 4)).current, 52.0);
    QCOMPARE(processed(calibration, galeSample(9, 4)).workingElectrodeVoltage, 250.0 - 2.0);
    // One range is configured: the charge of range 1 takes range 0's gain, although the current does not.
    QCOMPARE(processed(calibration, galeSample(1)).current, 100.0 / 32.0 + 2.0);
    QVERIFY(std::abs(processed(calibration, galeSample(1)).charge - 0.05) < 1e-12);

    CalibrationData wide = calibration;
    Gale_Cfg_t configuration;
    configuration.numCurrentRanges = 200;
    wide.setGaleCfgData(configuration);
    QVERIFY(std::abs(processed(wide, galeSample(1)).charge - 0.05 / 16.0) < 1e-12);
    QCOMPARE(processed(wide, galeSample(199)).charge, 0.0); // no such gain in the record
}

void TestCalibrationData::boardDecidesTheChargeTick()
{
    const cal_vc07 record = roundGaleRecord();
    CalibrationData calibration = gale(record);
    for (const quint32 slow : {0x12010200u, 0x12010300u, 0x12010400u}) {
        Gale_Cfg_t configuration;
        configuration.boardId = slow;
        calibration.setGaleCfgData(configuration);
        QVERIFY(std::abs(processed(calibration, galeSample()).charge - 0.064) < 1e-12);
        calibration.importCalData(reinterpret_cast<const char *>(&record), int(sizeof record)); // the record once more
        QVERIFY(std::abs(processed(calibration, galeSample()).charge - 0.064) < 1e-12);
    }
    calibration.setGaleCfgData(Gale_Cfg_t());
    QVERIFY(std::abs(processed(calibration, galeSample()).charge - 0.05) < 1e-12);
}

void TestCalibrationData::shortSamplesReadAsZero()
{
    const QByteArray head = mainSample().left(8);
    const ProcessedDCData point = processed(mainline(), head);
    QCOMPARE(float(point.workingElectrodeVoltage), 0.0005f * 20000.0f); // gain setting 0, no reference
    QCOMPARE(point.timestamp, 0.0);
    QCOMPARE(point.current, 0.0);
}

void TestCalibrationData::clampsMainlineSetpointsToTheModel()
{
    const CalibrationData calibration = mainline(); // the Alder keeps to 10 V and 1 A
    QCOMPARE(calibration.GetBINVoltageForDAC(20.0, voltageRange_t(0)), 30000);
    QCOMPARE(calibration.GetBINVoltageForDAC(-20.0, voltageRange_t::Auto), -30000);
    QCOMPARE(calibration.GetBINVoltageForDAC(0.5, voltageRange_t::Auto), 30000); // range 3
    QCOMPARE(calibration.GetBINCurrentForDAC(currentRange_t(0), 5.0), 20000);
    QCOMPARE(calibration.GetBINCurrentForDAC(currentRange_t::Auto, 1e-4), 20000); // range 4
    QCOMPARE(calibration.GetVCtrlFromDAC_BINcode(30000, voltageRange_t(0)), 10.0);
    QCOMPARE(calibration.GetVCtrlFromDAC_BINcode(32768, voltageRange_t(0)), 0.0);
    QCOMPARE(calibration.GetICtrlFromDAC_BINcode(-20000, currentRange_t(0)), -1.0);
    QCOMPARE(calibration.GetICtrlFromDAC_BINcode(-32769, currentRange_t(0)), 0.0);
}

void TestCalibrationData::cyclerVoltageRoundsAndCurrentTruncates()
{
    cal_vc07 record = roundGaleRecord();
    record.iQuadratic[1] = 0.125f;
    record.iOffset[1] = 1.0f;
    const CalibrationData calibration = gale(record);
    // The nominal reference word stands for 728 / 8 = 91 V.
    QCOMPARE(calibration.GetBINVoltageForDAC(100.2, voltageRange_t(0)), 37); // 36.8
    QCOMPARE(calibration.GetBINVoltageForDAC(1e300, voltageRange_t(0)), 2147483647);
    QCOMPARE(calibration.GetVCtrlFromDAC_BINcode(36, voltageRange_t(0)), 100.0);
    QCOMPARE(calibration.GetVCtrlFromDAC_BINcode(-1000, voltageRange_t(0)), 0.0); // never negative
    QCOMPARE(calibration.GetBINCurrentForDAC(currentRange_t(0), 10.4), 20);       // 20.8
    QCOMPARE(calibration.GetBINCurrentForDAC(currentRange_t(0), -10.4), -20);
    QCOMPARE(calibration.GetBINCurrentForDAC(currentRange_t(1), 4.0), 32); // (4 - 2 - 1) * 32
    QCOMPARE(calibration.GetBINCurrentForDAC(currentRange_t(5), 1.0), 0);  // absent
    QCOMPARE(calibration.GetBINCurrentForDAC(currentRange_t(8), 1.0), 0);
    QCOMPARE(calibration.GetICtrlFromDAC_BINcode(20, currentRange_t(0)), 0.0);
}

void TestCalibrationData::choosesCyclerRanges()
{
    const CalibrationData calibration = gale(); // codes up to 7,680,000
    QCOMPARE(index(calibration.getMinCurrentRange_dc(0.1f)), 2);
    QCOMPARE(index(calibration.getMinCurrentRange_dc(15000.0f)), 2);
    QCOMPARE(index(calibration.getMinCurrentRange_dc(-15001.0f)), 1);
    QCOMPARE(index(calibration.getMinCurrentRange_galv(1e6f)), 0);
    QCOMPARE(index(calibration.getMinCurrentRange_GalvEIS(-14000.0f, 2000.0f)), 1); // magnitudes add up
    QCOMPARE(index(calibration.getMinVoltageRange(240091.0f)), 3);
    QCOMPARE(index(calibration.getMinVoltageRange(240092.0f)), 2);
    QCOMPARE(index(calibration.getMinVoltageRange(1e9f)), 0);
    QCOMPARE(index(calibration.getMinVoltageRange(0.0f)), 3);

    cal_vc07 record = roundGaleRecord();
    record.iGain[7] = 0.5f / 4096.0f;          // the smallest of eight; the ones between are absent
    const CalibrationData wide = gale(record); // range 7 ends at 937.5 A
    QCOMPARE(index(wide.getMinCurrentRange_dc(0.0f)), 7);
    QCOMPARE(index(wide.getMinCurrentRange_dc(-937.5f)), 7);
    QCOMPARE(index(wide.getMinCurrentRange_dc(937.75f)), 2);
    QCOMPARE(index(wide.getMinCurrentRange_GalvEIS(0.0f, 0.0f)), 7);
}

void TestCalibrationData::listsMainlineSpans()
{
    cal_v4 record = roundMainRecord();
    record.iCtrlOffset[0] = 10000.0f; // the DAC ends before the reading does
    record.iCtrlGain[8] = 1e30f;      // ranges 8 and 9 serve AC alone: no DAC
    record.currentGain[9] = 0.0f;
    const auto currents = mainline(record).getCurrentMinMaxList();
    QCOMPARE(currents.size(), size_t(9));              // range 9 ends at 0
    QVERIFY(std::abs(currents[0].first + 1.6) < 1e-6); // 32000 counts at the default gain of 10
    QVERIFY(std::abs(currents[0].second - 1.13835) < 1e-6);
    QVERIFY(std::abs(currents[1].second - 0.16) < 1e-7);
    QVERIFY(std::abs(currents[8].second - 1.6e-8) < 1e-14);

    const auto voltages = mainline().getVoltageMinMaxList();
    QCOMPARE(voltages.size(), size_t(4));
    QVERIFY(std::abs(voltages[3].first + 32768.0 / 60000.0) < 1e-6);
    QVERIFY(std::abs(voltages[3].second - 32767.0 / 60000.0) < 1e-6);
}

void TestCalibrationData::listsCyclerSpans()
{
    const CalibrationData calibration = gale();
    const auto currents = calibration.getCurrentMinMaxList();
    QCOMPARE(currents.size(), size_t(3)); // the others are absent
    QCOMPARE(currents[1].first, -240000.0);
    QCOMPARE(currents[1].second, 240000.0);
    QCOMPARE(calibration.getCurrentMinMax_gale(currentRange_t(8)), std::make_pair(0.0, 0.0));
}

void TestCalibrationData::tareReplacesOffsetsOfCyclersAlone()
{
    CalibrationData cycler = gale();
    cycler.UpdateCurrentOffset(0, 7.0f);
    cycler.UpdateVoltageOffset(1, 9.0f);
    for (const int wrong : {-1, 8, 4096}) {
        cycler.UpdateCurrentOffset(wrong, 1e6f);
        cycler.UpdateVoltageOffset(wrong, 1e6f);
    }
    QCOMPARE(processed(cycler, galeSample()).current, 59.0);
    QCOMPARE(processed(cycler, galeSample()).workingElectrodeVoltage, 9.0 + 125.0 - 2.0);
    cycler.UpdateCurrentOffset(7, 5.0f); // the last ranges
    cycler.UpdateVoltageOffset(3, 6.0f);
    QCOMPARE(processed(cycler, galeSample(7, 3)).current, 5.0);
    QCOMPARE(processed(cycler, galeSample(7, 3)).workingElectrodeVoltage, 6.0 + 31.25 - 2.0);

    CalibrationData mainlineChannel = mainline();
    const double before = processed(mainlineChannel, mainSample()).current;
    mainlineChannel.UpdateCurrentOffset(2, 7.0f);
    QCOMPARE(processed(mainlineChannel, mainSample()).current, before);
}

void TestCalibrationData::convertsTemperatureLimits()
{
    QCOMPARE(mainline().getTemperatureToRatio(60.5f), 60.5);
    QVERIFY(std::abs(gale().getTemperatureToRatio(25.0f) - 16250.0) < 3.0);
    QCOMPARE(CalibrationData().getTemperatureToRatio(60.5f), 0.0);
}

void TestCalibrationData::newModelHasAnUnconfiguredBoard()
{
    CalibrationData calibration;
    Gale_Cfg_t configuration;
    configuration.boardId = 0x12010200;
    calibration.setGaleCfgData(configuration);
    calibration.setModelType(HardwareModel_t::Gale);
    QCOMPARE(calibration.getGaleCfg().boardId, 0x12000000u);
    QCOMPARE(QByteArray(calibration.getGaleCfg().boardName), QByteArray(" UNCONFIGURED"));
    QVERIFY(std::isinf(calibration.getGaleCfg().currentMax[1]));
}

NIMBRELLE_TEST_MAIN(TestCalibrationData)
#include "TestCalibrationData.moc"
