// SPDX-License-Identifier: MIT
#include "lab/notation/Suggestion.h"
#include "lab/notation/Units.h"

#include "support/TestMain.h"

#include <cmath>
#include <limits>

using namespace lab;

class TestUnits : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsNumbersWithUnits_data();
    void readsNumbersWithUnits();
    void refusesWhatIsNoQuantity_data();
    void refusesWhatIsNoQuantity();
    void suggestsTheNearestWord_data();
    void suggestsTheNearestWord();
    void writesQuantitiesForPeople_data();
    void writesQuantitiesForPeople();
};

void TestUnits::readsNumbersWithUnits_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("dimension");
    QTest::addColumn<double>("value");

    // The right side is the literal that a programmer would write: both have to be the same double.
    const auto row = [](const char *text, Dimension dimension, double value) {
        QTest::newRow(text) << QString::fromUtf8(text) << static_cast<int>(dimension) << value;
    };
    row("0.25", Dimension::Voltage, 0.25);
    row("9 mA", Dimension::Current, 0.009);
    row("-57mV", Dimension::Voltage, -0.057);
    row(" 3 uA ", Dimension::Current, 3e-6);
    row("3 \u00b5A", Dimension::Current, 3e-6);
    row("3 \u03bcA", Dimension::Current, 3e-6);
    row("1.5e3 ms", Dimension::Time, 1.5);
    row("90 min", Dimension::Time, 5400.0);
    row("1 h", Dimension::Time, 3600.0);
    row("0.1 d", Dimension::Time, 8640.0);
    row("2 mAh", Dimension::Charge, 7.2);
    row("1 Ah", Dimension::Charge, 3600.0);
    row("5 uAh", Dimension::Charge, 0.018);
    row("5 \u00b5Ah", Dimension::Charge, 0.018);
    row("10 mHz", Dimension::Frequency, 0.01);
    row("10 MHz", Dimension::Frequency, 1e7);
    row("4.7 kOhm", Dimension::Resistance, 4700.0);
    row("4.7 k\u03a9", Dimension::Resistance, 4700.0);
    row("100 mV/s", Dimension::VoltageRate, 0.1);
    row("60 mV/min", Dimension::VoltageRate, 0.001);
    row("75 %", Dimension::Percent, 75.0);
    row("45 degC", Dimension::Temperature, 45.0);
}

void TestUnits::readsNumbersWithUnits()
{
    QFETCH(QString, text);
    QFETCH(int, dimension);
    QFETCH(double, value);

    const ParsedQuantity quantity = parseQuantity(text, static_cast<Dimension>(dimension));
    QCOMPARE(quantity.complaint, QString());
    QVERIFY2(quantity.value == value, qPrintable(QString::number(quantity.value, 'g', 17)));
}

void TestUnits::refusesWhatIsNoQuantity_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("dimension");
    QTest::addColumn<QString>("part");

    const auto row = [](const char *text, Dimension dimension, const char *part) {
        QTest::newRow(text) << QString::fromUtf8(text) << static_cast<int>(dimension) << QString::fromUtf8(part);
    };
    row("10 mV", Dimension::Current, "\"mV\" is not a unit of a current, whose base unit is A; did you mean \"mA\"?");
    row("10 Ma", Dimension::Current, "did you mean \"mA\"?");
    row("1 hr", Dimension::Time, "the unit \"hr\" is written \"h\"");
    row("5 minutes", Dimension::Time, "the unit \"minutes\" is written \"min\"");
    row("2 Hours", Dimension::Time, "the unit \"Hours\" is written \"h\"");
    row("5 volts", Dimension::Current, "is not a unit of a current");
    row("10 mah", Dimension::Charge, "is written \"mAh\"");
    row("C/5", Dimension::Current, "of a cell of 1 Ah \"200 mA\"");
    row("1C", Dimension::Current, "of a cell of 1 Ah \"1 A\"");
    row("0.5 C", Dimension::Current, "of a cell of 1 Ah \"500 mA\"");
    row("C/0", Dimension::Current, "does not begin with a number");
    row("0.1 V vs OCP", Dimension::Voltage, "write \"0.1 V\"; that it counts from the open circuit");
    row("1 V vs. Ag/AgCl", Dimension::Voltage,
        "the reference electrode that is connected; if that is Ag/AgCl, write \"1 V\"");
    row("0,5 mA", Dimension::Current, "$the decimal sign is a point: \"0.5 mA\"");
    row("0,500 mA", Dimension::Current, "$the decimal sign is a point: \"0.500 mA\"");
    row("12,50 V", Dimension::Voltage, "$the decimal sign is a point: \"12.50 V\"");
    row("1,000 mA", Dimension::Current, "\"1.000 mA\", and thousands are not set apart: \"1000 mA\"");
    row("1,000,000 V", Dimension::Voltage, "$sets thousands apart; write \"1000000 V\"");
    row("-1,000.5 mV", Dimension::Voltage, "$sets thousands apart; write \"-1000.5 mV\"");
    row("1.000,5 mV", Dimension::Voltage, "$sets thousands apart; write \"1000.5 mV\"");
    row("5 m", Dimension::Time, "\"5 m\" is written \"5 min\"");
    row("1 w", Dimension::Time, "is written \"7 d\"");
    row("1 h 30 min", Dimension::Time, "is written \"90 min\"");
    row("1d12h", Dimension::Time, "is written \"36 h\"");
    row("1 h 30", Dimension::Time, "is not a unit of a time");
    row("5 m", Dimension::Voltage, "\"m\" is not a unit of a voltage");
    row("+5 mA", Dimension::Current, "without its plus sign");
    row(u8"\u22125 mA", Dimension::Current, "write \"-\"");
    row("100 msec", Dimension::Time, "is written \"ms\"");
    row("1 kmin", Dimension::Time, "is not a unit of a time");
    row("5 s", Dimension::Number, "\"s\" behind a number that has no unit");
    row("fast", Dimension::Time, "does not begin with a number");
    row("inf", Dimension::Time, "does not begin with a number");
    row("nan V", Dimension::Voltage, "does not begin with a number");
    row("1e999 V", Dimension::Voltage, "does not begin with a number");
    row("", Dimension::Voltage, "does not begin with a number");
}

void TestUnits::refusesWhatIsNoQuantity()
{
    QFETCH(QString, text);
    QFETCH(int, dimension);
    QFETCH(QString, part);

    const QString complaint = parseQuantity(text, static_cast<Dimension>(dimension)).complaint;
    const bool isWholeEnd = part.startsWith('$'); // no further reading is offered
    QVERIFY2(isWholeEnd ? complaint.endsWith(part.mid(1)) : complaint.contains(part), qPrintable(complaint));
}

void TestUnits::suggestsTheNearestWord_data()
{
    QTest::addColumn<QString>("word");
    QTest::addColumn<QString>("nearest");

    QTest::newRow("swapped letters") << "maxDuratoin"
                                     << "maxDuration";
    QTest::newRow("wrong case") << "MAXVOLTAGE"
                                << "maxVoltage";
    QTest::newRow("missing letter") << "curent"
                                    << "current";
    QTest::newRow("nothing near") << "resistance"
                                  << "";
    QTest::newRow("short words get one edit") << "cur"
                                              << "";
}

void TestUnits::suggestsTheNearestWord()
{
    QFETCH(QString, word);
    QFETCH(QString, nearest);
    QCOMPARE(nearestWord(word, {"current", "maxDuration", "maxVoltage", "minVoltage"}), nearest);
}

void TestUnits::writesQuantitiesForPeople_data()
{
    QTest::addColumn<double>("value");
    QTest::addColumn<int>("dimension");
    QTest::addColumn<QString>("text");

    const auto row = [](double value, Dimension dimension, const char *text) {
        QTest::newRow(text) << value << static_cast<int>(dimension) << QString::fromUtf8(text);
    };
    row(0.00999999977, Dimension::Current, "10 mA");
    row(-0.25, Dimension::Voltage, "-250 mV");
    row(0.0, Dimension::Voltage, "0 V");
    row(999.9999, Dimension::Resistance, "1 kOhm");
    row(59.0, Dimension::Time, "59 s");
    row(5400.0, Dimension::Time, "1.5 h");
    row(std::numeric_limits<double>::infinity(), Dimension::Time, "unlimited");
    row(std::numeric_limits<double>::quiet_NaN(), Dimension::Charge, "-");
}

void TestUnits::writesQuantitiesForPeople()
{
    QFETCH(double, value);
    QFETCH(int, dimension);
    QFETCH(QString, text);
    QCOMPARE(formatQuantity(value, static_cast<Dimension>(dimension)), text);
}

NIMBRELLE_TEST_MAIN(TestUnits)
#include "TestUnits.moc"
