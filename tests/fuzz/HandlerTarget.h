// SPDX-License-Identifier: MIT
#pragma once

#include "FuzzTarget.h"
#include "elements/NodeMakers.h"
#include "handlers/HandlerBench.h"
#include "handlers/ListExperiment.h"
#include "session/InstrumentOperator.h"

/// A handler that lives on the fuzzer's thread, so that a notification has been dealt with when the call returns.
template <class Handler>
class DrivenHandler : public Handler
{
public:
    DrivenHandler(const InstrumentInfo &info, const Clock &clock) : Handler(info, clock), _fresh(info.calibration)
    {
        QThread *const here = QThread::currentThread();
        QMetaObject::invokeMethod(
            this, [this, here] { this->moveToThread(here); }, Qt::BlockingQueuedConnection);
        this->_op->disconnectDevice(); // what is sent vanishes
        for (auto signal : {&Handler::activeDCDataReady, &Handler::idleDCDataReady})
            QObject::connect(this, signal, this, [this](unsigned char channel) { mustKnow(channel); });
        QObject::connect(this, &Handler::activeACDataReady, this, [this](unsigned char channel) { mustKnow(channel); });
    }
    ~DrivenHandler() override { this->shutDown(); }

    InstrumentOperator &instrument() { return *this->_op; }

    /// As it was when the instrument was connected.
    void reset()
    {
        this->_info.calibration = _fresh;
        this->_channels.clear();
        for (int channel = 0; channel < this->_info.channelCount; ++channel) {
            const auto number = static_cast<unsigned char>(channel);
            this->_channels.emplace(number, std::make_unique<ChannelHandler>(this->_info.deviceName, number));
        }
    }

    /// Loads nodes as an upload would, which waits for acknowledgements.
    void load(unsigned char channel, const NodeList &nodes)
    {
        if (ChannelHandler *const handler = this->channelAt(channel)) {
            handler->setLoadedExp(std::make_shared<ListExperiment>(std::initializer_list<Node>{}));
            handler->setLoadedNodeList(nodes);
        }
    }
    void setMode(unsigned char channel, ChannelHandler::ExperimentMode mode)
    {
        if (ChannelHandler *const handler = this->channelAt(channel))
            handler->setRunningExperimentMode(mode);
    }

private:
    void mustKnow(unsigned char channel)
    {
        mustHold(this->isValidChannel(channel), "data belong to a channel that the instrument has");
    }

    const QList<CalibrationData> _fresh;
};

/**
 * What an instrument may send to a handler, and what a client may do meanwhile, in any order.
 *
 * The input is a row of steps; a step is a byte that chooses it, a channel, and what the step takes.
 */
template <class Handler>
class HandlerTarget
{
public:
    template <class CalibrationRecord>
    HandlerTarget(HardwareModel_t model, const CalibrationRecord &record)
        : _bench(model, channelCount, record), _handler(*_bench.handler)
    {
    }

    void run(FuzzInput &input)
    {
        while (!input.isEmpty())
            step(input);
        _handler.reset();
    }

private:
    static constexpr int channelCount = 4;

    /// A notification and the size of its payload, -1 for a text.
    struct Row {
        Notifications_t type;
        int size;
    };
    static constexpr Row rows[] = {
        {NT_DC_DATA, 44},          {NT_DC_DATA, 36},          {NT_AC_DATA, -1},           {NT_AC_DATA, 22},
        {NT_AC_DATA, 36},          {NT_AC_DATA, 50},          {NT_AC_DATA, 64},           {NT_AC_DATA_INVALID, 34},
        {NT_AC_SAMPLE_DONE, 0},    {NT_NODE_BEGIN, 10},       {NT_NODE_DONE, 12},         {NT_DATA_BEGIN, 8},
        {NT_EXPERIMENT_DONE, 9},   {NT_EXPERIMENT_PAUSED, 0}, {NT_EXPERIMENT_RESUMED, 0}, {NT_SD_CAL_HEADER, 256},
        {NT_SD_CAL_DATA, -1},      {NT_TARE_CURRENT, 5},      {NT_TARE_VOLTAGE, 5},       {NT_CONFIG, 288},
        {NT_META_DATA, 56},        {NT_DEVICE_STATUS, 2},     {NT_GENERAL_ACK, 2},        {NT_ERROR_TEXT, -1},
        {NT_OVERCURRENT, 0},       {NT_CURRENT_RANGE_UP, 1},  {NT_NODE_APPENDED, 1},      {NT_TIME_REQUEST, 0},
        {NT_MEMORY_BLOCK_END, -1}, {NT_GROUND_FLOAT, 1},
    };

    void step(FuzzInput &input)
    {
        const int choice = input.below(int(std::size(rows)) + 10);
        const auto channel = input.take<quint8>();
        if (choice < int(std::size(rows)))
            return notify(rows[choice].type, channel, payload(input, rows[choice].size));
        switch (choice - int(std::size(rows))) {
        case 0:
            return notify(Notifications_t(input.take<qint8>()), channel, input.text());
        case 1:
            return notify(rows[input.below(int(std::size(rows)))].type, channel, input.text());
        case 2:
            return load(input, channel);
        case 3:
            _handler.startUploadedExperiment(channel);
            return;
        case 4:
            _handler.startManualExperiment(channel);
            return;
        case 5:
            _handler.setMode(channel, ChannelHandler::ExperimentMode(input.below(4)));
            return;
        case 6:
            link(input, channel);
            return;
        case 7:
            _handler.requestSdCardCalibrationData(channel);
            return;
        case 8:
            _handler.pauseExperiment(channel);
            _handler.stopExperiment(channel);
            return;
        default:
            return askForRanges(channel);
        }
    }

    static QByteArray payload(FuzzInput &input, int size) { return size < 0 ? input.text() : input.record(size); }

    void notify(Notifications_t type, unsigned char channel, const QByteArray &payload)
    {
        _handler.instrument().responseReceived(type, channel, payload);
    }

    void load(FuzzInput &input, unsigned char channel)
    {
        NodeList nodes;
        for (int left = input.below(4); left > 0; --left) {
            Node node;
            node.hwNode.type = input.take<quint8>();
            node.hwNode.flags = input.take<quint8>();
            const auto members = input.take<quint8>();
            node.setNodeMembers({}, members & 1, input.number(), input.take<qint8>(), members & 2, members & 4);
            node.downsampleFactor = input.take<quint8>();
            nodes.addNode(node);
        }
        _handler.load(channel, nodes);
    }

    void link(FuzzInput &input, unsigned char channel)
    {
        const auto second = input.take<quint8>();
        _handler.setLinkedChannels({channel, second}, input.flag());
    }

    void askForRanges(unsigned char channel)
    {
        _handler.getDCCurrentRangeList(channel);
        _handler.getManualModeVoltageRangeList(channel);
        _handler.setManualModeConstantCurrent(channel, 0.1);
        _handler.setManualModeConstantVoltage(channel, 1.0);
    }

    HandlerBench<DrivenHandler<Handler>> _bench;
    DrivenHandler<Handler> &_handler;
};
