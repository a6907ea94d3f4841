// SPDX-License-Identifier: MIT
#include "calibration/Temperature.h"
#include "support/TestMain.h"

#include <cmath>

class TestTemperature : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsTheThermocoupleConverter_data();
    void readsTheThermocoupleConverter();
    void convertsTheThermistor_data();
    void convertsTheThermistor();
    void answersNaNOutsideTheBand_data();
    void answersNaNOutsideTheBand();
    void findsTheRatioOfATemperature();
};

// The words are those of the converter's data sheet.
void TestTemperature::readsTheThermocoupleConverter_data()
{
    QTest::addColumn<unsigned>("word");
    QTest::addColumn<float>("degrees");
    QTest::newRow("1600 degrees") << 0x64000000u << 1600.0f;
    QTest::newRow("100.75 degrees") << 0x064C0000u << 100.75f;
    QTest::newRow("25 degrees") << 0x01900000u << 25.0f;
    QTest::newRow("the low bits belong to other readings") << 0x0190FFF0u << 25.0f;
    QTest::newRow("zero") << 0x00000000u << 0.0f;
    QTest::newRow("-0.25 degrees") << 0xFFFC0000u << -0.25f;
    QTest::newRow("-250 degrees") << 0xF0600000u << -250.0f;
}

void TestTemperature::readsTheThermocoupleConverter()
{
    QFETCH(unsigned, word);
    QFETCH(float, degrees);
    QCOMPARE(TemperatureParser().getTemp(word), degrees);
    QVERIFY(std::isnan(TemperatureParser().getTemp(word | 0x00010000u))); // the fault bit
}

void TestTemperature::convertsTheThermistor_data()
{
    QTest::addColumn<float>("ratio");
    QTest::addColumn<double>("degrees");
    QTest::newRow("nominal resistance") << 0.5f << 25.0;
    // x = ln 2: 0.003354016 + 0.00017780886 + 0.00000125205 + 0.00000002108 = 0.00353309799 per kelvin
    QTest::newRow("twice the resistance") << 2.0f / 3.0f << 9.8878;
    // x = -ln 2: 0.003354016 - 0.00017780886 + 0.00000125205 - 0.00000002108 = 0.00317743811 per kelvin
    QTest::newRow("half the resistance") << 1.0f / 3.0f << 41.5691;
}

void TestTemperature::convertsTheThermistor()
{
    QFETCH(float, ratio);
    QFETCH(double, degrees);
    QVERIFY(std::abs(Thermistor().getTemp(ratio) - degrees) < 0.001);
}

void TestTemperature::answersNaNOutsideTheBand_data()
{
    QTest::addColumn<float>("ratio");
    QTest::addColumn<bool>("inBand");
    QTest::newRow("short circuit") << 0.0f << false;
    QTest::newRow("176 degrees") << 0.01f << false;
    QTest::newRow("128 degrees") << 0.03f << true;
    QTest::newRow("-55 degrees") << 0.99f << true;
    QTest::newRow("below -60 degrees") << 0.9945f << false;
    QTest::newRow("open circuit") << 1.0f << false;
    QTest::newRow("above the supply") << 1.2f << false;
}

void TestTemperature::answersNaNOutsideTheBand()
{
    QFETCH(float, ratio);
    QFETCH(bool, inBand);
    QCOMPARE(!std::isnan(Thermistor().getTemp(ratio)), inBand);
}

void TestTemperature::findsTheRatioOfATemperature()
{
    const Thermistor thermistor;
    QVERIFY(std::abs(thermistor.getRatio(25.0f) - 0.5f) < 1e-4f);
    for (float degrees = -55.0f; degrees <= 130.0f; degrees += 5.0f) {
        const double kelvin = degrees + 273.15;
        const double tolerance = 1.1e-6 * kelvin * kelvin; // of the residual in the reciprocal temperature
        QVERIFY2(std::abs(thermistor.getTemp(thermistor.getRatio(degrees)) - degrees) < tolerance,
                 qPrintable(QString::number(degrees)));
    }
    QVERIFY(std::isnan(thermistor.getRatio(-273.15f)));
    QVERIFY(std::isnan(thermistor.getRatio(-300.0f)));
}

NIMBRELLE_TEST_MAIN(TestTemperature)
#include "TestTemperature.moc"
