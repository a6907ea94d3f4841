// SPDX-License-Identifier: MIT
#include "channels/ChannelHandler.h"
#include "channels/NodeBeginning.h"
#include "handlers/ListExperiment.h"
#include "support/TestMain.h"

#include <stdexcept>

namespace {

constexpr NodeRules mainRules{InstrumentLine::Main, true, 0};
constexpr NodeRules batchRules{InstrumentLine::Gale, false, 10};

struct Entry {
    int step;
    bool newSubStep;
    bool newCycle;
};

Node nodeOf(const Entry &entry)
{
    Node node = makeNode(int(NodeType_t::ConstantCurrent), QStringLiteral("Constant Current"), entry.step);
    node.newSubStep = entry.newSubStep;
    node.newCycle = entry.newCycle;
    return node;
}

NodeList listOf(const Node &node)
{
    NodeList list;
    list.addNode(node);
    return list;
}

} // namespace

Q_DECLARE_METATYPE(QVector<int>)

/// A channel's state, its numbering and what the beginning of a node does to it.
class TestChannelHandler : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void endOfAnExperimentKeepsWhatTheClientHasSet();
    void nodesAreLookedUpInTheLoadedList();
    void onlyTheAwaitedStartIsAnswered();
    void calibrationBytesBeginAnewWithTheFirstChunk();
    void countsSamplesInGroups();
    void clockStartsOnce();
    void numbersNodes_data();
    void numbersNodes();
    void announcesEveryChangeOnce();
    void switchesTheCellByTheTypeOfNode_data();
    void switchesTheCellByTheTypeOfNode();
    void preparesForTheDataOfANode();
};

void TestChannelHandler::endOfAnExperimentKeepsWhatTheClientHasSet()
{
    ChannelHandler channel(QStringLiteral("Birch-7"), 3);
    channel.setVmax(4.2);
    channel.setIRComp({10.0, 0.85});
    channel.setCompRange(VekCompRange(QStringLiteral("fast"), 2, 3));
    channel.setLoadImpValue(50.0f);
    channel.linkedChannels = {3, 4};
    channel.setRunningExperimentStatus(ChannelHandler::EXPERIMENT_PAUSED);
    channel.setRunningExperimentMode(ChannelHandler::MODE_ACTIVE);
    channel.setDataStatus(ChannelHandler::DATA_STARTED);
    channel.setSDCardStatus(ChannelHandler::SD_READING);
    channel.setCellOn(true);
    channel.awaitStart(PC_EXPERIMENT_START);
    channel.setRecoverDataStatus(true);
    channel.setReport(VekChannelReport::Running);
    channel.appendCalibrationRawData(true, "abc");
    channel.setLoadedExp(std::make_shared<ListExperiment>(ListExperiment{}));
    channel.setLoadedNodeList(listOf(makeNode(5, {}, 1)));
    channel.stepCounters = {2};
    channel.startClockOnce(7.0);
    channel.capacity.onNodeBeginning(1, false);
    channel.capacity.onDcDataReceived(1.0);

    channel.setIdealConfig();
    QCOMPARE(channel.getExperimentStatus(), ChannelHandler::EXPERIMENT_STOPPED);
    QCOMPARE(channel.getExperimentMode(), ChannelHandler::MODE_IDLE);
    QCOMPARE(channel.getDataStatus(), ChannelHandler::DATA_NOT_STARTED);
    QCOMPARE(channel.getSDCardStatus(), ChannelHandler::SD_IDLE);
    QVERIFY(!channel.isCellOn());
    QVERIFY(!channel.endAwaitOfStart(PC_EXPERIMENT_START));
    QVERIFY(!channel.getLoadedExp());
    QVERIFY(channel.isLoadedNodeListEmpty());
    QVERIFY(channel.stepCounters.empty());
    QCOMPARE(channel.startTimestamp, 0.0);
    QCOMPARE(double(channel.utcStartTime), 0.0);
    QCOMPARE(channel.capacity.getLiveExperimentAbs_C(), 0.0);

    QVERIFY(channel.isRecoverDataAvailable());
    QCOMPARE(channel.getReport(), VekChannelReport::Running);
    QCOMPARE(channel.getCalibrationRawData(), QByteArray("abc"));
    QCOMPARE(channel.getLimits().vMax, 4.2);
    QCOMPARE(channel.getIRComp().compensationLevel, 0.85);
    QCOMPARE(int(channel.getCompRange().getStabilityFactor()), 3);
    QCOMPARE(channel.getLoadImpValue(), 50.0f);
    QCOMPARE(channel.linkedChannels.list(), (std::vector<unsigned char>{3, 4}));
    channel.resetChannelLimits();
    QCOMPARE(channel.getLimits().vMax, qInf());
    QCOMPARE(channel.getLimits().iMin, -qInf());
}

void TestChannelHandler::nodesAreLookedUpInTheLoadedList()
{
    ChannelHandler channel(QString(), 0);
    QCOMPARE(channel.getMaximumNodeIndex(), 0);
    QCOMPARE(channel.getNodeAt(5).stepNumber, -1);
    QCOMPARE(channel.getHardwareNodeAt(5), QByteArray(64, '\0'));

    NodeList list = listOf(makeNode(5, QStringLiteral("a"), 1));
    list.addNode(makeNode(1, QStringLiteral("b"), 2));
    channel.setLoadedNodeList(list);
    list.addNode(makeNode(0, QStringLiteral("c"), 3)); // the channel has a copy
    QCOMPARE(channel.getMaximumNodeIndex(), 1);
    QCOMPARE(channel.getNodeAt(1).stepName, QStringLiteral("b"));
    QCOMPARE(int(channel.getHardwareNodeAt(0).at(0)), 5);
    QVERIFY_EXCEPTION_THROWN(channel.getNodeAt(2), std::out_of_range);
    QVERIFY_EXCEPTION_THROWN(channel.getNodeAt(-1), std::out_of_range);
    channel.setLoadedNodeList(NodeList());
    QCOMPARE(channel.getMaximumNodeIndex(), 0);
    QVERIFY(channel.isLoadedNodeListEmpty());
}

void TestChannelHandler::onlyTheAwaitedStartIsAnswered()
{
    ChannelHandler channel(QString(), 0);
    channel.awaitStart(PC_MANUAL_START);
    QVERIFY(!channel.endAwaitOfStart(PC_EXPERIMENT_START));
    QVERIFY(channel.endAwaitOfStart(PC_MANUAL_START));
    QVERIFY(!channel.endAwaitOfStart(PC_MANUAL_START)); // once
    channel.awaitStart(PC_EXPERIMENT_START);
    channel.setDataStatus(ChannelHandler::DATA_STARTED); // confirms it as well
    QVERIFY(!channel.endAwaitOfStart(PC_EXPERIMENT_START));
}

void TestChannelHandler::calibrationBytesBeginAnewWithTheFirstChunk()
{
    ChannelHandler channel(QString(), 0);
    channel.appendCalibrationRawData(false, "ab");
    channel.appendCalibrationRawData(false, "c");
    QCOMPARE(channel.getCalibrationRawData(), QByteArray("abc"));
    channel.appendCalibrationRawData(true, "x");
    QCOMPARE(channel.getCalibrationRawData(), QByteArray("x"));
}

void TestChannelHandler::countsSamplesInGroups()
{
    const auto reportsOf = [](DCDataAccumulator &dc, int samples) {
        QString reports;
        for (int i = 0; i < samples; ++i)
            reports += dc.countSample() ? QLatin1Char('R') : QLatin1Char('-');
        return reports;
    };
    DCDataAccumulator dc;
    QCOMPARE(reportsOf(dc, 3), QStringLiteral("RRR"));
    dc.beginGroups(3);
    QCOMPARE(reportsOf(dc, 7), QStringLiteral("--R--R-")); // the last of each group
    dc.beginGroups(0);
    QCOMPARE(reportsOf(dc, 2), QStringLiteral("RR"));
    DCDataAccumulator manual;
    manual.setGroupSize(3);
    QCOMPARE(reportsOf(manual, 7), QStringLiteral("R--R--R"));
    dc.beginGroups(0xFFFFFFFF);
    QCOMPARE(reportsOf(dc, 3), QStringLiteral("---"));
}

void TestChannelHandler::clockStartsOnce()
{
    RealTimeTracker tracker;
    const double before = double(QDateTime::currentMSecsSinceEpoch()) / 1e3;
    tracker.startClockOnce(12.5);
    const double started = tracker.utcStartTime;
    QVERIFY(started >= before - 1.0 && started <= before + 60.0);
    tracker.startClockOnce(99.0);
    QCOMPARE(tracker.startTimestamp, 12.5);
    QCOMPARE(double(tracker.utcStartTime), started);
    RealTimeTracker broken;
    broken.startClockOnce(qQNaN());
    broken.startClockOnce(99.0);
    QVERIFY(qIsNaN(broken.startTimestamp));
}

void TestChannelHandler::numbersNodes_data()
{
    QTest::addColumn<QVector<int>>("nodes");    // step, newSubStep, newCycle, ...
    QTest::addColumn<QVector<int>>("expected"); // cycle, sub-step, ...

    QTest::newRow("first node opens step 1") << QVector<int>{1, 1, 0} << QVector<int>{1, 0};
    QTest::newRow("first node that opens nothing") << QVector<int>{1, 0, 0} << QVector<int>{0, 0};
    QTest::newRow("step 3 first: all three count as entered")
        << QVector<int>{3, 1, 0, 1, 1, 0, 2, 1, 0} << QVector<int>{1, 0, 2, 0, 2, 0};
    QTest::newRow("passes of a loop over one node")
        << QVector<int>{1, 1, 0, 1, 1, 0, 1, 1, 0} << QVector<int>{1, 0, 2, 0, 3, 0};
    QTest::newRow("cycles inside a step are sub-steps")
        << QVector<int>{1, 1, 0, 1, 0, 1, 1, 0, 0, 1, 0, 1} << QVector<int>{1, 0, 1, 1, 1, 1, 1, 2};
    QTest::newRow("a new step begins with sub-step 0")
        << QVector<int>{1, 1, 0, 1, 0, 1, 2, 0, 1} << QVector<int>{1, 0, 1, 1, 1, 0};
    QTest::newRow("no number, no count") << QVector<int>{-1, 1, 0, 0, 1, 0} << QVector<int>{0, 0, 0, 0};
}

void TestChannelHandler::numbersNodes()
{
    QFETCH(QVector<int>, nodes);
    QFETCH(QVector<int>, expected);
    RealTimeTracker tracker;
    QVector<int> numbers;
    for (int i = 0; i < nodes.size(); i += 3) {
        const auto position = tracker.enterNode(nodeOf({nodes[i], nodes[i + 1] == 1, nodes[i + 2] == 1}));
        numbers << position.cycleNumber << position.substepNumber;
    }
    QCOMPARE(numbers, expected);
}

void TestChannelHandler::announcesEveryChangeOnce()
{
    ChannelHandler channel(QString(), 0);
    Node node = nodeOf({1, true, false});
    channel.setLoadedNodeList(listOf(node));

    auto announced = enterNode(channel, node, mainRules);
    QVERIFY(announced);
    QCOMPARE(announced->stepName, QStringLiteral("Constant Current"));
    QCOMPARE(announced->stepNumber, 1);
    QCOMPARE(announced->cycleNumber, 1);
    QCOMPARE(announced->substepNumber, 0);

    node.newSubStep = false;
    QVERIFY(!enterNode(channel, node, mainRules)); // the same place again
    node.newCycle = true;
    announced = enterNode(channel, node, mainRules);
    QVERIFY(announced);
    QCOMPARE(announced->substepNumber, 1);
    node.newCycle = false;
    node.stepName = QStringLiteral("constant current");
    QVERIFY(enterNode(channel, node, mainRules)); // case counts
    node.hwNode.type = 20;
    node.stepName = QStringLiteral("loop");
    QVERIFY(!enterNode(channel, node, mainRules));
    QCOMPARE(channel.stepName, QStringLiteral("constant current"));
}

void TestChannelHandler::switchesTheCellByTheTypeOfNode_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("main"); // what becomes of a cell that was off and of one that was on
    QTest::addColumn<QString>("gale");

    QTest::newRow("end") << 0 << "00"
                         << "00";
    QTest::newRow("open circuit") << 1 << "00"
                                  << "00";
    QTest::newRow("constant current") << 5 << "11"
                                      << "11";
    QTest::newRow("loop") << 20 << "01"
                          << "01";
    QTest::newRow("branch") << 21 << "01"
                            << "01";
    QTest::newRow("type 27") << 27 << "01"
                             << "11";
    QTest::newRow("modify") << 31 << "01"
                            << "01";
    QTest::newRow("type 33") << 33 << "01"
                             << "01";
    QTest::newRow("voltage steps") << 34 << "11"
                                   << "11";
    QTest::newRow("unknown") << 200 << "11"
                             << "11";
}

void TestChannelHandler::switchesTheCellByTheTypeOfNode()
{
    QFETCH(int, type);
    QFETCH(QString, main);
    QFETCH(QString, gale);
    const auto outcome = [type](const NodeRules &rules) {
        QString states;
        for (const bool wasOn : {false, true}) {
            ChannelHandler channel(QString(), 0);
            channel.setCellOn(wasOn);
            enterNode(channel, makeNode(type, QStringLiteral("x"), 1), rules);
            states += QString::number(channel.isCellOn());
        }
        return states;
    };
    QCOMPARE(outcome(mainRules), main);
    QCOMPARE(outcome(batchRules), gale);
}

void TestChannelHandler::preparesForTheDataOfANode()
{
    ChannelHandler channel(QString(), 0);
    Node dc = makeNode(int(NodeType_t::ConstantVoltage), QStringLiteral("dc"), 1, 4);
    dc.voltageDifferent = 0.01;
    channel.setLoadedNodeList(listOf(dc));
    channel.ac.data = "left over";
    enterNode(channel, dc, batchRules);
    QCOMPARE(channel.dc.sampleCountdown, 4);
    QCOMPARE(int(channel.dc.samplesPerPoint), 4);
    QCOMPARE(channel.voltageDifferent, 0.01);
    QCOMPARE(channel.ac.data, QByteArray("left over"));

    enterNode(channel, makeNode(24, QStringLiteral("type 24"), 2, 9), batchRules);
    enterNode(channel, makeNode(int(NodeType_t::EisVoltage), QStringLiteral("ac"), 3, 9), mainRules);
    QCOMPARE(int(channel.dc.samplesPerPoint), 4); // neither has anything to do with DC samples
    QCOMPARE(channel.ac.packetsTotal, 1);
    enterNode(channel, makeNode(int(NodeType_t::EisVoltage), QStringLiteral("ac"), 3, 9), batchRules);
    QCOMPARE(channel.ac.packetsTotal, 10);
    QCOMPARE(channel.ac.packetsRemaining, 10);
    QVERIFY(channel.ac.data.isEmpty());
}

NIMBRELLE_TEST_MAIN(TestChannelHandler)
#include "TestChannelHandler.moc"
