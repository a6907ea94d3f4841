#include "elements/BuilderContainer.h"

#include <algorithm>

using VekInternalContainer::BuilderContainer;

namespace {
constexpr quint32 mostRepeats = 65535; // the instrument counts in 16 bits
}

bool BuildExperimentContainer::addElement(const std::shared_ptr<AbstractBuilderElement> &element, quint32 repeats)
{
    if (!element || repeats == 0)
        return false;
    BuilderContainer leaf;
    leaf.isList = 0;
    leaf.repeats = std::min(repeats, mostRepeats);
    leaf.element.pointer = element->clone();
    _root.children.append(leaf);
    return true;
}

bool BuildExperimentContainer::addLoop(const BuilderContainer &source, quint32 repeats)
{
    if (source.children.isEmpty() || repeats == 0)
        return false;
    BuilderContainer list;
    list.repeats = std::min(repeats, mostRepeats);
    list.children = source.children;
    _root.children.append(list);
    return true;
}
