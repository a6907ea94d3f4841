// SPDX-License-Identifier: MIT
#include "elements/ExperimentSize.h"

#include "elements/BuilderContainer.h"
#include "elements/NodeList.h"

#include <algorithm>

using VekInternalContainer::BuilderContainer;

namespace {

ExperimentComplaints tooLargeIf(bool isTooLarge, const QString &text, quint64 number, quint64 bound)
{
    if (!isTooLarge)
        return {};
    return {{VekErrorCode::ExperimentTooLarge, 0, QString(), text.arg(number).arg(bound)}};
}

/// How many nodes a loop goes back over. None goes forth: a jump above 0 is one back that has run over its 16 bits.
int loopLength(const ExpNode_t &node)
{
    if (node.nodeType() != NodeType_t::Loop)
        return 0;
    return node.jump > 0 ? 65536 - node.jump : -int(node.jump);
}

} // namespace

ExperimentComplaints ExperimentSize::complaintsOf(const BuilderContainer &root)
{
    if (root.depth > deepestTree)
        return tooLargeIf(true,
                          QStringLiteral("The experiment has groups inside groups, %1 deep; at most %2 can be run."),
                          root.depth, deepestTree);
    // Each element makes at least one node, and one closes the experiment.
    return tooLargeIf(
        root.elementCount >= quint64(mostNodes),
        QStringLiteral("The experiment has %1 elements, each of at least one step; an instrument takes at "
                       "most %2 steps, with the closing one."),
        root.elementCount, mostNodes);
}

ExperimentComplaints ExperimentSize::complaintsOf(const NodeList &nodes)
{
    if (nodes.size() > mostNodes)
        return tooLargeIf(
            true,
            QStringLiteral("The experiment has %1 steps, with the closing one; an instrument takes at most "
                           "%2."),
            quint64(nodes.size()), mostNodes);
    int longest = 0;
    for (int position = 0; position < nodes.size(); ++position)
        longest = std::max(longest, loopLength(nodes[position]->hwNode));
    return tooLargeIf(longest > mostLoopNodes,
                      QStringLiteral("A repeated group of the experiment has %1 steps; an instrument goes back over at "
                                     "most %2."),
                      quint64(longest), mostLoopNodes);
}
