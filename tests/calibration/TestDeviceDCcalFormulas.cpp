// SPDX-License-Identifier: MIT
#include "calibration/DeviceDCcalFormulas.h"
#include "calibration/Records.h"
#include "support/TestMain.h"

#include <cmath>

namespace {

/// What a model with two high-side and eight DC ranges makes of a record.
DeviceDCcalFormulas formulasOf(const cal_v4 &record, const std::map<voltageRange_t, ACgain_t> &gains = {})
{
    DeviceDCcalFormulas formulas;
    formulas.setNumHighSideRanges(2);
    formulas.setNumDCcurrentRanges(8);
    formulas.setNumVoltageRanges(4);
    formulas.setWEgainMap(gains);
    formulas.copyCalData(&record);
    return formulas;
}

const std::map<voltageRange_t, ACgain_t> fourGains = {{voltageRange_t(0), ACgain_t::Gain1},
                                                      {voltageRange_t(1), ACgain_t::Gain2},
                                                      {voltageRange_t(2), ACgain_t::Gain10},
                                                      {voltageRange_t(3), ACgain_t::Gain20}};

} // namespace

class TestDeviceDCcalFormulas : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void buildsTheLadderOfGains();
    void readsVoltageAndCounterElectrode();
    void readsCurrentWithCommonModeOnTheHighSideOnly();
    void answersNeutrallyOutsideItsIndices();
    void truncatesVoltageCodesAndRoundsCurrentCodes();
    void clampsCodes();
    void turnsCodesBackIntoSetpoints();
    void choosesTheSmallestCurrentRange_data();
    void choosesTheSmallestCurrentRange();
    void choosesTheSmallestVoltageRange_data();
    void choosesTheSmallestVoltageRange();
    void offsetOfTheDacNarrowsItsRange();
    void largerNeedOfDcAndAcDecides();
    void higherRangeOwnsASharedGain();
};

void TestDeviceDCcalFormulas::buildsTheLadderOfGains()
{
    const DeviceDCcalFormulas formulas = formulasOf(roundMainRecord());
    const float expected[] = {1, 2, 5, 10, 20, 50, 100, 200, 500, 1000, 10, 10, 100, 100};
    for (int gain = 0; gain < 14; ++gain) {
        QCOMPARE(formulas.getWEGainFromSetting(ACgain_t(gain)), expected[gain]);
        QCOMPARE(formulas.getCurrentGain(ACgain_t(gain)), double(expected[gain]));
    }

    cal_v4 uneven = roundMainRecord(); // tells the second stage from the third
    uneven.weStage2Gain = 8.0f;
    uneven.weStage3Gain = 16.0f;
    const DeviceDCcalFormulas unevenFormulas = formulasOf(uneven);
    const float unevenEnd[] = {256, 640, 1280, 8, 16, 160, 128};
    for (int gain = 7; gain < 14; ++gain)
        QCOMPARE(unevenFormulas.getWEGainFromSetting(ACgain_t(gain)), unevenEnd[gain - 7]);
}

void TestDeviceDCcalFormulas::readsVoltageAndCounterElectrode()
{
    cal_v4 record = roundMainRecord();
    record.eweGainBase = 0.5f;
    record.eweOffset[1] = 3.0f;
    const DeviceDCcalFormulas formulas = formulasOf(record);
    QCOMPARE(formulas.getEWE(100.0f, ACgain_t::Gain2, 16), 3.0f + 25.0f + 1.0f);
    QCOMPARE(formulas.getEWE(100.0f, ACgain_t::Gain2, -16), 3.0f + 25.0f - 1.0f);
    QCOMPARE(formulas.getEWE(100.0f, ACgain_t(10), 0), 5.0f); // settings 10 to 13 have no offset
    QCOMPARE(formulas.getECE(8.0f, 3.0f), 1.0f + 16.0f - 1.5f - 0.25f);
}

void TestDeviceDCcalFormulas::readsCurrentWithCommonModeOnTheHighSideOnly()
{
    cal_v4 record = roundMainRecord();
    record.currentGain[1] = record.currentGain[2] = 0.5f;
    record.currentOffset[1] = record.currentOffset[2] = 4.0f;
    record.iStageOffset[1] = 20.0f;
    const DeviceDCcalFormulas formulas = formulasOf(record);
    // (20 + 100) / 2 + 0.5 * 6 = 63, on the high side 0.125 * 16 more
    QCOMPARE(formulas.getCurrent(100.0f, currentRange_t(2), ACgain_t::Gain2, 6, 16.0f), 4.0f + 31.5f);
    QCOMPARE(formulas.getCurrent(100.0f, currentRange_t(1), ACgain_t::Gain2, 6, 16.0f), 4.0f + 32.5f);
    QCOMPARE(formulas.getCurrentRdgBIN(63.0f, currentRange_t(1), ACgain_t::Gain2, 6, 16.0f), 2.0f * 60.0f - 20.0f);
}

void TestDeviceDCcalFormulas::answersNeutrallyOutsideItsIndices()
{
    const DeviceDCcalFormulas formulas = formulasOf(roundMainRecord(), fourGains);
    for (const int wrong : {14, 127, 128, 255}) {
        const auto gain = ACgain_t(wrong);
        const auto range = currentRange_t(wrong);
        QCOMPARE(formulas.getEWE(1000.0f, gain, 0), 0.0f);
        QCOMPARE(formulas.getCurrent(1000.0f, currentRange_t(0), gain, 0, 0.0f), 0.0f);
        QCOMPARE(formulas.getCurrent(1000.0f, range, ACgain_t::Gain1, 0, 0.0f), 0.0f);
        QCOMPARE(formulas.getCurrentRdgBIN(1000.0f, range, ACgain_t::Gain1, 0, 0.0f), 0.0f);
        QCOMPARE(formulas.getWEGainFromSetting(gain), 1.0f);
        QCOMPARE(formulas.getICtrlBIN(1.0f, range), 0);
        QCOMPARE(formulas.getISetpointFromBIN(1000, range), 0.0);
        QCOMPARE(formulas.getMaxACSignal_galv(range), 0.0);
        QCOMPARE(formulas.getVCtrlBIN(1.0f, voltageRange_t(wrong)), 0);
        QCOMPARE(formulas.getVSetpointFromBIN(1000, voltageRange_t(wrong)), 0.0);
        QCOMPARE(formulas.getWEgainFromVRange(voltageRange_t(wrong)), ACgain_t::Gain1);
        QCOMPARE(formulas.getVRangeFromWEgain(gain), voltageRange_t(255));
    }
    QCOMPARE(formulas.getCurrent(1000.0f, currentRange_t(10), ACgain_t::Gain1, 0, 0.0f), 0.0f);
    QCOMPARE(formulas.getVCtrlBIN(1.0f, voltageRange_t(4)), 0);
}

void TestDeviceDCcalFormulas::truncatesVoltageCodesAndRoundsCurrentCodes()
{
    cal_v4 record = roundMainRecord();
    record.vCtrlGain[0] = record.iCtrlGain[0] = 8.0f;
    record.vCtrlOffset[0] = record.iCtrlOffset[0] = 0.5f;
    const DeviceDCcalFormulas formulas = formulasOf(record);
    QCOMPARE(formulas.getVCtrlBIN(100.0f, voltageRange_t(0)), 800);
    QCOMPARE(formulas.getICtrlBIN(100.0f, currentRange_t(0)), 801);
    QCOMPARE(formulas.getVCtrlBIN(-100.125f, voltageRange_t(0)), -800);  // -800.5
    QCOMPARE(formulas.getICtrlBIN(-100.1875f, currentRange_t(0)), -801); // -801.0
}

void TestDeviceDCcalFormulas::clampsCodes()
{
    const DeviceDCcalFormulas formulas = formulasOf(roundMainRecord());
    QCOMPARE(formulas.getVCtrlBIN(1e30f, voltageRange_t(0)), 32767);
    QCOMPARE(formulas.getVCtrlBIN(-1e30f, voltageRange_t(0)), -32768);
    QCOMPARE(formulas.getICtrlBIN(1e30f, currentRange_t(0)), 32767);
    QCOMPARE(formulas.getICtrlBIN(-1e30f, currentRange_t(0)), -32768);
    QCOMPARE(formulas.getVCtrlBIN(std::nanf(""), voltageRange_t(0)), 0);
}

void TestDeviceDCcalFormulas::turnsCodesBackIntoSetpoints()
{
    cal_v4 record = roundMainRecord();
    record.vCtrlOffset[1] = 100.0f;
    record.iCtrlOffset[3] = -50.0f;
    const DeviceDCcalFormulas formulas = formulasOf(record);
    QCOMPARE(formulas.getVSetpointFromBIN(12100, voltageRange_t(1)), 2.0);
    QCOMPARE(formulas.getISetpointFromBIN(19950, currentRange_t(3)), double(0.001f));
}

void TestDeviceDCcalFormulas::choosesTheSmallestCurrentRange_data()
{
    QTest::addColumn<float>("amperes");
    QTest::addColumn<int>("range");
    // range i: 2e4 * 10^i counts per ampere, usable up to 32000 counts
    QTest::newRow("nothing") << 0.0f << 7;
    QTest::newRow("32000 counts stay") << 1.6e-7f << 7;
    QTest::newRow("32002 counts move on") << 1.6001e-7f << 6;
    QTest::newRow("negative") << -1.0e-3f << 3;
    QTest::newRow("range 0 takes the rest") << 100.0f << 0;
}

void TestDeviceDCcalFormulas::choosesTheSmallestCurrentRange()
{
    QFETCH(float, amperes);
    QFETCH(int, range);
    cal_v4 record = roundMainRecord();
    record.iCtrlGain[7] = 2.0e11f; // exactly 32000 counts at 1.6e-7
    const DeviceDCcalFormulas formulas = formulasOf(record);
    QCOMPARE(index(formulas.getMinCurrentRange_DC(amperes)), range);
    QCOMPARE(index(formulas.getMinCurrentRange_Galv(amperes)), range);
}

void TestDeviceDCcalFormulas::choosesTheSmallestVoltageRange_data()
{
    QTest::addColumn<bool>("hasGains");
    QTest::addColumn<float>("volts");
    QTest::addColumn<int>("range");
    // set by the DAC: 10.92, 5.46, 1.092, 0.546 V; read with gains 1, 2, 10, 20: 16.38, 8.19, 1.638, 0.819 V
    QTest::newRow("smallest") << true << 0.5f << 3;
    QTest::newRow("DAC ends range 3") << true << 0.6f << 2;
    QTest::newRow("DAC ends range 2") << true << -1.2f << 1;
    QTest::newRow("beyond every range") << true << 30.0f << 0;
    QTest::newRow("without gains every range reads with gain 1") << false << 0.5f << 3;
}

void TestDeviceDCcalFormulas::choosesTheSmallestVoltageRange()
{
    QFETCH(bool, hasGains);
    QFETCH(float, volts);
    QFETCH(int, range);
    const auto gains = hasGains ? fourGains : std::map<voltageRange_t, ACgain_t>();
    QCOMPARE(index(formulasOf(roundMainRecord(), gains).getMinVoltageRange(volts)), range);

    cal_v4 sensitive = roundMainRecord(); // now reading is the tighter limit: a fifth of the above
    sensitive.eweGainBase = 0.0001f;
    QVERIFY(index(formulasOf(sensitive, fourGains).getMinVoltageRange(0.2f)) < 3);
    QCOMPARE(index(formulasOf(sensitive).getMinVoltageRange(0.2f)), 3);
}

void TestDeviceDCcalFormulas::offsetOfTheDacNarrowsItsRange()
{
    for (const float offset : {30000.0f, -30000.0f}) {
        cal_v4 record = roundMainRecord();
        record.vCtrlOffset[3] = offset; // 2767 or 2768 counts are left on one side: 0.046 V
        QCOMPARE(index(formulasOf(record).getMinVoltageRange(0.04f)), 3);
        QCOMPARE(index(formulasOf(record).getMinVoltageRange(0.05f)), 2);
    }
}

void TestDeviceDCcalFormulas::largerNeedOfDcAndAcDecides()
{
    // The drive reaches 3000 * 16000 / iCtrlGain: 2400 A in range 0, a decade less per range.
    const DeviceDCcalFormulas formulas = formulasOf(roundMainRecord());
    QCOMPARE(formulas.getMaxACSignal_galv(currentRange_t(0)), 2400.0);
    QCOMPARE(index(formulas.getMinCurrentRange_GalvEIS(1.0e-3f, 1.0e-9f)), 3); // by the direct current

    cal_v4 weak = roundMainRecord();
    weak.maxACSignal = 1.0f; // 0.15 A in range 0
    const DeviceDCcalFormulas weakFormulas = formulasOf(weak);
    QCOMPARE(index(weakFormulas.getMinCurrentRange_GalvEIS(1.0e-9f, -1.0e-3f)), 2); // by the amplitude, either sign
    QCOMPARE(index(weakFormulas.getMinCurrentRange_DC(1.0e-3f)), 3);
}

void TestDeviceDCcalFormulas::higherRangeOwnsASharedGain()
{
    DeviceDCcalFormulas formulas;
    formulas.setWEgainMap({{voltageRange_t(1), ACgain_t::Gain5}, {voltageRange_t(2), ACgain_t::Gain5}});
    QCOMPARE(formulas.getVRangeFromWEgain(ACgain_t::Gain5), voltageRange_t(2));
    QCOMPARE(formulas.getWEgainFromVRange(voltageRange_t(1)), ACgain_t::Gain5);
}

NIMBRELLE_TEST_MAIN(TestDeviceDCcalFormulas)
#include "TestDeviceDCcalFormulas.moc"
