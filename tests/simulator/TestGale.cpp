// SPDX-License-Identifier: MIT
#include "Bench.h"

#include "calibration/Records.h"
#include "simulator/GaleFrontEnd.h"

#include "support/TestMain.h"

#include <cmath>

namespace {

using Complex = std::complex<double>;

CalibrationData host(const QByteArray &record, int channel)
{
    CalibrationData data = calibrated(HardwareModel_t::Gale, record);
    data.setGaleCfgData(GaleFrontEnd::configuration(channel / 2));
    return data;
}

/// What a receiver makes of a packet: eight pairs.
QVector<qint32> unpacked(const QByteArray &packet)
{
    QVector<qint32> words{readAt<qint32>(packet, 0), readAt<qint32>(packet, 4)};
    const int width = (packet.size() - 8) / 14;
    for (int i = 0; i < 14; ++i) {
        const quint32 bytes = readAt<quint32>(packet.mid(8 + i * width, width), 0);
        const int shift = 32 - 8 * width;
        words.append(qint32(quint32(words.at(i)) + quint32(qint32(bytes << shift) >> shift)));
    }
    return words;
}

/// A batch as the receiver has it: its header, and the words behind it.
struct Batch {
    Gale_AC_Header_t header;
    QVector<qint32> words;

    /// Twice the mean of x exp(j w t) over whole periods of the base; signal 0 is the current.
    Complex coefficient(int signal, double frequency) const
    {
        const int count = int(header.samplesPerSignal) - 1;
        Complex sum;
        for (int n = 0; n < count; ++n) {
            const double angle = 2.0 * M_PI * std::fmod(frequency / double(header.sampleFrequency) * n, 1.0);
            sum += double(words.at(2 * n + signal) - words.at(signal)) / header.nSum * std::polar(1.0, angle);
        }
        return 2.0 * sum / double(count);
    }
    Complex admittance(const CalibrationData &data, double frequency) const
    {
        const int range = index(header.currentRange);
        const Complex voltage =
            data.getACVoltage_gale(coefficient(1, frequency), index(header.voltageRange), frequency);
        Complex current = data.getACCurrent_gale(coefficient(0, frequency), range, frequency);
        current *= std::polar(1.0, -std::arg(voltage));
        current = data.removeCMCurrent(current, range, frequency, std::abs(voltage));
        return std::conj(current) / std::abs(voltage);
    }
};

Batch batchOf(const QVector<Bench::Packet> &packets, unsigned int channel)
{
    Batch batch = {};
    for (const Bench::Packet &packet : packets) {
        if (packet.channel != channel)
            continue;
        if (packet.type == NT_AC_DATA_INVALID)
            batch = {readAt<Gale_AC_Header_t>(packet.payload, 0), {}};
        if (packet.type == NT_AC_DATA)
            batch.words += unpacked(packet.payload);
    }
    return batch;
}

} // namespace

class TestGale : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void hostReadsWhatTheCellGave();
    void readingsEndWithTheirRange();
    void resolutionFollowsTheRange();
    void clipsACurrentBeyondAFixedRange();
    void packsInTheNarrowestWidth_data();
    void packsInTheNarrowestWidth();
    void answersItsHandshake();
    void convertsByItsTare();
    void groupSharesTheCurrent();
    void bipolarPairSharesTheVoltage();
    void groupMembersAreBusyUntilTheEnd();
    void linkHoldsInTheBlockOfTheLeader();
    void measuresImpedance_data();
    void measuresImpedance();
    void keepsALimitOfTheTemperature();
};

void TestGale::hostReadsWhatTheCellGave()
{
    for (const int channel : {0, 3}) { // boards with different charge ticks
        const GaleFrontEnd frontEnd(7, channel, 0.0);
        const CalibrationData data = host(frontEnd.calibration(), channel);
        for (int range = 0; range < 4; ++range) {
            for (const double share : {-1.0, 0.01, 0.6, 1.0}) {
                const double scale = frontEnd.fullScale(currentRange_t(range));
                const DcSample sample{800000000, 9.0 * std::abs(share), share * scale, 0.0, 123.4 * share, 31.0};
                const QByteArray record = frontEnd.dcRecord(sample, currentRange_t(range), voltageRange_t(0), 17);
                QCOMPARE(record.size(), 36);
                const ProcessedDCData read = data.ProcessDCDataPoint(ExperimentalDcData::fromPayload(record));
                QVERIFY(std::abs(read.current - sample.current) < 1e-6 * scale);
                QVERIFY(std::abs(read.workingElectrodeVoltage - sample.voltage) < 1e-5);
                QVERIFY(std::abs(read.charge - sample.charge) < 2e-7 * std::abs(sample.charge));
                QVERIFY(std::abs(read.temperature - 31.0) < 0.01);
                QCOMPARE(read.timestamp, 8.0);
                QCOMPARE(int(read.counter), 17);
            }
        }
    }
}

void TestGale::readingsEndWithTheirRange()
{
    const GaleFrontEnd frontEnd(7, 0, 0.0);
    const CalibrationData data = host(frontEnd.calibration(), 0);
    for (const double sign : {-1.0, 1.0}) {
        for (const double beyond : {1.2, 5.0, 1e6}) {
            const DcSample sample{0, sign * beyond * 2.5, sign * beyond * 0.05, 0.0, 0.0, 25.0};
            const QByteArray record = frontEnd.dcRecord(sample, currentRange_t(2), voltageRange_t(2), 0);
            const ProcessedDCData read = data.ProcessDCDataPoint(ExperimentalDcData::fromPayload(record));
            QVERIFY(std::abs(sign * read.current - 1.08 * 0.05) < 1e-6);
            QVERIFY(std::abs(sign * read.workingElectrodeVoltage - 1.08 * 2.5) < 1e-5);
        }
    }
}

/// Words are whole steps of the converter, whatever the range.
void TestGale::resolutionFollowsTheRange()
{
    const GaleFrontEnd frontEnd(7, 0, 0.0);
    for (int range = 0; range < 4; ++range) {
        for (int i = 1; i < 40; ++i) {
            const DcSample sample{0,
                                  0.0123 * i * frontEnd.fullScale(voltageRange_t(range)),
                                  0.0123 * i * frontEnd.fullScale(currentRange_t(range)),
                                  0.0,
                                  0.0,
                                  25.0};
            const auto record =
                readAt<GaleDcRecord_t>(frontEnd.dcRecord(sample, currentRange_t(range), voltageRange_t(range), 0), 0);
            QCOMPARE(float(record.rawCurrent), std::round(record.rawCurrent));
            QCOMPARE(float(record.rawVoltage), std::round(record.rawVoltage));
        }
    }
}

void TestGale::packsInTheNarrowestWidth_data()
{
    QTest::addColumn<qint32>("delta");
    QTest::addColumn<int>("size");
    QTest::newRow("one byte") << 127 << 22;
    QTest::newRow("one byte, negative") << -128 << 22;
    QTest::newRow("two bytes") << 128 << 36;
    QTest::newRow("two bytes, negative") << -32768 << 36;
    QTest::newRow("three bytes") << 32768 << 50;
    QTest::newRow("four bytes") << 8388608 << 64;
    QTest::newRow("wraps") << 2000000000 << 64;
}

void TestGale::packsInTheNarrowestWidth()
{
    QFETCH(qint32, delta);
    QVector<qint32> words;
    for (int i = 0; i < 8; ++i)
        words << (i > 0 ? delta : 0) << 1000 - i;
    const QVector<QByteArray> packets = packDeltas(words + QVector<qint32>{5, 6});
    QCOMPARE(packets.size(), 2);
    QTEST(packets.first().size(), "size");
    QCOMPARE(unpacked(packets.first()), words);
    QCOMPARE(packets.last().size(), 22);
    QCOMPARE(unpacked(packets.last()).mid(12), (QVector<qint32>{5, 6, 5, 6}));
}

void TestGale::answersItsHandshake()
{
    Bench bench({}, 64, 0.0, HardwareModel_t::Gale);
    bench.host->SendCommand(PC_GALE_PRE_HANDSHAKE, allChannels);
    bench.host->SendCommand(PC_READ_CONFIG, 6);
    bench.host->SendCommand(PC_READ_CHANNEL_COUNT);
    bench.host->SendCommand(PC_READ_FLASH_CAL, 63);
    QVERIFY(bench.await(NT_RAW_CAL_DATA));
    QCOMPARE(bench.types(), (QVector<int>{NT_CONFIG, NT_CHANNEL_COUNT, NT_RAW_CAL_DATA}));
    QCOMPARE(bench.payload(NT_CONFIG).size(), 288);
    QCOMPARE(bench.packets.first().channel, 6u);
    QCOMPARE(bench.payload(NT_CHANNEL_COUNT).at(0), char(64));
    QCOMPARE(bench.payload(NT_RAW_CAL_DATA).size(), 740);
    QCOMPARE(bench.acknowledged(PC_FF_IMPEDANCE, packed(5.0f)), int(FW_SUCCESS));
}

/// The offsets of the tare are new; a host that keeps the old ones is wrong.
void TestGale::convertsByItsTare()
{
    Bench bench({}, 1, 0.0, HardwareModel_t::Gale);
    CalibrationData data = host(GaleFrontEnd(1, 0, 0.0).calibration(), 0);
    const CalibrationData old = data;
    bench.upload({timed(Vek_Node_Constant_Current(1.0f, 4e-3f, 0.0f), 1.0f), endNode()});
    bench.host->SendCommand(PC_EXPERIMENT_START);
    QVERIFY(bench.await(NT_EXPERIMENT_DONE));
    for (int i = 0; i < 4; ++i) {
        data.UpdateCurrentOffset(i, readAt<float>(bench.payload(NT_TARE_CURRENT, i), 0));
        data.UpdateVoltageOffset(i, readAt<float>(bench.payload(NT_TARE_VOLTAGE, i), 0));
    }
    const auto raw = ExperimentalDcData::fromPayload(bench.payload(NT_DC_DATA));
    QVERIFY(std::abs(data.ProcessDCDataPoint(raw).current - 4e-3) < 1e-8);
    QVERIFY(std::abs(data.ProcessDCDataPoint(raw).workingElectrodeVoltage - 4.0) < 1e-5);
    QVERIFY(std::abs(old.ProcessDCDataPoint(raw).current - 4e-3) > 1e-7);
}

/// A group carries what all its members can, a channel alone what it can itself.
void TestGale::clipsACurrentBeyondAFixedRange()
{
    for (const quint32 mask : {0u, 0b11u}) {
        Bench bench({}, 2, 0.0, HardwareModel_t::Gale, QStringLiteral("resistor:R=10"));
        if (mask != 0)
            bench.acknowledged(PC_CHANNELS_LINK, packed(mask, quint8(0)), 255);
        ExpNode_t node = timed(Vek_Node_Constant_Current(1.0f, -0.5f, 0.0f), 1.0f);
        Vek_Node_SetCurrentRange(node, currentRange_t(2)); // 50 mA
        bench.upload({node, endNode()});
        bench.host->SendCommand(PC_EXPERIMENT_START);
        QVERIFY(bench.await(NT_EXPERIMENT_DONE, mask != 0 ? 2 : 1));
        CalibrationData data = host(GaleFrontEnd(1, 0, 0.0).calibration(), 0);
        for (const Bench::Packet &packet : bench.packets)
            if (packet.channel == 0 && packet.type == NT_TARE_VOLTAGE)
                data.UpdateVoltageOffset(packet.payload.at(4), readAt<float>(packet.payload, 0));
        const auto leaders = ExperimentalDcData::fromPayload(bench.payload(NT_DC_DATA, bench.count(NT_DC_DATA) - 1));
        const double milliamperes = -100.0 * data.ProcessDCDataPoint(leaders).workingElectrodeVoltage;
        const double fullScale = mask != 0 ? 100.0 : 50.0;
        QVERIFY(milliamperes > fullScale && milliamperes < 1.13 * fullScale);
    }
}

/// Runs a second at 40 mA on 100 ohms with a group, and gives each member's reading as a host has it.
static QVector<ProcessedDCData> groupReadings(Bench &bench, quint32 mask, bool isBipolar, quint8 leader)
{
    bench.acknowledged(PC_CHANNELS_LINK, packed(mask, quint8(isBipolar)), 255);
    bench.upload({timed(Vek_Node_Constant_Current(1.0f, 40e-3f, 0.0f), 1.0f), endNode()}, leader);
    bench.host->SendCommand(PC_EXPERIMENT_START, leader);
    int members = 0;
    for (quint32 rest = mask; rest; rest &= rest - 1)
        ++members;
    bench.await(NT_EXPERIMENT_DONE, members);
    QVector<ProcessedDCData> readings;
    for (const Bench::Packet &sample : bench.packets) {
        if (sample.type != NT_DC_DATA)
            continue;
        CalibrationData data = host(GaleFrontEnd(1, int(sample.channel), 0.0).calibration(), int(sample.channel));
        for (const Bench::Packet &tare : bench.packets) {
            if (tare.channel == sample.channel && tare.type == NT_TARE_CURRENT)
                data.UpdateCurrentOffset(tare.payload.at(4), readAt<float>(tare.payload, 0));
            if (tare.channel == sample.channel && tare.type == NT_TARE_VOLTAGE)
                data.UpdateVoltageOffset(tare.payload.at(4), readAt<float>(tare.payload, 0));
        }
        readings += data.ProcessDCDataPoint(ExperimentalDcData::fromPayload(sample.payload));
    }
    return readings;
}

void TestGale::groupSharesTheCurrent()
{
    Bench bench({}, 6, 0.0, HardwareModel_t::Gale, QStringLiteral("resistor:R=100"));
    const QVector<ProcessedDCData> readings = groupReadings(bench, 0b111100, false, 2);
    QCOMPARE(readings.size(), 4);
    double current = 0.0, voltage = 0.0, charge = 0.0;
    for (const ProcessedDCData &reading : readings) {
        current += reading.current;
        voltage += reading.workingElectrodeVoltage / 4.0;
        charge += reading.charge;
        QCOMPARE(int(reading.counter), int(readings.first().counter));
        QVERIFY(std::abs(reading.current - 10e-3) > 1e-6); // the shares are uneven
    }
    QVERIFY(std::abs(current - 40e-3) < 1e-7);
    QVERIFY(std::abs(voltage - 4.0) < 4e-6);
    QVERIFY(std::abs(charge - 40e-3) < 1e-7);
    QCOMPARE(bench.count(NT_DATA_BEGIN), 1);
    QCOMPARE(bench.count(NT_NODE_BEGIN), 8);
    QCOMPARE(bench.packets.last().channel, 2u); // the leader ends last
}

void TestGale::bipolarPairSharesTheVoltage()
{
    Bench bench({}, 2, 0.0, HardwareModel_t::Gale, QStringLiteral("resistor:R=100"));
    const QVector<ProcessedDCData> readings = groupReadings(bench, 0b11, true, 0);
    QCOMPARE(readings.size(), 2);
    const ProcessedDCData &odd = readings.first(); // the leader reports last
    const ProcessedDCData &even = readings.last();
    QVERIFY(std::abs(0.5 * (even.current - odd.current) - 40e-3) < 1e-7);
    QVERIFY(std::abs(even.workingElectrodeVoltage - odd.workingElectrodeVoltage - 4.0) < 4e-6);
    QVERIFY(std::abs(0.5 * (even.charge - odd.charge) - 40e-3) < 1e-7);
}

void TestGale::groupMembersAreBusyUntilTheEnd()
{
    Bench bench({}, 3, 100.0, HardwareModel_t::Gale);
    bench.acknowledged(PC_CHANNELS_LINK, packed(quint32(0b011), quint8(0)), 255);
    bench.upload({timed(Vek_Node_Constant_Current(1.0f, 1e-3f, 0.0f), 1000.0f), endNode()});
    bench.upload({timed(Vek_Node_Constant_Current(1.0f, 1e-3f, 0.0f), 1000.0f), endNode()}, 1);
    QCOMPARE(bench.acknowledged(PC_EXPERIMENT_START), int(FW_SUCCESS));
    QCOMPARE(bench.acknowledged(PC_EXPERIMENT_START, {}, 1), int(FW_CHANNEL_NOT_IDLE));
    QCOMPARE(bench.acknowledged(PC_EXPERIMENT_PAUSE, {}, 1), int(FW_SUCCESS)); // a member speaks for the group
    QVERIFY(bench.await(NT_EXPERIMENT_PAUSED, 2));
    QCOMPARE(bench.acknowledged(PC_EXPERIMENT_RESUME), int(FW_SUCCESS));
    QCOMPARE(bench.acknowledged(PC_EXPERIMENT_STOP, {}, 1), int(FW_SUCCESS));
    QVERIFY(bench.await(NT_EXPERIMENT_DONE, 2));
    QCOMPARE(bench.acknowledged(PC_EXPERIMENT_START, {}, 1), int(FW_SUCCESS)); // alone: a link holds for one start
    QVERIFY(bench.await(NT_DATA_BEGIN, 2));
    QCOMPARE(bench.acknowledged(PC_EXPERIMENT_STOP, {}, 1), int(FW_SUCCESS));
    QVERIFY(bench.await(NT_EXPERIMENT_DONE, 3));
}

void TestGale::linkHoldsInTheBlockOfTheLeader()
{
    Bench bench({}, 40, 0.0, HardwareModel_t::Gale, QStringLiteral("resistor:R=100"));
    const QVector<ProcessedDCData> readings = groupReadings(bench, 0b110, false, 33);
    QCOMPARE(readings.size(), 2);
    QVERIFY(std::abs(readings.first().current + readings.last().current - 40e-3) < 1e-7);
}

void TestGale::measuresImpedance_data()
{
    QTest::addColumn<quint32>("mask");
    QTest::addColumn<bool>("isBipolar");
    QTest::addColumn<bool>("isMultiTone");
    for (const bool isMultiTone : {false, true}) {
        const char *drive = isMultiTone ? "multi-tone" : "single sine";
        QTest::addRow("%s, one channel", drive) << 0u << false << isMultiTone;
        QTest::addRow("%s, four in parallel", drive) << 0b1111u << false << isMultiTone;
        QTest::addRow("%s, bipolar pair", drive) << 0b11u << true << isMultiTone;
    }
}

void TestGale::measuresImpedance()
{
    QFETCH(quint32, mask);
    QFETCH(bool, isBipolar);
    QFETCH(bool, isMultiTone);
    const QString cell = QStringLiteral("randles:Rs=2,Rct=10,C=1e-4");
    Bench bench({}, 4, 0.0, HardwareModel_t::Gale, cell);
    ExpNode_t node = Vek_Node_EIS_Voltage(0.0f, false, 0.02f, 100.0f, 100.0f, 1.0f, 0.5f, 2);
    if (isMultiTone)
        node.type = quint8(NodeType_t::MultiSineVoltage);
    if (mask != 0)
        bench.acknowledged(PC_CHANNELS_LINK, packed(mask, quint8(isBipolar)), 255);
    bench.upload({node, endNode()});
    bench.host->SendCommand(PC_EXPERIMENT_START);
    const int members = mask == 0 ? 1 : isBipolar ? 2 : 4;
    QVERIFY(bench.await(NT_EXPERIMENT_DONE, members));
    QCOMPARE(bench.count(NT_AC_DATA_INVALID), members);
    for (const int tone : isMultiTone ? std::vector<int>{2, 3, 4, 5, 6, 8} : std::vector<int>{1}) {
        Complex admittance;
        for (int channel = 0; channel < members; ++channel) {
            const Batch batch = batchOf(bench.packets, unsigned(channel));
            QCOMPARE(int(batch.header.driveMode), isMultiTone ? 2 : 0);
            const CalibrationData data = host(GaleFrontEnd(1, channel, 0.0).calibration(), channel);
            admittance += batch.admittance(data, 100.0 * tone) * (isBipolar ? 0.25 : 1.0);
        }
        const Complex expected = makeCell(cell).cell->impedance(100.0 * tone);
        QVERIFY(std::abs(1.0 / admittance - expected) < 2e-3 * std::abs(expected));
    }
}

void TestGale::keepsALimitOfTheTemperature()
{
    Bench bench({}, 1, 0.0, HardwareModel_t::Gale);
    constexpr float none = std::numeric_limits<float>::infinity();
    const CalibrationData data = calibrated(HardwareModel_t::Gale, GaleFrontEnd(1, 0, 0.0).calibration());
    bench.upload({timed(Vek_Node_Constant_Current(1.0f, 1e-3f, 0.0f), 2.0f), endNode()});
    int run = 0;
    for (const auto &[degrees, stopType] :
         {std::pair(none, STOP_COMPLETED), std::pair(26.0f, STOP_COMPLETED), std::pair(24.0f, STOP_TEMPERATURE_MAX)}) {
        const float ratio = float(data.getTemperatureToRatio(degrees));
        QCOMPARE(bench.acknowledged(PC_CHANNEL_LIMITS, packed(-none, none, -none, none, ratio)), int(FW_SUCCESS));
        bench.host->SendCommand(PC_EXPERIMENT_START);
        QVERIFY(bench.await(NT_EXPERIMENT_DONE, ++run));
        QCOMPARE(int(bench.payload(NT_EXPERIMENT_DONE, run - 1).at(8)), int(stopType));
    }
}

NIMBRELLE_TEST_MAIN(TestGale)
#include "TestGale.moc"
