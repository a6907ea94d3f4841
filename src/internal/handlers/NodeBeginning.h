#pragma once

#include "VekExperimentNode.h"
#include "hardware_models/HardwareModelNumber.h"

#include <optional>

class ChannelHandler;
struct Node;

/// What the two instrument lines do differently when a node begins.
struct NodeRules {
    InstrumentLine line;
    bool type27KeepsCell; ///< nodes of type 27 leave the cell as it is, instead of switching it on
    int acPackets;        ///< packets that an AC node's batch is begun with; 0: the line has no batches
};

/// The nodes that take no part: they neither touch the cell nor count as a step.
bool isLogicNode(const Node &node);

/**
 * Puts a channel into the state of a node that begins: cell, charge, decimation, numbering.
 *
 * @return what to announce; nothing if neither step, sub-step, cycle nor name has changed
 */
std::optional<VekExperimentNode> enterNode(ChannelHandler &channel, const Node &node, const NodeRules &rules);
