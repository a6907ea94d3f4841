// SPDX-License-Identifier: MIT
#include "handlers/GaleInstrumentHandler.h"

#include "calibration/RecordBytes.h"
#include "elements/AbstractExperiment.h"
#include "numerics/Constants.h"
#include "session/InstrumentOperator.h"

#include <QDebug>

#include <algorithm>
#include <limits>
#include <utility>

namespace {

constexpr NodeRules galeRules{InstrumentLine::Gale, false, 10};
constexpr float largestLoadImpedance = 10000.0f; // ohms

#pragma pack(push, 1)
struct TareRecord_t {
    float offset; // amperes or volts
    quint8 range;
};
#pragma pack(pop)
static_assert(sizeof(TareRecord_t) == 5, "the record as it travels");

bool contains(const std::vector<unsigned char> &channels, int channel)
{
    return std::find(channels.begin(), channels.end(), channel) != channels.end();
}

/// The other channel of a channel's board.
int neighbourOf(unsigned char channel)
{
    return channel ^ 1;
}

} // namespace

GaleInstrumentHandler::GaleInstrumentHandler(const InstrumentInfo &info, const Clock &clock)
    : VekInstrumentHandlerPrivate(info, clock)
{
}

GaleInstrumentHandler::~GaleInstrumentHandler()
{
    shutDown();
}

void GaleInstrumentHandler::sendInitialDefaults()
{
    resetLimitsOfIdleChannels();
    if (_op->isConnected())
        _op->requestGroundFloatState();
    Q_EMIT initialConnectionRequestFinished(_op->isConnected());
}

// Its fan is always variable. See compatibility.md, fan of a cycler.
VekErrorCode GaleInstrumentHandler::setFanSpeedVariable(bool variable)
{
    return variable ? VekErrorCode::Success : VekErrorCode::FeatureNotSupported;
}

// Linked channels

GaleInstrumentHandler::Group GaleInstrumentHandler::groupOf(ChannelHandler &channel) const
{
    if (channel.getExperimentMode() == ChannelHandler::MODE_MANUAL)
        return {&channel};
    Group group;
    for (const unsigned char member : channel.linkedChannels.list())
        group.push_back(channelAt(member));
    return group.empty() ? Group{&channel} : group;
}

int GaleInstrumentHandler::setLinkedChannels(std::vector<unsigned char> channels, bool bipolar)
{
    std::sort(channels.begin(), channels.end());
    channels.erase(std::unique(channels.begin(), channels.end()), channels.end()); // named twice counts once
    if (channels.empty() || !areAllFree(channels))
        return -1;
    const unsigned char primary = channels.front();
    for (const unsigned char channel : channels)
        clearLinkedChannels(channel, primary);
    if (bipolar && channels.size() != 2)
        return -1;
    for (const unsigned char channel : channels)
        channelAt(channel)->bipolar = bipolar || channelAt(channel)->bipolar; // see compatibility.md, bipolar for good
    if (!fitTogether(channels))
        return -1;
    if (channels.size() > 1) {
        for (const unsigned char channel : channels)
            channelAt(channel)->linkedChannels = channels;
    }
    return primary;
}

bool GaleInstrumentHandler::areAllFree(const std::vector<unsigned char> &channels) const
{
    return std::all_of(channels.begin(), channels.end(),
                       [this](unsigned char channel) { return checkFree(channel) == VekErrorCode::Success; });
}

bool GaleInstrumentHandler::fitTogether(const std::vector<unsigned char> &channels) const
{
    const bool bipolar = channelAt(channels.front())->bipolar;
    return std::all_of(channels.begin(), channels.end(), [&](unsigned char channel) {
        return channelAt(channel)->bipolar == bipolar && (!bipolar || contains(channels, neighbourOf(channel)));
    });
}

void GaleInstrumentHandler::clearLinkedChannels(unsigned char channel, unsigned char newPrimary)
{
    if (checkFree(channel) != VekErrorCode::Success)
        return;
    std::vector<unsigned char> group = channelAt(channel)->linkedChannels.list();
    if (!contains(group, channel))
        return;
    if (!contains(group, newPrimary))
        group.push_back(newPrimary);
    for (const unsigned char member : group) {
        if (ChannelHandler *const handler = channelAt(member))
            handler->linkedChannels.clear();
    }
}

bool GaleInstrumentHandler::hasBipolarMode(unsigned char channel)
{
    return isValidChannel(channel) && channelAt(channel)->bipolar;
}

// The course of an experiment

VekErrorCode GaleInstrumentHandler::uploadExperimentToChannel(unsigned char channel,
                                                              std::shared_ptr<AbstractExperiment> experiment)
{
    if (!isValidChannel(channel))
        return VekErrorCode::InvalidChannel;
    if (!areAllFree(channelAt(channel)->linkedChannels.list()))
        return VekErrorCode::ChannelBusy;
    return VekInstrumentHandlerPrivate::uploadExperimentToChannel(channel, experiment);
}

VekErrorCode GaleInstrumentHandler::startUploadedExperiment(unsigned char channel)
{
    if (const VekErrorCode refusal = checkFree(channel))
        return refusal;
    const ChannelHandler *const handler = channelAt(channel);
    if (handler->linkedChannels.empty())
        return VekInstrumentHandlerPrivate::startUploadedExperiment(channel);
    if (!areAllFree(handler->linkedChannels.list())) // a member may be in a manual experiment of its own
        return VekErrorCode::ChannelBusy;
    if (handler->isLoadedNodeListEmpty() || !handler->getLoadedExp())
        return VekErrorCode::ExperimentNotUploaded;
    return startGroup(channel);
}

VekErrorCode GaleInstrumentHandler::startGroup(unsigned char channel)
{
    ChannelHandler *const master = channelAt(channel);
    _op->setChannelsLink(master->linkedChannels.list(), master->bipolar);
    for (ChannelHandler *const member : groupOf(*master)) {
        member->masterChannel = channel;
        member->setRunningExperimentStatus(ChannelHandler::EXPERIMENT_RUNNING);
        member->setRunningExperimentMode(ChannelHandler::MODE_ACTIVE);
        if (member != master) {
            member->setLoadedExp(master->getLoadedExp());
            member->setLoadedNodeList(master->getLoadedNodeList());
        }
        member->capacity.beginExperiment();
    }
    master->awaitStart(PC_EXPERIMENT_START);
    return _op->startExperiment(channel) ? VekErrorCode::Success : VekErrorCode::Unknown;
}

void GaleInstrumentHandler::onExperimentDataBeginning(unsigned char channel, const QByteArray &payload)
{
    if (!isChannelBusy(channel))
        return;
    ChannelHandler *const handler = channelAt(channel);
    for (ChannelHandler *const member : groupOf(*handler)) {
        if (member->getDataStatus() != ChannelHandler::DATA_STARTED) {
            member->forgetLastPoint();
            member->forgetThinnedPoint();
        }
        member->setDataStatus(ChannelHandler::DATA_STARTED);
    }
    handler->startClockOnce(double(recordFromBytes<quint64>(payload)) / galeFacts.ticksPerSecond);
}

void GaleInstrumentHandler::onExperimentCompleted(unsigned char channel, const QByteArray &payload)
{
    ChannelHandler *const handler = channelAt(channel);
    if (!handler)
        return;
    // Taken before the channel is free: the client may link it anew from then on.
    const Group group = groupOf(*handler);
    const bool isMaster = group.size() == 1 || handler->masterChannel == channel;
    for (ChannelHandler *const member : group)
        reportHeldBack(member->getChannelNumber()); // with its charge: the first member that ends ends that of all
    endRun(*handler);
    for (ChannelHandler *const member : group)
        member->capacity.endExperiment();
    if (isMaster) // the other members end in silence
        tellEnd(channel, payload);
}

void GaleInstrumentHandler::onExperimentNodeBeginning(unsigned char channel, const QByteArray &payload)
{
    beginNode(channel, payload, galeRules);
}

void GaleInstrumentHandler::onExperimentNodeCompleted(unsigned char channel, const QByteArray &)
{
    ChannelHandler *const handler = channelAt(channel);
    if (!handler)
        return;
    reportHeldBack(channel);
    handler->capacity.onNodeCompleted();
}

// Manual mode: set points travel as raw codes with their range

VekErrorCode GaleInstrumentHandler::setManualModeConstantVoltage(unsigned char channel, double volts)
{
    return setManualModeConstantVoltage(channel, volts, automaticCurrentRange);
}

VekErrorCode GaleInstrumentHandler::setManualModeConstantVoltage(unsigned char channel, double volts, int currentRange)
{
    if (const VekErrorCode refusal = checkManualVoltage(channel, volts))
        return refusal;
    const auto [range, code] = askCalibration(channel, [volts](const CalibrationData &calibration) {
        const voltageRange_t smallest = calibration.getMinVoltageRange(float(volts));
        return std::make_pair(smallest, calibration.GetBINVoltageForDAC(volts, smallest));
    });
    if (!_op->setManualPotentioSetpoint(channel, code, static_cast<unsigned char>(range)))
        return VekErrorCode::ManualVoltageNotSet;
    if (setManualModeCurrentRange(channel, currentRange) != VekErrorCode::Success)
        return VekErrorCode::ManualCurrentRangeNotSet;
    return VekErrorCode::Success;
}

VekErrorCode GaleInstrumentHandler::setManualModeConstantCurrent(unsigned char channel, double amperes)
{
    if (const VekErrorCode refusal = checkManualCurrent(channel, amperes))
        return refusal;
    const auto [range, code] = askCalibration(channel, [amperes](const CalibrationData &calibration) {
        const currentRange_t smallest = calibration.getMinCurrentRange_dc(float(amperes));
        return std::make_pair(smallest, calibration.GetBINCurrentForDAC(smallest, amperes));
    });
    if (!_op->setManualGalvanoSetpoint(channel, code, static_cast<unsigned char>(range)))
        return VekErrorCode::CommandNotSent; // see compatibility.md, current that was not sent
    return VekErrorCode::Success;
}

VekErrorCode GaleInstrumentHandler::setManualModeCurrentRange(unsigned char channel, int index)
{
    if (const VekErrorCode refusal = checkManual(channel))
        return refusal;
    if (index == automaticCurrentRange)
        return sendCurrentRange(channel, automaticCurrentRange);
    if (_manualRangeIndices.empty())
        getDCCurrentRangeList(channel);
    if (index < 0 || std::size_t(index) >= _manualRangeIndices.size())
        return VekErrorCode::InvalidParameters;
    return sendCurrentRange(channel, _manualRangeIndices[std::size_t(index)]);
}

VekInstrumentHandlerPrivate::RangeList GaleInstrumentHandler::getDCCurrentRangeList(unsigned char channel)
{
    if (!isValidChannel(channel))
        return {};
    const auto [config, ranges] = askCalibration(channel, [](const CalibrationData &calibration) {
        return std::make_pair(calibration.getGaleCfg(), calibration.getCurrentMinMaxList());
    });
    const int onBoard = channel % getNumberofChannelperBoard();
    const double lowest = double(config.currentMin[onBoard]);
    const double highest = double(config.currentMax[onBoard]);
    const auto second = ranges.size() > 1 ? ranges[1] : std::make_pair(-infinity, infinity);
    const bool isSecondTooSmall = second.first > lowest && highest > second.second;

    RangeList usable;
    _manualRangeIndices.clear();
    for (std::size_t range = isSecondTooSmall ? 0 : 1; range < ranges.size(); ++range) {
        usable.emplace_back(std::max(ranges[range].first, lowest), std::min(ranges[range].second, highest));
        _manualRangeIndices.push_back(static_cast<unsigned char>(range));
    }
    return usable;
}

bool GaleInstrumentHandler::isValidVoltageRangeIndex(unsigned char channel, int range)
{
    if (!isValidChannel(channel))
        return false;
    if (range == index(voltageRange_t::Auto))
        return true;
    if (!hasCalibration(channel))
        return false;
    const Gale_Cfg_t config =
        askCalibration(channel, [](const CalibrationData &calibration) { return calibration.getGaleCfg(); });
    return 0 <= range && range < config.numVoltageRanges;
}

VekErrorCode GaleInstrumentHandler::setLoadImpedance(unsigned char channel, const float &ohms)
{
    if (const VekErrorCode refusal = checkFree(channel))
        return refusal;
    if (!(0.0f <= ohms && ohms <= largestLoadImpedance)) {
        return VekErrorCode(VekErrorCode::InvalidParameters,
                            QStringLiteral("Invalid value entered for load impedance. Valid range is 0 to 10,000."));
    }
    channelAt(channel)->setLoadImpValue(ohms);
    _op->setFFImpedance(channel, ohms);
    return VekErrorCode::Success;
}

// What the instrument tells about its calibration

void GaleInstrumentHandler::onConfigReceived(unsigned char channel, const QByteArray &payload)
{
    if (!isValidChannel(channel) || line() != InstrumentLine::Gale || payload.size() != int(sizeof(Gale_Cfg_t)))
        return;
    const auto config = recordFromBytes<Gale_Cfg_t>(payload);
    const int board = channel - channel % getNumberofChannelperBoard();
    for (int number = board; number < board + getNumberofChannelperBoard(); ++number) {
        const auto onBoard = static_cast<unsigned char>(number);
        if (!hasCalibration(onBoard)) {
            qWarning().noquote() << QStringLiteral("Unable to update info for channel %1").arg(number);
            return;
        }
        changeCalibration(onBoard, [&config](CalibrationData &calibration) { calibration.setGaleCfgData(config); });
    }
}

void GaleInstrumentHandler::TareCurrentReceived(unsigned char channel, const QByteArray &payload)
{
    if (payload.size() < int(sizeof(TareRecord_t)))
        return;
    const auto tare = recordFromBytes<TareRecord_t>(payload);
    changeCalibration(
        channel, [&tare](CalibrationData &calibration) { calibration.UpdateCurrentOffset(tare.range, tare.offset); });
}

void GaleInstrumentHandler::TareVoltageReceived(unsigned char channel, const QByteArray &payload)
{
    if (payload.size() < int(sizeof(TareRecord_t)))
        return;
    const auto tare = recordFromBytes<TareRecord_t>(payload);
    changeCalibration(
        channel, [&tare](CalibrationData &calibration) { calibration.UpdateVoltageOffset(tare.range, tare.offset); });
}
