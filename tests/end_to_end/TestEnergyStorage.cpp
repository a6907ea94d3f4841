// SPDX-License-Identifier: MIT
#include "ConnectedInstrument.h"

#include "support/TestMain.h"

#include <VekConstantCurrentElement.h>
#include <VekConstantPowerElement.h>
#include <VekConstantResistanceElement.h>
#include <VekOpenCircuitElement.h>

#include <QFile>
#include <QTemporaryDir>

#include <cmath>
#include <type_traits>

/// The battery of the cycles.
namespace cell {

constexpr double capacity = 200.0;  // coulombs
constexpr double resistance = 0.15; // of the series and, a few seconds after a change, the polarisation
constexpr double efficiency = 0.97;
const QString words = QStringLiteral("battery:Q=200,soc=0.5,Rs=0.1,R=0.05,C=80,efficiency=0.97");

double restVoltage(double stateOfCharge)
{
    return 3.6 + 0.45 * stateOfCharge + 0.06 * std::log((stateOfCharge + 0.001) / (1.001 - stateOfCharge));
}

/// The state of charge at which a current brings the cell to a voltage.
double stateOfChargeAt(double voltage, double current)
{
    double low = 0.0;
    double high = 1.0;
    for (int i = 0; i < 60; ++i) {
        const double middle = (low + high) / 2.0;
        (restVoltage(middle) + current * resistance < voltage ? low : high) = middle;
    }
    return low;
}

} // namespace cell

namespace {

constexpr int cycles = 10;
constexpr double cyclingCurrent = 0.5;
constexpr double chargedAt = 4.1;
constexpr double dischargedAt = 3.2;

VekExperiment tenCycles()
{
    VekConstantCurrentElement charge(cyclingCurrent, 1.0, 3600.0);
    charge.setMaxVoltage(chargedAt);
    VekConstantCurrentElement discharge(-cyclingCurrent, 1.0, 3600.0);
    discharge.setMinVoltage(dischargedAt);
    VekExperiment cycle;
    cycle.appendElement(charge, 1);
    cycle.appendElement(discharge, 1);
    VekExperiment experiment;
    experiment.appendSubExperiment(cycle, cycles);
    return experiment;
}

/// The charge of each pass of the first two nodes, in the simulator's own words.
std::vector<double> chargesOfPasses(const QString &path)
{
    QFile file(path);
    std::vector<double> charges;
    if (!file.open(QIODevice::ReadOnly))
        return charges;
    const QList<QByteArray> lines = file.readAll().trimmed().split('\n');
    for (const QByteArray &line : lines.mid(1)) {
        const QList<QByteArray> words = line.split(','); // channel, node, end, charge
        if (words.value(1).toInt() < 2)
            charges.push_back(words.value(3).toDouble());
    }
    return charges;
}

bool isNear(double measured, double expected, double share)
{
    const bool isNear = std::abs(measured / expected - 1.0) <= share;
    if (!isNear)
        qWarning("measured %.9g, expected %.9g", measured, expected);
    return isNear;
}

enum Quantity { Duration, Voltage, Current, Charge };
enum Load { Power, Resistance };

/// What has been reached since the experiment began.
double valueOf(Quantity quantity, const VekDCData &sample)
{
    switch (quantity) {
    case Duration:
        return sample.timestamp;
    case Voltage:
        return sample.workingElectrodeVoltage;
    case Current:
        return sample.current;
    case Charge:
        return std::abs(sample.cumulativeChargeNet);
    }
    return 0.0;
}

constexpr double power = -0.5;
constexpr double resistance = 25.0;
constexpr double noLimit = 7200.0;

/// Both loads bring the voltage down. Under constant power the current falls with it, in a resistance it rises.
template <class Element>
void limit(Element &element, Quantity quantity, double value)
{
    switch (quantity) {
    case Duration:
        return element.setMaxDuration(value);
    case Voltage:
        return element.setMinVoltage(value);
    case Current:
        return std::is_same<Element, VekConstantPowerElement>::value ? element.setMinCurrent(value)
                                                                     : element.setMaxCurrent(value);
    case Charge:
        return element.setMaxCapacity(value);
    }
}

template <class Element>
VekExperiment limitedThenRest(Element element, Quantity quantity, double value)
{
    limit(element, quantity, value);
    VekOpenCircuitElement rest(5.0, 1.0);
    VekExperiment experiment;
    experiment.appendElement(element, 1);
    experiment.appendElement(rest, 1);
    return experiment;
}

/// The load that a sample shows, as a share of the one that was asked for.
double held(Load load, const VekDCData &sample)
{
    return load == Power ? sample.workingElectrodeVoltage * sample.current / power
                         : sample.workingElectrodeVoltage / -sample.current / resistance;
}

} // namespace

Q_DECLARE_METATYPE(Load)
Q_DECLARE_METATYPE(Quantity)

/// A battery under charge, discharge and load, as a client of the library sees it.
class TestEnergyStorage : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void tenCyclesGiveTheCapacityOfTheCell();
    void loadsHoldTheirValueUpToTheirLimit_data();
    void loadsHoldTheirValueUpToTheirLimit();

private:
    int _count = 0;
};

void TestEnergyStorage::tenCyclesGiveTheCapacityOfTheCell()
{
    QTemporaryDir folder;
    const QString passesPath = folder.filePath("passes.csv");
    ConnectedInstrument instrument(QStringLiteral("AlderCycles"),
                                   {"--speed", "max", "--cell", cell::words, "--passes", passesPath});
    QVERIFY(instrument.isReady());
    QVERIFY(instrument.complete(tenCycles()));
    instrument.simulator().finish();
    const std::vector<double> passes = chargesOfPasses(passesPath);
    QCOMPARE(int(passes.size()), 2 * cycles);
    QCOMPARE(int(instrument.announcements.size()), 2 * cycles);

    const double turnover = cell::capacity * (cell::stateOfChargeAt(chargedAt, cyclingCurrent) -
                                              cell::stateOfChargeAt(dischargedAt, -cyclingCurrent));
    double before = 0.0;
    double charged = 0.0;
    for (std::size_t half = 0; half < passes.size(); ++half) {
        const VekExperimentNode &node = instrument.announcements[half].node;
        const bool isCharge = half % 2 == 0;
        QCOMPARE(node.stepName, QStringLiteral("Constant Current"));
        QCOMPARE(node.stepNumber, isCharge ? 1 : 2);
        QCOMPARE(node.cycleNumber, int(half / 2) + 1);
        QCOMPARE(node.substepNumber, 0);

        const double after = instrument.samplesOf(half).back().cumulativeChargeNet;
        const double moved = after - before;
        before = after;
        QVERIFY(isNear(moved, passes[half], 0.005));
        if (isCharge) {
            charged = moved;
        } else {
            QVERIFY(isNear(moved / charged, passes[half] / passes[half - 1], 0.005));
        }
        if (half < 2)
            continue; // it began half charged
        QVERIFY(isNear(std::abs(moved), isCharge ? turnover / cell::efficiency : turnover, 0.005));
        if (!isCharge)
            QVERIFY(isNear(-moved / charged, cell::efficiency, 0.005));
    }
}

void TestEnergyStorage::loadsHoldTheirValueUpToTheirLimit_data()
{
    QTest::addColumn<Load>("load");
    QTest::addColumn<Quantity>("quantity");
    QTest::addColumn<double>("value");
    QTest::newRow("power for a time") << Power << Duration << 120.0;
    QTest::newRow("power down to a voltage") << Power << Voltage << 3.6;
    QTest::newRow("power down to a current") << Power << Current << -0.14;
    QTest::newRow("power up to a charge") << Power << Charge << 20.0;
    QTest::newRow("resistance for a time") << Resistance << Duration << 120.0;
    QTest::newRow("resistance down to a voltage") << Resistance << Voltage << 3.6;
    QTest::newRow("resistance up to a current") << Resistance << Current << -0.142;
    QTest::newRow("resistance up to a charge") << Resistance << Charge << 20.0;
}

void TestEnergyStorage::loadsHoldTheirValueUpToTheirLimit()
{
    QFETCH(Load, load);
    QFETCH(Quantity, quantity);
    QFETCH(double, value);
    const VekExperiment experiment =
        load == Power ? limitedThenRest(VekConstantPowerElement(power, noLimit, 1.0), quantity, value)
                      : limitedThenRest(VekConstantResistanceElement(resistance, noLimit, 1.0), quantity, value);
    ConnectedInstrument instrument(QStringLiteral("AlderLoad%1").arg(++_count),
                                   {"--speed", "max", "--cell", "battery:Q=100,soc=0.9,Rs=0.1,R=0.05,C=80"});
    QVERIFY(instrument.isReady());
    QVERIFY(instrument.complete(experiment));
    QCOMPARE(int(instrument.announcements.size()), 2);
    QCOMPARE(instrument.announcements[0].node.stepName, load == Power
                                                            ? QStringLiteral("Constant Power Discharge")
                                                            : QStringLiteral("Constant Resistance Discharge"));
    QCOMPARE(instrument.announcements[1].node.stepName, QStringLiteral("Open Circuit Potential"));
    QCOMPARE(instrument.announcements[1].node.stepNumber, 2);

    const std::vector<VekDCData> samples = instrument.samplesOf(0);
    QVERIFY(samples.size() > 50);
    for (const VekDCData &sample : samples)
        QVERIFY2(std::abs(held(load, sample) - 1.0) < 0.002, qPrintable(QString::number(held(load, sample))));
    // The limit lies within one sample of the last one.
    const double last = valueOf(quantity, samples.back());
    const double change = last - valueOf(quantity, samples[samples.size() - 2]);
    QVERIFY2(std::abs(last - value) <= std::abs(change) * 1.01 + 1e-4, qPrintable(QString::number(last)));
}

NIMBRELLE_TEST_MAIN(TestEnergyStorage)
#include "TestEnergyStorage.moc"
