// SPDX-License-Identifier: MIT
#include "calibration/ComplexDataPoint.h"
#include "calibration/Records.h"
#include "calibration/TableFolder.h"
#include "support/TestMain.h"

#include <QDir>

#include <cmath>

namespace {

using Complex = std::complex<double>;

bool isNear(Complex value, Complex expected)
{
    return std::abs(value - expected) < 1e-6 * std::abs(expected);
}

QByteArray constantTable(double magnitude)
{
    return "heading\n1," + QByteArray::number(magnitude) + ",0";
}

/// A documents folder in which an instrument named "Bench 1" has its tables.
class InstrumentFolder
{
public:
    InstrumentFolder() { QDir(_documents.path()).mkpath(QStringLiteral("Base/Calibration files/Bench 1")); }

    void write(const QString &name, const QByteArray &contents) const
    {
        _documents.write(QStringLiteral("Base/Calibration files/Bench 1/") + name, contents);
    }
    QString base() const { return _documents.path() + QStringLiteral("/Base"); }
    QString documents() const { return _documents.path(); }

    /// A mainline channel with two high-side ranges; 1 A and 1 V a raw unit, before gains and tables.
    CalibrationData channel() const
    {
        cal_v4 record = roundMainRecord();
        for (float &gain : record.currentGain)
            gain = 1.0f;
        record.eweGainBase = 1.0f;
        CalibrationData calibration = calibrated(HardwareModel_t::Alder_2_5, record);
        calibration.importCalData(base(), QStringLiteral("Bench 1"));
        return calibration;
    }

private:
    TableFolder _documents;
};

Complex currentOf(const CalibrationData &calibration, int range, ADC_src_t source = ADC_src_t::External16Bit)
{
    return calibration.getACCurrent_main(1.0, ACgain_t::Gain1, currentRange_t(range), 100.0, 2048.0, source);
}

Complex voltageOf(const CalibrationData &calibration, ACgain_t weGain, ACgain_t iGain)
{
    return calibration.getACVoltage_main(1.0, weGain, iGain, 100.0, 2048.0, ADC_src_t::External16Bit);
}

} // namespace

class TestAcConversion : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void withoutTablesEveryStageIsNeutral();
    void lowSideRangesTakeBothTransimpedanceStages_data();
    void lowSideRangesTakeBothTransimpedanceStages();
    void highSideRangesTakeTheBuffer();
    void lumpedTablesComeFirst();
    void highSettingsAreReadAsLowPasses_data();
    void highSettingsAreReadAsLowPasses();
    void voltageTakesMatrixAndBuffer();
    void indicesOutsideTheRecordGiveZero();
    void internalConverterIsCorrected();
    void takesTheCableOff();
    void clearedTablesAreNeutral();
    void importMakesTheOuterFolders();
    void namesNeverLeaveTheFolder_data();
    void namesNeverLeaveTheFolder();
    void importerFillsTheInstrumentsFolder();
    void turnsCyclerAmplitudesByTheirPolynomials();
    void everyCyclerRangeHasItsOwnAcFactors();
    void biasIsForTheOwnLineAlone();
    void convertsCyclerBatches();
    void impedanceOffsetIsNeutral();
};

void TestAcConversion::withoutTablesEveryStageIsNeutral()
{
    const InstrumentFolder folder;
    const CalibrationData calibration = folder.channel();
    for (int range = 0; range < 10; ++range)
        QVERIFY(isNear(currentOf(calibration, range), 1.0));
    QVERIFY(isNear(voltageOf(calibration, ACgain_t::Gain10, ACgain_t::Gain1), 0.1));
    QVERIFY(isNear(
        calibration.getACCurrent_main(1.0, ACgain_t::Gain20, currentRange_t(0), 1.0, 0.0, ADC_src_t::Internal12Bit),
        0.05));

    const cal_v4 record = roundMainRecord();
    const CalibrationData never = calibrated(HardwareModel_t::Alder_2_5, record);
    QVERIFY(isNear(currentOf(never, 3), Complex(double(record.currentGain[3]))));
    QVERIFY(isNear(voltageOf(never, ACgain_t::Gain1, ACgain_t::Gain1), 0.0005));
}

void TestAcConversion::lowSideRangesTakeBothTransimpedanceStages_data()
{
    QTest::addColumn<int>("range");
    QTest::addColumn<double>("stage1");
    QTest::addColumn<double>("stage2");
    QTest::newRow("2") << 2 << 2.0 << 11.0;
    QTest::newRow("3") << 3 << 2.0 << 13.0;
    QTest::newRow("4") << 4 << 3.0 << 11.0;
    QTest::newRow("7") << 7 << 5.0 << 13.0;
    QTest::newRow("8") << 8 << 7.0 << 11.0;
    QTest::newRow("9") << 9 << 7.0 << 13.0;
}

void TestAcConversion::lowSideRangesTakeBothTransimpedanceStages()
{
    QFETCH(int, range);
    QFETCH(double, stage1);
    QFETCH(double, stage2);
    const InstrumentFolder folder;
    const double stage1Magnitudes[] = {2.0, 3.0, 5.0, 7.0};
    for (int setting = 0; setting < 4; ++setting)
        folder.write(QStringLiteral("TIA_stage1setting%1.csv").arg(setting + 1),
                     constantTable(stage1Magnitudes[setting]));
    folder.write(QStringLiteral("TIA_stage2setting1.csv"), constantTable(11.0));
    folder.write(QStringLiteral("TIA_stage2setting2.csv"), constantTable(13.0));
    folder.write(QStringLiteral("I_inputBuffer.csv"), constantTable(100.0));
    QVERIFY(isNear(currentOf(folder.channel(), range), 1.0 / (stage1 * stage2)));
}

void TestAcConversion::highSideRangesTakeTheBuffer()
{
    const InstrumentFolder folder;
    folder.write(QStringLiteral("I_inputBuffer.csv"), "h\n1,4,90\n1000,4,90");
    folder.write(QStringLiteral("TIA_stage1setting1.csv"), constantTable(100.0));
    QVERIFY(isNear(currentOf(folder.channel(), 0), Complex(0.0, -0.25)));
    QVERIFY(isNear(currentOf(folder.channel(), 1), Complex(0.0, -0.25)));
    QVERIFY(isNear(currentOf(folder.channel(), 2), 0.01));
}

void TestAcConversion::lumpedTablesComeFirst()
{
    const InstrumentFolder folder;
    folder.write(QStringLiteral("Range5.csv"), constantTable(8.0));
    folder.write(QStringLiteral("I_inputBuffer.csv"), constantTable(4.0));
    QVERIFY(isNear(currentOf(folder.channel(), 0), 0.25)); // range 0's table decides, and there is none
    folder.write(QStringLiteral("Range0.csv"), constantTable(2.0));
    QVERIFY(isNear(currentOf(folder.channel(), 0), 0.5));
    QVERIFY(isNear(currentOf(folder.channel(), 5), 0.125));
    QVERIFY(isNear(currentOf(folder.channel(), 6), 1.0));
}

void TestAcConversion::highSettingsAreReadAsLowPasses_data()
{
    QTest::addColumn<int>("range");
    QTest::addColumn<bool>("isLowPass");
    QTest::newRow("I_inputBuffer.csv") << 0 << false;
    QTest::newRow("TIA_stage1setting1.csv") << 2 << false;
    QTest::newRow("TIA_stage1setting2.csv") << 4 << false;
    QTest::newRow("TIA_stage1setting3.csv") << 6 << true;
    QTest::newRow("TIA_stage1setting4.csv") << 8 << true;
    QTest::newRow("TIA_stage2setting1.csv") << 2 << false;
    QTest::newRow("TIA_stage2setting2.csv") << 3 << true;
    QTest::newRow("Range0.csv") << 0 << false;
    QTest::newRow("Range3.csv") << 3 << false;
    QTest::newRow("Range4.csv") << 4 << true;
    QTest::newRow("Range9.csv") << 9 << true;
}

void TestAcConversion::highSettingsAreReadAsLowPasses()
{
    QFETCH(int, range);
    QFETCH(bool, isLowPass);
    const QString file = QString::fromLatin1(QTest::currentDataTag());
    const InstrumentFolder folder;
    if (file.startsWith(QLatin1String("Range")))
        folder.write(QStringLiteral("Range0.csv"), constantTable(1.0)); // decides whether there are lumped tables
    folder.write(file, "h\n10,0.8,-30\n1000,0.6,-60");
    const frequencySweep sweep(
        folder.base() + QStringLiteral("/Calibration files/Bench 1/") + file,
        isLowPass ? frequencySweep::interpolate_firstOrder : frequencySweep::interpolate_logFrequency, 1.0, 0.0);
    QVERIFY(isNear(currentOf(folder.channel(), range), 1.0 / sweep.lookup(100.0)));
}

void TestAcConversion::voltageTakesMatrixAndBuffer()
{
    const InstrumentFolder folder;
    folder.write(QStringLiteral("WEgain10_Igain1.csv"), constantTable(2.0));
    folder.write(QStringLiteral("WEgain1_Igain5.csv"), constantTable(8.0));
    folder.write(QStringLiteral("V_inputBuffer.csv"), constantTable(5.0));
    QVERIFY(isNear(voltageOf(folder.channel(), ACgain_t::Gain10, ACgain_t::Gain5), 0.1 / (2.0 * 8.0 * 5.0)));
}

void TestAcConversion::indicesOutsideTheRecordGiveZero()
{
    const InstrumentFolder folder;
    const CalibrationData calibration = folder.channel();
    for (const int range : {10, 127, 128, 255})
        QCOMPARE(currentOf(calibration, range), Complex(0.0));
    QCOMPARE(voltageOf(calibration, ACgain_t(14), ACgain_t::Gain1), Complex(0.0));
    QVERIFY(isNear(voltageOf(calibration, ACgain_t::Gain1, ACgain_t::Unknown), 1.0));
}

void TestAcConversion::internalConverterIsCorrected()
{
    const InstrumentFolder folder;
    folder.write(QStringLiteral("I_input_capacitance.csv"), "0.5\n0\n");
    folder.write(QStringLiteral("V_input_capacitance.csv"), "0.25\n0\n");
    folder.write(QStringLiteral("PIC_ADC_LUT_current.csv"), "0\n1.5\n");
    folder.write(QStringLiteral("PIC_ADC_LUT_voltage.csv"), "0\n1.25\n");
    const CalibrationData calibration = folder.channel();
    const auto correction = [&folder](const char *file) {
        PICInternalADCCapacitance capacitance;
        capacitance.import(folder.base() + QStringLiteral("/Calibration files/Bench 1/") + QLatin1String(file));
        return capacitance.get_Z_adj(1e5, 4000.0);
    };
    const auto currentOfUnit = [&calibration](ADC_src_t source) {
        return calibration.getACCurrent_main(1.0, ACgain_t::Gain1, currentRange_t(0), 1e5, 4000.0, source);
    };
    const auto voltageOfUnit = [&calibration](ADC_src_t source) {
        return calibration.getACVoltage_main(1.0, ACgain_t::Gain1, ACgain_t::Gain1, 1e5, 4000.0, source);
    };
    QVERIFY(isNear(currentOfUnit(ADC_src_t::Internal12Bit), 1.0 / correction("I_input_capacitance.csv")));
    QVERIFY(isNear(currentOfUnit(ADC_src_t::External16Bit), 1.0));
    QVERIFY(isNear(voltageOfUnit(ADC_src_t::Internal12Bit), 1.0 / correction("V_input_capacitance.csv")));
    QVERIFY(isNear(voltageOfUnit(ADC_src_t::External16Bit), 1.0));
    QVERIFY(!isNear(correction("I_input_capacitance.csv"), correction("V_input_capacitance.csv")));

    std::vector<float> current = {1.0f};
    std::vector<float> voltage = {1.0f};
    calibration.correctPIC_ADC_Data__current(current);
    calibration.correctPIC_ADC_Data__voltage(voltage);
    QCOMPARE(current[0], 1.5f);
    QCOMPARE(voltage[0], 1.25f);
}

void TestAcConversion::takesTheCableOff()
{
    const InstrumentFolder folder;
    folder.write(QStringLiteral("CableParallelImpedance_range3.csv"), "h\n1,1000,-90");
    const CalibrationData calibration = folder.channel();
    const Complex cable(0.0, -1000.0);
    const Complex cell(300.0, -400.0);
    const Complex measured = cell * cable / (cell + cable);
    QVERIFY(isNear(calibration.adjustZforCableCapacitance(5.0, measured, currentRange_t(3)), cell));
    QCOMPARE(calibration.adjustZforCableCapacitance(5.0, measured, currentRange_t(4)), measured); // no table
    QCOMPARE(calibration.adjustZforCableCapacitance(5.0, 0.0, currentRange_t(3)), Complex(0.0));

    folder.write(QStringLiteral("CableParallelImpedance_range3.csv"), "h\n1,1024,0");
    const Complex nothingElse = folder.channel().adjustZforCableCapacitance(5.0, 1024.0, currentRange_t(3));
    QVERIFY(std::isinf(nothingElse.real()));
    QCOMPARE(nothingElse.imag(), 0.0);
}

void TestAcConversion::clearedTablesAreNeutral()
{
    const InstrumentFolder folder;
    folder.write(QStringLiteral("I_inputBuffer.csv"), constantTable(4.0));
    folder.write(QStringLiteral("WEgain10_Igain1.csv"), constantTable(2.0));
    folder.write(QStringLiteral("CableParallelImpedance_range0.csv"), constantTable(2.0));
    folder.write(QStringLiteral("PIC_ADC_LUT_current.csv"), "0\n7\n");
    CalibrationData calibration = folder.channel();
    calibration.clearSweepTableEntries();
    calibration.clearLUTEntries();
    QVERIFY(isNear(currentOf(calibration, 0), 1.0));
    QVERIFY(isNear(voltageOf(calibration, ACgain_t::Gain10, ACgain_t::Gain1), 0.1));
    QCOMPARE(calibration.adjustZforCableCapacitance(5.0, 3.0, currentRange_t(0)), Complex(3.0));
    std::vector<float> samples = {1.0f};
    calibration.correctPIC_ADC_Data__current(samples);
    QCOMPARE(samples[0], 1.0f);
    calibration.refreshLUTandInputCapacitanceTables();
    calibration.correctPIC_ADC_Data__current(samples);
    QCOMPARE(samples[0], 7.0f);
}

void TestAcConversion::importMakesTheOuterFolders()
{
    const TableFolder documents;
    CalibrationData().importCalData(documents.path() + QStringLiteral("/Made/Base"), QStringLiteral("Bench %1"));
    QVERIFY(QDir(documents.path() + QStringLiteral("/Made/Base/Calibration files")).exists());
    QVERIFY(!QDir(documents.path() + QStringLiteral("/Made/Base/Calibration files/Bench %1")).exists());
}

void TestAcConversion::namesNeverLeaveTheFolder_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("empty") << QString();
    QTest::newRow("the folder") << QStringLiteral(".");
    QTest::newRow("its parent") << QStringLiteral("..");
    QTest::newRow("a path") << QStringLiteral("../Calibration files/Bench 1");
    QTest::newRow("NUL") << QString(QStringLiteral("Bench 1") + QChar(QChar::Null));
}

void TestAcConversion::namesNeverLeaveTheFolder()
{
    QFETCH(QString, name);
    const InstrumentFolder folder;
    folder.write(QStringLiteral("I_inputBuffer.csv"), constantTable(4.0));
    CalibrationData calibration = folder.channel();
    QVERIFY(!calibration.importCalData(folder.documents() + QStringLiteral("/Other"), name));
    QVERIFY(isNear(currentOf(calibration, 0), 1.0)); // the earlier instrument's tables are gone
    QVERIFY(!QDir(folder.documents() + QStringLiteral("/Other")).exists());

    csvDataHeader_t header;
    header.magic = csvDataHeader_t::expectedMagic;
    header.payloadSize = 5;
    calibration.getDataImporter()->setCSVDataHeader(header);
    QTest::ignoreMessage(QtWarningMsg, "CSVdataImporter::WriteCSVs  csvFileName file name is empty.");
    QVERIFY(calibration.getDataImporter()->appendCSVRawData("x,a\n1"));
    QVERIFY(!calibration.getDataImporter()->validateCSVFiles());
}

void TestAcConversion::importerFillsTheInstrumentsFolder()
{
    const InstrumentFolder folder;
    CalibrationData calibration = folder.channel();
    const QByteArray payload = "I_inputBuffer.csv,f,m,p,\n1,4,0,\n2,4,0";
    csvDataHeader_t header;
    header.magic = csvDataHeader_t::expectedMagic;
    header.payloadSize = payload.size();
    calibration.getDataImporter()->setCSVDataHeader(header);
    QVERIFY(calibration.getDataImporter()->appendCSVRawData(payload));
    QVERIFY(calibration.getDataImporter()->validateCSVFiles());
    QVERIFY(isNear(currentOf(calibration, 0), 1.0)); // not before the next import
    calibration.importCalData(folder.base(), QStringLiteral("Bench 1"));
    QVERIFY(isNear(currentOf(calibration, 0), 0.25));
    QVERIFY(!calibration.getDataImporter()->isCSVDataPayloadFull()); // ready for another transfer
}

void TestAcConversion::turnsCyclerAmplitudesByTheirPolynomials()
{
    cal_vc07 record = roundGaleRecord();
    const float magnitude[] = {1.0f, 0.5f, 0.25f, 0.125f, 0.0625f}; // at 2 Hz: 1 + 1 + 1 + 1 + 1
    const float phase[] = {10.0f, 10.0f, 5.0f, 2.5f, 1.25f};        // at 2 Hz: 10 + 20 + 20 + 20 + 20
    std::copy(magnitude, magnitude + 5, record.acIMag[1]);
    std::copy(phase, phase + 5, record.acIPhase[1]);
    std::copy(magnitude, magnitude + 5, record.acVMag[2]);
    std::copy(phase, phase + 5, record.acVPhase[2]);
    const CalibrationData calibration = calibrated(HardwareModel_t::Gale, record);
    QVERIFY(isNear(calibration.getACCurrent_gale(64.0, 1, 2.0), Complex(0.0, 64.0 / 32.0 * 5.0)));
    QVERIFY(isNear(calibration.getACVoltage_gale(Complex(0.0, 64.0), 2, 2.0), Complex(-64.0 / 16.0 * 5.0, 0.0)));
    QCOMPARE(calibration.getACCurrent_gale(64.0, 9, 2.0), Complex(0.0)); // range 0, which has no factor here
}

void TestAcConversion::everyCyclerRangeHasItsOwnAcFactors()
{
    cal_vc07 record = {};
    record.calMagic = CalMagic::vc07;
    for (int r = 0; r < 8; ++r) {
        record.iGain[r] = float(r + 2);
        record.acIMag[r][0] = float(10 * (r + 1));
        record.acIPhase[r][0] = float(r + 1);
    }
    for (int r = 0; r < 4; ++r) {
        record.vGain[r] = float(r + 3);
        record.acVMag[r][0] = float(100 * (r + 1));
        record.acVPhase[r][0] = float(-20 * (r + 1));
    }
    const float real[] = {1.0f, 0.5f, 0.25f, 0.125f, 0.0625f};   // at 2 Hz: 1 + 1 + 1 + 1 + 1
    const float imaginary[] = {2.0f, 0.5f, 0.5f, 0.25f, 0.125f}; // at 2 Hz: 2 + 1 + 2 + 2 + 2
    std::copy(real, real + 5, record.cmReal);
    std::copy(imaginary, imaginary + 5, record.cmImag);
    const CalibrationData cycler = calibrated(HardwareModel_t::Gale, record);
    const auto turned = [](double magnitude, double degrees) {
        return std::polar(magnitude, degrees * 3.141592653589793 / 180.0);
    };
    for (int r = 0; r < 8; ++r) {
        QVERIFY(isNear(cycler.getACCurrent_gale(1.0, r, 2.0), turned(10.0 * (r + 1) * (r + 2), r + 1)));
        const Complex commonMode = 3.0 * (r + 2) * Complex(5.0, 9.0); // at 3 V
        QVERIFY(isNear(cycler.removeCMCurrent(Complex(7.0, 8.0), r, 2.0, 3.0), Complex(7.0, 8.0) - commonMode));
    }
    for (int r = 0; r < 4; ++r)
        QVERIFY(isNear(cycler.getACVoltage_gale(1.0, r, 2.0), turned(100.0 * (r + 1) * (r + 3), -20.0 * (r + 1))));
}

void TestAcConversion::biasIsForTheOwnLineAlone()
{
    const InstrumentFolder folder;
    const CalibrationData mainline = folder.channel();
    P24ExperimentalAcData head = {};
    head.iGain = ACgain_t::Gain2;
    head.weGain = ACgain_t::Gain2;
    head.voltageRef = 16;
    head.currentRef = 4;
    QCOMPARE(mainline.getEWE_DCbias(100.0, &head), 50.0 + 1.0);
    QCOMPARE(mainline.getCurrent_DCbias(100.0, &head), 50.0 + 2.0);

    const CalibrationData cycler = calibrated(HardwareModel_t::Gale, roundGaleRecord());
    Gale_AC_Header_t galeHead = {};
    galeHead.currentRange = currentRange_t(200); // read as range 0
    galeHead.voltageRange = voltageRange_t(1);
    galeHead.currentRef = 4;
    galeHead.voltageRef = -16;
    QCOMPARE(cycler.getEWE_DCbias(100.0, &galeHead), 12.5 - 2.0);
    QCOMPARE(cycler.getCurrent_DCbias(100.0, &galeHead), 50.0 + 1.0);

    QVERIFY(std::isnan(mainline.getEWE_DCbias(1.0, &galeHead)));
    QVERIFY(std::isnan(mainline.getCurrent_DCbias(1.0, &galeHead)));
    QVERIFY(std::isnan(cycler.getEWE_DCbias(1.0, &head)));
    QVERIFY(std::isnan(cycler.getCurrent_DCbias(1.0, &head)));
}

void TestAcConversion::convertsCyclerBatches()
{
    cal_vc07 record = roundGaleRecord();
    record.iQuadratic[0] = 0.5f;
    CalibrationData cycler;
    cycler.importCalData(reinterpret_cast<const char *>(&record), int(sizeof record));
    Gale_AC_Header_t head = {};
    head.samplesPerSignal = 3; // more than the vectors hold
    head.currentRef = 8;
    head.voltageRef = 8;
    const std::vector<float> in = {4.0f, -4.0f};
    std::vector<float> out(2);
    cycler.getGaleBatchDCVoltage(head, in, out);
    QCOMPARE(out, (std::vector<float>{1.0f + 1.0f, -1.0f + 1.0f}));
    cycler.getGaleBatchDCCurrent(head, in, out);
    QCOMPARE(out, (std::vector<float>{4.0f + 0.5f * 16.0f, 0.0f})); // x = raw / 2 + 2
}

void TestAcConversion::impedanceOffsetIsNeutral()
{
    const ComplexDataPoint_t offset =
        CalibrationData().getZOffset(1e3, currentRange_t(4), ACgain_t::Gain5, ACgain_t::Gain2);
    QCOMPARE(offset.absZ, 1.0);
    QCOMPARE(offset.phaseDeg, 0.0);
    QCOMPARE(offset.realZ, 1.0);
}

NIMBRELLE_TEST_MAIN(TestAcConversion)
#include "TestAcConversion.moc"
