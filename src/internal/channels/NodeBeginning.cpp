// SPDX-License-Identifier: MIT
#include "channels/NodeBeginning.h"

#include "channels/ChannelHandler.h"
#include "elements/AbstractExperiment.h"
#include "elements/Node.h"

#include <tuple>

namespace {

enum class CellEffect { None, Off, Keep, On };

CellEffect cellEffectOf(int type, const NodeRules &rules)
{
    switch (type) {
    case int(NodeType_t::BranchLogic):
    case int(NodeType_t::Modify):
    case 33:
        return CellEffect::None;
    case int(NodeType_t::End):
    case int(NodeType_t::OpenCircuit):
        return CellEffect::Off;
    case int(NodeType_t::Loop):
        return CellEffect::Keep;
    case 27:
        return rules.doesType27KeepCell ? CellEffect::Keep : CellEffect::On;
    default:
        return CellEffect::On;
    }
}

void switchCell(ChannelHandler &channel, CellEffect effect)
{
    if (effect != CellEffect::Keep)
        channel.setCellOn(effect == CellEffect::On);
}

void prepareForData(ChannelHandler &channel, const Node &node, const NodeRules &rules)
{
    constexpr int typeWithoutData = 24;
    if (node.hwNode.type == typeWithoutData)
        return;
    if (AbstractExperiment::getExperimentNodeType(node.hwNode.nodeType()) == 1) {
        channel.dc.beginGroups(node.downsampleFactor);
        channel.voltageDifferent = node.voltageDifferent;
        return;
    }
    channel.ac.forgetUnfinishedPoint(); // the node before may have ended inside one, of another frequency
    if (rules.acBatchPackets > 0)
        channel.ac.beginBatch(rules.acBatchPackets);
}

/// Everything whose change is worth an announcement.
auto whatIsAnnounced(const RealTimeTracker &tracker)
{
    return std::make_tuple(tracker.stepNumber, tracker.cycleNumber(), tracker.stepName, tracker.substepNumber);
}

} // namespace

std::optional<VekExperimentNode> enterNode(ChannelHandler &channel, const Node &node, const NodeRules &rules)
{
    const CellEffect effect = cellEffectOf(node.hwNode.type, rules);
    if (effect == CellEffect::None)
        return std::nullopt;
    switchCell(channel, effect);
    if (node.hwNode.nodeType() == NodeType_t::End || node.hwNode.nodeType() == NodeType_t::Loop)
        return std::nullopt;
    channel.capacity.onNodeBeginning(node.stepNumber, node.hwNode.flags & NodeFlag::chargeLimit);
    if (channel.isLoadedNodeListEmpty())
        return std::nullopt;
    prepareForData(channel, node, rules);

    const auto before = whatIsAnnounced(channel);
    const RealTimeTracker::Position position = channel.enterNode(node);
    if (whatIsAnnounced(channel) == before)
        return std::nullopt;
    return VekExperimentNode{node.stepName, node.stepNumber, position.cycleNumber, position.substepNumber};
}
