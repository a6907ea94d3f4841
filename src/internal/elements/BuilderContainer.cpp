// SPDX-License-Identifier: MIT
#include "elements/BuilderContainer.h"

#include "elements/ExperimentSize.h"

#include <algorithm>
#include <limits>

using VekInternalContainer::BuilderContainer;

namespace {
constexpr quint32 mostRepeats = 65535; // the instrument counts in 16 bits
}

void BuildExperimentContainer::append(const BuilderContainer &child)
{
    const quint64 room = std::numeric_limits<quint64>::max() - _root.elementCount;
    _root.elementCount += std::min(room, child.elementCount); // an experiment in itself, in itself, doubles each time
    _root.depth = std::max(_root.depth, child.depth);
    _root.children.append(child);
}

bool BuildExperimentContainer::addElement(const std::shared_ptr<AbstractBuilderElement> &element, quint32 repeats)
{
    if (!element || repeats == 0)
        return false;
    BuilderContainer leaf;
    leaf.isList = 0;
    leaf.repeats = std::min(repeats, mostRepeats);
    leaf.element.pointer = element->clone();
    leaf.elementCount = 1;
    append(leaf);
    return true;
}

bool BuildExperimentContainer::addLoop(const BuilderContainer &source, quint32 repeats)
{
    if (source.children.isEmpty() || repeats == 0)
        return false;
    BuilderContainer list;
    list.repeats = std::min(repeats, mostRepeats);
    list.depth = source.depth + 1;
    list.elementCount = source.elementCount;
    if (list.depth <= ExperimentSize::deepestTree)
        list.children = source.children;
    append(list);
    return true;
}
