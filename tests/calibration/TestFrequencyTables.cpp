// SPDX-License-Identifier: MIT
#include "calibration/FrequencySweep.h"
#include "calibration/GainMatrix.h"
#include "calibration/TableFolder.h"
#include "support/TestMain.h"

#include <cmath>

namespace {

using Sweep = frequencySweep;

bool isNear(std::complex<double> value, double magnitude, double degrees)
{
    const double radians = degrees * 3.141592653589793 / 180.0;
    const std::complex<double> expected(magnitude * std::cos(radians), magnitude * std::sin(radians));
    return std::abs(value - expected) < 1e-9;
}

Sweep sweepOf(const QByteArray &contents, Sweep::interpolateType_t type = Sweep::interpolate_logFrequency,
              double magnitude = 1.0, double degrees = 0.0)
{
    const TableFolder folder;
    return Sweep(folder.write(QStringLiteral("sweep.csv"), contents), type, magnitude, degrees);
}

/// A table that answers the same at every frequency.
QByteArray constantTable(double magnitude)
{
    return "heading\n1," + QByteArray::number(magnitude) + ",0";
}

} // namespace

class TestFrequencyTables : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsRows_data();
    void readsRows();
    void emptyTableAnswersItsDefaults();
    void interpolatesAgainstTheLogarithm();
    void interpolatesPlainlyWithoutALogarithm();
    void interpolatesAFirstOrderLowPass();
    void interpolatesReciprocals();
    void modelThatDoesNotFitFallsBack();
    void shortRowsAndOddNumbersNeverCrash_data();
    void shortRowsAndOddNumbersNeverCrash();
    void matrixFormTakesThePairOrItsTwoSides();
    void stageFormDividesTheVoltagesStages();
    void everyGainGoesThroughItsBlocks();
    void everyGainHasItsOwnFile();
};

void TestFrequencyTables::readsRows_data()
{
    QTest::addColumn<QByteArray>("contents");
    const QByteArray rows = "10,0.5,-30\n100,0.25,-60";
    QTest::newRow("ascending") << "f,m,p\n" + rows;
    QTest::newRow("the heading may look like a row") << "1,9,9\n" + rows;
    QTest::newRow("trailing commas") << QByteArray("f,m,p,\n10,0.5,-30,\n100,0.25,-60,\n");
    QTest::newRow("carriage returns") << QByteArray("f,m,p\r\n10,0.5,-30\r\n100,0.25,-60\r\n");
    QTest::newRow("descending") << QByteArray("f,m,p\n100,0.25,-60\n10,0.5,-30");
}

void TestFrequencyTables::readsRows()
{
    QFETCH(QByteArray, contents);
    const Sweep sweep = sweepOf(contents);
    QVERIFY(!sweep.isEmpty());
    QVERIFY(isNear(sweep.lookup(1.0), 0.5, -30.0)); // held flat
    QVERIFY(isNear(sweep.lookup(10.0), 0.5, -30.0));
    QVERIFY(isNear(sweep.lookup(100.0), 0.25, -60.0));
    QVERIFY(isNear(sweep.lookup(1e6), 0.25, -60.0));
}

void TestFrequencyTables::emptyTableAnswersItsDefaults()
{
    QVERIFY(isNear(Sweep().lookup(5.0), 1.0, 0.0));
    QVERIFY(isNear(sweepOf("heading only\n", Sweep::interpolate_logFrequency, 2.0, 30.0).lookup(5.0), 2.0, 30.0));
    const Sweep missing(QStringLiteral("/nowhere/at.csv"), Sweep::interpolate_firstOrder, 3.0, 60.0);
    QVERIFY(missing.isEmpty());
    QVERIFY(isNear(missing.lookup(5.0), 3.0, 60.0));

    QTest::ignoreMessage(QtWarningMsg, "frequencySweep: filename is empty or null");
    const Sweep nameless(QString(), Sweep::interpolate_firstOrder, 3.0, 60.0);
    QVERIFY(isNear(nameless.lookup(5.0), 1.0, 0.0)); // whatever the arguments said

    Sweep cleared = sweepOf("h\n1,7,0", Sweep::interpolate_logFrequency, 2.0, 30.0);
    QVERIFY(isNear(cleared.lookup(5.0), 7.0, 0.0)); // a single row holds everywhere
    cleared.clearRawData();
    QVERIFY(isNear(cleared.lookup(5.0), 2.0, 30.0));
}

void TestFrequencyTables::interpolatesAgainstTheLogarithm()
{
    const Sweep sweep = sweepOf("h\n1,1,0\n100,3,-40\n10000,4,-50");
    QVERIFY(isNear(sweep.lookup(10.0), 2.0, -20.0));
    QVERIFY(isNear(sweep.lookup(100.0), 3.0, -40.0));
    QVERIFY(isNear(sweep.lookup(1000.0), 3.5, -45.0));
    // Rows out of order stay so: the walk stops at the first one above.
    QVERIFY(isNear(sweepOf("h\n1,1,0\n1000,4,0\n100,2,0\n10000,8,0").lookup(10.0), 2.0, 0.0));
}

void TestFrequencyTables::interpolatesPlainlyWithoutALogarithm()
{
    QVERIFY(isNear(sweepOf("h\n0,1,0\n10,2,20").lookup(2.5), 1.25, 5.0));
}

// Magnitude 0.6 at f: the time constant 0.8 / 0.6 / f; 0.8 gives 0.6 / 0.8 / f. Halfway in the logarithm of the frequency
// their mean 25 / 24 / f, hence 24 / sqrt(24^2 + 25^2). The lags 30 and 60 degrees have tangents 1 / sqrt 3 and sqrt 3.
void TestFrequencyTables::interpolatesAFirstOrderLowPass()
{
    const Sweep sweep = sweepOf("h\n1,0.8,-30\n100,0.6,-60", Sweep::interpolate_firstOrder);
    const double lag = std::atan(2.0 / std::sqrt(3.0)) * 180.0 / 3.141592653589793;
    QVERIFY(isNear(sweep.lookup(10.0), 24.0 / std::sqrt(1201.0), lag)); // the lag comes back positive
}

void TestFrequencyTables::interpolatesReciprocals()
{
    const Sweep sweep = sweepOf("h\n100,1,0\n300,0.25,-40", Sweep::interpolate_reciprocal);
    QVERIFY(isNear(sweep.lookup(200.0), 1.0 / 2.5, -40.0 * std::log10(2.0) / std::log10(3.0)));
    QVERIFY(isNear(sweepOf("h\n1,-1,0\n100,3,0", Sweep::interpolate_reciprocal).lookup(10.0), 1.0, 0.0));
}

void TestFrequencyTables::modelThatDoesNotFitFallsBack()
{
    // A low-pass neither amplifies nor leads: each column falls back to the logarithm by itself.
    const Sweep amplifying = sweepOf("h\n1,0.8,-30\n100,1.2,-60", Sweep::interpolate_firstOrder);
    const double lag = std::atan(2.0 / std::sqrt(3.0)) * 180.0 / 3.141592653589793;
    QVERIFY(isNear(amplifying.lookup(10.0), 1.0, lag));
    const Sweep leading = sweepOf("h\n1,0.8,-30\n100,0.6,10", Sweep::interpolate_firstOrder);
    QVERIFY(isNear(leading.lookup(10.0), 24.0 / std::sqrt(1201.0), -10.0));
}

void TestFrequencyTables::shortRowsAndOddNumbersNeverCrash_data()
{
    QTest::addColumn<QByteArray>("contents");
    QTest::addColumn<double>("magnitude"); // at 10, with defaults 5 and 90 degrees
    QTest::addColumn<double>("degrees");
    QTest::newRow("two columns: the phase's default fixes both") << QByteArray("h\n1,2\n100,4") << 5.0 << 90.0;
    QTest::newRow("two columns, below the span") << QByteArray("h\n20,2\n100,4") << 2.0 << 90.0;
    QTest::newRow("no number reads as 0") << QByteArray("h\n1,two,0\n100,4,0") << 2.0 << 0.0;
    QTest::newRow("blank first row") << QByteArray("h\n\n100,4,8") << 5.0 << 90.0;
    QTest::newRow("short last row reads as 0") << QByteArray("h\n1,4,0\n100,2") << 3.0 << 0.0;
    QTest::newRow("one row of no number") << QByteArray("h\nnan,7,0") << 7.0 << 0.0;
}

void TestFrequencyTables::shortRowsAndOddNumbersNeverCrash()
{
    QFETCH(QByteArray, contents);
    QFETCH(double, magnitude);
    QFETCH(double, degrees);
    const Sweep sweep = sweepOf(contents, Sweep::interpolate_logFrequency, 5.0, 90.0);
    QVERIFY(isNear(sweep.lookup(10.0), magnitude, degrees));
    sweep.lookup(std::nan("")); // as a damaged packet may ask
}

void TestFrequencyTables::matrixFormTakesThePairOrItsTwoSides()
{
    const TableFolder folder;
    folder.write(QStringLiteral("WEgain10_Igain1.csv"), constantTable(2.0));
    folder.write(QStringLiteral("WEgain1_Igain100.csv"), constantTable(3.0));
    folder.write(QStringLiteral("WEgain10_Igain10.csv"), constantTable(11.0));
    GainMatrix matrix(folder.path());
    QVERIFY(isNear(matrix.lookup(1.0, ACgain_t::Gain10, ACgain_t::Gain10), 11.0, 0.0));
    QVERIFY(isNear(matrix.lookup(1.0, ACgain_t::Gain10, ACgain_t::Gain100), 6.0, 0.0));
    QVERIFY(isNear(matrix.lookup(1.0, ACgain_t(10), ACgain_t::Gain1), 1.0, 0.0));
    QVERIFY(isNear(matrix.lookup(1.0, ACgain_t::Gain10, ACgain_t(10)), 1.0, 0.0));
    matrix.clearSweepTableEntries();
    QVERIFY(isNear(matrix.lookup(1.0, ACgain_t::Gain10, ACgain_t::Gain10), 1.0, 0.0));
    QVERIFY(isNear(GainMatrix().lookup(1.0, ACgain_t::Gain10, ACgain_t::Gain10), 1.0, 0.0));
}

void TestFrequencyTables::stageFormDividesTheVoltagesStages()
{
    const TableFolder folder;
    folder.write(QStringLiteral("WEgain10_Igain1.csv"), "a heading only is no table\n");
    folder.write(QStringLiteral("WEgainBlock1_gain2.csv"), constantTable(2.0));
    folder.write(QStringLiteral("WEgainBlock1_gain10.csv"), constantTable(3.0));
    folder.write(QStringLiteral("WEgainBlock2_gain10_alt1.csv"), constantTable(5.0));
    folder.write(QStringLiteral("WEgainBlock3_gain10_alt2.csv"), constantTable(7.0));
    folder.write(QStringLiteral("IgainBlock1_gain10.csv"), constantTable(100.0)); // loaded, never read
    const GainMatrix matrix(folder.path());
    // 1000 = 10 in all blocks; 20 = 2 in the first, 10 in the second
    QVERIFY(isNear(matrix.lookup(1.0, ACgain_t::Gain1000, ACgain_t::Gain20), 3.0 * 5.0 * 7.0 / (2.0 * 5.0), 0.0));
    QVERIFY(isNear(matrix.lookup(1.0, ACgain_t::Gain1, ACgain_t::Gain10), 1.0 / 3.0, 0.0));
    QVERIFY(isNear(matrix.lookup(1.0, ACgain_t(10), ACgain_t(11)), 5.0 / 7.0, 0.0)); // blocks by themselves
    QVERIFY(isNear(matrix.lookup(1.0, ACgain_t(12), ACgain_t::Unknown), 1.0, 0.0));
}

void TestFrequencyTables::everyGainGoesThroughItsBlocks()
{
    const TableFolder folder;
    const double first[] = {2.0, 3.0, 5.0, 7.0};
    const char *const firstGains[] = {"1", "2", "5", "10"};
    for (int i = 0; i < 4; ++i)
        folder.write(QStringLiteral("WEgainBlock1_gain%1.csv").arg(firstGains[i]), constantTable(first[i]));
    folder.write(QStringLiteral("WEgainBlock2_gain1.csv"), constantTable(11.0));
    folder.write(QStringLiteral("WEgainBlock2_gain10_alt1.csv"), constantTable(13.0));
    folder.write(QStringLiteral("WEgainBlock3_gain1.csv"), constantTable(17.0));
    folder.write(QStringLiteral("WEgainBlock3_gain10_alt2.csv"), constantTable(19.0));
    const double expected[] = {
        2 * 11 * 17, 3 * 11 * 17, 5 * 11 * 17, 7 * 11 * 17, // 1, 2, 5, 10
        3 * 13 * 17, 5 * 13 * 17, 7 * 13 * 17,              // 20, 50, 100
        3 * 13 * 19, 5 * 13 * 19, 7 * 13 * 19,              // 200, 500, 1000
        2 * 13 * 17, 2 * 11 * 19,                           // the second block alone, the third alone
    };
    const GainMatrix matrix(folder.path());
    for (int gain = 0; gain < 12; ++gain)
        QVERIFY(isNear(matrix.lookup(1.0, ACgain_t(gain), ACgain_t::Unknown), expected[gain], 0.0));
}

void TestFrequencyTables::everyGainHasItsOwnFile()
{
    QSet<QString> names;
    for (int we = 0; we < 10; ++we)
        for (int i = 0; i < 10; ++i)
            names.insert(GainMatrix::getCSVFilename(ACgain_t(we), ACgain_t(i)));
    QCOMPARE(names.size(), 100);
    QCOMPARE(GainMatrix::getCSVFilename(ACgain_t(9), ACgain_t(10)), QStringLiteral("WEgain1000_Igain.csv"));
}

NIMBRELLE_TEST_MAIN(TestFrequencyTables)
#include "TestFrequencyTables.moc"
