// SPDX-License-Identifier: MIT
#include "hardware_models/HardwareModelNumber.h"
#include "hardware_models/RangeTypes.h"
#include "nimbrellelibrary/NimbrelleLib.h"
#include "support/TestMain.h"

#include <cmath>

class TestNumericHelpers : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void unitsAreComparedExactly_data();
    void unitsAreComparedExactly();
    void valuesHavePrefixAndDigits_data();
    void valuesHavePrefixAndDigits();
    void frequenciesRunFromEndToStart_data();
    void frequenciesRunFromEndToStart();
    void lastFrequencyStepMayBeShorter();
    void frequencyRangesAreOpenAtTheirLowerEnd();
    void marginSavesAlmostWholeQuotients_data();
    void marginSavesAlmostWholeQuotients();
    void manualSamplingIsSplit_data();
    void manualSamplingIsSplit();
    void unknownModelHasNoImpedanceRange();
};

void TestNumericHelpers::unitsAreComparedExactly_data()
{
    QTest::addColumn<QString>("unit");
    QTest::addColumn<double>("factor");
    QTest::newRow("charge") << "mAh" << 3.6; // coulombs
    QTest::newRow("mass") << "kg" << 1000.0; // grams
    QTest::newRow("area") << QString::fromUtf8("cm\u00b2") << 1e-4;
    QTest::newRow("volume") << QString::fromUtf8("cm\u00b3") << 1e-6;
    QTest::newRow("mega") << "MHz" << 1e6;
    QTest::newRow("milli") << "mHz" << 1e-3;
    QTest::newRow("unknown") << "Ohm" << 1.0;
    QTest::newRow("other case") << "MS" << 1.0;
    QTest::newRow("blank") << " ms" << 1.0;
    QTest::newRow("nothing") << "" << 1.0;
}

void TestNumericHelpers::unitsAreComparedExactly()
{
    QFETCH(QString, unit);
    QTEST(NimbrelleLib::getUnitsMultiplier(unit), "factor");
}

void TestNumericHelpers::valuesHavePrefixAndDigits_data()
{
    QTest::addColumn<double>("value");
    QTest::addColumn<int>("digits");
    QTest::addColumn<QString>("text");
    QTest::newRow("no prefix keeps its blank") << 999.9 << 4 << "999.9 ";
    QTest::newRow("rounds up without a new prefix") << 999.96 << 4 << "1000.0 ";
    QTest::newRow("kilo") << 1000.0 << 3 << "1.00 k";
    QTest::newRow("negative") << -12345.0 << 3 << "-12.3 k";
    QTest::newRow("micro") << 0.00024 << 3 << "240 u";
    QTest::newRow("giga has no next") << 2.5e12 << 3 << "2500 G";
    QTest::newRow("pico has no next") << 2.4e-13 << 3 << "0.24 p";
    QTest::newRow("zero falls through") << 0.0 << 4 << "0.000 p";
    QTest::newRow("fewer digits than integers") << 123.0 << 2 << "123 ";
    QTest::newRow("infinite") << qInf() << 3 << "inf G";
}

void TestNumericHelpers::valuesHavePrefixAndDigits()
{
    QFETCH(double, value);
    QFETCH(int, digits);
    QTEST(NimbrelleLib::getValueString(value, digits), "text");
}

void TestNumericHelpers::frequenciesRunFromEndToStart_data()
{
    QTest::addColumn<double>("start");
    QTest::addColumn<double>("end");
    QTest::addColumn<double>("pointsPerDecade");
    QTest::addColumn<int>("count");
    QTest::newRow("downwards") << 1.0 << 1000.0 << 10.0 << 31;
    QTest::newRow("upwards") << 1000.0 << 1.0 << 10.0 << 31;
    QTest::newRow("one point") << 50.0 << 50.0 << 10.0 << 1;
    QTest::newRow("no resolution") << 1.0 << 1000.0 << 0.0 << 1;
    QTest::newRow("no frequency") << 0.0 << 1000.0 << 10.0 << 0;
    QTest::newRow("negative frequency") << 1.0 << -1.0 << 10.0 << 0;
    QTest::newRow("endless") << qInf() << 1.0 << 10.0 << 0;
    QTest::newRow("not a number") << qQNaN() << 1.0 << 10.0 << 0;
}

void TestNumericHelpers::frequenciesRunFromEndToStart()
{
    QFETCH(double, start);
    QFETCH(double, end);
    QFETCH(double, pointsPerDecade);
    QFETCH(int, count);
    const QList<double> list = NimbrelleLib::calculateFrequencyList(start, end, pointsPerDecade);
    QCOMPARE(list.size(), count);
    if (count == 0)
        return;
    QCOMPARE(list.last(), start);
    for (int i = 0; i + 1 < count; ++i)
        QCOMPARE(list.at(i), end * std::pow(start / end, i / 30.0)); // three decades in thirty steps
}

void TestNumericHelpers::lastFrequencyStepMayBeShorter()
{
    const QList<double> list = NimbrelleLib::calculateFrequencyList(5.0, 1000.0, 1.0);
    QCOMPARE(list.size(), 4);
    QCOMPARE(list.at(2), 10.0);
    QCOMPARE(list.at(3), 5.0);
}

void TestNumericHelpers::frequencyRangesAreOpenAtTheirLowerEnd()
{
    QCOMPARE(NimbrelleLib::getFrequencyRange(2000.1), 0);
    QCOMPARE(NimbrelleLib::getFrequencyRange(2000.0), 1);
    QCOMPARE(NimbrelleLib::getFrequencyRange(1.0), 2);
    QCOMPARE(NimbrelleLib::getFrequencyRange(qQNaN()), 2);
}

void TestNumericHelpers::marginSavesAlmostWholeQuotients_data()
{
    QTest::addColumn<double>("value");
    QTest::addColumn<double>("margin");
    QTest::addColumn<unsigned>("result");
    QTest::newRow("just below") << 2.9999 << 0.001 << 3u;
    QTest::newRow("well below") << 2.9 << 0.001 << 2u;
    QTest::newRow("at the margin") << 2.75 << 0.25 << 2u;
    QTest::newRow("whole") << 3.0 << 0.5 << 3u;
    QTest::newRow("no margin") << 2.9999 << 0.0 << 2u;
    QTest::newRow("full margin") << 2.9999 << 1.0 << 2u;
    QTest::newRow("negative") << -1.5 << 0.1 << 0u;
    QTest::newRow("too large") << 1e12 << 0.1 << 4294967295u;
}

void TestNumericHelpers::marginSavesAlmostWholeQuotients()
{
    QFETCH(double, value);
    QFETCH(double, margin);
    QTEST(floorWithMargin(value, margin), "result");
}

void TestNumericHelpers::manualSamplingIsSplit_data()
{
    QTest::addColumn<double>("interval");
    QTest::addColumn<QByteArray>("payload"); // a float, little-endian
    QTest::addColumn<unsigned>("factor");
    QTest::newRow("short enough") << 0.5 << QByteArray::fromHex("0000003f") << 1u;
    QTest::newRow("ten seconds") << 10.0 << QByteArray::fromHex("0000803f") << 10u;
    QTest::newRow("a part more") << 1.5 << QByteArray::fromHex("0000403f") << 2u; // twice 0.75 s
    QTest::newRow("nothing") << 0.0 << QByteArray::fromHex("acc52737") << 1u;     // 1e-5 s
    QTest::newRow("not a number") << qQNaN() << QByteArray::fromHex("acc52737") << 1u;
}

void TestNumericHelpers::manualSamplingIsSplit()
{
    QFETCH(double, interval);
    const auto [payload, factor] =
        NimbrelleLib::getManualSamplingParamsPayload(HardwareModel_t::Alder_2_5, interval, 1.0);
    QTEST(payload, "payload");
    QTEST(factor, "factor");
}

void TestNumericHelpers::unknownModelHasNoImpedanceRange()
{
    QCOMPARE(NimbrelleLib::getEIScurrentRangeLimit(HardwareModel_t::Invalid, 10.0), currentRange_t::OFF);
    QCOMPARE(NimbrelleLib::getEIScurrentRangeLimit(HardwareModel_t::Gale, 10.0), currentRange_t(3));
}

NIMBRELLE_TEST_MAIN(TestNumericHelpers)
#include "TestNumericHelpers.moc"
