// SPDX-License-Identifier: MIT
// What it costs when an instrument tells that a node begins.

#include "TableRow.h"
#include "channels/ChannelHandler.h"
#include "channels/NodeBeginning.h"

#include <benchmark/benchmark.h>

#include <memory>

namespace {

constexpr NodeRules rules{InstrumentLine::Main, true, 0};
constexpr int announcements = 10000;

/// A channel that runs so many nodes: steps of ten, each with a sub-step of its own.
std::shared_ptr<ChannelHandler> channelWith(int nodes)
{
    NodeList list;
    for (int i = 0; i < nodes; ++i) {
        Node node;
        node.hwNode.type = quint8(NodeType_t::ConstantCurrent);
        node.stepNumber = 1 + i % 10;
        node.newSubStep = true;
        list.addNode(node);
    }
    auto channel = std::make_shared<ChannelHandler>(QString(), 0);
    channel->setLoadedNodeList(list);
    return channel;
}

/// As many announcements, one node after the other, as often as the list is passed through.
TableRow::Work begins(int nodes)
{
    return [nodes, channel = channelWith(nodes)] {
        for (int i = 0; i < announcements; ++i) {
            const int index = qBound(0, i % nodes, channel->getMaximumNodeIndex());
            benchmark::DoNotOptimize(enterNode(*channel, channel->getNodeAt(index), rules));
        }
    };
}

} // namespace

int main(int argc, char **argv)
{
    TableRow growth("node announcements while 10,000 nodes run", "while 100 run", {Aim::TimesAtMost, 1.2});
    growth.addCase("10,000 against 100", begins(10000), begins(100));
    return measureRows(argc, argv, {&growth});
}
