// SPDX-License-Identifier: MIT
// From a tree of elements to the list of nodes that is uploaded.

#include "TableRow.h"
#include "calibration/CalibrationData.h"
#include "elements/BuilderContainer.h"
#include "elements/NodeExpansion.h"
#include "elements/OpenCircuitElement.h"
#include "hardware_models/HardwareVersion.h"

#include <benchmark/benchmark.h>

namespace {

using VekInternalContainer::BuilderContainer;

BuilderContainer listOf(const QList<BuilderContainer> &children, quint32 repeats)
{
    BuilderContainer list;
    list.children = children;
    list.repeats = repeats;
    return list;
}

BuilderContainer rest()
{
    BuilderContainer leaf;
    leaf.isList = 0;
    leaf.element.pointer = std::make_shared<OpenCircuitElement>();
    return leaf;
}

/// Lists of two halves, down to as many rests as fit.
BuilderContainer doublingTree(int nodes)
{
    BuilderContainer tree = rest();
    for (int size = 1; 2 * size <= nodes; size *= 2)
        tree = listOf({tree, tree}, 1);
    return tree;
}

/// Lists inside one another, each with a loop of its own around a rest and the next one.
BuilderContainer chain(int depth)
{
    const BuilderContainer leaf = rest();
    BuilderContainer tree = leaf;
    for (int level = 0; level < depth; ++level)
        tree = listOf({leaf, tree}, 2);
    return tree;
}

NodeList expanded(const BuilderContainer &tree)
{
    static const CalibrationData calibration;
    return FillNodeData(tree, calibration, HardwareVersion());
}

TableRow::Work expansion(const BuilderContainer &tree)
{
    return [tree] { benchmark::DoNotOptimize(expanded(tree)); };
}

/// As many nodes without a tree.
TableRow::Work allocation(int nodes)
{
    return [nodes, node = *expanded(rest())[0]] {
        std::vector<std::shared_ptr<Node>> list;
        list.reserve(std::size_t(nodes));
        for (int i = 0; i < nodes; ++i)
            list.push_back(std::make_shared<Node>(node));
        benchmark::DoNotOptimize(list);
    };
}

} // namespace

int main(int argc, char **argv)
{
    const BuilderContainer doubling = doublingTree(100 * 1000);
    TableRow tree("expansion of 1e5 nodes, doubling tree", "make_shared into a reserved vector", {Aim::TimesAtMost, 3});
    tree.addCase("doubling tree", expansion(doubling), allocation(expanded(doubling).size()));

    const BuilderContainer deep = chain(10000);
    const BuilderContainer flat = chain(300);
    TableRow growth("the same, growth of time per node from depth 300 to 10,000", "depth 300", {Aim::TimesAtMost, 1.3});
    growth.addCase("depth 10,000 against 300", expansion(deep), expansion(flat),
                   double(expanded(deep).size()) / expanded(flat).size());
    return measureRows(argc, argv, {&tree, &growth});
}
