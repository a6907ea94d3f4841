// SPDX-License-Identifier: MIT
#include "elements/NodeSampling.h"

#include "elements/Node.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

namespace {

constexpr float shortestInterval = 1e-5f; // seconds

bool hasSamplingInterval(NodeType_t type)
{
    switch (type) {
    case NodeType_t::OpenCircuit:
    case NodeType_t::SweepVoltage:
    case NodeType_t::SweepCurrent:
    case NodeType_t::ConstantVoltage:
    case NodeType_t::ConstantCurrent:
    case NodeType_t::ConstantResistance:
    case NodeType_t::ConstantPower:
    case NodeType_t::MaximumPowerPoint:
    case NodeType_t::StepVoltage:
    case NodeType_t::StepCurrent:
        return true;
    default: // see compatibility.md, pseudo constant voltage keeps its interval
        return false;
    }
}

unsigned downsamplingFactor(float sampling, float maxPeriod)
{
    if (sampling <= maxPeriod)
        return 1;
    const float factor = std::ceil(sampling / maxPeriod);
    constexpr auto most = std::numeric_limits<unsigned>::max();
    return factor < static_cast<float>(most) ? static_cast<unsigned>(factor) : most;
}

} // namespace

std::tuple<float, unsigned> splitSamplingInterval(float sampling, float maxPeriod)
{
    const float interval = std::max(shortestInterval, sampling); // in this order NaN gives the shortest one
    const unsigned factor = downsamplingFactor(interval, std::max(shortestInterval, maxPeriod));
    return {interval / static_cast<float>(factor), factor};
}

std::tuple<float, float> joinSamplingInterval(float interval, unsigned factor)
{
    const float full = static_cast<float>(factor) * interval;
    const float update = full / static_cast<float>(factor);
    return {std::max(full, shortestInterval), std::max(update, shortestInterval)};
}

float hardwareSamplingInterval(const ExpNode_t &node)
{
    if (!hasSamplingInterval(node.nodeType()))
        return 0.0f;
    float interval;
    std::memcpy(&interval, node.parameters, sizeof interval);
    return interval;
}

void setHardwareSamplingInterval(ExpNode_t &node, float interval)
{
    if (hasSamplingInterval(node.nodeType()))
        std::memcpy(node.parameters, &interval, sizeof interval);
}

void setDownsampling(Node &node, float maxPeriod)
{
    node.downsampleFactor = 1;
    if (!hasSamplingInterval(node.hwNode.nodeType()))
        return;
    const auto [interval, factor] = splitSamplingInterval(hardwareSamplingInterval(node.hwNode), maxPeriod);
    setHardwareSamplingInterval(node.hwNode, interval);
    node.downsampleFactor = factor;
}

float reportedSamplingInterval(const Node &node)
{
    const float interval = hardwareSamplingInterval(node.hwNode);
    if (interval == 0.0f)
        return 0.0f;
    return std::get<0>(joinSamplingInterval(interval, node.downsampleFactor));
}
