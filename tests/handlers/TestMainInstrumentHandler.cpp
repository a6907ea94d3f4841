// SPDX-License-Identifier: MIT
#include "HandlerBench.h"
#include "ListExperiment.h"
#include "handlers/MainInstrumentHandler.h"
#include "link/FanCtrlMode.h"

#include <QDir>
#include <QStandardPaths>
#include <QtMath>

namespace {

constexpr quint64 ticksPerSecond = 100'000'000;

/// A record in current range 2 at gain 1: with the round record 2000 counts are 1 V and 200 counts are 1 mA.
MainDcRecord_t dcRecord(double seconds, double volts, double amperes, double coulombs)
{
    MainDcRecord_t record = {};
    record.tick = quint64(seconds * double(ticksPerSecond));
    record.rawVoltage = float(volts * 2000.0);
    record.rawCurrent = float(amperes * 200000.0);
    record.charge = coulombs;
    record.currentRange = currentRange_t(2);
    return record;
}

/// A record in current range 2 at gain 1 whose sine of 1,000 counts is 0.5 V and 5 mA, in phase: 100 ohms. It holds five
/// periods.
QByteArray acRecord(double seconds)
{
    constexpr int samples = 81;
    P24ExperimentalAcData head = {};
    head.tick = quint64(seconds * double(ticksPerSecond));
    head.frequency = 64.0f;
    head.samplePeriod = 1.0f / 1024.0f;
    head.samplesPerSignal = samples;
    head.flags = 3; // floats of the external converter
    head.currentRange = currentRange_t(2);
    QByteArray signal;
    for (int i = 0; i < samples; ++i)
        signal += wire(1000.0f * float(qSin(2.0 * M_PI * i / 16.0)));
    return bytesOfRecord(head) + signal + signal;
}

QByteArray nodeBegin(quint16 index)
{
    return wire(quint64(0), index);
}

bool isClose(double actual, double expected)
{
    return qAbs(actual - expected) <= 1e-6 * qMax(1.0, qAbs(expected));
}

} // namespace

class TestMainInstrumentHandler : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup() { _bench.reset(); }

    void startUpLeavesRunningExperimentsAlone_data();
    void startUpLeavesRunningExperimentsAlone();
    void startUpTellsTheFanToStayFixed();
    void startUpLeavesUntouchedChannelsAlone();
    void untouchedChannelsAreMadeReady();
    void reportsWhatTheStatusWordSays_data();
    void reportsWhatTheStatusWordSays();
    void reportFollowsRunsAndErasures();
    void readsTablesFromTheCard_data();
    void readsTablesFromTheCard();
    void silentCardDoesNotHoldTheStartUpForLong();
    void lostLinkEndsTheWaitForTheCard();
    void isConnectedBeforeTheStartUp();
    void fanFollowsTheModel();
    void idleSamplesKeepTheInstrumentsClock();
    void convertsAndRebasesSamples();
    void samplesBeforeTheDataBeginAreIdle();
    void chargeBeforeTheDataBeginsIsCounted();
    void chargeAfterTheEndIsNot();
    void badChargeSpoilsOneRow();
    void reportsTheLastSampleOfEachGroup();
    void reportsTheLastSampleOfANode_data();
    void reportsTheLastSampleOfANode();
    void lastSampleThatTheVoltageFilterDropped();
    void lastSampleBeforeAPause();
    void lastSampleFollowsTheSwitch();
    void lastSampleOfAFreeChannelStaysDropped();
    void pausedSamplesCountTheirChargeOnly();
    void filtersByChangeOfVoltage();
    void manualSamplesBeginWithTheFirstOfAGroup();
    void manualIntervalHoldsFromTheNextSampleOn();
    void announcesNodes();
    void clampsTheIndexOfANode();
    void averagesTheRecordsOfAnImpedancePoint();
    void nodesDoNotMixTheirImpedancePoints_data();
    void nodesDoNotMixTheirImpedancePoints();
    void finishesImpedancePointsOnlyInARun();
    void dropsPacketsThatDoNotFit();
    void modelsOfNoLineStaySilent();
    void endsExperiments_data();
    void endsExperiments();
    void alarmsStopTheChannel();
    void alarmsForNoChannelStopNothing();
    void passesTheStateOfTheMemoryOn();

private:
    using Bench = HandlerBench<MainInstrumentHandler>;
    void makeBench(HardwareModel_t model, int channels = 2);
    bool startUp(int timeoutMs) { return _bench->startUp(timeoutMs); }
    void start(std::initializer_list<Node> nodes);
    void sendSample(double seconds, double volts, double coulombs = 0.0)
    {
        _bench->instrument.send(NT_DC_DATA, 0, bytesOfRecord(dcRecord(seconds, volts, 0.001, coulombs)));
    }
    QVector<double> timesOf(const QSignalSpy &samples) const
    {
        QVector<double> times;
        for (const QVariantList &arguments : samples)
            times << arguments[1].value<VekDCData>().timestamp;
        return times;
    }

    std::unique_ptr<Bench> _bench;
    std::unique_ptr<QSignalSpy> _active;
    std::unique_ptr<QSignalSpy> _idle;
    std::unique_ptr<QSignalSpy> _nodes;
};

void TestMainInstrumentHandler::init()
{
    makeBench(HardwareModel_t::Birch_2_2);
}

void TestMainInstrumentHandler::makeBench(HardwareModel_t model, int channels)
{
    _bench = std::make_unique<Bench>(model, channels, roundMainRecord());
    _active = std::make_unique<QSignalSpy>(_bench->device.get(), &VekInstrumentHandler::activeDCDataReady);
    _idle = std::make_unique<QSignalSpy>(_bench->device.get(), &VekInstrumentHandler::idleDCDataReady);
    _nodes = std::make_unique<QSignalSpy>(_bench->device.get(), &VekInstrumentHandler::experimentNewElementStarting);
}

/// Uploads and starts nodes on channel 0; the data begin at 10 s of the instrument's clock.
void TestMainInstrumentHandler::start(std::initializer_list<Node> nodes)
{
    const auto experiment = std::make_shared<ListExperiment>(nodes);
    QCOMPARE(_bench->handler->uploadExperimentToChannel(0, experiment), VekErrorCode::Success);
    QCOMPARE(_bench->handler->startUploadedExperiment(0), VekErrorCode::Success);
    _bench->instrument.send(NT_DATA_BEGIN, 0, wire(10 * ticksPerSecond));
    _bench->instrument.send(NT_NODE_BEGIN, 0, nodeBegin(0));
}

void TestMainInstrumentHandler::startUpLeavesRunningExperimentsAlone_data()
{
    QTest::addColumn<QByteArray>("status");
    QTest::addColumn<int>("limits"); // channels whose limits are reset
    QTest::addColumn<int>("fans");
    QTest::addColumn<int>("erasures");

    QTest::newRow("nothing stored") << wire(quint16(0x0000)) << 2 << 1 << 1;
    QTest::newRow("bits without validity") << wire(quint16(0x00FF)) << 2 << 1 << 1;
    QTest::newRow("stored data of both") << wire(quint16(0x0103)) << 2 << 1 << 0;
    QTest::newRow("channel 1 still runs") << wire(quint16(0x0122)) << 1 << 0 << 0;
    QTest::newRow("half a word") << wire(quint8(0x22)) << 2 << 1 << 1;
}

void TestMainInstrumentHandler::startUpLeavesRunningExperimentsAlone()
{
    QFETCH(QByteArray, status);
    FakeInstrument &instrument = _bench->instrument;
    instrument.reply(PC_READ_DEVICE_STATUS, NT_DEVICE_STATUS, status);
    QVERIFY(startUp(20000));
    QTRY_COMPARE(instrument.count(PC_READ_GROUND_FLOAT), 1); // the last command
    QTEST(instrument.count(PC_CHANNEL_LIMITS), "limits");
    QTEST(instrument.count(PC_FAN_MODE), "fans");
    QTEST(instrument.count(PC_ERASE_MEMORY_DATA), "erasures");
    QCOMPARE(instrument.count(PC_READ_META_DATA), 1);
    QCOMPARE(_bench->handler->getChannelHandlers().at(1)->isRecoverDataAvailable(),
             (status.at(0) & 2) && status.size() == 2 && status.at(1) == 1);
}

void TestMainInstrumentHandler::startUpTellsTheFanToStayFixed()
{
    QVERIFY(startUp(20000));
    QVERIFY(_bench->flush());
    QByteArrayList modes;
    for (const FakeInstrument::Command &each : _bench->instrument.commands()) {
        if (each.command == PC_FAN_MODE)
            modes << each.payload;
    }
    QCOMPARE(modes, QByteArrayList{wire(quint8(FAN_FIXED))});
}

void TestMainInstrumentHandler::startUpLeavesUntouchedChannelsAlone()
{
    makeBench(HardwareModel_t::Alder_2_5, 6); // its tables are on the card
    FakeInstrument &instrument = _bench->instrument;
    instrument.reply(PC_READ_DEVICE_STATUS, NT_DEVICE_STATUS, wire(quint16(0))); // by which the memory would be erased
    _bench->handler->leaveUntouched({1, 5});
    QVERIFY(startUp(20000));
    QTRY_COMPARE(instrument.count(PC_READ_GROUND_FLOAT), 1);
    QCOMPARE(_bench->channelsOf(PC_CHANNEL_LIMITS), (std::vector<unsigned char>{0, 2, 3, 4}));
    QCOMPARE(instrument.count(PC_FAN_MODE), 0);
    QCOMPARE(instrument.count(PC_SD_CAL_HEADER_READ), 0);
    QCOMPARE(instrument.count(PC_ERASE_MEMORY_DATA), 0);
}

void TestMainInstrumentHandler::untouchedChannelsAreMadeReady()
{
    makeBench(HardwareModel_t::Alder_2_5, 6);
    FakeInstrument &instrument = _bench->instrument;
    const VekInstrumentHandler &device = *_bench->device;
    const auto answerStatus = [&](int word) {
        instrument.reply(PC_READ_DEVICE_STATUS, NT_DEVICE_STATUS, wire(quint16(word)));
    };
    answerStatus(0x0100 | 16 << 1); // channel 1 runs
    instrument.on(PC_SD_CAL_HEADER_READ, [&](const FakeInstrument::Command &) {
        for (quint8 channel = 0; channel < 6; ++channel)
            instrument.send(NT_SD_CAL_HEADER, channel); // of an empty card
    });
    _bench->handler->leaveUntouched({0, 1, 2, 3, 4, 5});
    QVERIFY(startUp(20000));
    QCOMPARE(_bench->channelsOf(PC_CHANNEL_LIMITS), std::vector<unsigned char>());

    QSignalSpy prepared(&device, &VekInstrumentHandler::channelsPrepared);
    QCOMPARE(device.prepareChannels({0, 1}), VekErrorCode::ChannelBusy);
    QCOMPARE(device.prepareChannels({0, 6}), VekErrorCode::InvalidChannel);
    QCOMPARE(device.prepareChannels({4}), VekErrorCode::Success);
    QTRY_COMPARE_WITH_TIMEOUT(prepared.size(), 1, 20000);
    // Channel 4 may be running as well as 5: nothing tells, so it keeps what guards it.
    QCOMPARE(_bench->channelsOf(PC_CHANNEL_LIMITS), (std::vector<unsigned char>{0, 2, 3}));
    QCOMPARE(instrument.count(PC_SD_CAL_HEADER_READ) + instrument.count(PC_FAN_MODE), 0);

    instrument.send(NT_EXPERIMENT_DONE, 1, wire(quint64(0), quint8(1)));
    QVERIFY(_bench->settle());
    answerStatus(0x0100);
    QCOMPARE(device.prepareChannels({1, 5}), VekErrorCode::Success);
    QTRY_COMPARE_WITH_TIMEOUT(prepared.size(), 2, 20000);
    QCOMPARE(_bench->channelsOf(PC_CHANNEL_LIMITS), (std::vector<unsigned char>{0, 2, 3, 1}));
    QCOMPARE(instrument.count(PC_SD_CAL_HEADER_READ), 6);
    QVERIFY(_bench->flush());
    QCOMPARE(instrument.count(PC_FAN_MODE), 1);
}

void TestMainInstrumentHandler::reportsWhatTheStatusWordSays_data()
{
    QTest::addColumn<int>("status");      // -1: no answer
    QTest::addColumn<QString>("running"); // by channel: unknown, idle, running
    QTest::addColumn<QString>("stored");

    QTest::newRow("no answer") << -1 << "?????"
                               << "-----";
    QTest::newRow("invalid") << 0x00FF << "?????"
                             << "-----";
    QTest::newRow("nothing") << 0x0100 << "iiii?"
                             << "-----";
    for (int channel = 0; channel < 4; ++channel) {
        QString one = QStringLiteral("-----");
        one[channel] = QLatin1Char('s');
        QTest::addRow("data of channel %d", channel) << (0x0100 | 1 << channel) << "iiii?" << one;
        one = QStringLiteral("iiii?");
        one[channel] = QLatin1Char('r');
        QTest::addRow("run of channel %d", channel) << (0x0100 | 16 << channel) << one << "-----";
    }
}

void TestMainInstrumentHandler::reportsWhatTheStatusWordSays()
{
    QFETCH(int, status);
    makeBench(HardwareModel_t::Birch_2_2, 5);
    if (status >= 0)
        _bench->instrument.reply(PC_READ_DEVICE_STATUS, NT_DEVICE_STATUS, wire(quint16(status)));
    QCOMPARE(_bench->device->channelReport(0), VekChannelReport::Unknown);
    QVERIFY(startUp(20000));
    QString running;
    QString stored;
    for (unsigned char channel = 0; channel < 5; ++channel) {
        running += QLatin1Char("?ir"[int(_bench->device->channelReport(channel))]);
        stored += QLatin1Char(_bench->device->hasStoredData(channel) ? 's' : '-');
    }
    QTEST(running, "running");
    QTEST(stored, "stored");
    for (const unsigned char channel : _bench->channelsOf(PC_CHANNEL_LIMITS))
        QVERIFY(_bench->device->channelReport(channel) != VekChannelReport::Running);
}

void TestMainInstrumentHandler::reportFollowsRunsAndErasures()
{
    const VekInstrumentHandler &device = *_bench->device;
    start({makeNode(5, QStringLiteral("Constant Current"), 1)});
    QCOMPARE(device.channelReport(0), VekChannelReport::Running);
    _bench->instrument.send(NT_EXPERIMENT_DONE, 0, wire(quint64(0), quint8(1)));
    QVERIFY(_bench->settle());
    QCOMPARE(device.channelReport(0), VekChannelReport::Idle);

    _bench->instrument.reply(PC_READ_DEVICE_STATUS, NT_DEVICE_STATUS, wire(quint16(0x0122)));
    QVERIFY(startUp(20000));
    QCOMPARE(device.channelReport(1), VekChannelReport::Running); // although no client of this handler knows of it
    QVERIFY(!device.isChannelBusy(1));
    _bench->instrument.send(NT_EXPERIMENT_DONE, 1, wire(quint64(0), quint8(1)));
    _bench->instrument.send(NT_MEMORY_DATA_ERASED, 0, wire(quint8(0)));
    QVERIFY(_bench->settle());
    QCOMPARE(device.channelReport(1), VekChannelReport::Idle);
    QVERIFY(device.hasStoredData(1));
    _bench->instrument.send(NT_MEMORY_DATA_ERASED, 0, wire(quint8(1)));
    QVERIFY(_bench->settle());
    QVERIFY(!device.hasStoredData(1));
    QCOMPARE(device.channelReport(9), VekChannelReport::Unknown);
}

void TestMainInstrumentHandler::readsTablesFromTheCard_data()
{
    QTest::addColumn<QByteArray>("payload");
    QTest::addColumn<int>("announcedSize");
    QTest::addColumn<QByteArray>("warning");
    QTest::addColumn<bool>("isWritten");

    const QByteArray table = "V_inputBuffer.csv,frequency,magnitude,phase\n1,1,0\n1000,0.5,-3";
    QTest::newRow("good table") << table << table.size() << QByteArray() << true;
    QTest::newRow("ragged table") << table + "\n2" << table.size() + 2
                                  << QByteArray("Bench-1 channel 0: Error in calibration data.") << true;
    QTest::newRow("nothing announced") << QByteArray() << 0
                                       << QByteArray("Bench-1 channel 0: Error loading calibration data.") << false;
}

void TestMainInstrumentHandler::readsTablesFromTheCard()
{
    QFETCH(QByteArray, payload);
    QFETCH(int, announcedSize);
    QFETCH(QByteArray, warning);
    QFETCH(bool, isWritten);
    QDir folder(QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation) +
                QStringLiteral("/Brenmoor Apparatus/Calibration files/Bench-1"));
    folder.removeRecursively();
    makeBench(HardwareModel_t::Alder_2_5, 1);
    FakeInstrument &instrument = _bench->instrument;
    csvDataHeader_t header;
    header.magic = csvDataHeader_t::expectedMagic;
    header.payloadSize = announcedSize;
    instrument.reply(PC_SD_CAL_HEADER_READ, NT_SD_CAL_HEADER, bytesOfRecord(header));
    int position = 0;
    instrument.on(PC_SD_CAL_DATA_NEXT, [&](const FakeInstrument::Command &) {
        instrument.send(NT_SD_CAL_DATA, 0, payload.mid(position, 20));
        position += 20;
    });
    if (!warning.isEmpty())
        QTest::ignoreMessage(QtWarningMsg, warning.constData());
    QVERIFY(startUp(20000));
    QVERIFY(!_bench->handler->isSDCardReading(0));
    QCOMPARE(folder.exists(QStringLiteral("V_inputBuffer.csv")), isWritten);
}

void TestMainInstrumentHandler::silentCardDoesNotHoldTheStartUpForLong()
{
    makeBench(HardwareModel_t::Alder_2_5);
    QTest::ignoreMessage(QtWarningMsg, "[Bench-1] SD calibration read timed out on channel(s): 0, 1");
    _bench->clock.hurry(5000);
    QVERIFY(startUp(20000));
}

void TestMainInstrumentHandler::lostLinkEndsTheWaitForTheCard()
{
    makeBench(HardwareModel_t::Alder_2_5);
    FakeInstrument &instrument = _bench->instrument;
    instrument.on(PC_SD_CAL_HEADER_READ, [&instrument](const FakeInstrument::Command &) { instrument.unplug(); });
    QVERIFY(_bench->startUp(20000, false)); // time stands still
}

void TestMainInstrumentHandler::isConnectedBeforeTheStartUp()
{
    makeBench(HardwareModel_t::Alder_2_5);
    QVERIFY(_bench->handler->isConnected());
    _bench->instrument.unplug();
    QTRY_VERIFY(!_bench->handler->isConnected());
    QVERIFY(_bench->startUp(10000, false));
    QVERIFY(!_bench->handler->isSDCardReading(0)); // a lost instrument is asked for nothing
}

void TestMainInstrumentHandler::fanFollowsTheModel()
{
    QCOMPARE(_bench->device->setFanSpeedVariable(), VekErrorCode::FeatureNotSupported);
    QCOMPARE(_bench->device->setFanSpeedMaximum(), VekErrorCode::Success);
    makeBench(HardwareModel_t::Alder_2_5);
    QCOMPARE(_bench->device->setFanSpeedVariable(), VekErrorCode::Success);
    QCOMPARE(_bench->device->setFanSpeedMaximum(), VekErrorCode::Success);
    QTRY_COMPARE(_bench->instrument.count(PC_FAN_MODE), 2);
    QCOMPARE(_bench->instrument.commands().last().payload, wire(quint8(FAN_FIXED)));
}

void TestMainInstrumentHandler::idleSamplesKeepTheInstrumentsClock()
{
    sendSample(1234.5, 0.75);
    QVERIFY(_bench->settle());
    QCOMPARE(_idle->size(), 1);
    const auto data = _idle->at(0).at(1).value<VekDCData>();
    QCOMPARE(data.timestamp, 1234.5);
    QVERIFY(isClose(data.workingElectrodeVoltage, 0.75));
    QVERIFY(isClose(data.current, 0.001));
    QVERIFY(isClose(data.counterElectrodeVoltage, 0.75)); // 1 - 0.25, the formula's constants
    QVERIFY(qIsNaN(data.temperature));
}

void TestMainInstrumentHandler::convertsAndRebasesSamples()
{
    QSignalSpy starts(_bench->device.get(), &VekInstrumentHandler::experimentStarting);
    start({makeNode(5, QStringLiteral("Constant Current"), 1)});
    sendSample(10.5, 1.0, 2.0);
    sendSample(11.0, 1.5, -1.0);
    QVERIFY(_bench->settle());
    QCOMPARE(starts.size(), 1);
    QVERIFY(_idle->isEmpty());
    QCOMPARE(timesOf(*_active), (QVector<double>{0.5, 1.0}));
    const auto data = _active->at(1).at(1).value<VekDCData>();
    QVERIFY(isClose(data.workingElectrodeVoltage, 1.5));
    QCOMPARE(data.cumulativeChargeAbs, 5.0); // +2, then -3
    QCOMPARE(data.cumulativeChargeNet, -1.0);
    const double now = double(QDateTime::currentMSecsSinceEpoch()) / 1e3;
    QVERIFY(qAbs(_bench->device->getExperimentUTCStartTime(0) - now) < 60.0);
}

void TestMainInstrumentHandler::samplesBeforeTheDataBeginAreIdle()
{
    const auto experiment =
        std::make_shared<ListExperiment>(ListExperiment{makeNode(5, QStringLiteral("Constant Current"), 1, 2)});
    QCOMPARE(_bench->handler->uploadExperimentToChannel(0, experiment), VekErrorCode::Success);
    QCOMPARE(_bench->handler->startUploadedExperiment(0), VekErrorCode::Success);
    _bench->instrument.send(NT_NODE_BEGIN, 0, nodeBegin(0));
    sendSample(9.0, 1.0, 1.0);
    _bench->instrument.send(NT_DATA_BEGIN, 0, wire(10 * ticksPerSecond));
    sendSample(11.0, 1.0, 4.0);
    sendSample(12.0, 1.0, 5.0);
    QVERIFY(_bench->settle());
    QCOMPARE(timesOf(*_idle), QVector<double>{9.0});
    QCOMPARE(timesOf(*_active), QVector<double>{2.0}); // the idle sample took no part in the counting
    QCOMPARE(_active->at(0).at(1).value<VekDCData>().cumulativeChargeAbs, 5.0);
}

void TestMainInstrumentHandler::chargeBeforeTheDataBeginsIsCounted()
{
    const auto experiment =
        std::make_shared<ListExperiment>(ListExperiment{makeNode(5, QStringLiteral("Constant Current"), 1)});
    QCOMPARE(_bench->handler->uploadExperimentToChannel(0, experiment), VekErrorCode::Success);
    QCOMPARE(_bench->handler->startUploadedExperiment(0), VekErrorCode::Success);
    _bench->instrument.send(NT_NODE_BEGIN, 0, nodeBegin(0));
    sendSample(9.0, 1.0, 3.0);
    _bench->instrument.send(NT_DATA_BEGIN, 0, wire(10 * ticksPerSecond));
    sendSample(11.0, 1.0, 1.0);
    QVERIFY(_bench->settle());
    QCOMPARE(_idle->size(), 1);
    QCOMPARE(_idle->at(0).at(1).value<VekDCData>().cumulativeChargeAbs, 3.0);
    QCOMPARE(_active->size(), 1);
    QCOMPARE(_active->at(0).at(1).value<VekDCData>().cumulativeChargeAbs, 5.0); // up to 3, then down to 1
    QCOMPARE(_active->at(0).at(1).value<VekDCData>().cumulativeChargeNet, 1.0);
}

void TestMainInstrumentHandler::chargeAfterTheEndIsNot()
{
    for (int run = 0; run < 2; ++run) {
        start({makeNode(5, QStringLiteral("Constant Current"), 1)});
        sendSample(11.0, 1.0, 4.0);
        _bench->instrument.send(NT_EXPERIMENT_DONE, 0, wire(quint64(0), quint8(1)));
        sendSample(12.0, 1.0, 9.0);
        QVERIFY(_bench->settle());
        QCOMPARE(_active->size(), run + 1);
        QCOMPARE(_active->at(run).at(1).value<VekDCData>().cumulativeChargeAbs, 4.0);
        QCOMPARE(_idle->size(), run + 1);
        QCOMPARE(_idle->at(run).at(1).value<VekDCData>().cumulativeChargeAbs, 0.0);
    }
}

void TestMainInstrumentHandler::badChargeSpoilsOneRow()
{
    start({makeNode(5, QStringLiteral("Constant Current"), 1)});
    RunLog log(*_bench->device);
    for (const double coulombs : {1.0, qQNaN(), 3.0, qInf(), 2.0})
        sendSample(11.0, 1.0, coulombs);
    QVERIFY(_bench->settle());
    QVector<double> totals;
    for (const VekDCData &data : qAsConst(log.samples))
        totals << (qIsNaN(data.cumulativeChargeNet) ? qInf() : data.cumulativeChargeAbs); // NaN would equal nothing
    QCOMPARE(totals, (QVector<double>{1.0, qInf(), 3.0, qInf(), 4.0}));
}

void TestMainInstrumentHandler::reportsTheLastSampleOfANode_data()
{
    QTest::addColumn<int>("samples");       // one a second, of which each third is due
    QTest::addColumn<QVector<int>>("news"); // notification types, -index for the begin of a node
    QTest::addColumn<QStringList>("lines"); // behind the first element

    const QString second = QStringLiteral("0: second");
    const QString end = QStringLiteral("end");
    const QString atTwo = QStringLiteral("0: 2 s");
    const QString atThree = QStringLiteral("0: 3 s");
    const QString atFive = QStringLiteral("0: 5 s");
    using News = QVector<int>;
    QTest::newRow("completed") << 2 << News{NT_NODE_DONE, -1} << QStringList{atTwo, second};
    QTest::newRow("next element alone") << 2 << News{-1} << QStringList{atTwo, second};
    QTest::newRow("skipped") << 2 << News{NT_NODE_SKIPPED, -1} << QStringList{atTwo, second};
    QTest::newRow("loop") << 2 << News{-2, -1} << QStringList{atTwo, second};
    QTest::newRow("the same again") << 2 << News{NT_NODE_DONE, -0} << QStringList{atTwo};
    QTest::newRow("end of the experiment") << 2 << News{NT_EXPERIMENT_DONE} << QStringList{atTwo, end};
    QTest::newRow("behind one that was due")
        << 5 << News{NT_NODE_DONE, NT_EXPERIMENT_DONE} << QStringList{atThree, atFive, end};
    QTest::newRow("due anyway") << 3 << News{NT_NODE_DONE, -1, NT_EXPERIMENT_DONE} << QStringList{atThree, second, end};
    QTest::newRow("no sample") << 0 << News{NT_NODE_DONE, -1} << QStringList{second};
}

void TestMainInstrumentHandler::reportsTheLastSampleOfANode()
{
    QFETCH(int, samples);
    QFETCH(QVector<int>, news);
    QFETCH(QStringList, lines);
    _bench->device->setLastSampleOfNodeReported(true);
    RunLog log(*_bench->device);
    Node again = makeNode(5, QStringLiteral("first"), 1, 3);
    again.newSubStep = false;
    start({again, makeNode(4, QStringLiteral("second"), 2, 3), makeNode(20, QString(), 1)});
    for (int second = 1; second <= samples; ++second)
        sendSample(10.0 + second, 1.0, second);
    for (const int type : news) {
        if (type <= 0)
            _bench->instrument.send(NT_NODE_BEGIN, 0, nodeBegin(quint16(-type)));
        else
            _bench->instrument.send(Notifications_t(type), 0, QByteArray(type == NT_NODE_DONE ? 12 : 9, '\1'));
    }
    QVERIFY(_bench->settle());
    QCOMPARE(log.lines, QStringList(QStringLiteral("0: first")) + lines);
    if (samples > 0)
        QCOMPARE(log.samples.last().cumulativeChargeNet, double(samples));
}

void TestMainInstrumentHandler::lastSampleThatTheVoltageFilterDropped()
{
    _bench->device->setLastSampleOfNodeReported(true);
    Node node = makeNode(4, QStringLiteral("Constant Potential"), 1);
    node.voltageDifferent = 0.5;
    start({node});
    sendSample(11.0, 1.0);
    sendSample(12.0, 1.25);
    sendSample(13.0, 1.375);
    _bench->instrument.send(NT_NODE_DONE, 0, QByteArray(12, '\0'));
    sendSample(14.0, 1.75); // far enough from 1 V, not from what was reported last
    QVERIFY(_bench->settle());
    QCOMPARE(timesOf(*_active), (QVector<double>{1.0, 3.0}));
    QVERIFY(isClose(_active->at(1).at(1).value<VekDCData>().workingElectrodeVoltage, 1.375));
}

void TestMainInstrumentHandler::lastSampleBeforeAPause()
{
    _bench->device->setLastSampleOfNodeReported(true);
    start({makeNode(5, QStringLiteral("Constant Current"), 1, 9)});
    sendSample(11.0, 1.0, 1.0);
    _bench->instrument.send(NT_EXPERIMENT_PAUSED, 0);
    sendSample(12.0, 1.0, 7.0);
    _bench->instrument.send(NT_NODE_DONE, 0, QByteArray(12, '\0'));
    QVERIFY(_bench->settle());
    QCOMPARE(timesOf(*_active), QVector<double>{1.0});
    QCOMPARE(_active->at(0).at(1).value<VekDCData>().cumulativeChargeAbs, 1.0);
}

void TestMainInstrumentHandler::lastSampleFollowsTheSwitch()
{
    start({makeNode(5, QStringLiteral("Constant Current"), 1, 9)});
    double second = 10.0;
    for (const bool isWanted : {false, true, false}) {
        _bench->device->setLastSampleOfNodeReported(!isWanted);
        sendSample(++second, 1.0);
        QVERIFY(_bench->settle());
        _bench->device->setLastSampleOfNodeReported(isWanted); // in the middle of the node
        sendSample(++second, 1.0);
        QVERIFY(_bench->settle());
        _bench->instrument.send(NT_NODE_DONE, 0, QByteArray(12, '\0'));
    }
    QVERIFY(_bench->settle());
    QCOMPARE(timesOf(*_active), QVector<double>{4.0});
}

void TestMainInstrumentHandler::lastSampleOfAFreeChannelStaysDropped()
{
    QSignalSpy recovered(_bench->device.get(), &VekInstrumentHandler::recoveryDCDataReady);
    _bench->device->setLastSampleOfNodeReported(true);
    ChannelHandler &channel = *_bench->handler->getChannelHandlers().at(0);
    channel.setRunningExperimentMode(ChannelHandler::MODE_RECOVERY);
    channel.setDataStatus(ChannelHandler::DATA_STARTED);
    sendSample(11.0, 1.0);
    _bench->instrument.send(NT_NODE_DONE, 0, QByteArray(12, '\0'));
    QVERIFY(_bench->settle());
    QVERIFY(recovered.isEmpty());
}

void TestMainInstrumentHandler::reportsTheLastSampleOfEachGroup()
{
    start({makeNode(5, QStringLiteral("Constant Current"), 1, 3)});
    for (int second = 11; second <= 17; ++second)
        sendSample(second, 1.0, second);
    QVERIFY(_bench->settle());
    QCOMPARE(timesOf(*_active), (QVector<double>{3.0, 6.0}));
    QCOMPARE(_active->at(1).at(1).value<VekDCData>().cumulativeChargeAbs, 16.0);
}

void TestMainInstrumentHandler::pausedSamplesCountTheirChargeOnly()
{
    start({makeNode(5, QStringLiteral("Constant Current"), 1, 2)});
    QSignalSpy pauses(_bench->device.get(), &VekInstrumentHandler::experimentPaused);
    QSignalSpy resumptions(_bench->device.get(), &VekInstrumentHandler::experimentResumed);
    sendSample(11.0, 1.0, 1.0);
    _bench->instrument.send(NT_EXPERIMENT_PAUSED, 0);
    sendSample(12.0, 1.0, 2.0); // would be due
    sendSample(13.0, 1.0, 4.0);
    _bench->instrument.send(NT_EXPERIMENT_RESUMED, 0);
    sendSample(14.0, 1.0, 8.0);
    QVERIFY(_bench->settle());
    QCOMPARE(pauses.size(), 1);
    QCOMPARE(resumptions.size(), 1);
    QCOMPARE(timesOf(*_active), QVector<double>{4.0});
    QCOMPARE(_active->at(0).at(1).value<VekDCData>().cumulativeChargeNet, 8.0);
}

void TestMainInstrumentHandler::filtersByChangeOfVoltage()
{
    Node node = makeNode(4, QStringLiteral("Constant Potential"), 1);
    node.voltageDifferent = 0.1;
    start({node});
    int second = 10;
    for (const double volts : {0.05, 0.2, 0.25, 0.35, 0.2})
        sendSample(++second, volts);
    QVERIFY(_bench->settle());
    QCOMPARE(timesOf(*_active), (QVector<double>{2.0, 4.0, 5.0}));
}

void TestMainInstrumentHandler::manualSamplesBeginWithTheFirstOfAGroup()
{
    QCOMPARE(_bench->handler->startManualExperiment(0), VekErrorCode::Success);
    QCOMPARE(_bench->handler->setManualModeSamplingInterval(0, 3.0), VekErrorCode::Success);
    _bench->instrument.send(NT_DATA_BEGIN, 0, wire(quint64(0))); // no tick: the clock begins with the first sample
    for (int second = 11; second <= 17; ++second)
        sendSample(second, 1.0);
    QVERIFY(_bench->settle());
    QCOMPARE(timesOf(*_active), (QVector<double>{0.0, 3.0, 6.0}));
}

void TestMainInstrumentHandler::manualIntervalHoldsFromTheNextSampleOn()
{
    QCOMPARE(_bench->handler->startManualExperiment(0), VekErrorCode::Success);
    _bench->instrument.send(NT_DATA_BEGIN, 0, wire(10 * ticksPerSecond));
    double second = 10.0;
    const auto sampleFor = [&](int seconds, double interval) {
        QCOMPARE(_bench->handler->setManualModeSamplingInterval(0, interval), VekErrorCode::Success);
        for (int i = 0; i < seconds; ++i)
            sendSample(++second, 1.0);
        QVERIFY(_bench->settle());
    };
    sampleFor(3, 3600.0);
    sampleFor(3, 2.0); // not to wait for the end of the hour
    sampleFor(4, 3.0); // what the short interval promised comes first
    QCOMPARE(timesOf(*_active), (QVector<double>{1.0, 5.0, 7.0, 10.0}));
}

void TestMainInstrumentHandler::announcesNodes()
{
    Node second = makeNode(5, QStringLiteral("Constant Current"), 2);
    second.newSubStep = false;
    start({makeNode(1, QStringLiteral("Open Circuit"), 1), makeNode(5, QStringLiteral("Constant Current"), 2), second,
           makeNode(20, QString(), 2), makeNode(0, QStringLiteral("Experiment Complete"), 2)});
    for (const quint16 index : {1, 2, 3, 1, 2, 3, 4})
        _bench->instrument.send(NT_NODE_BEGIN, 0, nodeBegin(index));
    QVERIFY(_bench->settle());
    QStringList announced;
    for (const QVariantList &arguments : qAsConst(*_nodes)) {
        const auto node = arguments[1].value<VekExperimentNode>();
        announced << QStringLiteral("%1 %2 %3 %4")
                         .arg(node.stepName)
                         .arg(node.stepNumber)
                         .arg(node.cycleNumber)
                         .arg(node.substepNumber);
    }
    QCOMPARE(announced, (QStringList{QStringLiteral("Open Circuit 1 1 0"), QStringLiteral("Constant Current 2 1 0"),
                                     QStringLiteral("Constant Current 2 2 0")}));
    QVERIFY(!_bench->handler->getChannelHandlers().at(0)->isCellOn()); // the end switched it off
}

void TestMainInstrumentHandler::clampsTheIndexOfANode()
{
    start({makeNode(1, QStringLiteral("first"), 1), makeNode(5, QStringLiteral("last"), 2)});
    _bench->instrument.send(NT_NODE_BEGIN, 0, nodeBegin(40000));
    _bench->instrument.send(NT_NODE_BEGIN, 1, nodeBegin(3)); // a channel without nodes
    QVERIFY(_bench->settle());
    QCOMPARE(_nodes->size(), 2);
    QCOMPARE(_nodes->at(1).at(1).value<VekExperimentNode>().stepName, QStringLiteral("last"));
}

void TestMainInstrumentHandler::averagesTheRecordsOfAnImpedancePoint()
{
    QSignalSpy points(_bench->device.get(), &VekInstrumentHandler::activeACDataReady);
    start({makeNode(int(NodeType_t::EisVoltage), QStringLiteral("Potentiostatic EIS"), 1)});
    for (const double seconds : {11.0, 11.25, 11.5})
        _bench->instrument.send(NT_AC_DATA, 0, acRecord(seconds));
    QVERIFY(_bench->settle());
    QVERIFY(points.isEmpty());
    _bench->instrument.send(NT_AC_SAMPLE_DONE, 0);
    _bench->instrument.send(NT_AC_SAMPLE_DONE, 0); // nothing measured: a point of zeros
    QVERIFY(_bench->settle());
    QCOMPARE(points.size(), 2);
    const auto point = points.at(0).at(1).value<VekACData>();
    QCOMPARE(point.timestamp, 1.5);
    QCOMPARE(point.frequency, 64.0);
    QVERIFY(qAbs(point.absoluteImpedance - 100.0) < 1e-3);
    QVERIFY(qAbs(point.realImpedance - 100.0) < 1e-3);
    QVERIFY(qAbs(point.phaseAngle) < 1e-3);
    QVERIFY(qAbs(point.voltageAmplitude - 0.5) < 1e-4);
    QVERIFY(qAbs(point.currentAmplitude - 0.005) < 1e-6);
    QCOMPARE(point.numberOfCycles, 15.0);
    const auto zeros = points.at(1).at(1).value<VekACData>();
    QCOMPARE(zeros.timestamp, -10.0);
    QCOMPARE(zeros.absoluteImpedance, 0.0);
}

void TestMainInstrumentHandler::nodesDoNotMixTheirImpedancePoints_data()
{
    QTest::addColumn<QVector<int>>("nodes"); // what begins behind the broken-off first one

    QTest::newRow("next node") << QVector<int>{1};
    QTest::newRow("same node") << QVector<int>{0};
    QTest::newRow("loop") << QVector<int>{2, 0};
    QTest::newRow("another technique between") << QVector<int>{3, 1};
}

void TestMainInstrumentHandler::nodesDoNotMixTheirImpedancePoints()
{
    QFETCH(QVector<int>, nodes);
    QSignalSpy points(_bench->device.get(), &VekInstrumentHandler::activeACDataReady);
    Node second = makeNode(int(NodeType_t::EisVoltage), QStringLiteral("Potentiostatic EIS"), 1);
    second.newSubStep = false; // another frequency of the same element: nothing to announce
    start({second, second, makeNode(20, QString(), 1), makeNode(1, QStringLiteral("Open Circuit"), 2)});
    _bench->instrument.send(NT_AC_DATA, 0, acRecord(11.0));
    _bench->instrument.send(NT_AC_DATA, 0, acRecord(11.25));
    _bench->instrument.send(NT_NODE_DONE, 0, QByteArray(12, '\0'));
    for (const int node : nodes)
        _bench->instrument.send(NT_NODE_BEGIN, 0, nodeBegin(quint16(node)));
    _bench->instrument.send(NT_AC_DATA, 0, acRecord(12.0));
    _bench->instrument.send(NT_AC_SAMPLE_DONE, 0);
    QVERIFY(_bench->settle());
    QCOMPARE(points.size(), 1);
    QCOMPARE(points.at(0).at(1).value<VekACData>().numberOfCycles, 5.0); // those of one record
}

void TestMainInstrumentHandler::finishesImpedancePointsOnlyInARun()
{
    QSignalSpy points(_bench->device.get(), &VekInstrumentHandler::activeACDataReady);
    QSignalSpy recovered(_bench->device.get(), &VekInstrumentHandler::recoveryACDataReady);
    const ChannelHandler &channel = *_bench->handler->getChannelHandlers().at(0);
    _bench->instrument.send(NT_AC_DATA, 0, acRecord(1.0));
    _bench->instrument.send(NT_AC_SAMPLE_DONE, 0);
    QVERIFY(_bench->settle());
    QCOMPARE(channel.ac.points.size(), std::size_t(1));

    start({makeNode(int(NodeType_t::EisVoltage), QStringLiteral("Potentiostatic EIS"), 1)});
    _bench->instrument.send(NT_EXPERIMENT_PAUSED, 0);
    _bench->instrument.send(NT_AC_SAMPLE_DONE, 0);
    _bench->instrument.send(NT_EXPERIMENT_RESUMED, 0);
    QVERIFY(_bench->settle());
    QVERIFY(channel.ac.points.empty());
    QVERIFY(points.isEmpty());

    _bench->handler->getChannelHandlers().at(0)->setRunningExperimentMode(ChannelHandler::MODE_RECOVERY);
    _bench->instrument.send(NT_AC_DATA, 0, acRecord(12.0));
    _bench->instrument.send(NT_AC_SAMPLE_DONE, 0);
    QVERIFY(_bench->settle());
    QVERIFY(points.isEmpty());
    QCOMPARE(recovered.size(), 1);
}

void TestMainInstrumentHandler::dropsPacketsThatDoNotFit()
{
    start({makeNode(5, QStringLiteral("Constant Current"), 1)});
    const QByteArray sample = bytesOfRecord(dcRecord(11.0, 1.0, 0.001, 5.0));
    _bench->instrument.send(NT_DC_DATA, 0, sample.left(43));
    _bench->instrument.send(NT_DC_DATA_92, 0, sample + '\0');
    _bench->instrument.send(NT_DC_DATA_102, 7, sample); // no such channel
    _bench->instrument.send(NT_NODE_DONE, 0, QByteArray(11, '\0'));
    QTest::ignoreMessage(QtWarningMsg,
                         "Bench-1 channel 1: Experiment Node Data size incompatible with current software. Check that "
                         "the present software version and hardware firmware version are compatible");
    _bench->instrument.send(NT_NODE_BEGIN, 0, nodeBegin(0).left(9));
    for (const Notifications_t type : {NT_DATA_BEGIN, NT_EXPERIMENT_PAUSED, NT_NODE_DONE, NT_EXPERIMENT_DONE})
        _bench->instrument.send(type, 200);
    QVERIFY(_bench->settle());
    QVERIFY(_active->isEmpty());
    QCOMPARE(_nodes->size(), 1);
    QCOMPARE(_bench->handler->getChannelHandlers().at(0)->capacity.getExperimentAbs_C(), 0.0);
}

void TestMainInstrumentHandler::modelsOfNoLineStaySilent()
{
    makeBench(HardwareModel_t::Cedar);
    start({makeNode(5, QStringLiteral("Constant Current"), 1)});
    sendSample(11.0, 1.0);
    QVERIFY(_bench->settle());
    QVERIFY(_nodes->isEmpty() && _active->isEmpty() && _idle->isEmpty());
}

void TestMainInstrumentHandler::endsExperiments_data()
{
    using End = VekExperimentEnd;
    QTest::addColumn<QByteArray>("payload");
    QTest::addColumn<End>("end");
    QTest::addColumn<QString>("reason");

    const auto type = [](int number) { return wire(quint64(0), quint8(number)); };
    const QString stopped = QStringLiteral("Experiment stopped: ");
    const QString unknown = stopped + "unknown reason.";
    // clang-format off
    QTest::newRow("completed")     << type(1)  << End::Completed          << "Experiment completed";
    QTest::newRow("user")          << type(2)  << End::StoppedByUser      << "Experiment stopped by user";
    QTest::newRow("least current") << type(3)  << End::CurrentMinimum
                                   << stopped + "current exceeded user specified Current Min safety limit";
    QTest::newRow("most current")  << type(4)  << End::CurrentMaximum
                                   << stopped + "current exceeded user specified Current Max safety limit";
    QTest::newRow("least voltage") << type(5)  << End::VoltageMinimum
                                   << stopped + "voltage exceeded user specified Voltage Min safety limit";
    QTest::newRow("most voltage")  << type(6)  << End::VoltageMaximum
                                   << stopped + "voltage exceeded user specified Voltage Max safety limit";
    QTest::newRow("temperature")   << type(7)  << End::TemperatureMaximum
                                   << stopped + "temperature exceeded user specified Temperature Max safety limit";
    QTest::newRow("thermocouple")  << type(8)  << End::NoTemperature
                                   << stopped + "temperature safety limit set but no temperature data received from "
                                                "thermocouple";
    QTest::newRow("overheated")    << type(9)  << End::Overheated          << stopped + "instrument overheated";
    QTest::newRow("own current")   << type(10) << End::CurrentOfInstrument << stopped + "current exceeded instrument limits";
    QTest::newRow("own voltage")   << type(11) << End::VoltageOfInstrument << stopped + "voltage exceeded instrument limits";
    QTest::newRow("pulse")         << type(12) << End::PulseCurrent
                                   << stopped + "current exceeded maximum current expected in pulse experiment";
    QTest::newRow("control")       << type(13) << End::ControlFault        << stopped + "control fault";
    QTest::newRow("node")          << type(14) << End::InvalidNode         << stopped + "invalid configuration of a node";
    QTest::newRow("recovery")      << type(15) << End::RecoveryAction      << stopped + "recovery data action";
    QTest::newRow("not idle")      << type(16) << End::NotIdle
                                   << stopped + "command sent that required device to be in an idle state";
    QTest::newRow("of the future") << type(17) << End::UnknownReason       << unknown;
    QTest::newRow("cut short")     << wire(quint64(1)) << End::UnknownReason << unknown;
    // clang-format on
}

void TestMainInstrumentHandler::endsExperiments()
{
    QFETCH(QByteArray, payload);
    QFETCH(VekExperimentEnd, end);
    QFETCH(QString, reason);
    QSignalSpy ends(_bench->device.get(), &VekInstrumentHandler::experimentStopped);
    QSignalSpy values(_bench->device.get(), &VekInstrumentHandler::experimentEnded);
    start({makeNode(5, QStringLiteral("Constant Current"), 1)});
    _bench->instrument.send(NT_EXPERIMENT_DONE, 0, payload);
    sendSample(12.0, 1.0);
    QVERIFY(_bench->settle());
    QCOMPARE(ends.size(), 1);
    QCOMPARE(ends.at(0).at(1).toString(), reason);
    QCOMPARE(values, (QList<QVariantList>{{ends.at(0).at(0), QVariant::fromValue(end), reason}}));
    QVERIFY(!_bench->device->isChannelBusy(0));
    QCOMPARE(_bench->device->getExperimentUTCStartTime(0), 0.0);
    QCOMPARE(timesOf(*_idle), QVector<double>{12.0});
    QCOMPARE(_bench->handler->startUploadedExperiment(0), VekErrorCode::ExperimentNotUploaded);
}

void TestMainInstrumentHandler::alarmsStopTheChannel()
{
    QSignalSpy errors(_bench->device.get(), &VekInstrumentHandler::deviceError);
    QTest::ignoreMessage(QtWarningMsg, "Bench-1 channel 1: The current has exceeded instrument limits!");
    _bench->instrument.send(NT_OVERCURRENT, 1);
    QVERIFY(_bench->settle());
    QCOMPARE(errors.size(), 1);
    QCOMPARE(errors.at(0).at(1).toString(), QStringLiteral("Critical : The current has exceeded instrument limits!"));
    QTRY_COMPARE(_bench->instrument.count(PC_EXPERIMENT_STOP), 1);
    QCOMPARE(int(_bench->instrument.commands().last().channel), 1);
}

void TestMainInstrumentHandler::alarmsForNoChannelStopNothing()
{
    QSignalSpy errors(_bench->device.get(), &VekInstrumentHandler::deviceError);
    for (const unsigned char channel : {2, 255}) { // it has two
        const QString text =
            QStringLiteral("Too hot. (The instrument named channel %1, which it does not have; nothing "
                           "was stopped.)")
                .arg(channel);
        QTest::ignoreMessage(QtWarningMsg, qPrintable(QStringLiteral("Bench-1 channel %1: %2").arg(channel).arg(text)));
        _bench->instrument.send(NT_ERROR_TEXT, channel, "Too hot.");
        QVERIFY(_bench->settle());
        QCOMPARE(errors.last(),
                 (QVariantList{QVariant::fromValue<unsigned char>(channel), QStringLiteral("Critical : ") + text}));
    }
    QVERIFY(_bench->flush());
    QCOMPARE(_bench->instrument.count(PC_EXPERIMENT_STOP), 0);
}

void TestMainInstrumentHandler::passesTheStateOfTheMemoryOn()
{
    QSignalSpy erased(_bench->device.get(), &VekInstrumentHandler::recoverDataErased);
    int starts = 0;
    connect(_bench->handler.get(), &VekInstrumentHandlerPrivate::memoryDataStarting, this, [&starts] { ++starts; });
    for (const QByteArray &payload : {wire(quint8(0)), wire(quint8(3)), wire(quint16(1)), QByteArray()}) {
        _bench->instrument.send(NT_MEMORY_DATA_START, 0, payload);
        _bench->instrument.send(NT_MEMORY_DATA_ERASED, 0, payload);
    }
    QVERIFY(_bench->settle());
    _bench->handler->disconnect(this);
    QCOMPARE(starts, 1);
    QCOMPARE(erased.size(), 2);
    QCOMPARE(erased.at(0).at(0).toBool(), false);
    QCOMPARE(erased.at(1).at(0).toBool(), true);
}

NIMBRELLE_TEST_MAIN(TestMainInstrumentHandler)
#include "TestMainInstrumentHandler.moc"
