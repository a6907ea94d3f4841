// SPDX-License-Identifier: MIT
#include "ConnectedInstrument.h"

#include "support/TestMain.h"

#include <VekConstantCurrentElement.h>
#include <VekConstantPotElement.h>
#include <VekExperiment.h>
#include <VekOpenCircuitElement.h>

#include <cmath>

/// The cell of the run: a resistor in series with a capacitor that another resistor bridges.
namespace cell {

constexpr double seriesResistance = 100.0;
constexpr double resistance = 1000.0;
constexpr double capacitance = 0.01;

/// Voltage of the capacitor after @p time under a constant current.
double underCurrent(double start, double current, double time)
{
    const double settled = current * resistance;
    return settled + (start - settled) * std::exp(-time / (resistance * capacitance));
}

/// Voltage of the capacitor after @p time with a constant voltage across the cell.
double underVoltage(double start, double voltage, double time)
{
    const double parallel = resistance * seriesResistance / (resistance + seriesResistance);
    const double settled = voltage * resistance / (resistance + seriesResistance);
    return settled + (start - settled) * std::exp(-time / (parallel * capacitance));
}

/// Charge that a constant voltage moves in @p time: the integral of (voltage - capacitor) / series resistance.
double chargeUnderVoltage(double start, double voltage, double time)
{
    const double parallel = resistance * seriesResistance / (resistance + seriesResistance);
    const double settled = voltage * resistance / (resistance + seriesResistance);
    const double tau = parallel * capacitance;
    return ((voltage - settled) * time - (start - settled) * tau * (1.0 - std::exp(-time / tau))) / seriesResistance;
}

} // namespace cell

class TestDcRun : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void threeElementsWithARepeatedGroupObeyTheCell();
};

namespace {

constexpr double current = 2e-3;
constexpr double potential = 1.5;
constexpr double seconds = 2.0;
constexpr double interval = 0.05;
constexpr int passes = 3;

VekExperiment threeElements()
{
    VekConstantCurrentElement constantCurrent(current, interval, seconds);
    VekConstantPotElement constantPotential(potential, interval, seconds);
    VekOpenCircuitElement openCircuit(seconds, interval);
    VekExperiment group;
    group.appendElement(constantPotential, 1);
    group.appendElement(openCircuit, 1);
    VekExperiment experiment;
    experiment.appendElement(constantCurrent, 1);
    experiment.appendSubExperiment(group, passes);
    return experiment;
}

bool agrees(double measured, double expected, double scale)
{
    const bool agreed = std::abs(measured - expected) <= 1e-4 * scale;
    if (!agreed)
        qWarning("measured %.9g, expected %.9g", measured, expected);
    return agreed;
}

} // namespace

void TestDcRun::threeElementsWithARepeatedGroupObeyTheCell()
{
    constexpr unsigned char channel = 5;
    ConnectedInstrument instrument(QStringLiteral("AlderRun"),
                                   {QStringLiteral("--model"), QStringLiteral("Alder_2_5"),
                                    QStringLiteral("--channels"), QStringLiteral("8"), QStringLiteral("--speed"),
                                    QStringLiteral("50"), QStringLiteral("--cell"),
                                    QStringLiteral("rc:Rs=100,R=1000,C=0.01")});
    QVERIFY(instrument.isReady());
    QCOMPARE(instrument.handler().getNumberOfChannels(), 8);
    QCOMPARE(instrument.handler().uploadExperimentToChannel(channel, threeElements()).message(), QString("Success"));
    QCOMPARE(instrument.handler().startUploadedExperiment(channel).message(), QString("Success"));
    QVERIFY(instrument.waitForEnds(1, 30000));
    QVERIFY(!QTest::qWaitFor([&] { return instrument.ends.size() > 1; }, 200));
    QCOMPARE(instrument.ends, QStringList{"Experiment completed"});

    QStringList order;
    for (const auto &announcement : instrument.announcements)
        order.append(QStringLiteral("%1 %2 cycle %3")
                         .arg(announcement.node.stepNumber)
                         .arg(announcement.node.stepName)
                         .arg(announcement.node.cycleNumber));
    QCOMPARE(order, (QStringList{"1 Constant Current cycle 1", "2 Constant Potential cycle 1",
                                 "3 Open Circuit Potential cycle 1", "2 Constant Potential cycle 2",
                                 "3 Open Circuit Potential cycle 2", "2 Constant Potential cycle 3",
                                 "3 Open Circuit Potential cycle 3"}));

    double capacitor = 0.0; // at the begin of the element
    double charge = 0.0;
    for (size_t i = 0; i < instrument.announcements.size(); ++i) {
        const auto &announcement = instrument.announcements[i];
        const double begin = seconds * double(i);
        const size_t first = size_t(announcement.samplesBefore);
        const size_t last = i + 1 < instrument.announcements.size()
                                ? size_t(instrument.announcements[i + 1].samplesBefore)
                                : instrument.samples.size();
        QVERIFY(last - first >= size_t(seconds / interval));
        for (size_t k = first; k < last; ++k) {
            const VekDCData &sample = instrument.samples[k].data;
            const double time = sample.timestamp - begin;
            QVERIFY(time > -1e-6 && time < seconds + 1e-6);
            if (announcement.node.stepNumber == 1) {
                QVERIFY(agrees(sample.workingElectrodeVoltage,
                               current * cell::seriesResistance + cell::underCurrent(capacitor, current, time), 2.2));
                QVERIFY(agrees(sample.current, current, current));
                QVERIFY(agrees(sample.cumulativeChargeNet, charge + current * time, current * seconds));
            } else if (announcement.node.stepNumber == 2) {
                QVERIFY(agrees(sample.workingElectrodeVoltage, potential, potential));
                QVERIFY(agrees(sample.current,
                               (potential - cell::underVoltage(capacitor, potential, time)) / cell::seriesResistance,
                               potential / cell::seriesResistance));
                QVERIFY(agrees(sample.cumulativeChargeNet,
                               charge + cell::chargeUnderVoltage(capacitor, potential, time),
                               cell::chargeUnderVoltage(capacitor, potential, seconds)));
            } else {
                QVERIFY(agrees(sample.workingElectrodeVoltage, cell::underCurrent(capacitor, 0.0, time), 1.5));
                QVERIFY(agrees(sample.cumulativeChargeNet, charge, 0.01));
            }
        }
        if (announcement.node.stepNumber == 1) {
            charge += current * seconds;
            capacitor = cell::underCurrent(capacitor, current, seconds);
        } else if (announcement.node.stepNumber == 2) {
            charge += cell::chargeUnderVoltage(capacitor, potential, seconds);
            capacitor = cell::underVoltage(capacitor, potential, seconds);
        } else {
            capacitor = cell::underCurrent(capacitor, 0.0, seconds);
        }
    }
}

NIMBRELLE_TEST_MAIN(TestDcRun)
#include "TestDcRun.moc"
