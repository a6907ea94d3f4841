// SPDX-License-Identifier: MIT
#include "handlers/VekInstrumentHandlerPrivate.h"

#include "VekCompRange.h"
#include "elements/AbstractExperiment.h"
#include "elements/CheckedExperiment.h"
#include "elements/Plausibility.h"
#include "hardware_models/HardwareModel.h"
#include "nimbrellelibrary/NimbrelleLib.h"
#include "session/InstrumentOperator.h"
#include "waiting/ThreadBound.h"

#include <algorithm>

namespace {

constexpr int automaticVoltageRange = index(voltageRange_t::Auto);
constexpr unsigned char highestPresetIndex = 10;
constexpr double longestManualInterval = 1.0; // seconds; the host thins what is wanted more rarely

VekErrorCode successIf(bool done, VekErrorCode::ErrorCode failure)
{
    return done ? VekErrorCode::Success : failure;
}

VekErrorCode invalidUnlessEmpty(const QString &complaints)
{
    if (complaints.isEmpty())
        return VekErrorCode::Success;
    return VekErrorCode(VekErrorCode::InvalidParameters, complaints);
}

VekErrorCode implausibleUnlessEmpty(const QString &fault)
{
    if (fault.isEmpty())
        return VekErrorCode::Success;
    return VekErrorCode(VekErrorCode::ImplausibleParameters, fault);
}

} // namespace

// Experiments

VekErrorCode VekInstrumentHandlerPrivate::uploadExperimentToChannel(unsigned char channel,
                                                                    std::shared_ptr<AbstractExperiment> experiment)
{
    if (!experiment)
        return VekErrorCode::ExperimentIsEmpty;
    if (const VekErrorCode refusal = checkFree(channel))
        return refusal;
    const auto [complaints, nodes] = askCalibration(channel, [&](const CalibrationData &calibration) {
        return checkAndExpand(*experiment, calibration, _info.hardware);
    });
    if (const VekErrorCode refusal = resultOf(complaints))
        return refusal;
    if (nodes.isEmpty())
        return VekErrorCode::ExperimentIsEmpty;
    if (const VekErrorCode failure = upload(channel, nodes))
        return failure;

    ChannelHandler *const handler = channelAt(channel);
    handler->setLoadedExp(experiment);
    handler->setLoadedNodeList(nodes);
    handler->capacity.beginExperiment();
    return VekErrorCode::Success;
}

VekErrorCode VekInstrumentHandlerPrivate::upload(unsigned char channel, const NodeList &nodes)
{
    channelAt(channel)->setLoadedExp(nullptr); // an earlier one must not be started on a list that is cut short
    if (_op->uploadExperimentToInstrument(channel, nodes.getHWNodeList(), modelNumber()))
        return VekErrorCode::Success;
    const FirmwareErrorCode verdict = _op->uploadVerdict();
    if (verdict == FW_SUCCESS || verdict == FW_NO_RESPONSE)
        return VekErrorCode::UploadFailed;
    return VekErrorCode(VekErrorCode::UploadFailed, handle_error(verdict));
}

VekErrorCode VekInstrumentHandlerPrivate::startUploadedExperiment(unsigned char channel)
{
    if (const VekErrorCode refusal = checkFree(channel))
        return refusal;
    ChannelHandler *const handler = channelAt(channel);
    if (!handler->getLoadedExp())
        return VekErrorCode::ExperimentNotUploaded;
    handler->capacity.beginExperiment();
    return start(channel, PC_EXPERIMENT_START, ChannelHandler::MODE_ACTIVE);
}

/// Marks the channel before it sends: nothing that the instrument says of the start may come earlier.
VekErrorCode VekInstrumentHandlerPrivate::start(unsigned char channel, PCcommand_t command,
                                                ChannelHandler::ExperimentMode mode)
{
    ChannelHandler *const handler = channelAt(channel);
    handler->setRunningExperimentStatus(ChannelHandler::EXPERIMENT_RUNNING);
    handler->setRunningExperimentMode(mode);
    handler->awaitStart(command);
    const bool isManual = command == PC_MANUAL_START;
    if (isManual ? _op->startManualExperiment(channel) : _op->startExperiment(channel))
        return VekErrorCode::Success;
    handler->endAwaitOfStart(command);
    handler->setRunningExperimentMode(ChannelHandler::MODE_IDLE);
    handler->setRunningExperimentStatus(ChannelHandler::EXPERIMENT_STOPPED);
    return VekErrorCode::CommandNotSent;
}

VekErrorCode VekInstrumentHandlerPrivate::startIdleSampling(unsigned char channel)
{
    if (const VekErrorCode refusal = checkFree(channel))
        return refusal;
    if (channelAt(channel)->getLoadedExp())
        return VekErrorCode::ExperimentUploaded;
    _op->initDefaultSampling(channel);
    return VekErrorCode::Success;
}

VekErrorCode VekInstrumentHandlerPrivate::skipExperimentStep(unsigned char channel)
{
    if (const VekErrorCode refusal = checkBusy(channel))
        return refusal;
    return successIf(_op->skipExperimentStep(channel), VekErrorCode::CommandNotSent);
}

VekErrorCode VekInstrumentHandlerPrivate::pauseExperiment(unsigned char channel)
{
    if (const VekErrorCode refusal = checkBusy(channel))
        return refusal;
    if (isChannelPause(channel))
        return VekErrorCode::AlreadyPaused;
    if (channelAt(channel)->getExperimentStatus() != ChannelHandler::EXPERIMENT_RUNNING)
        return VekErrorCode::PauseFailed;
    _op->pauseExperiment(channel);
    return VekErrorCode::Success;
}

VekErrorCode VekInstrumentHandlerPrivate::resumeExperiment(unsigned char channel)
{
    if (const VekErrorCode refusal = checkBusy(channel))
        return refusal;
    if (channelAt(channel)->getExperimentStatus() == ChannelHandler::EXPERIMENT_RUNNING)
        return VekErrorCode::ExperimentRunning;
    if (!isChannelPause(channel))
        return VekErrorCode::ResumeFailed;
    _op->resumeExperiment(channel);
    return VekErrorCode::Success;
}

VekErrorCode VekInstrumentHandlerPrivate::stopExperiment(unsigned char channel)
{
    if (const VekErrorCode refusal = checkValid(channel))
        return refusal;
    if (!_op)
        return VekErrorCode::StopFailed;
    _op->stopExperiment(channel);
    return VekErrorCode::Success;
}

// Manual mode

VekErrorCode VekInstrumentHandlerPrivate::startManualExperiment(unsigned char channel)
{
    if (const VekErrorCode refusal = checkFree(channel))
        return refusal;
    return start(channel, PC_MANUAL_START, ChannelHandler::MODE_MANUAL);
}

VekErrorCode VekInstrumentHandlerPrivate::setManualModeOCP(unsigned char channel)
{
    if (const VekErrorCode refusal = checkManual(channel))
        return refusal;
    return successIf(_op->setManualOcp(channel), VekErrorCode::CommandNotSent);
}

VekErrorCode VekInstrumentHandlerPrivate::setManualModeSamplingInterval(unsigned char channel, double seconds)
{
    if (const VekErrorCode refusal = checkManual(channel))
        return refusal;
    if (const VekErrorCode refusal = implausibleUnlessEmpty(Plausibility::faultOfManualInterval(seconds)))
        return refusal;
    const auto [payload, samplesPerPoint] =
        NimbrelleLib::getManualSamplingParamsPayload(modelNumber(), seconds, longestManualInterval);
    if (!_op->setManualSamplingParams(channel, payload))
        return VekErrorCode::CommandNotSent;
    channelAt(channel)->dc.setGroupSize(samplesPerPoint);
    return VekErrorCode::Success;
}

VekErrorCode VekInstrumentHandlerPrivate::checkManualVoltage(unsigned char channel, double volts) const
{
    if (const VekErrorCode refusal = checkManual(channel))
        return refusal;
    return implausibleUnlessEmpty(Plausibility::faultOfManualVoltage(volts, *model()));
}

VekErrorCode VekInstrumentHandlerPrivate::checkManualCurrent(unsigned char channel, double amperes) const
{
    if (const VekErrorCode refusal = checkManual(channel))
        return refusal;
    return implausibleUnlessEmpty(Plausibility::faultOfManualCurrent(amperes, *model()));
}

VekErrorCode VekInstrumentHandlerPrivate::setManualModeConstantVoltage(unsigned char channel, double volts)
{
    if (const VekErrorCode refusal = checkManualVoltage(channel, volts))
        return refusal;
    return successIf(_op->setManualPotentioSetpoint(channel, float(volts)), VekErrorCode::ManualVoltageNotSet);
}

VekErrorCode VekInstrumentHandlerPrivate::setManualModeConstantVoltage(unsigned char channel, double volts,
                                                                       int currentRange)
{
    if (const VekErrorCode refusal = setManualModeConstantVoltage(channel, volts))
        return refusal;
    // The set point has gone out already when the range is refused.
    return successIf(setManualModeCurrentRange(channel, currentRange) == VekErrorCode::Success,
                     VekErrorCode::ManualCurrentRangeNotSet);
}

VekErrorCode VekInstrumentHandlerPrivate::setManualModeConstantCurrent(unsigned char channel, double amperes)
{
    if (const VekErrorCode refusal = checkManualCurrent(channel, amperes))
        return refusal;
    return successIf(_op->setManualGalvanoSetpoint(channel, float(amperes)), VekErrorCode::ManualCurrentNotSet);
}

VekErrorCode VekInstrumentHandlerPrivate::setManualModeCurrentRange(unsigned char channel, int range)
{
    if (const VekErrorCode refusal = checkManual(channel))
        return refusal;
    return sendCurrentRange(channel, static_cast<quint8>(range)); // see compatibility.md, current range cut to a byte
}

VekErrorCode VekInstrumentHandlerPrivate::sendCurrentRange(unsigned char channel, quint8 range)
{
    if (range > automaticCurrentRange)
        return VekErrorCode::InvalidParameters;
    return successIf(_op->setCurrentRangingMode(channel, currentRange_t(range)), VekErrorCode::CommandNotSent);
}

VekErrorCode VekInstrumentHandlerPrivate::setManualModeVoltageRange(unsigned char channel, int range)
{
    if (const VekErrorCode refusal = checkManual(channel))
        return refusal;
    const bool isRange = (0 <= range && range <= 3) || range == automaticVoltageRange;
    if (!isRange || !isValidVoltageRangeIndex(channel, range))
        return VekErrorCode::InvalidParameters;
    return successIf(_op->setVoltageRangingMode(channel, voltageRange_t(range)), VekErrorCode::CommandNotSent);
}

bool VekInstrumentHandlerPrivate::isValidVoltageRangeIndex(unsigned char channel, int range)
{
    if (!isValidChannel(channel))
        return false;
    return (0 <= range && range < model()->getNumVoltageRanges()) || range == automaticVoltageRange;
}

// Ranges

VekInstrumentHandlerPrivate::RangeList
VekInstrumentHandlerPrivate::getManualModeVoltageRangeList(unsigned char channel) const
{
    if (!isValidChannel(channel))
        return {};
    return askCalibration(channel,
                          [](const CalibrationData &calibration) { return calibration.getVoltageMinMaxList(); });
}

VekInstrumentHandlerPrivate::RangeList VekInstrumentHandlerPrivate::getFullCurrentRangeList(unsigned char channel)
{
    if (!isValidChannel(channel))
        return {};
    RangeList ranges =
        askCalibration(channel, [](const CalibrationData &calibration) { return calibration.getCurrentMinMaxList(); });
    for (auto &[lowest, highest] : ranges) {
        lowest = std::max(lowest, model()->getIMin());
        highest = std::min(highest, model()->getIMax());
    }
    return ranges;
}

VekInstrumentHandlerPrivate::RangeList VekInstrumentHandlerPrivate::getDCCurrentRangeList(unsigned char channel)
{
    RangeList ranges = getFullCurrentRangeList(channel);
    ranges.resize(std::min<std::size_t>(ranges.size(), model()->getNumDCcurrentRanges()));
    return ranges;
}

// Settings

VekErrorCode VekInstrumentHandlerPrivate::setCompRange(unsigned char channel, const VekCompRange &range)
{
    if (const VekErrorCode refusal = checkValid(channel))
        return refusal;
    QString complaints;
    if (range.getStabilityFactor() > highestPresetIndex)
        complaints += QStringLiteral("Valid stability factor range is 0-10. ");
    if (range.getBandwidthIndex() > highestPresetIndex)
        complaints += QStringLiteral("Valid bandwidth index is 0-10. ");
    if (const VekErrorCode refusal = invalidUnlessEmpty(complaints))
        return refusal;
    _op->setCompRange(channel, range);
    channelAt(channel)->setCompRange(range);
    return VekErrorCode::Success;
}

VekErrorCode VekInstrumentHandlerPrivate::setIRComp(unsigned char channel, double uncompensatedResistance,
                                                    double levelPercent)
{
    if (const VekErrorCode refusal = checkValid(channel))
        return refusal;
    QString complaints;
    if (!(0.0 <= levelPercent && levelPercent <= 100.0))
        complaints += QStringLiteral("Valid CompensationLevel range is 0%-100%. ");
    if (!(uncompensatedResistance >= 0.0))
        complaints += QStringLiteral("Uncompensated Resistance should have positive value.");
    if (const VekErrorCode refusal = invalidUnlessEmpty(complaints))
        return refusal;
    const double fraction = levelPercent / 100.0;
    _op->setIRCompSettings(channel, float(uncompensatedResistance), float(fraction));
    channelAt(channel)->setIRComp({uncompensatedResistance, fraction});
    return VekErrorCode::Success;
}

VekErrorCode VekInstrumentHandlerPrivate::setLoadImpedance(unsigned char, const float &)
{
    return VekErrorCode::FeatureNotSupported;
}

VekErrorCode VekInstrumentHandlerPrivate::setFanSpeedVariable(bool)
{
    return VekErrorCode::FeatureNotSupported;
}

int VekInstrumentHandlerPrivate::setLinkedChannels(std::vector<unsigned char>, bool)
{
    return -1;
}

std::vector<unsigned char> VekInstrumentHandlerPrivate::getLinkedChannels(unsigned char channel)
{
    return isValidChannel(channel) ? channelAt(channel)->linkedChannels.list() : std::vector<unsigned char>();
}

bool VekInstrumentHandlerPrivate::hasBipolarMode(unsigned char)
{
    return false;
}

// Safety limits

VekErrorCode VekInstrumentHandlerPrivate::setLimit(unsigned char channel, void (ChannelHandler::*store)(double),
                                                   double value, VekErrorCode::ErrorCode failure)
{
    if (const VekErrorCode refusal = checkValid(channel))
        return refusal;
    if (const VekErrorCode refusal = implausibleUnlessEmpty(Plausibility::faultOfSafetyLimit(value)))
        return refusal;
    (channelAt(channel)->*store)(value);
    return successIf(sendLimits(channel), failure);
}

VekErrorCode VekInstrumentHandlerPrivate::setChannelVmax(unsigned char channel, double volts)
{
    return setLimit(channel, &ChannelHandler::setVmax, volts, VekErrorCode::ChannelVmaxNotSet);
}

VekErrorCode VekInstrumentHandlerPrivate::setChannelVmin(unsigned char channel, double volts)
{
    return setLimit(channel, &ChannelHandler::setVmin, volts, VekErrorCode::ChannelVminNotSet);
}

VekErrorCode VekInstrumentHandlerPrivate::setChannelImax(unsigned char channel, double amperes)
{
    return setLimit(channel, &ChannelHandler::setImax, amperes, VekErrorCode::ChannelImaxNotSet);
}

VekErrorCode VekInstrumentHandlerPrivate::setChannelImin(unsigned char channel, double amperes)
{
    return setLimit(channel, &ChannelHandler::setImin, amperes, VekErrorCode::ChannelIminNotSet);
}

VekErrorCode VekInstrumentHandlerPrivate::setChannelMaxTemperature(unsigned char channel, double degreesCelsius)
{
    return setLimit(channel, &ChannelHandler::setTemperatureMax, degreesCelsius,
                    VekErrorCode::ChannelTemperatureNotSet);
}

VekErrorCode VekInstrumentHandlerPrivate::resetChannelLimits(unsigned char channel)
{
    if (const VekErrorCode refusal = checkValid(channel))
        return refusal;
    channelAt(channel)->resetChannelLimits();
    sendLimits(channel);
    return VekErrorCode::Success;
}

VekErrorCode VekInstrumentHandlerPrivate::prepareChannels(const std::set<unsigned char> &channels)
{
    for (const unsigned char channel : channels) {
        if (const VekErrorCode refusal = checkValid(channel))
            return refusal;
        if (channelReport(channel) == VekChannelReport::Running)
            return VekErrorCode::ChannelBusy;
    }
    QMetaObject::invokeMethod(
        this, [this, channels] { freeChannels(channels); }, Qt::QueuedConnection);
    return VekErrorCode::Success;
}

void VekInstrumentHandlerPrivate::freeChannels(const std::set<unsigned char> &channels)
{
    assertOnThreadOf(*this);
    const auto isFree = [&](unsigned char channel) {
        return channels.count(channel) > 0 ||
               (canReport(channel) && channelReport(channel) != VekChannelReport::Running);
    };
    const std::set<unsigned char> before = _untouched;
    for (const unsigned char channel : before) {
        if (!isFree(channel) || !_op->isConnected())
            continue;
        _untouched.erase(channel);
        if (canReport(channel) && !isChannelBusy(channel)) // what this program has started keeps what was set for it
            resetChannelLimits(channel);
    }
    if (!before.empty() && _untouched.empty())
        prepareInstrument();
    if (_op->isConnected())
        Q_EMIT channelsPrepared();
}

void VekInstrumentHandlerPrivate::prepareInstrument()
{
}

bool VekInstrumentHandlerPrivate::canReport(unsigned char) const
{
    return false;
}

bool VekInstrumentHandlerPrivate::mayStillRun(unsigned char channel) const
{
    return _untouched.count(channel) > 0 || channelAt(channel)->isActiveRecoverExperiment();
}

void VekInstrumentHandlerPrivate::resetLimitsOfIdleChannels()
{
    for (const unsigned char channel : channelNumbers()) {
        if (!_op->isConnected())
            return;
        if (!mayStillRun(channel)) // else it goes on under the limits that it was started with
            resetChannelLimits(channel);
    }
}

bool VekInstrumentHandlerPrivate::sendLimits(unsigned char channel)
{
    const ChannelLimit limits = channelAt(channel)->getLimits();
    const double temperatureRatio = askCalibration(channel, [&limits](const CalibrationData &calibration) {
        return calibration.getTemperatureToRatio(float(limits.temperatureMax));
    });
    return _op->setChannelLimits(channel, limits.iMin, limits.iMax, limits.vMin, limits.vMax, temperatureRatio);
}

// The instrument as a whole

VekErrorCode VekInstrumentHandlerPrivate::requestSdCardCalibrationData(unsigned char channel)
{
    if (const VekErrorCode refusal = checkFree(channel))
        return refusal;
    if (isSDCardWriting(channel))
        return VekErrorCode(VekErrorCode::SendFailed, QStringLiteral("Sd card is currently write state."));
    if (isSDCardReading(channel))
        return VekErrorCode(VekErrorCode::SendFailed, QStringLiteral("Sd card is currently read state."));
    _op->requestSDcardCalibrationHeader();
    channelAt(channel)->setSDCardStatus(ChannelHandler::SD_READING);
    return VekErrorCode::Success;
}

VekErrorCode VekInstrumentHandlerPrivate::eraseRecoverDataFromDevice()
{
    return successIf(_op && _op->eraseMemoryData(), VekErrorCode::CommandNotSent);
}

void VekInstrumentHandlerPrivate::startRecoveryProcess()
{
    if (_op)
        _op->readMemoryData(true);
}

void VekInstrumentHandlerPrivate::eraseRecoveryData()
{
    if (_op)
        _op->eraseMemoryData();
}

void VekInstrumentHandlerPrivate::softReset()
{
    if (_op)
        _op->softReset(factsOf(line()).resetChannel);
}

void VekInstrumentHandlerPrivate::disconnectDevice()
{
    if (_op)
        _op->disconnectDevice();
}
