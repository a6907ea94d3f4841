// SPDX-License-Identifier: MIT
#include "Bench.h"

#include "calibration/Records.h"

#include "support/TestMain.h"

namespace {

using Packet = Bench::Packet;

ExpNode_t current(float amperes, float seconds, float interval)
{
    return timed(Vek_Node_Constant_Current(interval, amperes, 0.0f), seconds);
}

/// Where a value may lie.
struct Bounds {
    double low = 0.0;
    double high = 0.0;
    bool hold(double value) const { return value > low && value < high; }
};

Bounds about(double value)
{
    return {value - 2e-5, value + 2e-5};
}

/// The end of a range, which is up to 13 % beyond its full scale.
Bounds endOf(double fullScale)
{
    return {fullScale, 1.13 * fullScale};
}

} // namespace

Q_DECLARE_METATYPE(Bounds)

class TestSimulatedInstrument : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void answersTheHandshake();
    void staysSilentOnTheEchoTest();
    void reportsARunInOrder();
    void refusesNodes_data();
    void refusesNodes();
    void refusesWhatTheStateForbids();
    void pausesAndResumes();
    void stopsOnRequest();
    void runsChannelsAgainstEachOtherInTime();
    void samplesIdly();
    void obeysByHand();
    void judgesManualSettings();
    void endsAnExperimentWithoutAThermocouple();
    void keepsALimitOfTheTemperature();
    void clipsAtTheEndsOfAFixedRange_data();
    void clipsAtTheEndsOfAFixedRange();
    void clipsWhatIsSetByHand();
    void stopsAtANodeWhoseRangeDoesNotExist();
    void tellsWhichChannelsRun();
    void refusesAsAsked_data();
    void refusesAsAsked();
    void namesTheChannelsOfTheSdCard();
    void servesItsTables_data();
    void servesItsTables();
    void measuresImpedance();
    void writesTruthAndPasses();
    void runsAtItsSpeed();
    void waitsForASlowReader();
    void faultsOfAnswers_data();
    void faultsOfAnswers();
    void losesAcknowledgements();
    void framesSurviveGarbageAndSplitting_data();
    void framesSurviveGarbageAndSplitting();
    void raisesAlarms();
    void pullsTheCable();
    void givesTheSameBytesForTheSameSeed();
};

void TestSimulatedInstrument::answersTheHandshake()
{
    Bench bench({}, 3);
    for (const PCcommand_t command :
         {PC_PING, PC_READ_HARDWARE_VERSION, PC_READ_CHANNEL_COUNT, PC_READ_FIRMWARE_CHECKSUM, PC_READ_FIRMWARE_VERSION,
          PC_READ_DEVICE_STATUS, PC_READ_META_DATA, PC_READ_GROUND_FLOAT, PC_ERASE_MEMORY_DATA})
        bench.host->SendCommand(command);
    bench.host->SendCommand(PC_READ_MEMORY_DATA, 0, packed(quint8(1)));
    bench.host->SendCommand(PC_READ_FLASH_CAL, 2);
    QVERIFY(bench.await(NT_RAW_CAL_DATA));
    QCOMPARE(bench.types(),
             (QVector<int>{NT_PING_REPLY, NT_HARDWARE_VERSION, NT_CHANNEL_COUNT, NT_FIRMWARE_CHECKSUM,
                           NT_FIRMWARE_VERSION, NT_DEVICE_STATUS, NT_TIME_REQUEST, NT_META_DATA, NT_GROUND_FLOAT,
                           NT_MEMORY_DATA_ERASED, NT_MEMORY_DATA_START, NT_RAW_CAL_DATA}));
    QCOMPARE(bench.payload(NT_HARDWARE_VERSION).size(), 256);
    QCOMPARE(bench.payload(NT_HARDWARE_VERSION).left(7), QByteArray("\x23"
                                                                    "Bench\n"));
    QCOMPARE(bench.payload(NT_CHANNEL_COUNT), QByteArray("\x03"));
    QCOMPARE(bench.payload(NT_META_DATA).size(), 56);
    QCOMPARE(bench.payload(NT_RAW_CAL_DATA).size(), 376);
    QCOMPARE(bench.packets.last().channel, 2u);
}

void TestSimulatedInstrument::staysSilentOnTheEchoTest()
{
    Bench bench;
    bench.host->SendCommand(PC_ECHO_TEST);
    bench.host->SendCommand(PC_PING);
    QVERIFY(bench.await(NT_PING_REPLY));
    QCOMPARE(bench.packets.size(), 1);
}

void TestSimulatedInstrument::reportsARunInOrder()
{
    Bench bench;
    bench.upload({current(1e-3f, 2.0f, 1.0f), endNode()});
    bench.host->SendCommand(PC_EXPERIMENT_START);
    QVERIFY(bench.await(NT_EXPERIMENT_DONE));
    QCOMPARE(bench.types(),
             (QVector<int>{NT_NODE_APPENDED, NT_NODE_APPENDED, NT_GENERAL_ACK, NT_DATA_BEGIN, NT_NODE_BEGIN, NT_DC_DATA,
                           NT_DC_DATA, NT_NODE_DONE, NT_NODE_BEGIN, NT_EXPERIMENT_DONE}));
    const QByteArray start = bench.payload(NT_DATA_BEGIN);
    QCOMPARE(start.size(), 8);
    QCOMPARE(bench.payload(NT_NODE_BEGIN), start + QByteArray(2, '\0'));
    QCOMPARE(bench.payload(NT_DC_DATA).size(), 44);
    QCOMPARE(readAt<quint64>(bench.payload(NT_DC_DATA, 1), 24) - readAt<quint64>(start, 0), quint64(2e8));
    QCOMPARE(bench.payload(NT_NODE_DONE).size(), 12);
    QCOMPARE(bench.payload(NT_EXPERIMENT_DONE).size(), 9);
    QCOMPARE(bench.payload(NT_EXPERIMENT_DONE).at(8), char(STOP_COMPLETED));
}

void TestSimulatedInstrument::refusesNodes_data()
{
    QTest::addColumn<int>("announced");
    QTest::addColumn<QByteArray>("record");
    QTest::addColumn<int>("code");
    ExpNode_t unknown = current(1.0f, 1.0f, 1.0f);
    unknown.type = 22;
    QTest::newRow("good") << 1 << packed(endNode()) << int(FW_SUCCESS);
    QTest::newRow("beyond the announced number") << 0 << packed(endNode()) << int(FW_NODE_NOT_APPENDED);
    QTest::newRow("unannounced") << -1 << packed(endNode()) << int(FW_NODE_NOT_APPENDED);
    QTest::newRow("type without a meaning") << 1 << packed(unknown) << int(FW_NODE_NOT_APPENDED);
    QTest::newRow("short record") << 1 << QByteArray(63, '\0') << int(FW_BAD_PARAMETERS);
}

void TestSimulatedInstrument::refusesNodes()
{
    QFETCH(int, announced);
    QFETCH(QByteArray, record);
    Bench bench;
    if (announced >= 0)
        bench.host->SendCommand(PC_NODE_LIST_BEGIN, 0, packed(quint16(announced)));
    bench.host->SendCommand(PC_NODE_APPEND, 0, record);
    QVERIFY(bench.await(NT_NODE_APPENDED));
    QTEST(int(bench.payload(NT_NODE_APPENDED).at(0)), "code");
}

void TestSimulatedInstrument::refusesWhatTheStateForbids()
{
    Bench bench({}, 1, 1.0);
    QCOMPARE(bench.acknowledged(PC_EXPERIMENT_START), int(FW_NO_EXPERIMENT));
    for (const PCcommand_t command : {PC_EXPERIMENT_STOP, PC_EXPERIMENT_PAUSE, PC_EXPERIMENT_RESUME, PC_SKIP_STEP,
                                      PC_MANUAL_OCP, PC_MANUAL_GALVANO_SETPOINT})
        QCOMPARE(bench.acknowledged(command), int(FW_BAD_CHANNEL_STATE));
    bench.host->SendCommand(PC_NODE_LIST_BEGIN, 0, packed(quint16(2)));
    bench.host->SendCommand(PC_NODE_APPEND, 0, packed(endNode()));
    bench.host->SendCommand(PC_NODE_LIST_END);
    QCOMPARE(bench.acknowledged(PC_EXPERIMENT_START), int(FW_NO_EXPERIMENT)); // one node is missing
    bench.upload({current(1e-3f, 1000.0f, 1.0f), endNode()});
    QCOMPARE(bench.acknowledged(PC_EXPERIMENT_START), int(FW_SUCCESS));
    QCOMPARE(bench.acknowledged(PC_EXPERIMENT_START), int(FW_CHANNEL_NOT_IDLE));
    QCOMPARE(bench.acknowledged(PC_DEFAULT_SAMPLING), int(FW_CHANNEL_NOT_IDLE));
    QCOMPARE(bench.acknowledged(PC_MANUAL_START), int(FW_MANUAL_START_FAILED));
    QCOMPARE(bench.acknowledged(PC_EXPERIMENT_RESUME), int(FW_BAD_CHANNEL_STATE));
    QCOMPARE(bench.acknowledged(PC_FF_IMPEDANCE, QByteArray(4, '\0')), int(FW_NOT_SUPPORTED));
    bench.host->SendCommand(PC_NODE_APPEND, 0, packed(endNode()));
    QVERIFY(bench.await(NT_NODE_APPENDED, 4));
    QCOMPARE(bench.payload(NT_NODE_APPENDED, 3).at(0), char(FW_CHANNEL_NOT_IDLE));
}

void TestSimulatedInstrument::pausesAndResumes()
{
    Bench bench({}, 1, 100.0);
    bench.upload({current(1e-3f, 60.0f, 1.0f), endNode()});
    bench.host->SendCommand(PC_EXPERIMENT_START);
    QVERIFY(bench.await(NT_DC_DATA, 3));
    QCOMPARE(bench.acknowledged(PC_EXPERIMENT_PAUSE), int(FW_SUCCESS));
    QVERIFY(bench.await(NT_EXPERIMENT_PAUSED));
    const int sent = bench.count(NT_DC_DATA);
    QCOMPARE(bench.acknowledged(PC_SKIP_STEP), int(FW_BAD_CHANNEL_STATE));
    QTest::qWait(50); // five seconds of the instrument's time
    QCOMPARE(bench.count(NT_DC_DATA), sent);
    QCOMPARE(bench.acknowledged(PC_EXPERIMENT_RESUME), int(FW_SUCCESS));
    QVERIFY(bench.await(NT_EXPERIMENT_DONE));
    QCOMPARE(bench.count(NT_EXPERIMENT_RESUMED), 1);
    QCOMPARE(bench.count(NT_DC_DATA), 60);
}

void TestSimulatedInstrument::stopsOnRequest()
{
    Bench bench({}, 1, 100.0);
    bench.upload({current(1e-3f, 6000.0f, 1.0f), endNode()});
    bench.host->SendCommand(PC_EXPERIMENT_START);
    QVERIFY(bench.await(NT_DC_DATA, 3));
    QCOMPARE(bench.acknowledged(PC_EXPERIMENT_STOP), int(FW_SUCCESS));
    QVERIFY(bench.await(NT_EXPERIMENT_DONE));
    QCOMPARE(bench.payload(NT_EXPERIMENT_DONE).at(8), char(STOP_BY_USER));
    QCOMPARE(bench.packets.at(bench.packets.size() - 2).type, NT_NODE_DONE);
}

void TestSimulatedInstrument::runsChannelsAgainstEachOtherInTime()
{
    Bench bench({}, 2, 100.0);
    for (const quint8 channel : {quint8(0), quint8(1)})
        bench.upload({current(1e-3f, 20.0f, 1.0f), endNode()}, channel);
    bench.host->SendCommand(PC_EXPERIMENT_START, 255);
    QVERIFY(bench.await(NT_EXPERIMENT_DONE, 2));
    quint64 latest = 0;
    for (const Packet &packet : bench.packets) {
        if (packet.type != NT_DC_DATA)
            continue;
        const quint64 tick = readAt<quint64>(packet.payload, 24);
        QVERIFY(tick >= latest);
        latest = tick;
    }
    QCOMPARE(bench.count(NT_DC_DATA), 40);
}

void TestSimulatedInstrument::samplesIdly()
{
    Bench bench({}, 1, 200.0);
    QCOMPARE(bench.acknowledged(PC_DEFAULT_SAMPLING), int(FW_SUCCESS));
    QVERIFY(bench.await(NT_DC_DATA, 3));
    QCOMPARE(bench.count(NT_DATA_BEGIN), 0);
    bench.host->SendCommand(PC_READ_HARDWARE_VERSION); // a new connection
    QVERIFY(bench.await(NT_HARDWARE_VERSION));
    const int sent = bench.count(NT_DC_DATA);
    QTest::qWait(50);
    QCOMPARE(bench.count(NT_DC_DATA), sent);
}

void TestSimulatedInstrument::obeysByHand()
{
    Bench bench({}, 1, 200.0);
    QCOMPARE(bench.acknowledged(PC_MANUAL_START), int(FW_SUCCESS));
    QVERIFY(bench.await(NT_DATA_BEGIN));
    QCOMPARE(bench.acknowledged(PC_MANUAL_SAMPLING_PARAMS, packed(0.5f)), int(FW_SUCCESS));
    QCOMPARE(bench.acknowledged(PC_MANUAL_GALVANO_SETPOINT, packed(1e-3f)), int(FW_SUCCESS));
    QVERIFY(bench.await(NT_DC_DATA, bench.count(NT_DC_DATA) + 3));
    const QByteArray earlier = bench.payload(NT_DC_DATA, bench.count(NT_DC_DATA) - 2);
    const QByteArray later = bench.payload(NT_DC_DATA, bench.count(NT_DC_DATA) - 1);
    QCOMPARE(readAt<quint64>(later, 24) - readAt<quint64>(earlier, 24), quint64(5e7));
    QVERIFY(std::abs(readAt<double>(later, 16) - readAt<double>(earlier, 16) - 0.5e-3) < 1e-9);
    QCOMPARE(bench.acknowledged(PC_EXPERIMENT_STOP), int(FW_SUCCESS));
    QVERIFY(bench.await(NT_EXPERIMENT_DONE));
    QCOMPARE(bench.payload(NT_EXPERIMENT_DONE).at(8), char(STOP_BY_USER));
}

void TestSimulatedInstrument::judgesManualSettings()
{
    Bench bench({}, 1, 1.0);
    QCOMPARE(bench.acknowledged(PC_MANUAL_START), int(FW_SUCCESS));
    const auto code = [&bench](PCcommand_t command, const QByteArray &data) {
        return bench.acknowledged(command, data);
    };
    QCOMPARE(code(PC_CURRENT_RANGE, packed(quint8(9))), int(FW_SUCCESS));
    QCOMPARE(code(PC_CURRENT_RANGE, packed(quint8(10))), int(FW_SUCCESS));
    QCOMPARE(code(PC_CURRENT_RANGE, packed(quint8(11))), int(FW_BAD_CURRENT_RANGE));
    QCOMPARE(code(PC_VOLTAGE_RANGE, packed(quint8(5))), int(FW_SUCCESS));
    QCOMPARE(code(PC_VOLTAGE_RANGE, packed(quint8(4))), int(FW_BAD_VOLTAGE_RANGE));
    QCOMPARE(code(PC_COMP_RANGE, packed(quint8(11), quint8(0))), int(FW_BAD_BANDWIDTH_INDEX));
    QCOMPARE(code(PC_COMP_RANGE, packed(quint8(0), quint8(11))), int(FW_BAD_STABILITY_INDEX));
    QCOMPARE(code(PC_IR_COMP, packed(-1.0f, 0.5f)), int(FW_BAD_PARAMETERS));
    QCOMPARE(code(PC_MANUAL_POTENTIO_SETPOINT, packed(11.0f)), int(FW_BAD_PARAMETERS));
    QCOMPARE(code(PC_MANUAL_SAMPLING_PARAMS, packed(0.0f)), int(FW_BAD_PARAMETERS));
    QCOMPARE(code(PC_MANUAL_GALVANO_RAW, packed(qint32(100), quint8(10))), int(FW_BAD_CURRENT_RANGE));
    QCOMPARE(code(PC_MANUAL_POTENTIO_RAW, packed(qint32(100), quint8(0))), int(FW_SUCCESS));
    QCOMPARE(code(PC_CHANNEL_LIMITS, QByteArray(16, '\0')), int(FW_BAD_PARAMETERS));
}

void TestSimulatedInstrument::endsAnExperimentWithoutAThermocouple()
{
    Bench bench;
    constexpr float none = std::numeric_limits<float>::infinity();
    QCOMPARE(bench.acknowledged(PC_CHANNEL_LIMITS, packed(-none, none, -none, none, 40.0f)), int(FW_SUCCESS));
    bench.upload({current(1e-3f, 2.0f, 0.1f), endNode()});
    bench.host->SendCommand(PC_EXPERIMENT_START);
    QVERIFY(bench.await(NT_EXPERIMENT_DONE));
    QCOMPARE(bench.payload(NT_EXPERIMENT_DONE).at(8), char(STOP_NO_TEMPERATURE));
    QCOMPARE(bench.count(NT_DC_DATA), 1);
}

void TestSimulatedInstrument::keepsALimitOfTheTemperature()
{
    Bench bench({}, 1, 0.0, HardwareModel_t::Heron_2_4);
    constexpr float none = std::numeric_limits<float>::infinity();
    bench.upload({current(1e-3f, 2.0f, 1.0f), endNode()});
    QCOMPARE(bench.acknowledged(PC_CHANNEL_LIMITS, packed(-none, none, -none, none, 25.5f)), int(FW_SUCCESS));
    bench.host->SendCommand(PC_EXPERIMENT_START);
    QVERIFY(bench.await(NT_EXPERIMENT_DONE));
    QCOMPARE(bench.payload(NT_EXPERIMENT_DONE).at(8), char(STOP_COMPLETED));
    QCOMPARE(bench.acknowledged(PC_CHANNEL_LIMITS, packed(-none, none, -none, none, -20.0f)), int(FW_SUCCESS));
    bench.host->SendCommand(PC_EXPERIMENT_START);
    QVERIFY(bench.await(NT_EXPERIMENT_DONE, 2));
    QCOMPARE(bench.payload(NT_EXPERIMENT_DONE, 1).at(8), char(STOP_TEMPERATURE_MAX));
}

/// What the host reads out of the DC records that have come.
static QVector<ProcessedDCData> readingsOf(Bench &bench)
{
    bench.host->SendCommand(PC_READ_FLASH_CAL);
    bench.await(NT_RAW_CAL_DATA);
    const CalibrationData data = calibrated(HardwareModel_t::Alder_2_5, bench.payload(NT_RAW_CAL_DATA));
    QVector<ProcessedDCData> readings;
    for (const Packet &packet : bench.packets)
        if (packet.type == NT_DC_DATA)
            readings += data.ProcessDCDataPoint(ExperimentalDcData::fromPayload(packet.payload));
    return readings;
}

void TestSimulatedInstrument::clipsAtTheEndsOfAFixedRange_data()
{
    QTest::addColumn<bool>("isCurrent"); // what is set
    QTest::addColumn<double>("setpoint");
    QTest::addColumn<int>("currentRange");    // 4: 0.1 mA
    QTest::addColumn<int>("voltageRange");    // 3: 0.5 V
    QTest::addColumn<Bounds>("milliamperes"); // through the cell, 1 kohm
    QTest::addColumn<Bounds>("readMilliamperes");
    QTest::addColumn<Bounds>("readVolts");
    const int anyI = index(currentRange_t::Auto);
    const int anyV = index(voltageRange_t::Auto);
    QTest::newRow("wide enough") << true << 0.09e-3 << 4 << 3 << about(0.09) << about(0.09) << about(0.09);
    QTest::newRow("automatic") << true << 5e-3 << anyI << anyV << about(5.0) << about(5.0) << about(5.0);
    QTest::newRow("current set") << true << 5e-3 << 4 << anyV << endOf(0.1) << endOf(0.1) << endOf(0.1);
    QTest::newRow("voltage set") << false << 5.0 << anyI << 3 << endOf(0.5) << endOf(0.5) << endOf(0.5);
    QTest::newRow("current read") << false << 5.0 << 4 << anyV << about(5.0) << endOf(0.1) << about(5.0);
    QTest::newRow("voltage read") << true << 5e-3 << anyI << 3 << about(5.0) << about(5.0) << endOf(0.5);
}

void TestSimulatedInstrument::clipsAtTheEndsOfAFixedRange()
{
    QFETCH(bool, isCurrent);
    QFETCH(double, setpoint);
    QFETCH(int, currentRange);
    QFETCH(int, voltageRange);
    QFETCH(Bounds, milliamperes);
    QFETCH(Bounds, readMilliamperes);
    QFETCH(Bounds, readVolts);
    for (const float sign : {1.0f, -1.0f}) {
        Bench bench;
        ExpNode_t node = isCurrent ? current(sign * float(setpoint), 1.0f, 1.0f)
                                   : timed(Vek_Node_Constant_Voltage(1.0f, sign * float(setpoint), false, 0.0f), 1.0f);
        Vek_Node_SetCurrentRange(node, currentRange_t(currentRange));
        Vek_Node_SetVoltageRange(node, voltageRange_t(voltageRange));
        bench.upload({node, endNode()});
        bench.host->SendCommand(PC_EXPERIMENT_START);
        QVERIFY(bench.await(NT_EXPERIMENT_DONE));
        const ProcessedDCData reading = readingsOf(bench).first();
        QVERIFY(milliamperes.hold(1e3 * double(sign) * reading.charge)); // of one second
        QVERIFY(readMilliamperes.hold(1e3 * double(sign) * reading.current));
        QVERIFY(readVolts.hold(double(sign) * reading.workingElectrodeVoltage));
        QCOMPARE(bench.count(NT_CURRENT_RANGE_UP), 0);
    }
}

void TestSimulatedInstrument::clipsWhatIsSetByHand()
{
    Bench bench({}, 1, 200.0);
    QCOMPARE(bench.acknowledged(PC_MANUAL_START), int(FW_SUCCESS));
    QCOMPARE(bench.acknowledged(PC_MANUAL_GALVANO_SETPOINT, packed(5e-3f)), int(FW_SUCCESS));
    for (const auto &[range, volts] : {std::pair(4, endOf(0.1)), std::pair(index(currentRange_t::Auto), about(5.0))}) {
        QCOMPARE(bench.acknowledged(PC_CURRENT_RANGE, packed(quint8(range))), int(FW_SUCCESS));
        QVERIFY(bench.await(NT_DC_DATA, bench.count(NT_DC_DATA) + 2)); // the second one has begun with the range
        QVERIFY(volts.hold(readingsOf(bench).last().workingElectrodeVoltage));
    }
}

void TestSimulatedInstrument::stopsAtANodeWhoseRangeDoesNotExist()
{
    for (const quint8 ranges : {quint8(0xFB), quint8(0x4F)}) { // no current range 11, no voltage range 4
        Bench bench;
        ExpNode_t node = current(1e-3f, 1.0f, 1.0f);
        node.ranges = ranges;
        bench.upload({node, endNode()});
        bench.host->SendCommand(PC_EXPERIMENT_START);
        QVERIFY(bench.await(NT_EXPERIMENT_DONE));
        QCOMPARE(bench.payload(NT_EXPERIMENT_DONE).at(8), char(STOP_BAD_NODE));
    }
}

static int statusOf(Bench &bench)
{
    const int before = bench.count(NT_DEVICE_STATUS);
    bench.host->SendCommand(PC_READ_DEVICE_STATUS);
    bench.await(NT_DEVICE_STATUS, before + 1);
    return readAt<quint16>(bench.payload(NT_DEVICE_STATUS, before), 0);
}

void TestSimulatedInstrument::tellsWhichChannelsRun()
{
    Bench bench({}, 6, 1.0);
    QCOMPARE(bench.acknowledged(PC_DEFAULT_SAMPLING, {}, 3), int(FW_SUCCESS));
    QCOMPARE(statusOf(bench), 1 << 8); // sampling idly is no run
    for (const quint8 channel : {quint8(1), quint8(5)}) {
        bench.upload({current(1e-3f, 1000.0f, 1.0f), endNode()}, channel);
        QCOMPARE(bench.acknowledged(PC_EXPERIMENT_START, {}, channel), int(FW_SUCCESS));
    }
    QCOMPARE(statusOf(bench), 1 << 8 | 1 << 5);
    QCOMPARE(bench.acknowledged(PC_MANUAL_START, {}, 2), int(FW_SUCCESS));
    QCOMPARE(bench.acknowledged(PC_EXPERIMENT_PAUSE, {}, 1), int(FW_SUCCESS));
    QCOMPARE(statusOf(bench), 1 << 8 | 1 << 5 | 1 << 6);
    for (const quint8 channel : {quint8(1), quint8(2)})
        QCOMPARE(bench.acknowledged(PC_EXPERIMENT_STOP, {}, channel), int(FW_SUCCESS));
    QCOMPARE(statusOf(bench), 1 << 8); // channel 5 runs, but has no bit of its own
}

void TestSimulatedInstrument::refusesAsAsked_data()
{
    QTest::addColumn<QString>("fault");
    QTest::addColumn<QList<int>>("nodes"); // codes of an upload of three
    QTest::addColumn<int>("start");
    QTest::addColumn<int>("manualStart");
    const QList<int> good{FW_SUCCESS, FW_SUCCESS, FW_SUCCESS};
    QTest::newRow("starts") << "refuse-start:11" << good << int(FW_BAD_PARAMETERS) << int(FW_BAD_PARAMETERS);
    QTest::newRow("starts, with a code that has no meaning") << "refuse-start:99" << good << 99 << 99;
    QTest::newRow("a node") << "refuse-node:2,8" << QList<int>{FW_SUCCESS, FW_NODE_NOT_APPENDED, FW_SUCCESS}
                            << int(FW_NO_EXPERIMENT) << int(FW_SUCCESS);
    QTest::newRow("a node that does not come")
        << "refuse-node:4,8" << good << int(FW_SUCCESS) << int(FW_MANUAL_START_FAILED);
}

void TestSimulatedInstrument::refusesAsAsked()
{
    QFETCH(QString, fault);
    QFETCH(QList<int>, nodes);
    QFETCH(int, start);
    QFETCH(int, manualStart);
    Bench bench({fault}, 1, 1.0);
    for (int upload = 0; upload < 2; ++upload) { // the count starts again with each
        const int before = bench.count(NT_NODE_APPENDED);
        bench.upload({current(1e-3f, 1000.0f, 1.0f), current(1e-3f, 1000.0f, 1.0f), endNode()});
        for (int i = 0; i < nodes.size(); ++i)
            QCOMPARE(int(bench.payload(NT_NODE_APPENDED, before + i).at(0)), nodes.at(i));
    }
    QCOMPARE(bench.acknowledged(PC_EXPERIMENT_START), start);
    QCOMPARE(bench.acknowledged(PC_MANUAL_START), manualStart);
    bench.host->SendCommand(PC_PING);
    QVERIFY(bench.await(NT_PING_REPLY));
    QCOMPARE(bench.count(NT_DATA_BEGIN), start == FW_SUCCESS || manualStart == FW_SUCCESS ? 1 : 0);
}

void TestSimulatedInstrument::namesTheChannelsOfTheSdCard()
{
    SdCard card(3);
    card.setContents(QByteArray(5000, 'a'), SdCardFaults());
    QList<int> channels;
    for (int i = 0; i < 3; ++i)
        channels += card.nextHeader().channel;
    QByteArray ofChannel1;
    while (card.hasData()) {
        const SdCard::Packet packet = card.nextData();
        channels += packet.channel;
        if (packet.channel == 1)
            ofChannel1 += packet.bytes;
    }
    QCOMPARE(channels, (QList<int>{0, 1, 2, 0, 1, 2, 0, 1, 2}));
    QCOMPARE(ofChannel1, QByteArray(5000, 'a'));
    QCOMPARE(readAt<qint32>(card.nextHeader().bytes, 4), 5000);
}

void TestSimulatedInstrument::servesItsTables_data()
{
    QTest::addColumn<QStringList>("faults");
    QTest::addColumn<quint32>("magic");
    QTest::addColumn<double>("share"); // of the announced bytes that come
    QTest::newRow("sound") << QStringList() << 0x30303031u << 1.0;
    QTest::newRow("wrong magic") << QStringList("sd-magic") << 0x30303032u << 1.0;
    QTest::newRow("cut short") << QStringList("sd-cut") << 0x30303031u << 0.5;
    QTest::newRow("bad file") << QStringList("sd-file") << 0x30303031u << 1.0;
}

void TestSimulatedInstrument::servesItsTables()
{
    QFETCH(QStringList, faults);
    QFETCH(double, share);
    Bench bench(faults);
    bench.host->SendCommand(PC_SD_CAL_HEADER_READ);
    QVERIFY(bench.await(NT_SD_CAL_HEADER));
    QTEST(readAt<quint32>(bench.payload(NT_SD_CAL_HEADER), 0), "magic");
    const int announced = readAt<qint32>(bench.payload(NT_SD_CAL_HEADER), 4);
    QByteArray stream;
    for (int packet = 0; stream.size() < int(share * announced); ++packet) {
        bench.host->SendCommand(PC_SD_CAL_DATA_NEXT);
        QVERIFY(bench.await(NT_SD_CAL_DATA, packet + 1));
        stream += bench.payload(NT_SD_CAL_DATA, packet);
    }
    QCOMPARE(stream.size(), int(share * announced));
    bench.host->SendCommand(PC_SD_CAL_DATA_NEXT);
    bench.host->SendCommand(PC_PING);
    QVERIFY(bench.await(NT_PING_REPLY));
    QCOMPARE(bench.packets.last().type, NT_PING_REPLY);
    QCOMPARE(stream.contains("\n1,2,3,4\x1C"), faults.contains(QStringLiteral("sd-file")));
}

void TestSimulatedInstrument::measuresImpedance()
{
    Bench bench;
    const ExpNode_t sweep = Vek_Node_EIS_Voltage(0.0f, false, 0.01f, 1000.0f, 10.0f, 1.0f, 0.5f, 150);
    bench.upload({sweep, endNode()});
    bench.host->SendCommand(PC_EXPERIMENT_START);
    QVERIFY(bench.await(NT_EXPERIMENT_DONE));
    QCOMPARE(bench.types().mid(5), (QVector<int>{NT_AC_DATA, NT_AC_DATA, NT_AC_SAMPLE_DONE, NT_AC_DATA, NT_AC_DATA,
                                                 NT_AC_SAMPLE_DONE, NT_AC_DATA, NT_AC_DATA, NT_AC_SAMPLE_DONE,
                                                 NT_NODE_DONE, NT_NODE_BEGIN, NT_EXPERIMENT_DONE}));
    Bench withoutAc({}, 1, 0.0, HardwareModel_t::Cedar_2_0);
    withoutAc.upload({sweep, endNode()});
    withoutAc.host->SendCommand(PC_EXPERIMENT_START);
    QVERIFY(withoutAc.await(NT_EXPERIMENT_DONE));
    QCOMPARE(withoutAc.payload(NT_EXPERIMENT_DONE).at(8), char(STOP_BAD_NODE));
}

static QList<QByteArray> linesOf(const QString &path)
{
    QFile file(path);
    file.open(QIODevice::ReadOnly);
    return file.readAll().trimmed().split('\n');
}

void TestSimulatedInstrument::writesTruthAndPasses()
{
    QTemporaryDir folder;
    TruthFile truth;
    PassFile passes;
    QVERIFY(truth.open(folder.filePath(QStringLiteral("truth.csv"))));
    QVERIFY(passes.open(folder.filePath(QStringLiteral("passes.csv"))));
    Bench bench;
    bench.instrument->setFiles(&truth, &passes);
    ExpNode_t goesOn = current(-0.001953125f, 2.0f, 1.0f);
    Vek_Node_SetChargeLimit(goesOn, 0.0f, false);
    bench.upload({current(0.00390625f, 2.0f, 1.0f), goesOn, endNode()});
    bench.host->SendCommand(PC_EXPERIMENT_START);
    QVERIFY(bench.await(NT_EXPERIMENT_DONE));
    truth.close();
    passes.close();
    const QList<QByteArray> rows = linesOf(folder.filePath(QStringLiteral("truth.csv")));
    QCOMPARE(rows.size(), 5);
    QCOMPARE(rows.at(2), QByteArray("0,0,12,3.90625,0.00390625,0,0.0078125,nan"));
    const QList<QByteArray> ends = linesOf(folder.filePath(QStringLiteral("passes.csv")));
    QCOMPARE(ends.size(), 3);
    QCOMPARE(ends.at(1), QByteArray("0,0,12,0.0078125"));
    QCOMPARE(ends.at(2), QByteArray("0,1,14,-0.00390625"));
}

void TestSimulatedInstrument::runsAtItsSpeed()
{
    Bench bench({}, 1, 20.0);
    bench.upload({current(1e-3f, 10.0f, 1.0f), endNode()});
    QElapsedTimer timer;
    timer.start();
    bench.host->SendCommand(PC_EXPERIMENT_START);
    QVERIFY(bench.await(NT_EXPERIMENT_DONE));
    QVERIFY(timer.elapsed() >= 490);
}

/// Nothing is dropped, and the queue stays bounded, while nobody reads.
void TestSimulatedInstrument::waitsForASlowReader()
{
    Bench bench;
    bench.upload({current(1e-3f, 200.0f, 0.01f), endNode()});
    bench.host->SendCommand(PC_EXPERIMENT_START);
    QVERIFY(bench.await(NT_DATA_BEGIN));
    QTest::qSleep(100);
    QVERIFY(bench.await(NT_EXPERIMENT_DONE, 1, 30000));
    QCOMPARE(bench.count(NT_DC_DATA), 20000);
    quint64 before = readAt<quint64>(bench.payload(NT_DATA_BEGIN), 0);
    for (const Packet &packet : bench.packets) {
        if (packet.type != NT_DC_DATA)
            continue;
        QVERIFY(readAt<quint64>(packet.payload, 24) - before < quint64(1.5e6));
        before = readAt<quint64>(packet.payload, 24);
    }
}

void TestSimulatedInstrument::faultsOfAnswers_data()
{
    QTest::addColumn<QString>("fault");
    QTest::addColumn<int>("command");
    QTest::addColumn<int>("reply");
    QTest::addColumn<int>("size"); // of the reply; -1: none comes
    QTest::newRow("silence") << "silence" << int(PC_PING) << int(NT_PING_REPLY) << -1;
    QTest::newRow("echo") << "echo" << int(PC_ECHO_TEST) << int(NT_ECHO) << 0;
    QTest::newRow("no ping") << "no-reply:ping" << int(PC_PING) << int(NT_PING_REPLY) << -1;
    QTest::newRow("no checksum") << "no-reply:checksum" << int(PC_READ_FIRMWARE_CHECKSUM) << int(NT_FIRMWARE_CHECKSUM)
                                 << -1;
    QTest::newRow("no calibration") << "no-calibration:0" << int(PC_READ_FLASH_CAL) << int(NT_RAW_CAL_DATA) << -1;
    QTest::newRow("calibration of another channel missing")
        << "no-calibration:1" << int(PC_READ_FLASH_CAL) << int(NT_RAW_CAL_DATA) << 376;
    QTest::newRow("short") << "short-reply:hardware" << int(PC_READ_HARDWARE_VERSION) << int(NT_HARDWARE_VERSION)
                           << 255;
    QTest::newRow("late") << "late:150" << int(PC_READ_CHANNEL_COUNT) << int(NT_CHANNEL_COUNT) << 1;
}

void TestSimulatedInstrument::faultsOfAnswers()
{
    QFETCH(QString, fault);
    QFETCH(int, command);
    QFETCH(int, reply);
    QFETCH(int, size);
    Bench bench({fault});
    QElapsedTimer timer;
    timer.start();
    bench.host->SendCommand(PCcommand_t(command));
    QCOMPARE(bench.await(Notifications_t(reply), 1, size < 0 ? 100 : 5000), size >= 0);
    if (size >= 0)
        QCOMPARE(bench.payload(Notifications_t(reply)).size(), size);
    if (fault.startsWith(QLatin1String("late")))
        QVERIFY(timer.elapsed() >= 150);
}

void TestSimulatedInstrument::losesAcknowledgements()
{
    Bench bench({QStringLiteral("lost-acks:2")});
    bench.host->SendCommand(PC_NODE_LIST_BEGIN, 0, packed(quint16(4)));
    for (int i = 0; i < 4; ++i)
        bench.host->SendCommand(PC_NODE_APPEND, 0, packed(endNode()));
    bench.host->SendCommand(PC_PING);
    QVERIFY(bench.await(NT_PING_REPLY));
    QCOMPARE(bench.count(NT_NODE_APPENDED), 2);
}

void TestSimulatedInstrument::framesSurviveGarbageAndSplitting_data()
{
    QTest::addColumn<QString>("fault");
    QTest::newRow("garbage") << "garbage:3";
    QTest::newRow("split") << "split:17";
}

void TestSimulatedInstrument::framesSurviveGarbageAndSplitting()
{
    QFETCH(QString, fault);
    Bench bench({fault});
    bench.upload({current(1e-3f, 5.0f, 0.1f), endNode()});
    bench.host->SendCommand(PC_EXPERIMENT_START);
    QVERIFY(bench.await(NT_EXPERIMENT_DONE));
    QCOMPARE(bench.count(NT_DC_DATA), 50);
}

void TestSimulatedInstrument::raisesAlarms()
{
    Bench bench({QStringLiteral("stop:9@3"), QStringLiteral("alarm:oscillation@1.5"), QStringLiteral("alarm:text")});
    bench.upload({current(1e-3f, 50.0f, 1.0f), endNode()});
    bench.host->SendCommand(PC_EXPERIMENT_START);
    QVERIFY(bench.await(NT_EXPERIMENT_DONE));
    QCOMPARE(bench.types().mid(5), (QVector<int>{NT_ERROR_TEXT, NT_DC_DATA, NT_OSCILLATION, NT_DC_DATA, NT_DC_DATA,
                                                 NT_NODE_DONE, NT_EXPERIMENT_DONE}));
    QCOMPARE(bench.payload(NT_EXPERIMENT_DONE).at(8), char(STOP_OVERHEATED));
}

void TestSimulatedInstrument::pullsTheCable()
{
    Bench bench({QStringLiteral("disconnect:5records")});
    bench.upload({current(1e-3f, 1000.0f, 1.0f), endNode()});
    QSignalSpy unplugged(bench.instrument.get(), &SimulatedInstrument::unplugged);
    bench.host->SendCommand(PC_EXPERIMENT_START);
    QTRY_COMPARE(bench.losses, 1);
    QCOMPARE(unplugged.size(), 1);
}

void TestSimulatedInstrument::givesTheSameBytesForTheSameSeed()
{
    QVector<QVector<QByteArray>> runs;
    for (int i = 0; i < 2; ++i) {
        Bench bench;
        bench.upload({current(1e-3f, 20.0f, 0.1f), endNode()});
        bench.host->SendCommand(PC_EXPERIMENT_START);
        QVERIFY(bench.await(NT_EXPERIMENT_DONE));
        QVector<QByteArray> payloads;
        for (const Packet &packet : bench.packets)
            payloads += packet.payload;
        runs += payloads;
    }
    QCOMPARE(runs.first(), runs.last());
}

NIMBRELLE_TEST_MAIN(TestSimulatedInstrument)
#include "TestSimulatedInstrument.moc"
