// SPDX-License-Identifier: MIT
#pragma once

#include "VekInstrumentHandler.h"
#include "calibration/RecordBytes.h"
#include "calibration/Records.h"
#include "handlers/VekInstrumentHandlerPrivate.h"
#include "session/InstrumentInfo.h"
#include "support/FakeInstrument.h"
#include "support/SteppedClock.h"
#include "support/TestMain.h"

#include <memory>
#include <optional>

/// Bytes of numbers one after the other, as they travel.
template <typename... Numbers>
QByteArray wire(Numbers... numbers)
{
    return (bytesOfRecord(numbers) + ... + QByteArray());
}

/// What a client sees of its runs, in order: samples and elements by their channel, and ends.
class RunLog
{
public:
    explicit RunLog(const VekInstrumentHandler &device)
    {
        using Device = VekInstrumentHandler;
        QObject::connect(&device, &Device::activeDCDataReady, &_context,
                         [this](unsigned char channel, const VekDCData &data) {
                             samples << data;
                             lines << QStringLiteral("%1: %2 s").arg(channel).arg(data.timestamp);
                         });
        QObject::connect(&device, &Device::experimentNewElementStarting, &_context,
                         [this](unsigned char channel, const VekExperimentNode &node) {
                             lines << QStringLiteral("%1: %2").arg(channel).arg(node.stepName);
                         });
        QObject::connect(&device, &Device::experimentStopped, &_context, [this] { lines << QStringLiteral("end"); });
    }

    QStringList lines;
    QVector<VekDCData> samples;

private:
    QObject _context;
};

/**
 * A handler on a fake instrument, which acknowledges whatever a handler waits for, and the client's object in front. Time
 * stands still unless a test steps it.
 *
 * @thread The test's. Private signals come from the handler's thread: spy on the client's object, or connect with a
 *         context of the test's thread.
 */
template <class Handler>
class HandlerBench
{
public:
    template <class CalibrationRecord>
    HandlerBench(HardwareModel_t model, int channels, const CalibrationRecord &record)
    {
        instrument.reply(PC_NODE_APPEND, NT_NODE_APPENDED, wire(quint8(FW_SUCCESS)));
        for (const PCcommand_t command : {PC_CHANNEL_LIMITS, PC_MANUAL_SAMPLING_PARAMS})
            instrument.reply(command, NT_GENERAL_ACK, wire(quint8(command), quint8(FW_SUCCESS)));
        ignore(PC_READ_DEVICE_STATUS, 100);
        InstrumentInfo info;
        info.channelCount = quint8(channels);
        info.hardware.hwModel = model;
        info.deviceName = QStringLiteral("Bench-1");
        info.comPort = instrument.portName();
        for (int channel = 0; channel < channels; ++channel)
            info.calibration << calibrated(model, record);
        handler = std::make_unique<Handler>(info, clock);
        device = std::make_unique<VekInstrumentHandler>(handler.get());
    }

    /// Leaves a command without an answer; the three passes of the wait for it are over at once.
    void ignore(PCcommand_t command, int passMs)
    {
        instrument.on(command, [this, passMs](const FakeInstrument::Command &) {
            clock.hurry(passMs, 2);
            clock.step(passMs);
        });
    }

    /// Returns when everything that was sent before has been through the handler and its signals have arrived.
    bool settle()
    {
        QSignalSpy marks(device.get(), &VekInstrumentHandler::groundFloatStateChanged);
        instrument.send(NT_GROUND_FLOAT, 0, wire(quint8(1)));
        return marks.size() == 1 || marks.wait();
    }

    /// Returns when everything that the handler has handed over has arrived at the instrument.
    bool flush()
    {
        const int before = instrument.count(PC_ERASE_MEMORY_DATA);
        handler->eraseRecoveryData();
        return QTest::qWaitFor([&] { return instrument.count(PC_ERASE_MEMORY_DATA) > before; });
    }

    /// Runs the start-up to its end. @return whether that came in time and said what is expected of the connection
    bool startUp(int timeoutMs, bool isConnectionExpected = true)
    {
        std::optional<bool> isConnected;
        QObject context;
        QObject::connect(handler.get(), &VekInstrumentHandlerPrivate::initialConnectionRequestFinished, &context,
                         [&isConnected](bool connected) { isConnected = connected; });
        QMetaObject::invokeMethod(handler.get(), "sendInitialDefaults", Qt::QueuedConnection);
        return QTest::qWaitFor([&isConnected] { return isConnected.has_value(); }, timeoutMs) &&
               isConnected == isConnectionExpected;
    }

    /// The channels that a command has named, in the order in which they came.
    std::vector<unsigned char> channelsOf(PCcommand_t command) const
    {
        std::vector<unsigned char> channels;
        for (const FakeInstrument::Command &each : instrument.commands()) {
            if (each.command == command)
                channels.push_back(each.channel);
        }
        return channels;
    }

    SteppedClock clock;
    FakeInstrument instrument;
    std::unique_ptr<Handler> handler;
    std::unique_ptr<VekInstrumentHandler> device;
};
