// SPDX-License-Identifier: MIT
#include "channels/ChannelHandler.h"

#include "elements/AbstractExperiment.h"

#include <algorithm>

ChannelHandler::ChannelHandler(const QString &deviceName, unsigned char channelNumber)
    : _deviceName(deviceName), _channelNumber(channelNumber)
{
}

void ChannelHandler::setIdealConfig()
{
    // Before the state: once the channel counts as stopped, the client may start anew.
    static_cast<RealTimeTracker &>(*this) = RealTimeTracker();
    Run before; // with its experiment and its nodes, which go when the lock is free again
    const std::lock_guard<std::mutex> lock(_mutex);
    before = std::exchange(static_cast<Run &>(_state), Run());
}

void ChannelHandler::setDataStatus(DataStatus status)
{
    const std::lock_guard<std::mutex> lock(_mutex);
    if (status == DATA_STARTED)
        _state.awaitedStart = noStart;
    _state.dataStatus = status;
}

bool ChannelHandler::endAwaitOfStart(PCcommand_t start)
{
    const std::lock_guard<std::mutex> lock(_mutex);
    if (_state.awaitedStart != start)
        return false;
    _state.awaitedStart = noStart;
    return true;
}

void ChannelHandler::setLoadedExp(std::shared_ptr<AbstractExperiment> experiment)
{
    const std::lock_guard<std::mutex> lock(_mutex);
    _state.loadedExperiment.swap(experiment); // the one before goes when the lock is free again
}

void ChannelHandler::setLoadedNodeList(const NodeList &nodes)
{
    std::shared_ptr<const NodeList> list = std::make_shared<NodeList>(nodes);
    const std::lock_guard<std::mutex> lock(_mutex);
    _state.loadedNodes.swap(list);
}

NodeList ChannelHandler::getLoadedNodeList() const
{
    const auto list = get(&State::loadedNodes);
    return list ? *list : NodeList();
}

bool ChannelHandler::isLoadedNodeListEmpty() const
{
    const auto list = get(&State::loadedNodes);
    return !list || list->isEmpty();
}

int ChannelHandler::getMaximumNodeIndex() const
{
    const auto list = get(&State::loadedNodes);
    return list ? std::max(0, list->size() - 1) : 0;
}

Node ChannelHandler::getNodeAt(int index) const
{
    const auto list = get(&State::loadedNodes);
    return list ? list->at(index) : Node();
}

QByteArray ChannelHandler::getHardwareNodeAt(int index) const
{
    const auto list = get(&State::loadedNodes);
    if (!list)
        return QByteArray(int(sizeof(ExpNode_t)), '\0');
    const ExpNode_t &node = list->at(index).hwNode;
    return QByteArray(reinterpret_cast<const char *>(&node), int(sizeof node));
}

void ChannelHandler::appendCalibrationRawData(bool isFirstChunk, const QByteArray &chunk)
{
    const std::lock_guard<std::mutex> lock(_mutex);
    if (isFirstChunk)
        _state.calibrationRawData.clear();
    _state.calibrationRawData += chunk;
}

void ChannelHandler::setLimit(double ChannelLimit::*limit, double value)
{
    const std::lock_guard<std::mutex> lock(_mutex);
    _state.limits.*limit = value;
}
