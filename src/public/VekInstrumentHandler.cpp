// SPDX-License-Identifier: MIT
#include "VekInstrumentHandler.h"

#include "SignalRelay.h"
#include "VekCompRange.h"
#include "VekExperiment.h"
#include "experiments/VekExperimentPrivate.h"
#include "handlers/HandlerLink.h"
#include "handlers/VekInstrumentHandlerPrivate.h"
#include "hardware_models/RangeTypes.h"

namespace {

/// Puts a question to the private half, or answers for a device that is not there.
template <typename Answer, typename Question>
Answer ask(const std::shared_ptr<HandlerLink> &link, Answer withoutDevice, Question question)
{
    const HandlerLink::Call call(link);
    return call.handler() ? Answer(question(*call.handler())) : withoutDevice;
}

template <typename Request>
VekErrorCode request(const std::shared_ptr<HandlerLink> &link, Request body)
{
    return ask(link, VekErrorCode(VekErrorCode::DeviceNotFound), body);
}

using Private = VekInstrumentHandlerPrivate;
using Channels = std::vector<unsigned char>;
using RangeList = std::vector<std::pair<double, double>>;

} // namespace

VekInstrumentHandler::VekInstrumentHandler(VekInstrumentHandlerPrivate *handler)
{
    if (!handler)
        return;
    _link = handler->link();
    connectWithOperatorSignals(handler);
}

VekInstrumentHandler::~VekInstrumentHandler() = default;

void VekInstrumentHandler::connectWithOperatorSignals(VekInstrumentHandlerPrivate *handler)
{
    using Me = VekInstrumentHandler;
    auto *const relay = new SignalRelay(*this); // a child
    relay->connectTo(handler, &Private::deviceDisconnected, &Me::onDeviceDisconnected);
    relay->connectTo(handler, &Private::groundFloatStateChanged, &Me::groundFloatStateChanged);
    relay->connectTo(handler, &Private::experimentStarting, &Me::experimentStarting);
    relay->connectTo(handler, &Private::activeExperimentNodeBeginning, &Me::onActiveExperimentNodeBeginning);
    relay->connectTo(handler, &Private::recoveryExperimentNodeBeginning, &Me::onRecoveryExperimentNodeBeginning);
    relay->connectTo(handler, &Private::activeDCDataReady, &Me::activeDCDataReady);
    relay->connectTo(handler, &Private::idleDCDataReady, &Me::idleDCDataReady);
    relay->connectTo(handler, &Private::recoveryDCDataReady, &Me::recoveryDCDataReady);
    relay->connectTo(handler, &Private::activeACDataReady, &Me::activeACDataReady);
    relay->connectTo(handler, &Private::recoveryACDataReady, &Me::recoveryACDataReady);
    relay->connectTo(handler, &Private::experimentCompleted, &Me::experimentStopped);
    relay->connectTo(handler, &Private::experimentEnded, &Me::experimentEnded);
    relay->connectTo(handler, &Private::experimentPaused, &Me::experimentPaused);
    relay->connectTo(handler, &Private::experimentResumed, &Me::experimentResumed);
    relay->connectTo(handler, &Private::memoryDataErased, &Me::recoverDataErased);
    relay->connectTo(handler, &Private::deviceError, &Me::deviceError);
    relay->connectTo(handler, &Private::channelsPrepared, &Me::channelsPrepared);
}

void VekInstrumentHandler::onDeviceDisconnected()
{
    _link.reset();
    Q_EMIT deviceDisconnected();
}

void VekInstrumentHandler::onActiveExperimentNodeBeginning(unsigned char channel, const VekExperimentNode &node)
{
    Q_EMIT experimentNewElementStarting(channel, node);
}

void VekInstrumentHandler::onRecoveryExperimentNodeBeginning(unsigned char, const VekExperimentNode &)
{
    // See compatibility.md, recovered nodes are not announced.
}

// Experiments

VekErrorCode VekInstrumentHandler::uploadExperimentToChannel(unsigned char channel,
                                                             std::shared_ptr<VekExperiment> experiment) const
{
    if (!experiment)
        return VekErrorCode::ExperimentIsEmpty;
    return request(_link, [&](Private &handler) {
        return handler.uploadExperimentToChannel(channel, experiment->_private->getExperiment());
    });
}

VekErrorCode VekInstrumentHandler::uploadExperimentToChannel(unsigned char channel,
                                                             const VekExperiment &experiment) const
{
    return uploadExperimentToChannel(channel, std::make_shared<VekExperiment>(experiment));
}

VekErrorCode VekInstrumentHandler::startUploadedExperiment(unsigned char channel) const
{
    return request(_link, [&](Private &handler) { return handler.startUploadedExperiment(channel); });
}

VekErrorCode VekInstrumentHandler::startIdleSampling(unsigned char channel) const
{
    return request(_link, [&](Private &handler) { return handler.startIdleSampling(channel); });
}

VekErrorCode VekInstrumentHandler::skipExperimentStep(unsigned char channel) const
{
    return request(_link, [&](Private &handler) { return handler.skipExperimentStep(channel); });
}

VekErrorCode VekInstrumentHandler::pauseExperiment(unsigned char channel) const
{
    return request(_link, [&](Private &handler) { return handler.pauseExperiment(channel); });
}

VekErrorCode VekInstrumentHandler::resumeExperiment(unsigned char channel) const
{
    return request(_link, [&](Private &handler) { return handler.resumeExperiment(channel); });
}

VekErrorCode VekInstrumentHandler::stopExperiment(unsigned char channel) const
{
    return request(_link, [&](Private &handler) { return handler.stopExperiment(channel); });
}

double VekInstrumentHandler::getExperimentUTCStartTime(unsigned char channel) const
{
    return ask(_link, 0.0, [&](Private &handler) { return handler.getExperimentUTCStartTime(channel); });
}

void VekInstrumentHandler::setLastSampleOfNodeReported(bool reported) const
{
    const HandlerLink::Call call(_link);
    if (call.handler())
        call.handler()->setLastSampleOfNodeReported(reported);
}

// Control loop

VekErrorCode VekInstrumentHandler::setIRComp(unsigned char channel, double uncompensatedResistance,
                                             double compensationLevel) const
{
    return request(_link, [&](Private &handler) {
        return handler.setIRComp(channel, uncompensatedResistance, compensationLevel);
    });
}

VekErrorCode VekInstrumentHandler::setCompRange(unsigned char channel, const VekCompRange &compRange) const
{
    return request(_link, [&](Private &handler) { return handler.setCompRange(channel, compRange); });
}

float VekInstrumentHandler::getLoadImpedance(unsigned char channel)
{
    // See compatibility.md, error number as an impedance.
    return ask(_link, float(VekErrorCode::DeviceNotFound),
               [&](Private &handler) { return handler.getLoadImpedance(channel); });
}

VekErrorCode VekInstrumentHandler::setLoadImpedance(unsigned char channel, const float &impedance)
{
    return request(_link, [&](Private &handler) { return handler.setLoadImpedance(channel, impedance); });
}

// Linked channels

int VekInstrumentHandler::setLinkedChannels(std::vector<unsigned char> channels) const
{
    return ask(_link, -1, [&](Private &handler) { return handler.setLinkedChannels(channels, false); });
}

int VekInstrumentHandler::setBipolarLinkedChannels(std::vector<unsigned char> channels) const
{
    return ask(_link, -1, [&](Private &handler) { return handler.setLinkedChannels(channels, true); });
}

bool VekInstrumentHandler::hasBipolarMode(unsigned char channel) const
{
    return ask(_link, false, [&](Private &handler) { return handler.hasBipolarMode(channel); });
}

std::vector<unsigned char> VekInstrumentHandler::getLinkedChannels(unsigned char channel) const
{
    return ask(_link, Channels(), [&](Private &handler) { return handler.getLinkedChannels(channel); });
}

// State of the device

VekErrorCode VekInstrumentHandler::setFanSpeedVariable() const
{
    return request(_link, [](Private &handler) { return handler.setFanSpeedVariable(true); });
}

VekErrorCode VekInstrumentHandler::setFanSpeedMaximum() const
{
    return request(_link, [](Private &handler) { return handler.setFanSpeedVariable(false); });
}

bool VekInstrumentHandler::isChannelBusy(unsigned char channel) const
{
    return ask(_link, false, [&](Private &handler) { return handler.isChannelBusy(channel); });
}

bool VekInstrumentHandler::isChannelPaused(unsigned char channel) const
{
    return ask(_link, false, [&](Private &handler) { return handler.isChannelPause(channel); });
}

std::vector<unsigned char> VekInstrumentHandler::getFreeChannels() const
{
    return ask(_link, Channels(), [](Private &handler) { return handler.getFreeChannels(); });
}

int VekInstrumentHandler::getNumberOfChannels() const
{
    return ask(_link, 0, [](Private &handler) { return handler.getNumberOfChannels(); });
}

VekInstrumentDescription VekInstrumentHandler::getDescription() const
{
    return ask(_link, VekInstrumentDescription(), [](Private &handler) { return handler.getDescription(); });
}

VekChannelReport VekInstrumentHandler::channelReport(unsigned char channel) const
{
    return ask(_link, VekChannelReport::Unknown, [&](Private &handler) { return handler.channelReport(channel); });
}

VekErrorCode VekInstrumentHandler::prepareChannels(const std::set<unsigned char> &channels) const
{
    return request(_link, [&](Private &handler) { return handler.prepareChannels(channels); });
}

bool VekInstrumentHandler::hasStoredData(unsigned char channel) const
{
    return ask(_link, false, [&](Private &handler) { return handler.hasStoredData(channel); });
}

VekErrorCode VekInstrumentHandler::eraseRecoverData() const
{
    return request(_link, [](Private &handler) { return handler.eraseRecoverDataFromDevice(); });
}

// Manual experiments

VekErrorCode VekInstrumentHandler::startManualExperiment(unsigned char channel) const
{
    return request(_link, [&](Private &handler) { return handler.startManualExperiment(channel); });
}

VekErrorCode VekInstrumentHandler::setManualModeSamplingInterval(unsigned char channel, double seconds) const
{
    return request(_link, [&](Private &handler) { return handler.setManualModeSamplingInterval(channel, seconds); });
}

VekErrorCode VekInstrumentHandler::setManualModeOCP(unsigned char channel) const
{
    return request(_link, [&](Private &handler) { return handler.setManualModeOCP(channel); });
}

VekErrorCode VekInstrumentHandler::setManualModeConstantVoltage(unsigned char channel, double volts) const
{
    return request(_link, [&](Private &handler) { return handler.setManualModeConstantVoltage(channel, volts); });
}

VekErrorCode VekInstrumentHandler::setManualModeConstantVoltage(unsigned char channel, double volts,
                                                                int currentRange) const
{
    return request(
        _link, [&](Private &handler) { return handler.setManualModeConstantVoltage(channel, volts, currentRange); });
}

VekErrorCode VekInstrumentHandler::setManualModeConstantCurrent(unsigned char channel, double amperes) const
{
    return request(_link, [&](Private &handler) { return handler.setManualModeConstantCurrent(channel, amperes); });
}

VekErrorCode VekInstrumentHandler::setManualModeCurrentRange(unsigned char channel, int currentRange) const
{
    return request(_link, [&](Private &handler) { return handler.setManualModeCurrentRange(channel, currentRange); });
}

VekErrorCode VekInstrumentHandler::setManualModeCurrentAutorange(unsigned char channel) const
{
    return setManualModeCurrentRange(channel, index(currentRange_t::Auto));
}

VekErrorCode VekInstrumentHandler::setManualModeVoltageRange(unsigned char channel, int voltageRange) const
{
    return request(_link, [&](Private &handler) { return handler.setManualModeVoltageRange(channel, voltageRange); });
}

VekErrorCode VekInstrumentHandler::setManualModeVoltageAutorange(unsigned char channel) const
{
    return setManualModeVoltageRange(channel, index(voltageRange_t::Auto));
}

std::vector<std::pair<double, double>> VekInstrumentHandler::getManualModeCurrentRangeList(unsigned char channel) const
{
    return ask(_link, RangeList(), [&](Private &handler) { return handler.getDCCurrentRangeList(channel); });
}

std::vector<std::pair<double, double>> VekInstrumentHandler::getManualModeVoltageRangeList(unsigned char channel) const
{
    return ask(_link, RangeList(), [&](Private &handler) { return handler.getManualModeVoltageRangeList(channel); });
}

// Safety limits

VekErrorCode VekInstrumentHandler::setChannelMaximumVoltage(unsigned char channel, double volts) const
{
    return request(_link, [&](Private &handler) { return handler.setChannelVmax(channel, volts); });
}

VekErrorCode VekInstrumentHandler::setChannelMinimumVoltage(unsigned char channel, double volts) const
{
    return request(_link, [&](Private &handler) { return handler.setChannelVmin(channel, volts); });
}

VekErrorCode VekInstrumentHandler::setChannelMaximumCurrent(unsigned char channel, double amperes) const
{
    return request(_link, [&](Private &handler) { return handler.setChannelImax(channel, amperes); });
}

VekErrorCode VekInstrumentHandler::setChannelMinimumCurrent(unsigned char channel, double amperes) const
{
    return request(_link, [&](Private &handler) { return handler.setChannelImin(channel, amperes); });
}

VekErrorCode VekInstrumentHandler::setChannelMaximumTemperature(unsigned char channel, double degreesCelsius) const
{
    return request(_link, [&](Private &handler) { return handler.setChannelMaxTemperature(channel, degreesCelsius); });
}

VekErrorCode VekInstrumentHandler::resetChannelLimits(unsigned char channel) const
{
    return request(_link, [&](Private &handler) { return handler.resetChannelLimits(channel); });
}
