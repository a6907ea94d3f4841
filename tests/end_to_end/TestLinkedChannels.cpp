// SPDX-License-Identifier: MIT
#include "ConnectedInstrument.h"
#include "LinkedGroups.h"

#include "support/RunFolder.h"
#include "support/TestMain.h"

#include <VekConstantCurrentElement.h>
#include <VekConstantPotElement.h>
#include <VekEISGalvanostaticElement.h>
#include <VekEISPotentiostaticElement.h>

#include <cmath>
#include <complex>
#include <map>

namespace {

constexpr double interval = 0.1;
constexpr double tolerance = 1e-6; ///< relative

/// What one channel carried, or a group.
struct Reading {
    double time = 0.0; ///< of the instrument's clock
    double current = 0.0;
    double voltage = 0.0;
    double charge = 0.0; ///< since the begin of the element
    int node = 0;
};

/// What the channels carried at one instant, by channel.
using Moment = std::map<int, Reading>;

/// The records that a simulator has sent during experiments, in the order of their moments.
std::vector<Moment> momentsIn(const QString &truthPath)
{
    enum Column { Channel, Node, Time, Voltage, Current, CounterElectrode, Charge };
    std::map<double, Moment> moments;
    for (const QVector<double> &row : RunFolder::rows(truthPath)) {
        if (row[Node] >= 0.0)
            moments[row[Time]][int(row[Channel])] = {row[Time], row[Current], row[Voltage], row[Charge],
                                                     int(row[Node])};
    }
    std::vector<Moment> ordered;
    for (const auto &[time, moment] : moments)
        ordered.push_back(moment);
    return ordered;
}

Reading inParallel(const Moment &members)
{
    Reading sum = members.begin()->second;
    sum.current = sum.voltage = sum.charge = 0.0;
    for (const auto &[channel, member] : members) {
        sum.current += member.current;
        sum.voltage += member.voltage / double(members.size());
        sum.charge += member.charge;
    }
    return sum;
}

Reading inSeries(const Moment &members)
{
    Reading joined = members.begin()->second;
    const Reading odd = members.rbegin()->second;
    joined.current = (joined.current - odd.current) / 2.0;
    joined.voltage -= odd.voltage;
    joined.charge = (joined.charge - odd.charge) / 2.0;
    return joined;
}

bool agrees(const char *what, double measured, double expected)
{
    const bool agreed = std::abs(measured - expected) <= tolerance * std::abs(expected);
    if (!agreed)
        qWarning("%s: measured %.9g, expected %.9g", what, measured, expected);
    return agreed;
}

/// Up by current and by potential, and down again: what flows is never zero.
VekExperiment upAndDown()
{
    VekConstantCurrentElement charge(0.4, interval, 2.0);
    VekConstantPotElement hold(3.9, interval, 2.0);
    VekConstantCurrentElement discharge(-0.03, interval, 2.0);
    VekExperiment experiment;
    experiment.appendElement(charge, 1);
    experiment.appendElement(hold, 1);
    experiment.appendElement(discharge, 1);
    return experiment;
}

/// A battery cycler with a group of channels, and what it tells of them.
class LinkedInstrument : public ConnectedInstrument
{
public:
    LinkedInstrument(const QString &name, const QStringList &furtherArguments)
        : ConnectedInstrument(name,
                              QStringList{"--model", "Gale", "--channels", "6", "--speed", "max"} + furtherArguments)
    {
        if (isReady())
            connect(&handler(), &VekInstrumentHandler::idleDCDataReady, this,
                    [this](unsigned char channel) { ++idleSamples[channel]; });
    }

    /// Runs an experiment on a group, started on one of its channels, to its end.
    bool completeLinked(const Channels &channels, bool bipolar, unsigned char master, const VekExperiment &experiment)
    {
        const int lowest =
            bipolar ? handler().setBipolarLinkedChannels(channels) : handler().setLinkedChannels(channels);
        return lowest == channels.front() &&
               handler().uploadExperimentToChannel(master, experiment) == VekErrorCode::Success &&
               handler().startUploadedExperiment(master) == VekErrorCode::Success && waitForEnds(1, 60000) &&
               ends == QStringList{"Experiment completed"};
    }

    std::map<int, int> idleSamples; ///< how many of them, by channel
};

} // namespace

/// Groups of channels as a client of the library sees them, held against what the simulator fed in.
class TestLinkedChannels : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void joinedSamplesAreThoseOfTheCell_data();
    void joinedSamplesAreThoseOfTheCell();
    void laggingMemberHoldsTheGroupBack_data();
    void laggingMemberHoldsTheGroupBack();
    void impedanceIsThatOfTheCell_data();
    void impedanceIsThatOfTheCell();
    void manualRunOfAMemberIsItsOwn();

private:
    QString newName() { return QStringLiteral("Linked%1").arg(++_count); }

    QTemporaryDir _folder;
    int _count = 0;
};

void TestLinkedChannels::joinedSamplesAreThoseOfTheCell_data()
{
    QTest::addColumn<Channels>("channels");
    QTest::addColumn<bool>("bipolar");
    QTest::addColumn<int>("master");
    QTest::newRow("four in parallel") << Channels{0, 1, 2, 3} << false << 0;
    QTest::newRow("two boards' halves, led by the higher") << Channels{2, 5} << false << 5;
    QTest::newRow("bipolar pair") << Channels{2, 3} << true << 2;
    QTest::newRow("bipolar pair, led by the odd one") << Channels{4, 5} << true << 5;
}

void TestLinkedChannels::joinedSamplesAreThoseOfTheCell()
{
    QFETCH(Channels, channels);
    QFETCH(bool, bipolar);
    QFETCH(int, master);
    const QString truthPath = _folder.filePath(newName() + QLatin1String(".csv"));
    LinkedInstrument instrument(newName(), {"--cell", "battery:Q=36,soc=0.4,Rs=0.2,R=0.1,C=20", "--truth", truthPath});
    QVERIFY(instrument.isReady());
    QVERIFY(instrument.completeLinked(channels, bipolar, static_cast<unsigned char>(master), upAndDown()));
    instrument.simulator().finish();
    const std::vector<Moment> moments = momentsIn(truthPath);
    QCOMPARE(moments.size(), std::size_t(60));
    QCOMPARE(instrument.samples.size(), moments.size());
    Reading before;
    double net = 0.0;
    double moved = 0.0;
    for (std::size_t i = 0; i < moments.size(); ++i) {
        QCOMPARE(moments[i].size(), channels.size());
        const Reading expected = bipolar ? inSeries(moments[i]) : inParallel(moments[i]);
        const auto &[channel, data] = instrument.samples[i];
        QCOMPARE(channel, master);
        QVERIFY(agrees("time", data.timestamp, expected.time - moments[0].begin()->second.time + interval));
        QVERIFY(agrees("current", data.current, expected.current));
        QVERIFY(agrees("voltage", data.workingElectrodeVoltage, expected.voltage));
        const double charge = expected.charge - (expected.node == before.node ? before.charge : 0.0);
        net += charge;
        moved += std::abs(charge);
        QVERIFY(agrees("charge", data.cumulativeChargeNet, net));
        QVERIFY(agrees("charge moved", data.cumulativeChargeAbs, moved));
        before = expected;
    }
    for (const unsigned char member : channels) // each is seen by itself, too, but for the master
        QCOMPARE(instrument.idleSamples[member], member == master ? 0 : int(moments.size()));
}

void TestLinkedChannels::laggingMemberHoldsTheGroupBack_data()
{
    QTest::addColumn<QString>("fault");
    QTest::newRow("a member") << "lag:2@1.05";
    QTest::newRow("the master") << "lag:0@1.05";
}

void TestLinkedChannels::laggingMemberHoldsTheGroupBack()
{
    QFETCH(QString, fault);
    LinkedInstrument instrument(newName(), {"--cell", "resistor:R=10", "--fault", fault});
    QVERIFY(instrument.isReady());
    VekConstantCurrentElement current(0.1, interval, 2.0);
    VekExperiment experiment;
    experiment.appendElement(current, 1);
    QVERIFY(instrument.completeLinked({0, 1, 2, 3}, false, 0, experiment));
    QCOMPARE(instrument.samples.size(), std::size_t(10)); // those of the first second
    QVERIFY(agrees("last time", instrument.samples.back().data.timestamp, 1.0));
    for (const int member : {1, 2, 3})
        QCOMPARE(instrument.idleSamples[member], 20);
}

void TestLinkedChannels::impedanceIsThatOfTheCell_data()
{
    addLinkedGroups();
}

// A charge transfer of 10 ohms beside a double layer of 100 uF, behind 2 ohms.
void TestLinkedChannels::impedanceIsThatOfTheCell()
{
    QFETCH(Channels, channels);
    QFETCH(bool, bipolar);
    QFETCH(bool, galvanostatic);
    LinkedInstrument instrument(newName(), {"--cell", "randles:Rs=2,Rct=10,C=1e-4"});
    QVERIFY(instrument.isReady());
    VekEISPotentiostaticElement byPotential(10000.0, 0.1, 5.0, 0.0, 0.01);
    VekEISGalvanostaticElement byCurrent(10000.0, 0.1, 5.0, 0.0, 0.001);
    VekExperiment experiment;
    if (galvanostatic)
        experiment.appendElement(byCurrent, 1);
    else
        experiment.appendElement(byPotential, 1);
    QVERIFY(instrument.completeLinked(channels, bipolar, channels.back(), experiment));
    QCOMPARE(instrument.points.size(), std::size_t(26)); // five decades
    for (const VekACData &point : instrument.points) {
        const std::complex<double> layer(0.0, 2.0 * M_PI * point.frequency * 1e-4);
        const std::complex<double> expected = 2.0 + 1.0 / (0.1 + layer);
        const double error = std::abs(std::complex<double>(point.realImpedance, point.imagImpedance) - expected);
        QVERIFY2(error < 0.005 * std::abs(expected),
                 qPrintable(
                     QStringLiteral("%1 Hz: %2 ohms off %3").arg(point.frequency).arg(error).arg(std::abs(expected))));
    }
}

// 0.1 A through 10 ohms, on one channel of a group that then runs as one.
void TestLinkedChannels::manualRunOfAMemberIsItsOwn()
{
    LinkedInstrument instrument(newName(), {"--cell", "resistor:R=10"});
    QVERIFY(instrument.isReady());
    const VekInstrumentHandler &handler = instrument.handler();
    QCOMPARE(handler.setLinkedChannels({1, 2}), 1);
    QCOMPARE(int(handler.startManualExperiment(2)), int(VekErrorCode::Success));
    QCOMPARE(int(handler.setManualModeSamplingInterval(2, 0.05)), int(VekErrorCode::Success));
    QCOMPARE(int(handler.setManualModeConstantCurrent(2, 0.1)), int(VekErrorCode::Success));
    QTRY_VERIFY(instrument.samples.size() >= 5);
    QCOMPARE(int(handler.stopExperiment(2)), int(VekErrorCode::Success));
    QVERIFY(instrument.waitForEnds(1, 10000));
    QCOMPARE(instrument.ends, QStringList{"Experiment stopped by user"});
    for (const auto &[channel, data] : instrument.samples)
        QCOMPARE(channel, 2);
    QVERIFY(agrees("voltage", instrument.samples.back().data.workingElectrodeVoltage, 1.0));
    instrument.ends.clear();
    VekConstantCurrentElement current(0.1, interval, 1.0);
    VekExperiment experiment;
    experiment.appendElement(current, 1);
    QVERIFY(instrument.completeLinked({1, 2}, false, 1, experiment));
}

NIMBRELLE_TEST_MAIN(TestLinkedChannels)
#include "TestLinkedChannels.moc"
