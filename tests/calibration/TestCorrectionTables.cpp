// SPDX-License-Identifier: MIT
#include "calibration/CorrectionTables.h"
#include "calibration/TableFolder.h"
#include "support/TestMain.h"
#include "support/UnreadableFile.h"

#include <cmath>

#include <unistd.h>

namespace {

/// A line for each code from 0 up: the code and a half.
QByteArray halfMore(int lines)
{
    QByteArray contents;
    for (int code = 0; code < lines; ++code)
        contents += QByteArray::number(code) + ".5\n";
    return contents;
}

std::vector<float> corrected(const QByteArray &contents, std::vector<float> samples)
{
    const TableFolder folder;
    PIC_ADC_lut lut;
    lut.import(folder.write(QStringLiteral("lut.csv"), contents));
    lut.correctData(samples);
    return samples;
}

PICInternalADCCapacitance capacitanceOf(const QByteArray &contents)
{
    const TableFolder folder;
    PICInternalADCCapacitance capacitance;
    capacitance.import(folder.write(QStringLiteral("capacitance.csv"), contents));
    return capacitance;
}

} // namespace

class TestCorrectionTables : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void straightensCodes();
    void damagedLinesAndMissingFilesLeaveCodesAlone();
    void evaluatesTheCapacitance();
    void correctsAmplitudesByTheirLevel();
    void withoutCapacitanceNothingIsCorrected();
    void looksTheCableUp();
    void unreadableFilesCorrectNothing();
};

void TestCorrectionTables::straightensCodes()
{
    const std::vector<float> samples = {0.0f, 1.0f, 99.7f, 100.0f, 4095.5f, 4096.0f, -3.0f};
    const std::vector<float> full = {0.0f, 1.5f, 99.5f, 100.5f, 4095.5f, 4096.0f, -3.0f};
    QCOMPARE(corrected(halfMore(4096), samples), full);
    QCOMPARE(corrected(halfMore(5000), samples), full); // the surplus is ignored
    const std::vector<float> partly = {0.0f, 1.5f, 99.5f, 100.0f, 4095.0f, 4096.0f, -3.0f};
    QCOMPARE(corrected(halfMore(100), samples), partly); // the identity from there on

    std::vector<double> doubles = {1.0, 4096.0};
    PIC_ADC_lut lut;
    lut.clearTable();
    lut.correctData(doubles);
    QCOMPARE(doubles, (std::vector<double>{1.0, 4096.0}));
}

void TestCorrectionTables::damagedLinesAndMissingFilesLeaveCodesAlone()
{
    QCOMPARE(corrected("0\n7,8\n\n9.5\n", {1.0f, 2.0f, 3.0f}), (std::vector<float>{1.0f, 2.0f, 9.5f}));
    QCOMPARE(corrected("0\n7.5,\n", {1.0f}), (std::vector<float>{7.5f})); // a trailing comma is no second field

    std::vector<float> samples = {1.25f};
    PIC_ADC_lut lut;
    lut.correctData(samples); // never imported: not even the fraction goes
    QCOMPARE(samples, (std::vector<float>{1.25f}));
    lut.import(QStringLiteral("/nowhere/at.csv"));
    lut.correctData(samples); // the identity
    QCOMPARE(samples, (std::vector<float>{1.0f}));
    QTest::ignoreMessage(QtWarningMsg, "PIC_ADC_lut::import filename is empty or null.");
    lut.import(QString());
}

void TestCorrectionTables::evaluatesTheCapacitance()
{
    const PICInternalADCCapacitance capacitance = capacitanceOf("2\nno number\n3\n5\n"); // 2 x^2 + 3 x + 5 pF
    QVERIFY(std::abs(capacitance.getCapacitance(10.0) - 235e-12) < 1e-21);
    QVERIFY(std::abs(capacitance.getCapacitance(0.0) - 5e-12) < 1e-21);
    QCOMPARE(PICInternalADCCapacitance().getCapacitance(10.0), 0.0);
}

void TestCorrectionTables::correctsAmplitudesByTheirLevel()
{
    const PICInternalADCCapacitance capacitance = capacitanceOf("0.5\n0\n"); // 1024 pF at the reference level
    QVERIFY(std::abs(capacitance.get_Z_adj(1e5, 2048.0) - 1.0) < 1e-12);
    // a = 2 pi 1000 * 2048e-12 * 1e5 = 1.2867964, b = half of it; the angle in degrees is taken for radians
    const std::complex<double> doubled = capacitance.get_Z_adj(1e5, 4096.0);
    const double a = 6283.185307179586 * 2048e-12 * 1e5;
    const double magnitude = std::sqrt((1.0 + a * a / 4.0) / (1.0 + a * a));
    const double degrees = (std::atan(a) - std::atan(a / 2.0)) * 180.0 / 3.141592653589793;
    QVERIFY(std::abs(std::abs(doubled) - magnitude) < 1e-12);
    QVERIFY(std::abs(doubled - std::polar(magnitude, degrees)) < 1e-9);
    QVERIFY(magnitude < 0.8 && degrees > 10.0);
}

void TestCorrectionTables::withoutCapacitanceNothingIsCorrected()
{
    QTest::ignoreMessage(QtWarningMsg, "PICInternalADCCapacitance::import filename is empty");
    PICInternalADCCapacitance nameless;
    nameless.import(QString());
    for (const PICInternalADCCapacitance &neutral :
         {PICInternalADCCapacitance(), nameless, capacitanceOf("0\n0.0\n"), capacitanceOf("")})
        QCOMPARE(neutral.get_Z_adj(1e6, 4000.0), std::complex<double>(1.0, 0.0));
}

void TestCorrectionTables::looksTheCableUp()
{
    const TableFolder folder;
    folder.write(QStringLiteral("CableParallelImpedance_range10.csv"), "h\n1,1e6,-90\n3,5e5,-90");
    CableCapacitanceLUT cable(folder.path());
    bool found = false;
    const std::complex<double> z = cable.lookupCableImpedance(2.0, currentRange_t(10), &found);
    QVERIFY(found);
    QVERIFY(std::abs(z - std::complex<double>(0.0, -1.0 / 1.5e-6)) < 1e-3); // reciprocals against the frequency

    QVERIFY(std::isinf(cable.lookupCableImpedance(2.0, currentRange_t(3), &found).real()));
    QVERIFY(!found);
    found = true;
    cable.clearSweepTableEntries();
    QCOMPARE(cable.lookupCableImpedance(2.0, currentRange_t(10), &found).imag(), 0.0);
    QVERIFY(!found);
    CableCapacitanceLUT().lookupCableImpedance(2.0, currentRange_t::OFF, &found);
    QVERIFY(!found);
}

void TestCorrectionTables::unreadableFilesCorrectNothing()
{
    const QString file = unreadableFile();
    if (file.isEmpty())
        QSKIP("no file here whose reading fails");
    alarm(20); // a reader that waits for the end would wait, and grow, without one
    const QRegularExpression warning(QStringLiteral("speed cannot be read to its end and is not used: ."));
    for (int i = 0; i < 3; ++i)
        QTest::ignoreMessage(QtWarningMsg, warning);

    PIC_ADC_lut lut;
    lut.import(file);
    std::vector<float> samples = {7.0f};
    lut.correctData(samples);
    QCOMPARE(samples, (std::vector<float>{7.0f}));

    PICInternalADCCapacitance capacitance = capacitanceOf("0.5\n0\n"); // what it had is gone
    capacitance.import(file);
    QCOMPARE(capacitance.get_Z_adj(1e5, 4000.0), std::complex<double>(1.0, 0.0));

    QVERIFY(frequencySweep(file, frequencySweep::interpolate_logFrequency, 1.0, 0.0).isEmpty());
    alarm(0);
}

NIMBRELLE_TEST_MAIN(TestCorrectionTables)
#include "TestCorrectionTables.moc"
