// SPDX-License-Identifier: MIT
#pragma once

#include "elements/ExperimentComplaint.h"

class NodeList;

namespace VekInternalContainer {
struct BuilderContainer;
}

/**
 * How large an experiment may be. The first two bounds are the instrument's, which counts nodes and jumps in 16 bits.
 * The third keeps what is recursive about a tree, its destruction, on any stack that a client's thread may have.
 */
namespace ExperimentSize {

constexpr int mostNodes = 65535;      ///< of an experiment, its closing one included
constexpr int mostLoopNodes = 32767;  ///< that one loop goes back over
constexpr quint32 deepestTree = 1000; ///< lists inside one another, the experiment's own not counted

/// What a tree is refused for before anything walks through it: too deep, or more elements than nodes may be.
ExperimentComplaints complaintsOf(const VekInternalContainer::BuilderContainer &root);
/// What its nodes are refused for: too many of them, or too many in one loop.
ExperimentComplaints complaintsOf(const NodeList &nodes);

} // namespace ExperimentSize
