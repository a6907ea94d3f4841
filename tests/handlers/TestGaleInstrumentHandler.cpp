// SPDX-License-Identifier: MIT
#include "HandlerBench.h"
#include "ListExperiment.h"
#include "handlers/GaleInstrumentHandler.h"
#include "link/ExpStopType.h"

#include <functional>

namespace {

using Channels = std::vector<unsigned char>;
using E = VekErrorCode;

constexpr int channelCount = 7;
constexpr unsigned char invalidChannel = channelCount;
constexpr unsigned char busyChannel = 6;
constexpr quint64 ticksPerSecond = 87'500'000;

/// One call of a link operation.
struct Link {
    Channels channels;
    bool bipolar;
    int result;
};

/// A record in the largest ranges: with the round record 2 counts are 1 A, 4 are 1 V and 128,000 are 1 C.
QByteArray dcRecord(double seconds, double amperes, double volts, double coulombs = 0.0, int counter = 0)
{
    GaleDcRecord_t record = {};
    record.tick = quint64(seconds * double(ticksPerSecond));
    record.rawCurrent = float(2.0 * amperes);
    record.rawVoltage = float(4.0 * volts);
    record.charge = qint64(128000.0 * coulombs);
    record.counter = quint8(counter);
    return bytesOfRecord(record);
}

std::shared_ptr<ListExperiment> oneNode(quint32 downsampleFactor = 1)
{
    return std::make_shared<ListExperiment>(
        ListExperiment{makeNode(5, QStringLiteral("Constant Current"), 1, downsampleFactor)});
}

Gale_Cfg_t configWithLimits()
{
    Gale_Cfg_t config;
    config.numVoltageRanges = 2;
    config.currentMin[0] = -100.0f;
    config.currentMax[0] = 100.0f;
    config.currentMin[1] = -50.0f;
    config.currentMax[1] = 60.0f;
    return config;
}

} // namespace

Q_DECLARE_METATYPE(QVector<Link>)

class TestGaleInstrumentHandler : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup() { _bench.reset(); }

    void linksChannels_data();
    void linksChannels();
    void startsAGroupOnItsMaster();
    void refusesWhatAGroupMustNotDo();
    void startsASingleChannelAsItIs();
    void convertsSamplesOfASingleChannel();
    void joinsSamplesOfTheSameMoment();
    void joinsABipolarPairOverItsRun();
    void earlierRunsAreNotJoined();
    void reportsTheLastSampleOfANode();
    void reportsTheLastSampleThatTheVoltageFilterDropped();
    void reportsTheLastJoinedSampleOfANode_data();
    void reportsTheLastJoinedSampleOfANode();
    void groupEndsWithItsMaster();
    void endedMemberTakesItsMasterOutOfTheGroup();
    void manualRunOfAMemberIsItsOwn();
    void refusedStartFreesTheGroup();
    void refusedManualStartFreesTheMemberAlone();
    void startUpNeitherAsksNorFans();
    void startUpLeavesUntouchedChannelsAlone();
    void manualSetPointsAreRaw();
    void rangesFollowTheBoard();
    void takesConfigurationAndTare();
    void loadImpedanceHasLimits();
    void addressesAllChannels();

private:
    using Bench = HandlerBench<GaleInstrumentHandler>;
    void send(Notifications_t type, unsigned char channel, const QByteArray &payload)
    {
        _bench->instrument.send(type, channel, payload);
    }
    /// Begins the data of a run at 10 s, with its first node.
    void begin(unsigned char master, const Channels &members)
    {
        send(NT_DATA_BEGIN, master, wire(10 * ticksPerSecond));
        for (const unsigned char member : members)
            send(NT_NODE_BEGIN, member, wire(quint64(0), quint16(0)));
    }
    QVector<FakeInstrument::Command> sent(PCcommand_t command)
    {
        QVector<FakeInstrument::Command> found;
        for (const FakeInstrument::Command &each : _bench->instrument.commands()) {
            if (each.command == command)
                found << each;
        }
        return found;
    }

    std::unique_ptr<Bench> _bench;
    std::unique_ptr<QSignalSpy> _active;
    std::unique_ptr<QSignalSpy> _idle;
};

void TestGaleInstrumentHandler::init()
{
    _bench = std::make_unique<Bench>(HardwareModel_t::Gale, channelCount, roundGaleRecord());
    _active = std::make_unique<QSignalSpy>(_bench->device.get(), &VekInstrumentHandler::activeDCDataReady);
    _idle = std::make_unique<QSignalSpy>(_bench->device.get(), &VekInstrumentHandler::idleDCDataReady);
}

void TestGaleInstrumentHandler::linksChannels_data()
{
    QTest::addColumn<QVector<Link>>("calls");
    QTest::addColumn<QString>("groups"); // each channel with its group
    QTest::addColumn<QString>("bipolar");

    const auto row = [](const char *name, const QVector<Link> &calls, const QString &groups,
                        const QString &bipolar = QString()) { QTest::newRow(name) << calls << groups << bipolar; };
    row("in any order", {{{2, 0}, false, 0}}, QStringLiteral("0:02 2:02"));
    row("named twice", {{{3, 1, 3}, false, 1}}, QStringLiteral("1:13 3:13"));
    row("nothing", {{{}, false, -1}}, QString());
    row("alone", {{{4}, false, 4}}, QString());
    row("no such channel", {{{0, 1}, false, 0}, {{1, invalidChannel}, false, -1}}, QStringLiteral("0:01 1:01"));
    row("busy channel", {{{0, 1}, false, 0}, {{1, busyChannel}, false, -1}}, QStringLiteral("0:01 1:01"));
    row("joining one dissolves its old group", {{{0, 1, 2}, false, 0}, {{2, 3}, false, 2}},
        QStringLiteral("2:23 3:23"));
    row("between two groups", {{{0, 1}, false, 0}, {{2, 3}, false, 2}, {{1, 2}, false, 1}},
        QStringLiteral("1:12 2:12"));
    row("the new primary leaves its group", {{{0, 4}, false, 0}, {{2, 3}, false, 2}, {{0, 3}, false, 0}},
        QStringLiteral("0:03 3:03"));
    row("alone after a group", {{{0, 1}, false, 0}, {{1}, false, 1}}, QString());
    row("busy channel in a pair", {{{0, 1}, false, 0}, {{1, busyChannel}, true, -1}}, QStringLiteral("0:01 1:01"));
    row("a pair", {{{1, 0}, true, 0}}, QStringLiteral("0:01 1:01"), QStringLiteral("01"));
    row("no pair: not one board", {{{1, 2}, true, -1}}, QString(), QStringLiteral("12"));
    row("no pair: one", {{{0}, true, -1}}, QString());
    row("no pair: three, and old groups are gone", {{{0, 1}, false, 0}, {{0, 1, 2}, true, -1}}, QString());
    row("once bipolar, always bipolar", {{{0, 1}, true, 0}, {{0}, false, -1}, {{0, 1}, false, 0}},
        QStringLiteral("0:01 1:01"), QStringLiteral("01"));
    row("bipolar with parallel", {{{0, 1}, true, 0}, {{0, 1, 2, 3}, false, -1}}, QString(), QStringLiteral("01"));
    row("two pairs", {{{0, 1}, true, 0}, {{2, 3}, true, 2}, {{0, 1, 2, 3}, false, 0}},
        QStringLiteral("0:0123 1:0123 2:0123 3:0123"), QStringLiteral("0123"));
    row("halves of two pairs", {{{0, 1}, true, 0}, {{2, 3}, true, 2}, {{0, 2}, false, -1}}, QString(),
        QStringLiteral("0123"));
    row("refused pair bars parallel", {{{1, 2}, true, -1}, {{0, 1}, false, -1}}, QString(), QStringLiteral("12"));
}

void TestGaleInstrumentHandler::linksChannels()
{
    QFETCH(QVector<Link>, calls);
    QFETCH(QString, groups);
    QFETCH(QString, bipolar);
    const VekInstrumentHandler &device = *_bench->device;
    QCOMPARE(device.startManualExperiment(busyChannel), E::Success);
    for (const Link &call : calls) {
        const int result =
            call.bipolar ? device.setBipolarLinkedChannels(call.channels) : device.setLinkedChannels(call.channels);
        QCOMPARE(result, call.result);
    }
    QStringList found;
    QString flagged;
    for (unsigned char channel = 0; channel < channelCount; ++channel) {
        QString group;
        for (const unsigned char member : device.getLinkedChannels(channel))
            group += QString::number(member);
        if (!group.isEmpty())
            found << QStringLiteral("%1:%2").arg(channel).arg(group);
        if (device.hasBipolarMode(channel))
            flagged += QString::number(channel);
    }
    QCOMPARE(found.join(QLatin1Char(' ')), groups);
    QCOMPARE(flagged, bipolar);
}

void TestGaleInstrumentHandler::startsAGroupOnItsMaster()
{
    QCOMPARE(_bench->device->setLinkedChannels({1, 3, 4}), 1);
    QCOMPARE(_bench->handler->startUploadedExperiment(3), E::ExperimentNotUploaded);
    QCOMPARE(_bench->handler->uploadExperimentToChannel(3, oneNode()), E::Success);
    QCOMPARE(_bench->handler->startUploadedExperiment(3), E::Success);
    QVERIFY(_bench->flush());
    QCOMPARE(sent(PC_CHANNELS_LINK).size(), 1);
    QCOMPARE(sent(PC_CHANNELS_LINK).at(0).payload, wire(quint32(0x1A), quint8(0)));
    QCOMPARE(int(sent(PC_CHANNELS_LINK).at(0).channel), 255);
    QCOMPARE(sent(PC_EXPERIMENT_START).size(), 1);
    QCOMPARE(int(sent(PC_EXPERIMENT_START).at(0).channel), 3);
    QCOMPARE(_bench->device->getFreeChannels(), (Channels{0, 2, 5, 6}));
    QVERIFY(!_bench->handler->getChannelHandlers().at(4)->isLoadedNodeListEmpty());
}

void TestGaleInstrumentHandler::refusesWhatAGroupMustNotDo()
{
    QCOMPARE(_bench->device->setLinkedChannels({0, 1}), 0);
    QCOMPARE(_bench->device->startManualExperiment(1), E::Success);
    QCOMPARE(_bench->handler->uploadExperimentToChannel(0, oneNode()), E::ChannelBusy);
    QCOMPARE(_bench->handler->uploadExperimentToChannel(invalidChannel, nullptr), E::InvalidChannel);
    QCOMPARE(_bench->handler->startUploadedExperiment(invalidChannel), E::InvalidChannel);
    QCOMPARE(_bench->handler->startUploadedExperiment(1), E::ChannelBusy);
    send(NT_EXPERIMENT_DONE, 1, wire(quint64(0), quint8(STOP_BY_USER)));
    QVERIFY(_bench->settle());
    QCOMPARE(_bench->handler->uploadExperimentToChannel(0, oneNode()), E::Success);
    QCOMPARE(_bench->device->startManualExperiment(1), E::Success);
    QCOMPARE(_bench->handler->startUploadedExperiment(0), E::ChannelBusy); // it would take the other's run over
    QVERIFY(_bench->flush());
    QVERIFY(sent(PC_CHANNELS_LINK).isEmpty() && sent(PC_EXPERIMENT_START).isEmpty());
    QVERIFY(_bench->handler->isManualExperimentRun(1) && !_bench->device->isChannelBusy(0));
    QCOMPARE(_bench->device->setLinkedChannels({0}), 0);
    QVERIFY(_bench->device->getLinkedChannels(1).empty());
}

void TestGaleInstrumentHandler::startsASingleChannelAsItIs()
{
    QCOMPARE(_bench->handler->uploadExperimentToChannel(2, oneNode()), E::Success);
    QCOMPARE(_bench->handler->startUploadedExperiment(2), E::Success);
    QVERIFY(_bench->flush());
    QVERIFY(sent(PC_CHANNELS_LINK).isEmpty());
    QCOMPARE(int(sent(PC_EXPERIMENT_START).at(0).channel), 2);
}

void TestGaleInstrumentHandler::convertsSamplesOfASingleChannel()
{
    send(NT_DC_DATA, 2, dcRecord(5.0, 1.0, 2.0, 3.0));
    QCOMPARE(_bench->handler->uploadExperimentToChannel(2, oneNode(2)), E::Success);
    QCOMPARE(_bench->handler->startUploadedExperiment(2), E::Success);
    begin(2, {2});
    send(NT_DC_DATA, 2, dcRecord(11.0, 1.0, 2.0, 3.0));
    send(NT_DC_DATA, 2, dcRecord(12.0, -1.5, 2.5, 4.0));
    send(NT_DC_DATA, 2, dcRecord(13.0, 1.0, 2.0, 5.0).left(35));
    QVERIFY(_bench->settle());

    QCOMPARE(_idle->size(), 1);
    const auto idle = _idle->at(0).at(1).value<VekDCData>();
    QCOMPARE(idle.timestamp, 5.0);
    QCOMPARE(idle.cumulativeChargeAbs, 0.0);
    QVERIFY(qIsNaN(idle.counterElectrodeVoltage));
    QCOMPARE(_active->size(), 1);
    const auto data = _active->at(0).at(1).value<VekDCData>();
    QCOMPARE(data.timestamp, 2.0);
    QCOMPARE(data.current, -1.5);
    QCOMPARE(data.workingElectrodeVoltage, 2.5);
    QCOMPARE(data.cumulativeChargeNet, 4.0); // the sample that was not due brought none of its own
}

void TestGaleInstrumentHandler::joinsSamplesOfTheSameMoment()
{
    QCOMPARE(_bench->device->setLinkedChannels({0, 1, 4}), 0);
    QCOMPARE(_bench->handler->uploadExperimentToChannel(1, oneNode()), E::Success);
    QCOMPARE(_bench->handler->startUploadedExperiment(1), E::Success);
    begin(1, {0, 1, 4});
    send(NT_DC_DATA, 0, dcRecord(11.0, 1.0, 3.0, 1.0, 7));
    send(NT_DC_DATA, 4, dcRecord(11.0, 4.0, 3.5, 4.0, 7));
    send(NT_DC_DATA, 1, dcRecord(11.0, 2.0, 4.0, 2.0, 7));
    send(NT_DC_DATA, 1, dcRecord(12.0, 9.0, 9.0, 9.0, 8)); // the others lag behind
    send(NT_DC_DATA, 0, dcRecord(12.0, 9.0, 9.0, 9.0, 8));
    QVERIFY(_bench->settle());
    QCOMPARE(_idle->size(), 3); // the members but the master stay visible by themselves
    QCOMPARE(_active->size(), 1);
    QCOMPARE(_active->at(0).at(0).toInt(), 1);
    const auto data = _active->at(0).at(1).value<VekDCData>();
    QCOMPARE(data.timestamp, 1.0);
    QCOMPARE(data.current, 7.0);
    QCOMPARE(data.workingElectrodeVoltage, 3.5);
    QCOMPARE(data.cumulativeChargeAbs, 7.0);
}

void TestGaleInstrumentHandler::joinsABipolarPairOverItsRun()
{
    QCOMPARE(_bench->device->setBipolarLinkedChannels({2, 3}), 2);
    QCOMPARE(_bench->handler->uploadExperimentToChannel(2, oneNode()), E::Success);
    QCOMPARE(_bench->handler->startUploadedExperiment(2), E::Success);
    begin(2, {2, 3});
    for (const int moment : {1, 2}) {
        send(NT_DC_DATA, 2, dcRecord(10.0 + moment, 3.0, 1.0, 2.0 * moment, moment));
        send(NT_DC_DATA, 3, dcRecord(10.0 + moment, -1.0, 0.75, -2.0 * moment, moment));
    }
    QVERIFY(_bench->settle() && _bench->flush());
    QCOMPARE(sent(PC_CHANNELS_LINK).at(0).payload, wire(quint32(0x0C), quint8(1)));
    QCOMPARE(_active->size(), 2);
    const auto data = _active->at(1).at(1).value<VekDCData>();
    QCOMPARE(data.current, 2.0);
    QCOMPARE(data.workingElectrodeVoltage, 0.25);
    QCOMPARE(data.cumulativeChargeAbs, 4.0);
}

void TestGaleInstrumentHandler::earlierRunsAreNotJoined()
{
    QCOMPARE(_bench->device->setLinkedChannels({0, 1}), 0);
    for (int run = 0; run < 2; ++run) {
        QCOMPARE(_bench->handler->uploadExperimentToChannel(0, oneNode()), E::Success);
        QCOMPARE(_bench->handler->startUploadedExperiment(0), E::Success);
        begin(0, {0, 1});
        send(NT_DC_DATA, 1, dcRecord(11.0, 1.0, 1.0, 1.0, 0));
        QVERIFY(_bench->settle());
        QVERIFY2(_active->isEmpty(), "channel 0 has no sample of this run yet");
        send(NT_DC_DATA, 0, dcRecord(11.0, 1.0, 1.0, 1.0, 0));
        for (const unsigned char channel : {0, 1})
            send(NT_EXPERIMENT_DONE, channel, wire(quint64(0), quint8(STOP_COMPLETED)));
        QVERIFY(_bench->settle());
        QCOMPARE(_active->size(), 1);
        _active->clear();
    }
}

void TestGaleInstrumentHandler::reportsTheLastSampleOfANode()
{
    _bench->device->setLastSampleOfNodeReported(true);
    RunLog log(*_bench->device);
    const auto experiment = std::make_shared<ListExperiment>(
        ListExperiment{makeNode(5, QStringLiteral("first"), 1, 3), makeNode(5, QStringLiteral("second"), 2, 3)});
    QCOMPARE(_bench->handler->uploadExperimentToChannel(2, experiment), E::Success);
    QCOMPARE(_bench->handler->startUploadedExperiment(2), E::Success);
    begin(2, {2});
    send(NT_DC_DATA, 2, dcRecord(11.0, 1.0, 2.0, 3.0));
    send(NT_DC_DATA, 2, dcRecord(12.0, 1.0, 2.0, 1.0));
    send(NT_NODE_DONE, 2, QByteArray());
    send(NT_NODE_BEGIN, 2, wire(quint64(0), quint16(1)));
    for (const int second : {13, 14, 15, 16})
        send(NT_DC_DATA, 2, dcRecord(second, 1.0, 2.0, second - 10));
    send(NT_EXPERIMENT_DONE, 2, wire(quint64(0), quint8(STOP_COMPLETED)));
    QVERIFY(_bench->settle());
    QCOMPARE(log.lines, (QStringList{QStringLiteral("2: first"), QStringLiteral("2: 2 s"), QStringLiteral("2: second"),
                                     QStringLiteral("2: 5 s"), QStringLiteral("2: 6 s"), QStringLiteral("end")}));
    QVector<double> charges;
    for (const VekDCData &data : qAsConst(log.samples))
        charges << data.cumulativeChargeAbs;
    QCOMPARE(charges, (QVector<double>{1.0, 5.0, 6.0})); // charge is that of the reported samples
}

void TestGaleInstrumentHandler::reportsTheLastSampleThatTheVoltageFilterDropped()
{
    _bench->device->setLastSampleOfNodeReported(true);
    RunLog log(*_bench->device);
    Node node = makeNode(4, QStringLiteral("Constant Potential"), 1);
    node.voltageDifferent = 1.0;
    QCOMPARE(_bench->handler->uploadExperimentToChannel(2, std::make_shared<ListExperiment>(ListExperiment{node})),
             E::Success);
    QCOMPARE(_bench->handler->startUploadedExperiment(2), E::Success);
    begin(2, {2});
    send(NT_DC_DATA, 2, dcRecord(11.0, 1.0, 2.0, 1.0));
    send(NT_DC_DATA, 2, dcRecord(12.0, 1.0, 2.5, 2.0));
    send(NT_NODE_DONE, 2, QByteArray());
    send(NT_NODE_BEGIN, 2, wire(quint64(0), quint16(0)));
    QVERIFY(_bench->settle());
    QCOMPARE(log.samples.size(), 2);
    QCOMPARE(log.samples[1].timestamp, 2.0);
    QCOMPARE(log.samples[1].cumulativeChargeAbs, 2.0);
}

void TestGaleInstrumentHandler::reportsTheLastJoinedSampleOfANode_data()
{
    QTest::addColumn<QVector<int>>("lastOfBoth"); // the moments of which both channels have sent their samples
    QTest::addColumn<int>("type");                // what ends the node, member first
    QTest::addColumn<QStringList>("lines");

    const QString two = QStringLiteral("1: 2 s");
    const QString three = QStringLiteral("1: 3 s");
    const QString end = QStringLiteral("end");
    using Moments = QVector<int>;
    QTest::newRow("completed") << Moments{1, 2} << int(NT_NODE_DONE) << QStringList{two};
    QTest::newRow("end of the experiment") << Moments{1, 2} << int(NT_EXPERIMENT_DONE) << QStringList{two, end};
    QTest::newRow("next node") << Moments{1, 2} << int(NT_NODE_BEGIN)
                               << QStringList{QStringLiteral("0: Constant Current"), two,
                                              QStringLiteral("1: Constant Current")};
    QTest::newRow("due anyway") << Moments{1, 2, 3} << int(NT_NODE_DONE) << QStringList{three};
}

void TestGaleInstrumentHandler::reportsTheLastJoinedSampleOfANode()
{
    QFETCH(QVector<int>, lastOfBoth);
    QFETCH(int, type);
    QFETCH(QStringList, lines);
    _bench->device->setLastSampleOfNodeReported(true);
    QCOMPARE(_bench->device->setLinkedChannels({0, 1}), 0);
    QCOMPARE(_bench->handler->uploadExperimentToChannel(1, oneNode(3)), E::Success);
    QCOMPARE(_bench->handler->startUploadedExperiment(1), E::Success);
    begin(1, {0, 1});
    QVERIFY(_bench->settle());
    RunLog log(*_bench->device);
    for (const int moment : lastOfBoth) {
        send(NT_DC_DATA, 0, dcRecord(10.0 + moment, 1.0, 3.0, moment, moment));
        send(NT_DC_DATA, 1, dcRecord(10.0 + moment, 2.0, 4.0, 2.0 * moment, moment));
    }
    for (const unsigned char channel : {0, 1})
        send(Notifications_t(type), channel,
             type == NT_EXPERIMENT_DONE ? wire(quint64(0), quint8(STOP_COMPLETED)) : wire(quint64(0), quint16(0)));
    QVERIFY(_bench->settle());
    QCOMPARE(log.lines, lines);
    QCOMPARE(log.samples.size(), 1);
    QCOMPARE(log.samples[0].current, 3.0);
    QCOMPARE(log.samples[0].workingElectrodeVoltage, 3.5);
    QCOMPARE(log.samples[0].cumulativeChargeAbs, 3.0 * lastOfBoth.last());
    QCOMPARE(_idle->size(), lastOfBoth.size() / 3); // a member's samples are not reported for being the last
}

void TestGaleInstrumentHandler::groupEndsWithItsMaster()
{
    QSignalSpy ends(_bench->device.get(), &VekInstrumentHandler::experimentStopped);
    QCOMPARE(_bench->device->setLinkedChannels({0, 1}), 0);
    QCOMPARE(_bench->handler->uploadExperimentToChannel(1, oneNode()), E::Success);
    QCOMPARE(_bench->handler->startUploadedExperiment(1), E::Success);
    send(NT_EXPERIMENT_DONE, 0, wire(quint64(0), quint8(STOP_BY_USER)));
    QVERIFY(_bench->settle());
    QVERIFY(ends.isEmpty());
    QVERIFY(!_bench->device->isChannelBusy(0) && _bench->device->isChannelBusy(1));
    send(NT_EXPERIMENT_DONE, 1, wire(quint64(0), quint8(STOP_BY_USER)));
    QVERIFY(_bench->settle());
    QCOMPARE(ends.size(), 1);
    QCOMPARE(ends.at(0),
             (QVariantList{QVariant::fromValue<unsigned char>(1), QStringLiteral("Experiment stopped by user")}));
    QCOMPARE(_bench->device->getLinkedChannels(0), (Channels{0, 1})); // the group survives its run
}

void TestGaleInstrumentHandler::endedMemberTakesItsMasterOutOfTheGroup()
{
    QSignalSpy ends(_bench->device.get(), &VekInstrumentHandler::experimentStopped);
    QCOMPARE(_bench->device->setLinkedChannels({0, 1}), 0);
    QCOMPARE(_bench->handler->uploadExperimentToChannel(1, oneNode()), E::Success);
    QCOMPARE(_bench->handler->startUploadedExperiment(1), E::Success);
    begin(1, {0, 1});
    send(NT_EXPERIMENT_DONE, 0, wire(quint64(0), quint8(STOP_COMPLETED)));
    QVERIFY(_bench->settle());
    QCOMPARE(_bench->device->setLinkedChannels({0, 2}), 0);
    QVERIFY(_bench->device->getLinkedChannels(1).empty());
    send(NT_DC_DATA, 1, dcRecord(11.0, 1.0, 2.0, 3.0, 7));
    send(NT_EXPERIMENT_DONE, 1, wire(quint64(0), quint8(STOP_COMPLETED)));
    QVERIFY(_bench->settle());
    QCOMPARE(_active->size(), 1); // alone, without waiting for the other
    QCOMPARE(_active->at(0).at(1).value<VekDCData>().current, 1.0);
    QCOMPARE(_active->at(0).at(1).value<VekDCData>().cumulativeChargeAbs, 0.0); // the group's charge has ended
    QCOMPARE(ends.size(), 1);
    QCOMPARE(_bench->device->getLinkedChannels(0), (Channels{0, 2}));
}

void TestGaleInstrumentHandler::manualRunOfAMemberIsItsOwn()
{
    QSignalSpy ends(_bench->device.get(), &VekInstrumentHandler::experimentStopped);
    QCOMPARE(_bench->device->setLinkedChannels({0, 1}), 0);
    for (const unsigned char channel : {1, 0}) { // neither is the master of anything
        QCOMPARE(_bench->device->startManualExperiment(channel), E::Success);
        send(NT_DATA_BEGIN, channel, wire(10 * ticksPerSecond));
    }
    send(NT_DC_DATA, 0, dcRecord(11.0, 1.0, 2.0, 0.0, 7));
    send(NT_DC_DATA, 1, dcRecord(12.0, 4.0, 3.0, 0.0, 7)); // of the same counter, yet not to be joined
    send(NT_EXPERIMENT_DONE, 1, wire(quint64(0), quint8(STOP_BY_USER)));
    send(NT_DC_DATA, 1, dcRecord(13.0, 5.0, 5.0)); // idle again, while the other goes on
    send(NT_DC_DATA, 0, dcRecord(13.0, 1.5, 2.0, 0.0, 9));
    QVERIFY(_bench->settle());
    QVERIFY(_bench->handler->isManualExperimentRun(0));
    send(NT_EXPERIMENT_DONE, 0, wire(quint64(0), quint8(STOP_BY_USER)));
    QVERIFY(_bench->settle());

    QStringList samples;
    for (const QList<QVariant> &sample : *_active) {
        const auto data = sample.at(1).value<VekDCData>();
        samples << QStringLiteral("%1: %2 s, %3 A").arg(sample.at(0).toInt()).arg(data.timestamp).arg(data.current);
    }
    QCOMPARE(samples, (QStringList{"0: 1 s, 1 A", "1: 2 s, 4 A", "0: 3 s, 1.5 A"}));
    QCOMPARE(_idle->size(), 1);
    QCOMPARE(ends.size(), 2);
    QCOMPARE(ends.at(0).at(0).toInt(), 1);
    QCOMPARE(ends.at(1).at(0).toInt(), 0);
    QCOMPARE(_bench->device->getLinkedChannels(1), (Channels{0, 1})); // the group is there for later
    QCOMPARE(_bench->handler->uploadExperimentToChannel(1, oneNode()), E::Success);
    QCOMPARE(_bench->handler->startUploadedExperiment(1), E::Success);
    QVERIFY(_bench->device->getFreeChannels() == (Channels{2, 3, 4, 5, 6}));
}

void TestGaleInstrumentHandler::refusedStartFreesTheGroup()
{
    QSignalSpy ends(_bench->device.get(), &VekInstrumentHandler::experimentStopped);
    _bench->instrument.reply(PC_EXPERIMENT_START, NT_GENERAL_ACK,
                             wire(quint8(PC_EXPERIMENT_START), quint8(FW_CHANNEL_NOT_IDLE)));
    QCOMPARE(_bench->device->setLinkedChannels({0, 1, 4}), 0);
    QCOMPARE(_bench->handler->uploadExperimentToChannel(1, oneNode()), E::Success);
    QCOMPARE(_bench->handler->startUploadedExperiment(1), E::Success);
    QTRY_COMPARE(ends.size(), 1);
    QVERIFY(_bench->settle());
    QCOMPARE(ends.size(), 1);
    QCOMPARE(ends.at(0), (QVariantList{QVariant::fromValue<unsigned char>(1),
                                       QStringLiteral("Channel is not in the idle state.")}));
    QCOMPARE(_bench->device->getFreeChannels().size(), std::size_t(channelCount));
    for (const unsigned char channel : {0, 1, 4})
        QVERIFY(!_bench->handler->getChannelHandlers().at(channel)->getLoadedExp());
    QCOMPARE(_bench->device->getLinkedChannels(4), (Channels{0, 1, 4}));
}

void TestGaleInstrumentHandler::refusedManualStartFreesTheMemberAlone()
{
    QSignalSpy ends(_bench->device.get(), &VekInstrumentHandler::experimentStopped);
    QCOMPARE(_bench->device->setLinkedChannels({0, 1}), 0);
    QCOMPARE(_bench->device->startManualExperiment(0), E::Success);
    send(NT_DATA_BEGIN, 0, wire(10 * ticksPerSecond));
    QCOMPARE(_bench->device->startManualExperiment(1), E::Success);
    send(NT_GENERAL_ACK, 1, wire(quint8(PC_MANUAL_START), quint8(FW_MANUAL_START_FAILED)));
    QVERIFY(_bench->settle());
    QCOMPARE(ends.size(), 1);
    QCOMPARE(ends.at(0).at(0).toInt(), 1);
    QVERIFY(_bench->handler->isManualExperimentRun(0) && !_bench->device->isChannelBusy(1));
}

void TestGaleInstrumentHandler::startUpNeitherAsksNorFans()
{
    QVERIFY(_bench->startUp(20000));
    QTRY_COMPARE(_bench->instrument.count(PC_READ_GROUND_FLOAT), 1);
    QCOMPARE(_bench->instrument.count(PC_CHANNEL_LIMITS), channelCount);
    QCOMPARE(_bench->instrument.count(PC_READ_DEVICE_STATUS) + _bench->instrument.count(PC_FAN_MODE), 0);
    QCOMPARE(_bench->device->setFanSpeedVariable(), E::Success);
    QCOMPARE(_bench->device->setFanSpeedMaximum(), E::FeatureNotSupported);
    QCOMPARE(_bench->device->channelReport(0), VekChannelReport::Unknown);
}

void TestGaleInstrumentHandler::startUpLeavesUntouchedChannelsAlone()
{
    _bench->handler->leaveUntouched({0, 3, 6});
    QVERIFY(_bench->startUp(20000));
    QTRY_COMPARE(_bench->instrument.count(PC_READ_GROUND_FLOAT), 1);
    QCOMPARE(_bench->channelsOf(PC_CHANNEL_LIMITS), (Channels{1, 2, 4, 5}));
}

void TestGaleInstrumentHandler::manualSetPointsAreRaw()
{
    QCOMPARE(_bench->device->setManualModeConstantVoltage(0, 1.0), E::ManualExperimentNotRunning);
    QCOMPARE(_bench->device->setManualModeConstantVoltage(invalidChannel, 1.0), E::InvalidChannel);
    QCOMPARE(_bench->device->startManualExperiment(0), E::Success);
    QCOMPARE(_bench->device->setManualModeConstantVoltage(0, 1.0), E::Success);
    QCOMPARE(_bench->device->setManualModeConstantCurrent(0, 2.0), E::Success);
    QCOMPARE(_bench->device->setManualModeConstantVoltage(0, 1.0, 3), E::ManualCurrentRangeNotSet);
    for (const double value : {qQNaN(), qInf(), -qInf()}) {
        QCOMPARE(_bench->device->setManualModeConstantVoltage(0, value), E::ImplausibleParameters);
        QCOMPARE(_bench->device->setManualModeConstantVoltage(0, value, 3), E::ImplausibleParameters);
        QCOMPARE(_bench->device->setManualModeConstantCurrent(0, value), E::ImplausibleParameters);
    }
    QVERIFY(_bench->flush());
    QCOMPARE(sent(PC_MANUAL_POTENTIO_RAW).size(), 2);
    QCOMPARE(sent(PC_MANUAL_GALVANO_RAW).size(), 1);
    // (1 V - 728 x 1/8 V) at 1/32 V a count
    QCOMPARE(sent(PC_MANUAL_POTENTIO_RAW).at(0).payload, wire(qint32(-2880), quint8(3)));
    QCOMPARE(sent(PC_CURRENT_RANGE).size(), 1);
    QCOMPARE(sent(PC_CURRENT_RANGE).at(0).payload, wire(quint8(10)));
    // 2 A at 1/512 A a count, in the smallest range that exists
    QCOMPARE(sent(PC_MANUAL_GALVANO_RAW).at(0).payload, wire(qint32(1024), quint8(2)));
}

void TestGaleInstrumentHandler::rangesFollowTheBoard()
{
    const VekInstrumentHandler &device = *_bench->device;
    const auto unlimited = device.getManualModeCurrentRangeList(0);
    QCOMPARE(unlimited.size(), std::size_t(3));
    QCOMPARE(unlimited[1], std::make_pair(-240000.0, 240000.0)); // 7,680,000 counts of 1/32 A
    send(NT_CONFIG, 1, bytesOfRecord(configWithLimits()));       // one record serves the board
    QVERIFY(_bench->settle());
    using Ranges = std::vector<std::pair<double, double>>;
    QCOMPARE(device.getManualModeCurrentRangeList(1), (Ranges{{-50.0, 60.0}, {-50.0, 60.0}}));
    QCOMPARE(device.getManualModeCurrentRangeList(0), (Ranges{{-100.0, 100.0}, {-100.0, 100.0}}));
    QVERIFY(device.getManualModeCurrentRangeList(invalidChannel).empty());

    QCOMPARE(device.startManualExperiment(0), E::Success);
    QCOMPARE(device.setManualModeCurrentRange(0, 1), E::Success); // the second of the list
    QCOMPARE(device.setManualModeCurrentRange(0, 2), E::InvalidParameters);
    QCOMPARE(device.setManualModeCurrentRange(0, -1), E::InvalidParameters);
    QCOMPARE(device.setManualModeVoltageRange(0, 1), E::Success);
    QCOMPARE(device.setManualModeVoltageRange(0, 2), E::InvalidParameters);
    QCOMPARE(device.setManualModeVoltageAutorange(0), E::Success);
    QVERIFY(_bench->flush());
    QCOMPARE(sent(PC_CURRENT_RANGE).size(), 1);
    QCOMPARE(sent(PC_CURRENT_RANGE).at(0).payload, wire(quint8(2)));
}

void TestGaleInstrumentHandler::takesConfigurationAndTare()
{
    send(NT_CONFIG, 0, bytesOfRecord(configWithLimits()).left(287));
    send(NT_TARE_CURRENT, 0, wire(8.0f)); // the range is missing
    QTest::ignoreMessage(QtWarningMsg, "Unable to update info for channel 7");
    send(NT_CONFIG, 6, bytesOfRecord(configWithLimits())); // the last board has one channel
    send(NT_TARE_CURRENT, 0, wire(0.5f, quint8(0)));
    send(NT_TARE_VOLTAGE, 0, wire(-0.25f, quint8(0)));
    send(NT_TARE_CURRENT, 9, wire(0.5f, quint8(0)));
    send(NT_DC_DATA, 0, dcRecord(1.0, 1.0, 2.0));
    send(NT_DC_DATA, 1, dcRecord(1.0, 1.0, 2.0));
    QVERIFY(_bench->settle());
    QCOMPARE(_bench->device->getManualModeCurrentRangeList(0).size(), std::size_t(3));
    QCOMPARE(_bench->device->getManualModeCurrentRangeList(6).size(), std::size_t(2));
    QCOMPARE(_idle->at(0).at(1).value<VekDCData>().current, 1.5);
    QCOMPARE(_idle->at(0).at(1).value<VekDCData>().workingElectrodeVoltage, 1.75);
    QCOMPARE(_idle->at(1).at(1).value<VekDCData>().current, 1.0);
}

void TestGaleInstrumentHandler::loadImpedanceHasLimits()
{
    VekInstrumentHandler &device = *_bench->device;
    QCOMPARE(device.setLoadImpedance(invalidChannel, -1.0f), E::InvalidChannel);
    QCOMPARE(device.setLoadImpedance(0, 10000.0f), E::Success);
    const VekErrorCode refusal = device.setLoadImpedance(0, 10000.5f);
    QCOMPARE(refusal, E::InvalidParameters);
    QCOMPARE(refusal.message(),
             QStringLiteral("Invalid value entered for load impedance. Valid range is 0 to 10,000."));
    QCOMPARE(device.setLoadImpedance(0, -0.5f), E::InvalidParameters);
    QCOMPARE(device.getLoadImpedance(0), 10000.0f);
    QCOMPARE(device.startManualExperiment(0), E::Success);
    QCOMPARE(device.setLoadImpedance(0, 1.0f), E::ChannelBusy);
    QVERIFY(_bench->flush());
    QCOMPARE(sent(PC_FF_IMPEDANCE).size(), 1);
    QCOMPARE(sent(PC_FF_IMPEDANCE).at(0).payload, wire(10000.0f));
}

void TestGaleInstrumentHandler::addressesAllChannels()
{
    _bench->handler->softReset();
    QVERIFY(_bench->flush());
    QCOMPARE(int(sent(PC_SOFT_RESET).at(0).channel), 255);
}

NIMBRELLE_TEST_MAIN(TestGaleInstrumentHandler)
#include "TestGaleInstrumentHandler.moc"
