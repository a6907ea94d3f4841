// SPDX-License-Identifier: MIT
#include "handlers/MainInstrumentHandler.h"

#include "calibration/RecordBytes.h"
#include "channels/AcDataAverage.h"
#include "channels/OutputData.h"
#include "hardware_models/HardwareModel.h"
#include "nimbrellelibrary/NimbrelleLib.h"
#include "session/InstrumentOperator.h"
#include "waiting/BoundedWait.h"

#include <QDebug>
#include <QStringList>
#include <QTimer>

#include <algorithm>
#include <iterator>

namespace {

constexpr NodeRules mainRules{InstrumentLine::Main, true, 0};
constexpr int nodeDoneSize = 12;

/// Bits of the device's status word.
namespace DeviceStatus {
constexpr quint16 isValid = 1u << 8;
constexpr int reportedChannels = 4;
constexpr bool isDataAvailable(quint16 status, int channel)
{
    return channel < reportedChannels && (status >> channel & 1u);
}
constexpr bool isStillRunning(quint16 status, int channel)
{
    return channel < reportedChannels && (status >> (reportedChannels + channel) & 1u);
}
constexpr VekChannelReport report(quint16 status, int channel)
{
    if (channel >= reportedChannels)
        return VekChannelReport::Unknown;
    return isStillRunning(status, channel) ? VekChannelReport::Running : VekChannelReport::Idle;
}
} // namespace DeviceStatus

} // namespace

MainInstrumentHandler::MainInstrumentHandler(const InstrumentInfo &info, const Clock &clock)
    : VekInstrumentHandlerPrivate(info, clock)
{
}

MainInstrumentHandler::~MainInstrumentHandler()
{
    shutDown();
}

// Start-up

void MainInstrumentHandler::sendInitialDefaults()
{
    using Me = MainInstrumentHandler;
    connect(_op, &InstrumentOperator::channelstatusInformation, this, &Me::channelstatusInformation);
    take({&Me::askForStatus, &Me::readCalibrationTables, &Me::resetLimitsOfIdleChannels, &Me::setFanUnlessRunning,
          &Me::askForGround});
    Q_EMIT initialConnectionRequestFinished(_op->isConnected());
}

void MainInstrumentHandler::take(std::initializer_list<Step> steps)
{
    for (const Step step : steps) {
        if (_op->isConnected())
            (this->*step)();
    }
}

// The status again: its answer erases what no channel is in need of any more.
void MainInstrumentHandler::prepareInstrument()
{
    using Me = MainInstrumentHandler;
    take({&Me::askForStatus, &Me::readCalibrationTables, &Me::setFanUnlessRunning});
}

bool MainInstrumentHandler::canReport(unsigned char channel) const
{
    return channel < DeviceStatus::reportedChannels;
}

void MainInstrumentHandler::askForStatus()
{
    _op->readDeviceStatus();
}

void MainInstrumentHandler::setFanUnlessRunning()
{
    const std::vector<unsigned char> channels = channelNumbers();
    const bool isAnyRunning =
        std::any_of(channels.begin(), channels.end(), [this](unsigned char channel) { return mayStillRun(channel); });
    if (_untouched.empty() && !isAnyRunning)
        _op->SetFanMode(FAN_FIXED);
}

void MainInstrumentHandler::askForGround()
{
    _op->requestGroundFloatState();
}

void MainInstrumentHandler::channelstatusInformation(const QByteArray &payload)
{
    const auto status = recordFromBytes<quint16>(payload);
    if (status & DeviceStatus::isValid) {
        for (const auto &[number, channel] : _channels) {
            channel->setRecoverDataStatus(DeviceStatus::isDataAvailable(status, number));
            channel->setActiveRecoverExperimentStatus(DeviceStatus::isStillRunning(status, number));
            channel->setReport(DeviceStatus::report(status, number));
        }
    } else if (_untouched.empty()) {
        eraseRecoveryData();
    }
    _op->readMetaData();
}

void MainInstrumentHandler::readCalibrationTables()
{
    const bool isCardRead = model()->sdCardHasCalData() && _untouched.empty();
    std::set<unsigned char> pending;
    for (const unsigned char channel : channelNumbers()) {
        loadCalibrationTables(channel);
        if (isCardRead && requestSdCardCalibrationData(channel) == VekErrorCode::Success)
            pending.insert(channel);
    }
    if (!pending.empty())
        waitForSdCard(pending);
}

void MainInstrumentHandler::waitForSdCard(std::set<unsigned char> pending)
{
    constexpr int lookMs = 20;
    constexpr int longestMs = 5000;
    BoundedWait reading(longestMs, _clock);
    QTimer looks; // the end of a run ends a reading as well; looks decide nothing, so the system's time will do
    const auto look = [&] {
        keepThoseBeingRead(pending);
        if (pending.empty())
            reading.end(WaitEnd::Answered);
    };
    connect(&looks, &QTimer::timeout, &looks, look);
    connect(_op, &InstrumentOperator::calibrationHeaderReceived, &looks, look, Qt::QueuedConnection);
    connect(_op, &InstrumentOperator::calibrationDataReceived, &looks, look, Qt::QueuedConnection);
    looks.start(lookMs);
    reading.endOn(_op, &InstrumentOperator::deviceDisconnected, WaitEnd::LinkLost);
    if (_op->isConnected())
        reading.exec();

    keepThoseBeingRead(pending);
    if (!pending.empty() && _op->isConnected())
        warnOfUnreadTables(pending);
}

void MainInstrumentHandler::keepThoseBeingRead(std::set<unsigned char> &pending) const
{
    for (auto channel = pending.begin(); channel != pending.end();)
        channel = isSDCardReading(*channel) ? std::next(channel) : pending.erase(channel);
}

void MainInstrumentHandler::warnOfUnreadTables(const std::set<unsigned char> &channels) const
{
    QStringList numbers;
    for (const unsigned char channel : channels)
        numbers << QString::number(channel);
    qWarning().noquote() << QStringLiteral("[%1] SD calibration read timed out on channel(s): %2")
                                .arg(_info.deviceName, numbers.join(QStringLiteral(", ")));
}

VekErrorCode MainInstrumentHandler::setFanSpeedVariable(bool variable)
{
    if (!model()->isFanModeSupported())
        return variable ? VekErrorCode::FeatureNotSupported : VekErrorCode::Success;
    if (!_op->SetFanMode(variable ? FAN_VARIABLE : FAN_FIXED))
        return VekErrorCode::CommandNotSent;
    return VekErrorCode::Success;
}

// Nodes and data

void MainInstrumentHandler::onExperimentNodeBeginning(unsigned char channel, const QByteArray &payload)
{
    beginNode(channel, payload, mainRules);
}

void MainInstrumentHandler::onExperimentNodeCompleted(unsigned char channel, const QByteArray &payload)
{
    ChannelHandler *const handler = channelAt(channel);
    if (!handler || line() != InstrumentLine::Main || payload.size() != nodeDoneSize)
        return;
    reportHeldBack(channel);
    handler->capacity.onNodeCompleted();
}

void MainInstrumentHandler::onExperimentDCDataReceived(unsigned char channel, const QByteArray &payload)
{
    ChannelHandler *const handler = channelAt(channel);
    if (!handler || line() != InstrumentLine::Main || payload.size() != int(sizeof(MainDcRecord_t)))
        return;
    const ProcessedDCData point = calibrationOf(channel).ProcessDCDataPoint(payload);
    handler->capacity.onDcDataReceived(point.charge); // before any filter: charge counts when samples are dropped
    const VekDCData data = withCharge(DcOutputData(point), point.charge, handler->capacity);
    if (hasExperimentData(*handler))
        reportExperimentData(channel, data);
    else
        Q_EMIT idleDCDataReady(channel, data);
}

void MainInstrumentHandler::reportExperimentData(unsigned char channel, VekDCData data)
{
    ChannelHandler *const handler = channelAt(channel);
    const bool isDue = handler->dc.countSample();
    handler->startClockOnce(data.timestamp);
    if (isChannelPause(channel))
        return;
    data.timestamp -= handler->startTimestamp;
    if (isDue && hasMinVoltageDifference(channel, data.workingElectrodeVoltage))
        emitDCData(channel, data);
    else
        holdBack(*handler, {data, std::nullopt});
}

void MainInstrumentHandler::onExperimentACDataReceived(unsigned char channel, const QByteArray &payload)
{
    ChannelHandler *const handler = channelAt(channel);
    if (!handler || line() != InstrumentLine::Main)
        return;
    handler->ac.points.push_back(
        NimbrelleLib::AnalyzeFRA(payload, &calibrationOf(channel), modelNumber(), _info.deviceName));
}

void MainInstrumentHandler::onACDataSampleFinshed(unsigned char channel)
{
    if (line() != InstrumentLine::Main || !isChannelBusy(channel))
        return;
    ChannelHandler *const handler = channelAt(channel);
    const ComplexDataPoint_t average = AcDataAverage(handler->ac.points).getDataPoint();
    handler->ac.points.clear();
    handler->startClockOnce(average.timestamp);
    if (!isChannelPause(channel)) // a point that is finished in a pause is lost
        emitACData(channel, average);
}

void MainInstrumentHandler::onACDataInvalidated(unsigned char, const QByteArray &)
{
    // Invalid AC records are a concern of the battery cyclers alone.
}
