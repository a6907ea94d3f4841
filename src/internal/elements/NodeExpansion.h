// SPDX-License-Identifier: MIT
#pragma once

#include "elements/NodeList.h"

#include <functional>

class AbstractBuilderElement;
class CalibrationData;
class ErrorStringList;
struct HardwareVersion;

namespace VekInternalContainer {
struct BuilderContainer;
}

/**
 * Expands a tree of elements into its flat list of nodes, depth first.
 *
 * Repeats become the repeat count of a node that stands alone, else a loop node behind the nodes of the vertex. All
 * nodes of one element share one step number, and the steps count from 1 through the tree.
 *
 * @return empty when no element makes a node. The nodes belong to this list alone.
 */
NodeList FillNodeData(const VekInternalContainer::BuilderContainer &container, const CalibrationData &calibration,
                      const HardwareVersion &hardware);

using ElementVisitor = std::function<void(const AbstractBuilderElement &element, int stepNumber)>;

/// Calls @p visit for every element of the tree, in order, with the step number that its nodes get.
void visitElements(const VekInternalContainer::BuilderContainer &container, const ElementVisitor &visit);

/// The complaints of every element of the tree, in order, each behind the element's name and "::".
ErrorStringList getErrorList(const VekInternalContainer::BuilderContainer &container, const HardwareVersion &hardware);
