#include "channels/ChannelHandler.h"

#include "elements/AbstractExperiment.h"

#include <QReadLocker>
#include <QWriteLocker>

#include <algorithm>
#include <utility>

namespace {

template <typename Field>
Field read(QReadWriteLock &lock, const Field &field)
{
    const QReadLocker locker(&lock);
    return field;
}

template <typename Field, typename Value>
void write(QReadWriteLock &lock, Field &field, Value &&value)
{
    const QWriteLocker locker(&lock);
    field = std::forward<Value>(value);
}

} // namespace

ChannelHandler::ChannelHandler(const QString &deviceName, unsigned char channelNumber)
    : _deviceName(deviceName), _channelNumber(channelNumber)
{
    setIdealConfig();
}

void ChannelHandler::setIdealConfig()
{
    _awaitedStart = noStart; // first: the client may start anew as soon as the channel counts as stopped
    setCellOn(false);
    setRunningExperimentStatus(EXPERIMENT_STOPPED);
    setRunningExperimentMode(MODE_IDLE);
    setDataStatus(DATA_NOT_STARTED);
    setSDCardStatus(SD_IDLE);
    static_cast<RealTimeTracker &>(*this) = RealTimeTracker();
    setLoadedExp(nullptr);
    write(_loadedNodeListLock, _loadedNodeList, nullptr);
}

void ChannelHandler::setIRComp(const IRComp &irComp)
{
    write(_irCompLock, _irComp, irComp);
}

ChannelHandler::IRComp ChannelHandler::getIRComp() const
{
    return read(_irCompLock, _irComp);
}

void ChannelHandler::setRunningExperimentMode(ExperimentMode mode)
{
    write(_experimentModeLock, _experimentMode, mode);
}

ChannelHandler::ExperimentMode ChannelHandler::getExperimentMode() const
{
    return read(_experimentModeLock, _experimentMode);
}

void ChannelHandler::setRunningExperimentStatus(ExperimentStatus status)
{
    write(_experimentStatusLock, _experimentStatus, status);
}

ChannelHandler::ExperimentStatus ChannelHandler::getExperimentStatus() const
{
    return read(_experimentStatusLock, _experimentStatus);
}

void ChannelHandler::setDataStatus(DataStatus status)
{
    if (status == DATA_STARTED)
        _awaitedStart = noStart;
    write(_dataStatusLock, _dataStatus, status);
}

ChannelHandler::DataStatus ChannelHandler::getDataStatus() const
{
    return read(_dataStatusLock, _dataStatus);
}

void ChannelHandler::setSDCardStatus(SDCardStatus status)
{
    write(_sdCardStatusLock, _sdCardStatus, status);
}

ChannelHandler::SDCardStatus ChannelHandler::getSDCardStatus() const
{
    return read(_sdCardStatusLock, _sdCardStatus);
}

void ChannelHandler::awaitStart(PCcommand_t start)
{
    _awaitedStart = start;
}

bool ChannelHandler::endAwaitOfStart(PCcommand_t start)
{
    return _awaitedStart.compare_exchange_strong(start, noStart);
}

void ChannelHandler::setCellOn(bool on)
{
    write(_cellOnLock, _cellOn, on);
}

bool ChannelHandler::isCellOn() const
{
    return read(_cellOnLock, _cellOn);
}

void ChannelHandler::setCompRange(const VekCompRange &range)
{
    write(_compRangeLock, _compRange, range);
}

VekCompRange ChannelHandler::getCompRange() const
{
    return read(_compRangeLock, _compRange);
}

void ChannelHandler::setLoadImpValue(float ohms)
{
    write(_loadImpedanceLock, _loadImpedance, ohms);
}

float ChannelHandler::getLoadImpValue() const
{
    return read(_loadImpedanceLock, _loadImpedance);
}

void ChannelHandler::setLoadedExp(std::shared_ptr<AbstractExperiment> experiment)
{
    write(_loadedExperimentLock, _loadedExperiment, std::move(experiment));
}

std::shared_ptr<AbstractExperiment> ChannelHandler::getLoadedExp() const
{
    return read(_loadedExperimentLock, _loadedExperiment);
}

void ChannelHandler::setLoadedNodeList(const NodeList &nodes)
{
    write(_loadedNodeListLock, _loadedNodeList, std::make_shared<NodeList>(nodes));
}

NodeList ChannelHandler::getLoadedNodeList() const
{
    const auto list = read(_compRangeLock, _loadedNodeList);
    return list ? *list : NodeList();
}

bool ChannelHandler::isLoadedNodeListEmpty() const
{
    const auto list = read(_compRangeLock, _loadedNodeList);
    return !list || list->isEmpty() || list->getHWNodeList().isEmpty();
}

int ChannelHandler::getMaximumNodeIndex() const
{
    const auto list = read(_compRangeLock, _loadedNodeList);
    return list ? std::max(0, list->size() - 1) : 0;
}

Node ChannelHandler::getNodeAt(int index) const
{
    const auto list = read(_compRangeLock, _loadedNodeList);
    return list ? *list->getNodeList().at(std::size_t(index)) : Node();
}

QByteArray ChannelHandler::getHardwareNodeAt(int index) const
{
    if (!read(_compRangeLock, _loadedNodeList))
        return QByteArray(int(sizeof(ExpNode_t)), '\0');
    const ExpNode_t node = getNodeAt(index).hwNode;
    return QByteArray(reinterpret_cast<const char *>(&node), int(sizeof node));
}

void ChannelHandler::appendCalibrationRawData(bool isFirstChunk, const QByteArray &chunk)
{
    const QWriteLocker locker(&_calibrationRawDataLock);
    if (isFirstChunk)
        _calibrationRawData.clear();
    _calibrationRawData += chunk;
}

QByteArray ChannelHandler::getCalibrationRawData() const
{
    return read(_calibrationRawDataLock, _calibrationRawData);
}

void ChannelHandler::clearCalibrationRawData()
{
    write(_calibrationRawDataLock, _calibrationRawData, QByteArray());
}

void ChannelHandler::setRecoverDataStatus(bool available)
{
    write(_recoverDataLock, _recoverDataAvailable, available);
}

bool ChannelHandler::isRecoverDataAvailable() const
{
    return read(_recoverDataLock, _recoverDataAvailable);
}

void ChannelHandler::setActiveRecoverExperimentStatus(bool active)
{
    write(_activeRecoverLock, _activeRecoverExperiment, active);
}

bool ChannelHandler::isActiveRecoverExperiment() const
{
    return read(_activeRecoverLock, _activeRecoverExperiment);
}

void ChannelHandler::setVmax(double volts)
{
    write(_limitsLock, _limits.vMax, volts);
}

void ChannelHandler::setVmin(double volts)
{
    write(_limitsLock, _limits.vMin, volts);
}

void ChannelHandler::setImax(double amperes)
{
    write(_limitsLock, _limits.iMax, amperes);
}

void ChannelHandler::setImin(double amperes)
{
    write(_limitsLock, _limits.iMin, amperes);
}

void ChannelHandler::setTemperatureMax(double degreesCelsius)
{
    write(_limitsLock, _limits.temperatureMax, degreesCelsius);
}

ChannelLimit ChannelHandler::getLimits() const
{
    return read(_limitsLock, _limits);
}

void ChannelHandler::resetChannelLimits()
{
    write(_limitsLock, _limits, ChannelLimit());
}
