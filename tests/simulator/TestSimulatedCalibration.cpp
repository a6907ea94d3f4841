// SPDX-License-Identifier: MIT
#include "simulator/SimulatedCalibration.h"

#include "calibration/Records.h"
#include "hardware_models/HardwareModelFactory.h"

#include "support/TestMain.h"

#include <cmath>
#include <functional>
#include <set>

Q_DECLARE_METATYPE(HardwareModel_t)

namespace {

} // namespace

class TestSimulatedCalibration : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void hostReadsWhatTheCellGave_data();
    void hostReadsWhatTheCellGave();
    void hostChoosesTheSameRanges_data();
    void hostChoosesTheSameRanges();
    void everyTermMatters();
    void followsFromSeedAndChannel();
    void resolutionFollowsTheRange();
    void readingsEndWithTheirRange();
    void codesStandForSetPoints();
};

static void addModels()
{
    QTest::addColumn<HardwareModel_t>("model");
    QTest::newRow("no gain map, gain 1") << HardwareModel_t::Cedar_2_0;
    QTest::newRow("no gain map") << HardwareModel_t::Alder_2_3;
    QTest::newRow("three voltage ranges") << HardwareModel_t::Ibis_1_0;
    QTest::newRow("Alder") << HardwareModel_t::Alder_2_5;
    QTest::newRow("temperature") << HardwareModel_t::Heron_2_4;
}

void TestSimulatedCalibration::hostReadsWhatTheCellGave_data()
{
    addModels();
}

void TestSimulatedCalibration::hostReadsWhatTheCellGave()
{
    QFETCH(HardwareModel_t, model);
    const auto description = HardwareModelFactory::getHardwareModel(model);
    const SimulatedCalibration calibration(description, 7, 3);
    const CalibrationData data = calibrated(model, calibration.recordBytes());
    for (int i = 0; i < description->getNumDCcurrentRanges(); ++i) {
        for (const double share : {-1.0, -0.1, 0.0, 0.37, 1.0}) {
            const DcSample sample{123456789012,
                                  share * description->getVMax(false),
                                  share * calibration.fullScale(currentRange_t(i)),
                                  -0.321,
                                  12.5,
                                  24.75};
            const ProcessedDCData read = data.ProcessDCDataPoint(ExperimentalDcData(
                calibration.toRecord(sample, currentRange_t(i), calibration.rangeForVoltage(sample.voltage))));
            QVERIFY(std::abs(read.current - sample.current) < 2e-6 * calibration.fullScale(currentRange_t(i)));
            QVERIFY(std::abs(read.workingElectrodeVoltage - sample.voltage) < 1e-6 * description->getVMax(true));
            QVERIFY(std::abs(read.counterElectrodeVoltage - sample.counterElectrode) < 2e-5);
            QCOMPARE(read.charge, 12.5);
            QCOMPARE(read.timestamp, 1234.56789012);
            QCOMPARE(std::isnan(read.temperature), !description->supportsTemperature());
            QVERIFY(std::isnan(read.temperature) || read.temperature == 24.75);
        }
    }
}

void TestSimulatedCalibration::hostChoosesTheSameRanges_data()
{
    addModels();
}

void TestSimulatedCalibration::hostChoosesTheSameRanges()
{
    QFETCH(HardwareModel_t, model);
    const auto description = HardwareModelFactory::getHardwareModel(model);
    const SimulatedCalibration calibration(description, 1, 0);
    const CalibrationData data = calibrated(model, calibration.recordBytes());
    for (int i = 0; i < description->getNumDCcurrentRanges(); ++i) {
        const double current = -0.999 * calibration.fullScale(currentRange_t(i));
        QCOMPARE(index(data.getMinCurrentRange_dc(float(current))), i);
        QCOMPARE(index(calibration.rangeForCurrent(current)), i);
    }
    for (int i = 0; i < description->getNumVoltageRanges(); ++i) {
        const double voltage = 0.99 * calibration.fullScale(voltageRange_t(i));
        QCOMPARE(index(data.getMinVoltageRange(float(voltage))), i);
        QCOMPARE(index(calibration.rangeForVoltage(voltage)), i);
    }
}

/// A record with one term changed reads at least 0.1 % of the range off: a host that forgets one would be found out.
void TestSimulatedCalibration::everyTermMatters()
{
    const auto model = HardwareModelFactory::getHardwareModel(HardwareModel_t::Alder_2_5);
    const SimulatedCalibration calibration(model, 1, 0);
    const currentRange_t range = currentRange_t(1);
    const DcSample sample{0, 0.8, 0.05, 0.5, 0.0, 25.0};
    const ExperimentalDcData raw(calibration.toRecord(sample, range, voltageRange_t(2)));
    const int weGain = index(raw.as<MainDcRecord_t>().weGain);
    const int iGain = index(raw.as<MainDcRecord_t>().iGain);
    using Spoil = std::function<void(cal_v4 &)>;
    const QList<Spoil> currentTerms = {
        [](cal_v4 &r) { r.iRefCoeff = 0; },          [](cal_v4 &r) { r.currentOffset[1] = 0; },
        [](cal_v4 &r) { r.highSideCMCoeff = 0; },    [iGain](cal_v4 &r) { r.iStageOffset[iGain] = 0; },
        [](cal_v4 &r) { r.iStage1Gain[2] = 10.0f; }, [](cal_v4 &r) { std::swap(r.currentGain[1], r.currentGain[2]); },
    };
    const QList<Spoil> voltageTerms = {
        [](cal_v4 &r) { r.eweRefCoeff = 0; },
        [weGain](cal_v4 &r) { r.eweOffset[weGain] = 0; },
        [](cal_v4 &r) { r.weStage1Gain[2] = 10.0f; },
    };
    const auto spoilt = [&](const Spoil &spoil) {
        cal_v4 record = calibration.record();
        spoil(record);
        const QByteArray bytes(reinterpret_cast<const char *>(&record), sizeof record);
        return calibrated(HardwareModel_t::Alder_2_5, bytes).ProcessDCDataPoint(raw);
    };
    for (const Spoil &spoil : currentTerms)
        QVERIFY(std::abs(spoilt(spoil).current - sample.current) > 4e-5);
    for (const Spoil &spoil : voltageTerms)
        QVERIFY(std::abs(spoilt(spoil).workingElectrodeVoltage - sample.voltage) > 8e-4);
}

void TestSimulatedCalibration::followsFromSeedAndChannel()
{
    const auto model = HardwareModelFactory::getHardwareModel(HardwareModel_t::Alder_2_5);
    const QByteArray record = SimulatedCalibration(model, 1, 0).recordBytes();
    QCOMPARE(SimulatedCalibration(model, 1, 0).recordBytes(), record);
    QVERIFY(SimulatedCalibration(model, 1, 1).recordBytes() != record);
    QVERIFY(SimulatedCalibration(model, 2, 0).recordBytes() != record);
}

/// As the host reads a sample of a current and a voltage in given ranges.
static ProcessedDCData read(const SimulatedCalibration &calibration, double current, int currentRange, double voltage,
                            int voltageRange)
{
    const DcSample sample{0, voltage, current, 0.0, 0.0, 25.0};
    return calibrated(HardwareModel_t::Alder_2_5, calibration.recordBytes())
        .ProcessDCDataPoint(ExperimentalDcData(
            calibration.toRecord(sample, currentRange_t(currentRange), voltageRange_t(voltageRange))));
}

/// Along two steps there are two or three readings; a step is about 2^-23 of what a range spans.
void TestSimulatedCalibration::resolutionFollowsTheRange()
{
    const SimulatedCalibration calibration(HardwareModelFactory::getHardwareModel(HardwareModel_t::Alder_2_5), 1, 0);
    for (const int range : {0, 2}) {
        const double amperes = 1.3e-7 * calibration.fullScale(currentRange_t(range));
        const double volts = 1.3e-7 * 20.0 / (range == 0 ? 1.0 : 10.0); // range 2 has gain 10
        std::set<double> currents;
        std::set<double> voltages;
        for (int i = 0; i < 40; ++i) {
            currents.insert(read(calibration, 0.05 * i * amperes, range, 0.0, range).current);
            voltages.insert(read(calibration, 0.0, range, 0.05 * i * volts, range).workingElectrodeVoltage);
        }
        QVERIFY(currents.size() == 2 || currents.size() == 3);
        QVERIFY(voltages.size() == 2 || voltages.size() == 3);
    }
}

void TestSimulatedCalibration::readingsEndWithTheirRange()
{
    const SimulatedCalibration calibration(HardwareModelFactory::getHardwareModel(HardwareModel_t::Alder_2_5), 1, 0);
    for (const double sign : {-1.0, 1.0}) {
        for (const double beyond : {1.2, 5.0, 1e6}) {
            const double scale = calibration.fullScale(currentRange_t(3));
            const double current = sign * read(calibration, sign * beyond * scale, 3, 0.1, 1).current;
            QVERIFY(current > 1.04 * scale && current < 1.07 * scale);
            const double volts = sign * read(calibration, 1e-4, 3, sign * beyond * 5.0, 1).workingElectrodeVoltage;
            QVERIFY(volts > 5.2 && volts < 5.35);
        }
        // the widest range reads what the instrument bears at open circuit
        QVERIFY(std::abs(read(calibration, 0.0, 0, sign * 20.0, 0).workingElectrodeVoltage - sign * 20.0) < 2e-5);
    }
}

void TestSimulatedCalibration::codesStandForSetPoints()
{
    const auto model = HardwareModelFactory::getHardwareModel(HardwareModel_t::Alder_2_5);
    const SimulatedCalibration calibration(model, 1, 0);
    const CalibrationData data = calibrated(HardwareModel_t::Alder_2_5, calibration.recordBytes());
    const int currentCode = data.GetBINCurrentForDAC(currentRange_t(2), 4e-3);
    QVERIFY(std::abs(calibration.currentFromCode(currentCode, currentRange_t(2)) - 4e-3) < 1e-2 / 30000);
    const int voltageCode = data.GetBINVoltageForDAC(-3.0, voltageRange_t(1));
    QVERIFY(std::abs(calibration.voltageFromCode(voltageCode, voltageRange_t(1)) + 3.0) < 5.2 / 30000);
}

NIMBRELLE_TEST_MAIN(TestSimulatedCalibration)
#include "TestSimulatedCalibration.moc"
