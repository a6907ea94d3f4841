// SPDX-License-Identifier: MIT
#pragma once

#include "elements/AbstractBuilderElement.h"

#include <QList>

#include <memory>

namespace VekInternalContainer {

/**
 * One vertex in the tree of an experiment: a leaf with one element, or a list of children; both with a repeat count.
 *
 * Copies by value, the element is shared: nothing changes an element once it is part of a tree.
 */
struct BuilderContainer {
    quint32 repeats = 1;
    quint32 isList = 1; ///< 0: a leaf
    QList<BuilderContainer> children;
    struct {
        std::shared_ptr<AbstractBuilderElement> pointer;
    } element;
    quint32 depth = 0;        ///< lists inside one another below this vertex, its own included unless it is the root
    quint64 elementCount = 0; ///< leaves at and below this vertex, one that stands in several places counted in each
};

} // namespace VekInternalContainer

/// Grows the tree of an experiment. A refused call leaves it as it was.
class BuildExperimentContainer
{
public:
    /// Appends a clone of the element. False for a null element or 0 repeats; more than 65535 repeats are cut to that.
    bool addElement(const std::shared_ptr<AbstractBuilderElement> &element, quint32 repeats);
    /**
     * Appends the children of another tree, as they stand, as one list. The repeat count of its root is not used.
     *
     * False for a tree without children or for 0 repeats; more than 65535 repeats are cut to that. What lies too deep
     * to be run is counted but not kept, so that nothing that walks through a tree, its destruction included, can
     * exhaust the stack.
     */
    bool addLoop(const VekInternalContainer::BuilderContainer &source, quint32 repeats);

    const VekInternalContainer::BuilderContainer &getContainer() const { return _root; }

private:
    void append(const VekInternalContainer::BuilderContainer &child);

    VekInternalContainer::BuilderContainer _root;
};
