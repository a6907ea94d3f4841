// SPDX-License-Identifier: MIT
#include "simulator/cells/BatteryCell.h"
#include "simulator/cells/CellFactory.h"
#include "simulator/cells/RcCell.h"
#include "simulator/cells/ResistorCell.h"

#include "support/TestMain.h"

#include <cmath>

namespace {

constexpr double infinite = std::numeric_limits<double>::infinity();

bool isNear(double value, double expected, double relative)
{
    return std::abs(value - expected) <= relative * std::abs(expected);
}

} // namespace

class TestCells : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void rcAnswersAVoltageStep();
    void rcAnswersACurrentStep();
    void rcKeepsItsDigitsOverManyDecades();
    void rcUnderARampIsTheSameInOneStepAndInMany();
    void capacitorUnderAVoltageRampDrawsRateTimesCapacitance();
    void currentAndVoltageAreInverse_data();
    void currentAndVoltageAreInverse();
    void batteryDischargesAlongItsCurve();
    void batteryHeldAtAVoltageSettlesWhereItsCurveHasIt();
    void batteryStoresItsEfficiency();
    void batteryVoltageRampBooksTheChargeItTook();
    void refusesNonsense_data();
    void refusesNonsense();
};

void TestCells::rcAnswersAVoltageStep()
{
    RcCell cell(10.0, {1000.0, 1e-3});
    const double tau = 1e-3 * 10.0 * 1000.0 / 1010.0;
    const double charge = cell.holdVoltage(1.0, 0.0, 0.02);
    QVERIFY(isNear(cell.currentAt(1.0), (1.0 + 100.0 * std::exp(-0.02 / tau)) / 1010.0, 1e-12));
    QVERIFY(isNear(charge, (0.02 + 100.0 * tau * (1.0 - std::exp(-0.02 / tau))) / 1010.0, 1e-12));
}

void TestCells::rcAnswersACurrentStep()
{
    RcCell cell(10.0, {1000.0, 1e-3});
    const double charge = cell.passCurrent(2e-3, 0.0, 0.5);
    QVERIFY(isNear(cell.voltageAt(2e-3), 2e-3 * (10.0 + 1000.0 * (1.0 - std::exp(-0.5))), 1e-12));
    QVERIFY(isNear(charge, 1e-3, 1e-12));
}

/**
 * What the element's voltage is by hand: the textbook's solution in extended precision, which cancels by (RC / t)^2, and
 * for short times the first terms of its power series.
 */
static double voltageByHand(const RcElement &element, double current, double slope, double seconds)
{
    using Wide = long double;
    const Wide tau = Wide(element.resistance) * Wide(element.capacitance);
    const Wide x = Wide(seconds) / tau;
    const Wide perCurrent = Wide(seconds) / Wide(element.capacitance);
    const Wide ramp = Wide(slope) * Wide(seconds);
    if (x < 1e-3L)
        return double(Wide(element.voltage) * std::exp(-x) +
                      perCurrent * (Wide(current) * (1 - x / 2 + x * x / 6 - x * x * x / 24) +
                                    ramp * (0.5L - x / 6 + x * x / 24 - x * x * x / 120)));
    const Wide start = Wide(element.resistance) * (Wide(current) - Wide(slope) * tau);
    return double(start + Wide(element.resistance) * ramp + (Wide(element.voltage) - start) * std::exp(-x));
}

void TestCells::rcKeepsItsDigitsOverManyDecades()
{
    for (double resistance = 1e-3; resistance < 1e16; resistance *= 10.0) {
        for (double capacitance = 1e-12; capacitance < 1e4; capacitance *= 10.0) {
            for (double seconds = 1e-6; seconds < 1e8; seconds *= 7.0) {
                for (const auto &[before, current, slope] : {std::tuple(0.0, 1e-3, 0.0), std::tuple(0.25, 1e-3, 5e-4),
                                                             std::tuple(0.0, 0.0, -2e-6)}) { // none cancels another
                    const RcElement charged{resistance, capacitance, before};
                    RcElement element = charged;
                    element.passCurrent(current, slope, seconds);
                    const double expected = voltageByHand(charged, current, slope, seconds);
                    QVERIFY2(isNear(element.voltage, expected, 1e-11),
                             qPrintable(QStringLiteral("R=%1 C=%2 t=%3 i=%4 slope=%5: %6 instead of %7")
                                            .arg(resistance)
                                            .arg(capacitance)
                                            .arg(seconds)
                                            .arg(current)
                                            .arg(slope)
                                            .arg(element.voltage)
                                            .arg(expected)));
                }
            }
        }
    }
}

void TestCells::rcUnderARampIsTheSameInOneStepAndInMany()
{
    RcCell once(10.0, {1000.0, 1e-3});
    RcCell often(10.0, {1000.0, 1e-3});
    double charge = once.holdVoltage(0.1, 0.5, 2.0) + once.passCurrent(1e-3, -2e-3, 1.0);
    for (int i = 0; i < 100; ++i)
        charge -= often.holdVoltage(0.1 + 0.5 * 0.02 * i, 0.5, 0.02);
    for (int i = 0; i < 100; ++i)
        charge -= often.passCurrent(1e-3 - 2e-3 * 0.01 * i, -2e-3, 0.01);
    QVERIFY(std::abs(charge) < 1e-14);
    QVERIFY(isNear(once.openCircuitVoltage(), often.openCircuitVoltage(), 1e-11));
}

void TestCells::capacitorUnderAVoltageRampDrawsRateTimesCapacitance()
{
    RcCell cell(10.0, {infinite, 1e-3});
    cell.holdVoltage(0.0, 0.1, 0.03);
    QVERIFY(isNear(cell.currentAt(0.003), 0.1 * 1e-3 * (1.0 - std::exp(-3.0)), 1e-11));
    cell.passCurrent(-1e-3, 0.0, 1.0);
    cell.holdVoltage(0.5, 0.0, 1.0);
    QVERIFY(isNear(cell.openCircuitVoltage(), 0.5, 1e-9));
}

void TestCells::currentAndVoltageAreInverse_data()
{
    QTest::addColumn<QString>("description");
    for (const char *description : {"resistor:R=47", "rc", "battery:soc=0.1", "battery:soc=0.999"})
        QTest::newRow(description) << QString::fromLatin1(description);
}

void TestCells::currentAndVoltageAreInverse()
{
    QFETCH(QString, description);
    const std::unique_ptr<Cell> cell = makeCell(description).cell;
    cell->passCurrent(0.01, 0.002, 3.0);
    for (const double current : {-0.3, 0.0, 1e-6, 0.2})
        QVERIFY(std::abs(cell->currentAt(cell->voltageAt(current)) - current) < 1e-12);
}

void TestCells::batteryDischargesAlongItsCurve()
{
    BatteryCell::Parameters parameters;
    parameters.stateOfCharge = 0.8;
    BatteryCell cell(parameters);
    cell.passCurrent(-0.01, 0.0, 1080.0); // 10.8 of 36 coulombs
    const double curve = 3.6 + 0.45 * 0.5 + 0.06 * std::log(0.501 / 0.501);
    const double polarisation = -0.01 * (0.5 + 0.25 * (1.0 - std::exp(-1080.0 / 20.0)));
    QVERIFY(isNear(cell.voltageAt(-0.01), curve + polarisation, 1e-9));
}

void TestCells::batteryHeldAtAVoltageSettlesWhereItsCurveHasIt()
{
    BatteryCell cell{BatteryCell::Parameters()};
    const double target = BatteryCell::openCircuitCurve(0.75);
    const double charge = cell.holdVoltage(target, 0.0, 5000.0);
    QVERIFY(isNear(cell.stateOfCharge(), 0.75, 1e-6));
    QVERIFY(isNear(charge, 9.0, 1e-6));
    QVERIFY(std::abs(cell.currentAt(target)) < 1e-6);
}

void TestCells::batteryStoresItsEfficiency()
{
    BatteryCell::Parameters parameters;
    parameters.efficiency = 0.9;
    BatteryCell cell(parameters);
    cell.passCurrent(0.01, 0.0, 360.0);
    cell.passCurrent(-0.01, 0.0, 360.0);
    QVERIFY(isNear(cell.stateOfCharge(), 0.5 - 0.1 * 0.1, 1e-12));
}

void TestCells::batteryVoltageRampBooksTheChargeItTook()
{
    BatteryCell cell{BatteryCell::Parameters()};
    const double rest = cell.openCircuitVoltage();
    const double charge = cell.holdVoltage(rest, 1e-4, 300.0);
    QVERIFY(charge > 0.01);
    QVERIFY(isNear(charge, (cell.stateOfCharge() - 0.5) * 36.0, 1e-10));
}

void TestCells::refusesNonsense_data()
{
    QTest::addColumn<QString>("description");
    QTest::addColumn<QString>("complaint");
    QTest::newRow("kind") << "capacitor"
                          << "there is no cell 'capacitor'";
    QTest::newRow("parameter") << "resistor:r=1"
                               << "a resistor has no 'r'";
    QTest::newRow("no number") << "resistor:R=big"
                               << "'R=big' is no value for a resistor";
    QTest::newRow("no value") << "resistor:R"
                              << "'R' is no value for a resistor";
    QTest::newRow("zero") << "rc:Rs=0"
                          << "'Rs=0' is no value for a rc";
    QTest::newRow("infinite") << "rc:C=inf"
                              << "'C=inf' is no value for a rc";
    QTest::newRow("not a number") << "rc:R=nan"
                                  << "'R=nan' is no value for a rc";
    QTest::newRow("more than all") << "battery:soc=1.1"
                                   << "'soc=1.1' is no value for a battery";
}

void TestCells::refusesNonsense()
{
    QFETCH(QString, description);
    const CellOrError made = makeCell(description);
    QVERIFY(!made.cell);
    QTEST(made.error, "complaint");
}

NIMBRELLE_TEST_MAIN(TestCells)
#include "TestCells.moc"
