// SPDX-License-Identifier: MIT
#pragma once

#include "VekExperimentNode.h"
#include "hardware_models/HardwareModelNumber.h"

#include <optional>

class ChannelHandler;
struct Node;

/// What the two instrument lines do differently when a node begins.
struct NodeRules {
    InstrumentLine line;     ///< whose models the rules are for
    bool doesType27KeepCell; ///< a node of type 27 leaves the cell as it is, instead of switching it on
    int acBatchPackets;      ///< packets that an AC node counts on until a header says better; 0: no batches
};

/**
 * Puts a channel into the state of a node that begins: cell, charge, decimation, numbering.
 *
 * @return what to announce; nothing when neither step, cycle, sub-step nor name has changed, and for nodes that are no
 *         steps: the end, loops and those that only direct the instrument's program
 */
std::optional<VekExperimentNode> enterNode(ChannelHandler &channel, const Node &node, const NodeRules &rules);
