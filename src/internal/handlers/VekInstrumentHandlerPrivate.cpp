// SPDX-License-Identifier: MIT
#include "handlers/VekInstrumentHandlerPrivate.h"

#include "handlers/HandlerLink.h"
#include "handlers/HandlerThread.h"
#include "hardware_models/HardwareModel.h"
#include "hardware_models/HardwareModelFactory.h"
#include "hardware_models/ModelNames.h"
#include "session/InstrumentOperator.h"

#include <QCoreApplication>
#include <QEvent>
#include <QTimer>

#include <algorithm>

namespace {
const auto retirement = QEvent::Type(QEvent::registerEventType());
}

VekInstrumentHandlerPrivate::VekInstrumentHandlerPrivate()
    : _clock(Clock::host()), _link(std::make_shared<HandlerLink>(this))
{
}

VekInstrumentHandlerPrivate::VekInstrumentHandlerPrivate(const InstrumentInfo &info, const Clock &clock)
    : _clock(clock), _info(info), _op(new InstrumentOperator(info.comPort, this, clock)),
      _link(std::make_shared<HandlerLink>(this))
{
    _info.calibration.detach(); // now, not when the handler's thread first writes to it
    if (!_op->isConnected())
        return;
    for (int channel = 0; channel < _info.channelCount; ++channel) {
        const auto number = static_cast<unsigned char>(channel);
        _channels.emplace(number, std::make_unique<ChannelHandler>(_info.deviceName, number));
    }
    startThread();
}

VekInstrumentHandlerPrivate::~VekInstrumentHandlerPrivate()
{
    shutDown();
}

void VekInstrumentHandlerPrivate::startThread()
{
    _thread = new HandlerThread;
    // Direct: started() is emitted on the new thread before its event loop runs, so that the operator's signals are
    // connected before the first packet and before anything that is queued to this object.
    connect(_thread, &QThread::started, this, &VekInstrumentHandlerPrivate::onThreadStarted, Qt::DirectConnection);
    connect(_thread, &QThread::finished, this, &VekInstrumentHandlerPrivate::takeRetirement, Qt::DirectConnection);
    moveToThread(_thread);
    _thread->start(QThread::InheritPriority);
}

void VekInstrumentHandlerPrivate::shutDown()
{
    _link->close();
    if (_thread)
        _thread->end();
    disconnect(); // a receiver that goes at this moment, on its own thread, calls virtual functions of its senders
}

void VekInstrumentHandlerPrivate::retire()
{
    if (_thread)
        QCoreApplication::postEvent(this, new QEvent(retirement));
    else
        deleteLater();
}

void VekInstrumentHandlerPrivate::letGo()
{
    _link->refuse();
    if (_op)
        _op->hangUp();
}

/// When its thread ends a retirement may wait still; what is to be deleted later is deleted behind this.
void VekInstrumentHandlerPrivate::takeRetirement()
{
    QCoreApplication::sendPostedEvents(this, retirement);
}

void VekInstrumentHandlerPrivate::leaveUntouched(const std::set<unsigned char> &channels)
{
    _untouched.clear();
    for (const unsigned char channel : channels) {
        if (isValidChannel(channel))
            _untouched.insert(channel);
    }
}

bool VekInstrumentHandlerPrivate::event(QEvent *event)
{
    if (event->type() == retirement) {
        deleteLater();
        return true;
    }
    // A deletion that another thread has posted would come through in the middle of a nested wait of this one.
    if (event->type() == QEvent::DeferredDelete && _thread && _thread->loopLevel() > 1) {
        constexpr int retryMs = 20;
        QTimer::singleShot(retryMs, this, &QObject::deleteLater);
        return true;
    }
    return QObject::event(event);
}

// Queries

bool VekInstrumentHandlerPrivate::isConnected() const
{
    return _op && _op->isConnected();
}

bool VekInstrumentHandlerPrivate::isValidChannel(unsigned char channel) const
{
    return channelAt(channel) != nullptr;
}

bool VekInstrumentHandlerPrivate::isChannelBusy(unsigned char channel) const
{
    const ChannelHandler *const handler = channelAt(channel);
    return handler && handler->getExperimentStatus() != ChannelHandler::EXPERIMENT_STOPPED;
}

bool VekInstrumentHandlerPrivate::isChannelPause(unsigned char channel) const
{
    const ChannelHandler *const handler = channelAt(channel);
    return handler && handler->getExperimentStatus() == ChannelHandler::EXPERIMENT_PAUSED;
}

bool VekInstrumentHandlerPrivate::isManualExperimentRun(unsigned char channel) const
{
    return isChannelBusy(channel) && channelAt(channel)->getExperimentMode() == ChannelHandler::MODE_MANUAL;
}

bool VekInstrumentHandlerPrivate::isIdleExperimentRun(unsigned char channel) const
{
    const ChannelHandler *const handler = channelAt(channel);
    return handler && handler->getExperimentMode() == ChannelHandler::MODE_IDLE;
}

bool VekInstrumentHandlerPrivate::isSDCardReading(unsigned char channel) const
{
    const ChannelHandler *const handler = channelAt(channel);
    return handler && handler->getSDCardStatus() == ChannelHandler::SD_READING;
}

bool VekInstrumentHandlerPrivate::isSDCardWriting(unsigned char channel) const
{
    const ChannelHandler *const handler = channelAt(channel);
    return handler && handler->getSDCardStatus() == ChannelHandler::SD_WRITING;
}

VekChannelReport VekInstrumentHandlerPrivate::channelReport(unsigned char channel) const
{
    const ChannelHandler *const handler = channelAt(channel);
    if (!handler)
        return VekChannelReport::Unknown;
    return isChannelBusy(channel) ? VekChannelReport::Running : handler->getReport();
}

bool VekInstrumentHandlerPrivate::hasStoredData(unsigned char channel) const
{
    const ChannelHandler *const handler = channelAt(channel);
    return handler && handler->isRecoverDataAvailable();
}

std::vector<unsigned char> VekInstrumentHandlerPrivate::getFreeChannels() const
{
    std::vector<unsigned char> free = channelNumbers();
    free.erase(
        std::remove_if(free.begin(), free.end(), [this](unsigned char channel) { return isChannelBusy(channel); }),
        free.end());
    return free;
}

int VekInstrumentHandlerPrivate::getNumberOfChannels() const
{
    return _info.channelCount;
}

VekInstrumentDescription VekInstrumentHandlerPrivate::getDescription() const
{
    VekInstrumentDescription description;
    description.deviceName = _info.deviceName;
    description.vanityName = model()->getVanityName();
    description.modelName = ModelNames::all().value(static_cast<int>(modelNumber()));
    description.modelNumber = static_cast<int>(modelNumber());
    description.firmwareVersion = _info.firmwareVersion;
    description.firmwareChecksum = _info.firmwareChecksum;
    description.portName = _info.comPort;
    description.channelCount = _info.channelCount;
    return description;
}

double VekInstrumentHandlerPrivate::getExperimentUTCStartTime(unsigned char channel) const
{
    return isChannelBusy(channel) ? double(channelAt(channel)->utcStartTime) : 0.0;
}

float VekInstrumentHandlerPrivate::getLoadImpedance(unsigned char channel) const
{
    // See compatibility.md, error number as an impedance.
    return isValidChannel(channel) ? channelAt(channel)->getLoadImpValue() : float(VekErrorCode::InvalidChannel);
}

// What requests and slots build on

std::vector<unsigned char> VekInstrumentHandlerPrivate::channelNumbers() const
{
    std::vector<unsigned char> numbers;
    for (const auto &[number, handler] : _channels)
        numbers.push_back(number);
    std::sort(numbers.begin(), numbers.end());
    return numbers;
}

std::vector<ChannelHandler *> VekInstrumentHandlerPrivate::groupOf(ChannelHandler &channel) const
{
    return {&channel};
}

ChannelHandler *VekInstrumentHandlerPrivate::channelAt(unsigned char channel) const
{
    const auto found = _channels.find(channel);
    return found == _channels.end() ? nullptr : found->second.get();
}

const CalibrationData &VekInstrumentHandlerPrivate::calibrationOf(unsigned char channel) const
{
    static const CalibrationData none;
    return hasCalibration(channel) ? _info.calibration.at(channel) : none;
}

bool VekInstrumentHandlerPrivate::hasCalibration(unsigned char channel) const
{
    return channel < _info.calibration.size();
}

std::shared_ptr<const HardwareModel> VekInstrumentHandlerPrivate::model() const
{
    return HardwareModelFactory::getHardwareModel(modelNumber());
}

VekErrorCode VekInstrumentHandlerPrivate::checkValid(unsigned char channel) const
{
    return isValidChannel(channel) ? VekErrorCode::Success : VekErrorCode::InvalidChannel;
}

VekErrorCode VekInstrumentHandlerPrivate::checkFree(unsigned char channel) const
{
    if (!isValidChannel(channel))
        return VekErrorCode::InvalidChannel;
    return isChannelBusy(channel) ? VekErrorCode::ChannelBusy : VekErrorCode::Success;
}

VekErrorCode VekInstrumentHandlerPrivate::checkBusy(unsigned char channel) const
{
    if (!isValidChannel(channel))
        return VekErrorCode::InvalidChannel;
    return isChannelBusy(channel) ? VekErrorCode::Success : VekErrorCode::NoExperimentRunning;
}

VekErrorCode VekInstrumentHandlerPrivate::checkManual(unsigned char channel) const
{
    if (!isValidChannel(channel))
        return VekErrorCode::InvalidChannel;
    return isManualExperimentRun(channel) ? VekErrorCode::Success : VekErrorCode::ManualExperimentNotRunning;
}
