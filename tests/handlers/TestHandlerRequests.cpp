// SPDX-License-Identifier: MIT
#include "HandlerBench.h"
#include "ListExperiment.h"
#include "VekCompRange.h"
#include "VekExperiment.h"
#include "elements/ConstantCurrentAdvElement.h"
#include "elements/CustomExperimentRunner.h"
#include "handlers/MainInstrumentHandler.h"
#include "support/PostedEvents.h"

#include <functional>

namespace {

using Request = std::function<VekErrorCode(VekInstrumentHandlerPrivate &, unsigned char)>;
using Codes = QVector<int>;
using E = VekErrorCode;

constexpr unsigned char invalidChannel = 6;

/// The bench's channels in their states; the columns of the table of codes, behind that of an invalid channel.
enum Column : unsigned char { Free, Loaded, ManualMode, Running, Paused, channelCount };

std::shared_ptr<ListExperiment> oneNode()
{
    return std::make_shared<ListExperiment>(ListExperiment{makeNode(5, QStringLiteral("Constant Current"), 1)});
}

std::shared_ptr<ListExperiment> complaining()
{
    auto experiment = oneNode();
    experiment->complain(QStringLiteral("The %1 has a limit."));
    experiment->complain(QStringLiteral("%1 has two."));
    return experiment;
}

} // namespace

Q_DECLARE_METATYPE(Request)
Q_DECLARE_METATYPE(Codes)

class TestHandlerRequests : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void checksInOrder_data();
    void checksInOrder();
    void sendsCommands_data();
    void sendsCommands();
    void messagesNameEveryFault();
    void sendsNothingThatCannotBeMeant();
    void uploadStoresNothingWhenItFails_data();
    void uploadStoresNothingWhenItFails();
    void uploadCountsAnswersThatWaited_data();
    void uploadCountsAnswersThatWaited();
    void startBeginsTheChargeAnew();
    void refusedStartFreesTheChannel_data();
    void refusedStartFreesTheChannel();
    void refusalOfNoStartChangesNothing_data();
    void refusalOfNoStartChangesNothing();
    void lateNewsOfAnIdleChannelChangesNothing();
    void limitsAreStoredEvenWithoutAnswer();
    void rangesAreClippedToTheModel();
    void answersQueries();
    void withoutDevice();
    void verdictsOfTheInstrument_data();
    void verdictsOfTheInstrument();

private:
    using Bench = HandlerBench<MainInstrumentHandler>;
    std::unique_ptr<Bench> makeBench() const
    {
        return std::make_unique<Bench>(HardwareModel_t::Birch_2_2, channelCount, roundMainRecord());
    }
    static void bringIntoState(Bench &bench);
};

void TestHandlerRequests::bringIntoState(Bench &bench)
{
    for (const unsigned char channel : {Loaded, Running, Paused})
        QCOMPARE(bench.handler->uploadExperimentToChannel(channel, oneNode()), E::Success);
    QCOMPARE(bench.handler->startManualExperiment(ManualMode), E::Success);
    for (const unsigned char channel : {Running, Paused})
        QCOMPARE(bench.handler->startUploadedExperiment(channel), E::Success);
    bench.instrument.send(NT_EXPERIMENT_PAUSED, Paused);
    QVERIFY(bench.settle());
    QVERIFY(bench.handler->isChannelPause(Paused));
}

void TestHandlerRequests::checksInOrder_data()
{
    QTest::addColumn<Request>("request");
    QTest::addColumn<Codes>("codes"); // invalid, free, loaded, manual, running, paused

    const auto row = [](const char *name, Request request, const Codes &codes) {
        QTest::newRow(name) << std::move(request) << codes;
    };
    using H = VekInstrumentHandlerPrivate;
    const int manual = E::ManualExperimentNotRunning;
    const int busy = E::ChannelBusy;
    const int bad = E::InvalidParameters;
    const int none = E::NoExperimentRunning;
    // clang-format off
    row("upload nothing", [](H &h, unsigned char c) { return h.uploadExperimentToChannel(c, nullptr); },
        {53, 53, 53, 53, 53, 53});
    row("upload", [](H &h, unsigned char c) { return h.uploadExperimentToChannel(c, oneNode()); },
        {10, 0, 0, busy, busy, busy});
    row("upload broken limits", [](H &h, unsigned char c) { return h.uploadExperimentToChannel(c, complaining()); },
        {10, bad, bad, busy, busy, busy});
    row("upload no nodes",
        [](H &h, unsigned char c) {
            return h.uploadExperimentToChannel(c, std::make_shared<ListExperiment>(ListExperiment{}));
        },
        {10, 53, 53, busy, busy, busy});
    row("start", [](H &h, unsigned char c) { return h.startUploadedExperiment(c); },
        {10, E::ExperimentNotUploaded, 0, busy, busy, busy});
    row("idle sampling", [](H &h, unsigned char c) { return h.startIdleSampling(c); },
        {10, 0, E::ExperimentUploaded, busy, busy, busy});
    row("skip", [](H &h, unsigned char c) { return h.skipExperimentStep(c); }, {10, none, none, 0, 0, 0});
    row("pause", [](H &h, unsigned char c) { return h.pauseExperiment(c); },
        {10, none, none, 0, 0, E::AlreadyPaused});
    row("resume", [](H &h, unsigned char c) { return h.resumeExperiment(c); },
        {10, none, none, E::ExperimentRunning, E::ExperimentRunning, 0});
    row("stop", [](H &h, unsigned char c) { return h.stopExperiment(c); }, {10, 0, 0, 0, 0, 0});
    row("start manual", [](H &h, unsigned char c) { return h.startManualExperiment(c); },
        {10, 0, 0, busy, busy, busy});
    row("open circuit", [](H &h, unsigned char c) { return h.setManualModeOCP(c); },
        {10, manual, manual, 0, manual, manual});
    row("sampling", [](H &h, unsigned char c) { return h.setManualModeSamplingInterval(c, 0.5); },
        {10, manual, manual, 0, manual, manual});
    row("voltage", [](H &h, unsigned char c) { return h.setManualModeConstantVoltage(c, 1.0); },
        {10, manual, manual, 0, manual, manual});
    row("voltage with range", [](H &h, unsigned char c) { return h.setManualModeConstantVoltage(c, 1.0, 3); },
        {10, manual, manual, 0, manual, manual});
    row("voltage with bad range", [](H &h, unsigned char c) { return h.setManualModeConstantVoltage(c, 1.0, 11); },
        {10, manual, manual, E::ManualCurrentRangeNotSet, manual, manual});
    row("current", [](H &h, unsigned char c) { return h.setManualModeConstantCurrent(c, 1.0); },
        {10, manual, manual, 0, manual, manual});
    const int odd = E::ImplausibleParameters;
    row("voltage that is no number", [](H &h, unsigned char c) { return h.setManualModeConstantVoltage(c, qQNaN()); },
        {10, manual, manual, odd, manual, manual});
    row("voltage beyond the model's", [](H &h, unsigned char c) { return h.setManualModeConstantVoltage(c, 10.1, 3); },
        {10, manual, manual, odd, manual, manual});
    row("current that is no number", [](H &h, unsigned char c) { return h.setManualModeConstantCurrent(c, qQNaN()); },
        {10, manual, manual, odd, manual, manual});
    row("current beyond the model's", [](H &h, unsigned char c) { return h.setManualModeConstantCurrent(c, -1.1); },
        {10, manual, manual, odd, manual, manual});
    row("interval that is no number", [](H &h, unsigned char c) { return h.setManualModeSamplingInterval(c, qQNaN()); },
        {10, manual, manual, odd, manual, manual});
    row("interval of nothing", [](H &h, unsigned char c) { return h.setManualModeSamplingInterval(c, 0.0); },
        {10, manual, manual, 0, manual, manual});
    row("current range", [](H &h, unsigned char c) { return h.setManualModeCurrentRange(c, 10); },
        {10, manual, manual, 0, manual, manual});
    row("bad current range", [](H &h, unsigned char c) { return h.setManualModeCurrentRange(c, -1); },
        {10, manual, manual, bad, manual, manual});
    row("current range is cut to a byte", [](H &h, unsigned char c) { return h.setManualModeCurrentRange(c, 256); },
        {10, manual, manual, 0, manual, manual});
    row("voltage range", [](H &h, unsigned char c) { return h.setManualModeVoltageRange(c, 5); },
        {10, manual, manual, 0, manual, manual});
    row("voltage range the model lacks", [](H &h, unsigned char c) { return h.setManualModeVoltageRange(c, 1); },
        {10, manual, manual, bad, manual, manual});
    row("no voltage range", [](H &h, unsigned char c) { return h.setManualModeVoltageRange(c, 4); },
        {10, manual, manual, bad, manual, manual});
    row("stability", [](H &h, unsigned char c) { return h.setCompRange(c, VekCompRange({}, 10, 10)); },
        {10, 0, 0, 0, 0, 0});
    row("bad stability", [](H &h, unsigned char c) { return h.setCompRange(c, VekCompRange({}, 0, 11)); },
        {10, bad, bad, bad, bad, bad});
    row("ohmic drop", [](H &h, unsigned char c) { return h.setIRComp(c, 0.0, 100.0); }, {10, 0, 0, 0, 0, 0});
    row("bad ohmic drop", [](H &h, unsigned char c) { return h.setIRComp(c, 1.0, qQNaN()); },
        {10, bad, bad, bad, bad, bad});
    row("limit", [](H &h, unsigned char c) { return h.setChannelVmax(c, 4.2); }, {10, 0, 0, 0, 0, 0});
    row("limit of infinity", [](H &h, unsigned char c) { return h.setChannelImin(c, -qInf()); }, {10, 0, 0, 0, 0, 0});
    row("limit that is no number", [](H &h, unsigned char c) { return h.setChannelVmax(c, qQNaN()); },
        {10, odd, odd, odd, odd, odd});
    row("temperature that is no number", [](H &h, unsigned char c) { return h.setChannelMaxTemperature(c, qQNaN()); },
        {10, odd, odd, odd, odd, odd});
    row("no limits", [](H &h, unsigned char c) { return h.resetChannelLimits(c); }, {10, 0, 0, 0, 0, 0});
    row("SD card", [](H &h, unsigned char c) { return h.requestSdCardCalibrationData(c); },
        {10, 0, 0, busy, busy, busy});
    row("SD card twice",
        [](H &h, unsigned char c) {
            h.requestSdCardCalibrationData(c);
            return h.requestSdCardCalibrationData(c);
        },
        {10, E::SendFailed, E::SendFailed, busy, busy, busy});
    row("load impedance", [](H &h, unsigned char c) { return h.setLoadImpedance(c, 1.0f); },
        {14, 14, 14, 14, 14, 14});
    // clang-format on
}

void TestHandlerRequests::checksInOrder()
{
    QFETCH(Request, request);
    QFETCH(Codes, codes);
    const auto bench = makeBench();
    bringIntoState(*bench);
    QCOMPARE(int(request(*bench->handler, invalidChannel)), codes[0]);
    for (unsigned char channel = 0; channel < channelCount; ++channel)
        QVERIFY2(request(*bench->handler, channel) == codes[channel + 1], qPrintable(QString::number(channel)));
}

void TestHandlerRequests::sendsCommands_data()
{
    QTest::addColumn<Request>("request");
    QTest::addColumn<PCcommand_t>("command");
    QTest::addColumn<QByteArray>("payload");

    const auto row = [](const char *name, Request request, PCcommand_t command, const QByteArray &payload = {}) {
        QTest::newRow(name) << std::move(request) << command << payload;
    };
    using H = VekInstrumentHandlerPrivate;
    row(
        "start", [](H &h, unsigned char) { return h.startUploadedExperiment(Loaded); }, PC_EXPERIMENT_START);
    row(
        "open circuit", [](H &h, unsigned char c) { return h.setManualModeOCP(c); }, PC_MANUAL_OCP);
    row(
        "voltage", [](H &h, unsigned char c) { return h.setManualModeConstantVoltage(c, -1.5); },
        PC_MANUAL_POTENTIO_SETPOINT, wire(-1.5f));
    row(
        "current", [](H &h, unsigned char c) { return h.setManualModeConstantCurrent(c, 0.25); },
        PC_MANUAL_GALVANO_SETPOINT, wire(0.25f));
    row(
        "refused range leaves the set point",
        [](H &h, unsigned char c) {
            return h.setManualModeConstantVoltage(c, 2.0, 11) == E::ManualCurrentRangeNotSet ? E::Success : E::Unknown;
        },
        PC_MANUAL_POTENTIO_SETPOINT, wire(2.0f));
    row(
        "current range of a voltage", [](H &h, unsigned char c) { return h.setManualModeConstantVoltage(c, 2.0, 7); },
        PC_CURRENT_RANGE, wire(quint8(7)));
    row(
        "automatic voltage range", [](H &h, unsigned char c) { return h.setManualModeVoltageRange(c, 5); },
        PC_VOLTAGE_RANGE, wire(quint8(5)));
    row(
        "fast sampling", [](H &h, unsigned char c) { return h.setManualModeSamplingInterval(c, 0.25); },
        PC_MANUAL_SAMPLING_PARAMS, wire(0.25f));
    row(
        "slow sampling is thinned here", [](H &h, unsigned char c) { return h.setManualModeSamplingInterval(c, 3.0); },
        PC_MANUAL_SAMPLING_PARAMS, wire(1.0f));
    row(
        "stability", [](H &h, unsigned char c) { return h.setCompRange(c, VekCompRange({}, 2, 3)); }, PC_COMP_RANGE,
        wire(quint8(2), quint8(3)));
    row(
        "ohmic drop in percent", [](H &h, unsigned char c) { return h.setIRComp(c, 8.0, 75.0); }, PC_IR_COMP,
        wire(8.0f, 0.75f));
    row(
        "limits",
        [](H &h, unsigned char c) {
            h.setChannelImin(c, -0.5);
            h.setChannelImax(c, 0.5);
            h.setChannelVmin(c, -2.0);
            h.setChannelMaxTemperature(c, 60.0);
            return h.setChannelVmax(c, 4.0);
        },
        PC_CHANNEL_LIMITS, wire(-0.5f, 0.5f, -2.0f, 4.0f, 60.0f));
    row(
        "recovery data",
        [](H &h, unsigned char) {
            h.startRecoveryProcess();
            return E::Success;
        },
        PC_READ_MEMORY_DATA, wire(quint8(1)));
    row(
        "reset",
        [](H &h, unsigned char) {
            h.softReset();
            return E::Success;
        },
        PC_SOFT_RESET);
}

void TestHandlerRequests::sendsCommands()
{
    QFETCH(Request, request);
    QFETCH(PCcommand_t, command);
    QFETCH(QByteArray, payload);
    const auto bench = makeBench();
    bringIntoState(*bench);
    QVERIFY(bench->flush());
    bench->instrument.forgetCommands();
    QCOMPARE(int(request(*bench->handler, ManualMode)), int(E::Success));
    QVERIFY(bench->flush());
    QByteArray last;
    for (const FakeInstrument::Command &sent : bench->instrument.commands()) {
        if (sent.command == command)
            last = sent.payload;
    }
    QVERIFY(bench->instrument.count(command) > 0);
    QCOMPARE(last, payload);
}

void TestHandlerRequests::messagesNameEveryFault()
{
    const auto bench = makeBench();
    MainInstrumentHandler &handler = *bench->handler;
    QCOMPARE(handler.setCompRange(0, VekCompRange({}, 11, 11)).message(),
             QStringLiteral("Valid stability factor range is 0-10. Valid bandwidth index is 0-10. "));
    QCOMPARE(handler.setIRComp(0, -1.0, 150.0).message(),
             QStringLiteral("Valid CompensationLevel range is 0%-100%. Uncompensated Resistance should have positive "
                            "value."));
    QCOMPARE(handler.uploadExperimentToChannel(0, complaining()).message(),
             QStringLiteral("The Birch has a limit.\nBirch has two."));
    QCOMPARE(handler.requestSdCardCalibrationData(0), E::Success);
    QCOMPARE(handler.requestSdCardCalibrationData(0).message(), QStringLiteral("Sd card is currently read state."));
    handler.getChannelHandlers().at(0)->setSDCardStatus(ChannelHandler::SD_WRITING);
    QCOMPARE(handler.requestSdCardCalibrationData(0).message(), QStringLiteral("Sd card is currently write state."));
}

void TestHandlerRequests::sendsNothingThatCannotBeMeant()
{
    const auto bench = makeBench();
    MainInstrumentHandler &handler = *bench->handler;
    QCOMPARE(handler.startManualExperiment(ManualMode), E::Success);
    QCOMPARE(handler.setChannelVmax(ManualMode, 4.0), E::Success);
    QVERIFY(bench->flush());
    bench->instrument.forgetCommands();

    auto loop = std::make_shared<ListExperiment>(ListExperiment{});
    for (int i = 0; i < 65536; ++i)
        loop->append(makeNode(5, QStringLiteral("Constant Current"), 1));
    const VekErrorCode tooLarge = handler.uploadExperimentToChannel(Free, loop);
    QCOMPARE(tooLarge, E::ExperimentTooLarge);
    QVERIFY2(tooLarge.message().contains("65536"), qPrintable(tooLarge.message()));
    auto runner = std::make_shared<CustomExperimentRunner>();
    QVERIFY(runner->addElement(std::make_shared<ConstantCurrentAdvElement>(), 1));
    auto negative = std::make_shared<ConstantCurrentAdvElement>();
    negative->maxDuration = -1.0;
    QVERIFY(runner->addElement(negative, 1));
    const VekErrorCode implausible = handler.uploadExperimentToChannel(Free, runner);
    QCOMPARE(implausible, E::ImplausibleParameters);
    QCOMPARE(implausible.message(),
             QStringLiteral("Constant Current, Advanced::maxDuration is -1 s; the Birch takes values of at least 0 s, "
                            "or infinity for no limit."));

    for (const double value : {qQNaN(), qInf(), 1e9}) {
        QCOMPARE(handler.setManualModeConstantVoltage(ManualMode, value), E::ImplausibleParameters);
        QCOMPARE(handler.setManualModeConstantVoltage(ManualMode, value, 10), E::ImplausibleParameters);
        QCOMPARE(handler.setManualModeConstantCurrent(ManualMode, value), E::ImplausibleParameters);
    }
    QCOMPARE(handler.setManualModeSamplingInterval(ManualMode, qInf()), E::ImplausibleParameters);
    QCOMPARE(handler.setChannelVmax(ManualMode, qQNaN()), E::ImplausibleParameters);
    QCOMPARE(handler.getChannelHandlers().at(ManualMode)->getLimits().vMax, 4.0);
    QVERIFY(bench->flush());
    for (const PCcommand_t command :
         {PC_NODE_LIST_BEGIN, PC_NODE_APPEND, PC_MANUAL_POTENTIO_SETPOINT, PC_MANUAL_GALVANO_SETPOINT, PC_CURRENT_RANGE,
          PC_MANUAL_SAMPLING_PARAMS, PC_CHANNEL_LIMITS})
        QCOMPARE(bench->instrument.count(command), 0);
}

void TestHandlerRequests::uploadStoresNothingWhenItFails_data()
{
    QTest::addColumn<int>("answer"); // to the node; below zero: none
    QTest::addColumn<QString>("message");
    const QString silence =
        QStringLiteral("Experiment was not successfully uploaded to the channel. Please try again.");
    QTest::newRow("silence") << -1 << silence;
    QTest::newRow("list is full") << int(FW_NODE_NOT_APPENDED)
                                  << QStringLiteral("Experiment node cannot be appended to node list.");
    QTest::newRow("busy") << int(FW_CHANNEL_NOT_IDLE) << QStringLiteral("Channel is not in the idle state.");
    QTest::newRow("unheard of") << 99 << QStringLiteral("Unknown Error Code");
}

void TestHandlerRequests::uploadStoresNothingWhenItFails()
{
    QFETCH(int, answer);
    QFETCH(QString, message);
    const auto bench = makeBench();
    QCOMPARE(bench->handler->uploadExperimentToChannel(Loaded, oneNode()), E::Success);
    if (answer < 0)
        bench->instrument.on(PC_NODE_APPEND, [&](const FakeInstrument::Command &) { bench->clock.step(1000); });
    else
        bench->instrument.reply(PC_NODE_APPEND, NT_NODE_APPENDED, wire(quint8(answer)));
    for (const unsigned char channel : {Free, Loaded}) {
        const VekErrorCode result = bench->handler->uploadExperimentToChannel(channel, oneNode());
        QCOMPARE(result, E::UploadFailed);
        QCOMPARE(result.message(), message);
        // Not even what was uploaded before: the instrument has forgotten it.
        QCOMPARE(bench->handler->startUploadedExperiment(channel), E::ExperimentNotUploaded);
    }
}

void TestHandlerRequests::uploadCountsAnswersThatWaited_data()
{
    QTest::addColumn<bool>("isClientHeld"); // else the handler's thread
    QTest::newRow("client's thread held") << true;
    QTest::newRow("handler's thread held") << false;
}

/// The answer comes at once, but a slot of the client holds a thread that it must pass for longer than it may take.
void TestHandlerRequests::uploadCountsAnswersThatWaited()
{
    QFETCH(bool, isClientHeld);
    const auto bench = makeBench();
    if (!isClientHeld)
        connect(
            bench->handler.get(), &VekInstrumentHandlerPrivate::groundFloatStateChanged, bench->handler.get(),
            [&] {
                waitForPostedEvent(); // the answer
                bench->clock.step(1000);
            },
            Qt::DirectConnection);
    bench->instrument.on(PC_NODE_APPEND, [&](const FakeInstrument::Command &command) {
        if (!isClientHeld)
            bench->instrument.send(NT_GROUND_FLOAT, 0, wire(quint8(1)));
        bench->instrument.send(NT_NODE_APPENDED, command.channel, wire(quint8(FW_SUCCESS)));
        if (!isClientHeld)
            return;
        QVERIFY(waitForPostedEvent());
        bench->clock.step(1000);
    });
    QCOMPARE(bench->handler->uploadExperimentToChannel(Free, oneNode()).message(), QStringLiteral("Success"));
}

void TestHandlerRequests::startBeginsTheChargeAnew()
{
    const auto bench = makeBench();
    QCOMPARE(bench->handler->uploadExperimentToChannel(Loaded, oneNode()), E::Success);
    CumulativeCapacityTracker &capacity = bench->handler->getChannelHandlers().at(Loaded)->capacity;
    capacity.onNodeBeginning(1, false);
    capacity.onDcDataReceived(5.0);
    QCOMPARE(bench->handler->startUploadedExperiment(Loaded), E::Success);
    QCOMPARE(capacity.getLiveExperimentAbs_C(), 0.0);
    QVERIFY(bench->handler->isChannelBusy(Loaded));
    QCOMPARE(bench->handler->getExperimentUTCStartTime(Loaded), 0.0); // no data yet
}

void TestHandlerRequests::refusedStartFreesTheChannel_data()
{
    QTest::addColumn<Request>("start");
    QTest::addColumn<PCcommand_t>("command");
    QTest::addColumn<int>("code");
    QTest::addColumn<VekExperimentEnd>("end");
    QTest::addColumn<QString>("reason");
    const Request experiment = [](VekInstrumentHandlerPrivate &h, unsigned char c) {
        return h.startUploadedExperiment(c);
    };
    const Request manual = [](VekInstrumentHandlerPrivate &h, unsigned char c) { return h.startManualExperiment(c); };
    QTest::newRow("manual") << manual << PC_MANUAL_START << 4 << VekExperimentEnd::RefusedManualStart
                            << QStringLiteral("Manual experiment failed to start.");
    const auto row = [&experiment](const char *name, int code, VekExperimentEnd end, const char *reason) {
        QTest::newRow(name) << experiment << PC_EXPERIMENT_START << code << end << QString::fromLatin1(reason);
    };
    using End = VekExperimentEnd;
    row("already set", 1, End::RefusedAlreadySet, "Requested parameters already set.");
    row("bandwidth", 2, End::RefusedBandwidthIndex, "Invalid bandwidth index.");
    row("stability", 3, End::RefusedStabilityIndex, "Invalid stability factor index.");
    row("current range", 5, End::RefusedCurrentRange, "Invalid current range.");
    row("voltage range", 6, End::RefusedVoltageRange, "Invalid voltage range.");
    row("not idle", 7, End::RefusedNotIdle, "Channel is not in the idle state.");
    row("node", 8, End::RefusedNode, "Experiment node cannot be appended to node list.");
    row("no experiment", 9, End::RefusedNoExperiment, "No experiment is uploaded to the channel.");
    row("state", 10, End::RefusedChannelState, "The channel was not in the proper state to execute the command");
    row("parameters", 11, End::RefusedParameters, "Invalid parameters.");
    row("not supported", 12, End::RefusedNotSupported, "This feature is not supported on this model.");
    row("no answer", -1, End::RefusedNoAnswer, "The device did not respond to the command.");
    row("unheard of", 99, End::Refused, "Unknown Error Code");
}

void TestHandlerRequests::refusedStartFreesTheChannel()
{
    QFETCH(Request, start);
    QFETCH(PCcommand_t, command);
    QFETCH(int, code);
    QFETCH(VekExperimentEnd, end);
    QFETCH(QString, reason);
    const auto bench = makeBench();
    QSignalSpy ends(bench->device.get(), &VekInstrumentHandler::experimentStopped);
    QSignalSpy values(bench->device.get(), &VekInstrumentHandler::experimentEnded);
    bench->instrument.reply(command, NT_GENERAL_ACK, wire(quint8(command), quint8(code)));
    for (int count = 1; count <= 2; ++count) { // the next one is judged anew
        QCOMPARE(bench->handler->uploadExperimentToChannel(Loaded, oneNode()), E::Success);
        QCOMPARE(start(*bench->handler, Loaded), E::Success);
        QTRY_COMPARE(ends.size(), count);
        QCOMPARE(ends.last(), (QVariantList{QVariant::fromValue<unsigned char>(Loaded), reason}));
        QCOMPARE(values.size(), count);
        QCOMPARE(values.last(), (QVariantList{ends.last().first(), QVariant::fromValue(end), reason}));
        QVERIFY(!bench->device->isChannelBusy(Loaded));
        QCOMPARE(bench->handler->startUploadedExperiment(Loaded), E::ExperimentNotUploaded);
    }
}

void TestHandlerRequests::refusalOfNoStartChangesNothing_data()
{
    QTest::addColumn<QByteArray>("before"); // what the instrument has sent before its refusal of a start
    QTest::addColumn<PCcommand_t>("refused");
    const auto ack = [](PCcommand_t command) {
        return makeFrame(NT_GENERAL_ACK, Loaded, wire(quint8(command), quint8(FW_SUCCESS)));
    };
    QTest::newRow("start was acknowledged") << ack(PC_EXPERIMENT_START) << PC_EXPERIMENT_START;
    QTest::newRow("data have begun") << makeFrame(NT_DATA_BEGIN, Loaded, wire(quint64(1))) << PC_EXPERIMENT_START;
    QTest::newRow("another kind of start") << QByteArray() << PC_MANUAL_START;
    QTest::newRow("run has ended") << makeFrame(NT_EXPERIMENT_DONE, Loaded, QByteArray(9, '\1')) << PC_EXPERIMENT_START;
}

void TestHandlerRequests::refusalOfNoStartChangesNothing()
{
    QFETCH(QByteArray, before);
    QFETCH(PCcommand_t, refused);
    const auto bench = makeBench();
    QSignalSpy ends(bench->device.get(), &VekInstrumentHandler::experimentStopped);
    QCOMPARE(bench->handler->uploadExperimentToChannel(Loaded, oneNode()), E::Success);
    QCOMPARE(bench->handler->startUploadedExperiment(Loaded), E::Success);
    bench->instrument.sendRaw(before);
    for (const unsigned char channel : {Free, Loaded, Column(invalidChannel)})
        bench->instrument.send(NT_GENERAL_ACK, channel, wire(quint8(refused), quint8(FW_CHANNEL_NOT_IDLE)));
    QVERIFY(bench->settle());
    const bool hasEnded = before.contains(char(NT_EXPERIMENT_DONE));
    QCOMPARE(ends.size(), hasEnded ? 1 : 0);
    QCOMPARE(bench->device->isChannelBusy(Loaded), !hasEnded);
}

void TestHandlerRequests::lateNewsOfAnIdleChannelChangesNothing()
{
    const auto bench = makeBench();
    QSignalSpy pauses(bench->device.get(), &VekInstrumentHandler::experimentPaused);
    QSignalSpy resumptions(bench->device.get(), &VekInstrumentHandler::experimentResumed);
    for (const unsigned char channel : {Column(Free), Column(invalidChannel)}) {
        bench->instrument.send(NT_EXPERIMENT_PAUSED, channel);
        bench->instrument.send(NT_EXPERIMENT_RESUMED, channel);
        QVERIFY(bench->settle());
        QVERIFY(!bench->device->isChannelBusy(channel));
    }
    QVERIFY(pauses.isEmpty() && resumptions.isEmpty());
}

void TestHandlerRequests::limitsAreStoredEvenWithoutAnswer()
{
    const auto bench = makeBench();
    bench->ignore(PC_CHANNEL_LIMITS, 50);
    VekInstrumentHandlerPrivate &handler = *bench->handler;
    QCOMPARE(handler.setChannelVmax(0, 1.0), E::ChannelVmaxNotSet);
    QCOMPARE(handler.setChannelVmin(0, 2.0), E::ChannelVminNotSet);
    QCOMPARE(handler.setChannelImax(0, 3.0), E::ChannelImaxNotSet);
    QCOMPARE(handler.setChannelImin(0, 4.0), E::ChannelIminNotSet);
    QCOMPARE(handler.setChannelMaxTemperature(0, 5.0), E::ChannelTemperatureNotSet);
    const ChannelLimit limits = handler.getChannelHandlers().at(0)->getLimits();
    QCOMPARE(limits.vMax, 1.0);
    QCOMPARE(limits.temperatureMax, 5.0);
    QCOMPARE(handler.resetChannelLimits(0), E::Success); // whatever the instrument says
    QCOMPARE(handler.getChannelHandlers().at(0)->getLimits().vMax, qInf());
}

void TestHandlerRequests::rangesAreClippedToTheModel()
{
    const auto bench = makeBench();
    const auto full = bench->handler->getFullCurrentRangeList(0);
    const auto dc = bench->handler->getDCCurrentRangeList(0);
    QVERIFY(!dc.empty());
    QVERIFY(dc.size() <= 8u); // the model's count of DC ranges
    QCOMPARE(dc.front(), full.front());
    QCOMPARE(dc.front(), std::make_pair(-1.0, 1.0)); // the record spans 1.6 A, the model 1 A
    QVERIFY(qAbs(dc[1].second - 0.16) < 1e-6);       // 32000 counts at gain 10; 32767 counts could be set
    QVERIFY(bench->handler->getDCCurrentRangeList(invalidChannel).empty());
    QCOMPARE(bench->handler->getManualModeVoltageRangeList(0).size(), std::size_t(1));
    QVERIFY(bench->handler->getManualModeVoltageRangeList(invalidChannel).empty());
}

void TestHandlerRequests::answersQueries()
{
    const auto bench = makeBench();
    bringIntoState(*bench);
    const VekInstrumentHandler &device = *bench->device;
    QCOMPARE(device.getNumberOfChannels(), int(channelCount));
    QCOMPARE(device.getFreeChannels(), (std::vector<unsigned char>{Free, Loaded}));
    QVERIFY(device.isChannelBusy(Paused) && device.isChannelPaused(Paused));
    QVERIFY(!device.isChannelPaused(Running) && !device.isChannelBusy(invalidChannel));
    QCOMPARE(bench->device->getLoadImpedance(invalidChannel), 10.0f);
    QVERIFY(bench->handler->isManualExperimentRun(ManualMode) && !bench->handler->isManualExperimentRun(Running));
    QVERIFY(bench->handler->isIdleExperimentRun(Loaded) && !bench->handler->isIdleExperimentRun(invalidChannel));
    QCOMPARE(device.setLinkedChannels({0, 1}), -1);
    QVERIFY(device.getLinkedChannels(0).empty());
    QCOMPARE(device.setFanSpeedVariable(), E::FeatureNotSupported);
    QCOMPARE(device.setFanSpeedMaximum(), E::Success);
}

void TestHandlerRequests::withoutDevice()
{
    VekInstrumentHandler device(nullptr);
    QCOMPARE(device.uploadExperimentToChannel(0, std::shared_ptr<VekExperiment>()), E::ExperimentIsEmpty);
    QCOMPARE(device.uploadExperimentToChannel(0, VekExperiment()), E::DeviceNotFound);
    QCOMPARE(device.stopExperiment(0), E::DeviceNotFound);
    QCOMPARE(device.setLinkedChannels({0}), -1);
    QCOMPARE(device.getLoadImpedance(0), 13.0f);
    QCOMPARE(device.getNumberOfChannels(), 0);
    QCOMPARE(device.getDescription().modelNumber, -1);
    QVERIFY(device.getFreeChannels().empty());
    QVERIFY(!device.isChannelBusy(0));
}

void TestHandlerRequests::verdictsOfTheInstrument_data()
{
    QTest::addColumn<PCcommand_t>("command");
    QTest::addColumn<int>("code");

    QTest::newRow("open circuit") << PC_MANUAL_OCP << int(E::ManualOcpNotSet);
    QTest::newRow("current range") << PC_CURRENT_RANGE << int(E::ManualCurrentRangeNotSet);
    QTest::newRow("voltage range") << PC_VOLTAGE_RANGE << int(E::ManualVoltageRangeNotSet);
    QTest::newRow("voltage") << PC_MANUAL_POTENTIO_SETPOINT << int(E::ManualVoltageNotSet);
    QTest::newRow("current") << PC_MANUAL_GALVANO_SETPOINT << int(E::ManualCurrentNotSet);
    QTest::newRow("sampling") << PC_MANUAL_SAMPLING_PARAMS << int(E::ManualSamplingNotSet);
    QTest::newRow("ohmic drop") << PC_IR_COMP << int(E::IRCompNotSet);
    QTest::newRow("stability") << PC_COMP_RANGE << int(E::CompRangeNotSet);
}

void TestHandlerRequests::verdictsOfTheInstrument()
{
    QFETCH(PCcommand_t, command);
    QFETCH(int, code);
    const auto bench = makeBench();
    QVector<VekErrorCode> results;
    using H = VekInstrumentHandlerPrivate;
    for (const auto signal : {&H::manualOcpAck, &H::manualCurrentRangeAck, &H::manualVoltageRangeAck,
                              &H::manualVoltageValueAck, &H::manualCurrentValueAck, &H::manualSamplingIntervalAck,
                              &H::irCompAck, &H::compRangeAck, &H::channelGlobalLimitAck}) {
        connect(bench->handler.get(), signal, this,
                [&results](unsigned char, const VekErrorCode &result) { results << result; });
    }
    bench->instrument.send(NT_GENERAL_ACK, 1, wire(quint8(command), quint8(FW_SUCCESS)));
    bench->instrument.send(NT_GENERAL_ACK, 1, wire(quint8(command), quint8(FW_BAD_CHANNEL_STATE)));
    QVERIFY(bench->settle());
    bench->handler->disconnect(this);
    QCOMPARE(results.size(), 2);
    QCOMPARE(results[0], E::Success);
    QCOMPARE(int(results[1].value()), code);
    QCOMPARE(results[1].message(), QStringLiteral("The channel was not in the proper state to execute the command"));
}

NIMBRELLE_TEST_MAIN(TestHandlerRequests)
#include "TestHandlerRequests.moc"
