// SPDX-License-Identifier: MIT
#pragma once

#include "elements/Node.h"

#include <QList>

#include <memory>
#include <vector>

/**
 * The flat list of nodes that an experiment expands into. Positions in it are the node numbers that the instrument
 * reports.
 *
 * @thread Copies share their nodes. Filled on one thread; afterwards any thread may read.
 */
class NodeList
{
public:
    /// Appends a copy, with the default name where it has none and the next step number where it has -1.
    void addNode(const Node &node);
    /// Puts a copy before position @p index as it stands.
    void insert(int index, const Node &node);
    /// Appends the nodes of another list, which are shared from now on.
    void append(const NodeList &other);
    /// Appends the nodes of another list, which is empty from now on.
    void append(NodeList &&other);
    /// Appends copies of @p count nodes of its own from position @p first on.
    void appendCopies(int first, int count);

    /// Step number for a node that comes next: a new one if it opens a sub-step, save for loops; 1 on an empty list.
    int getStepNumber(bool newSubStep, NodeType_t type) const;
    /// The name of a node that got none; empty for the types that have no default.
    static QString getDefaultNodeName(NodeType_t type);

    std::vector<std::shared_ptr<Node>> getNodeList() const { return _nodes; }
    /// The records in order: what is uploaded.
    QList<ExpNode_t> getHWNodeList() const;

    bool isEmpty() const { return _nodes.empty(); }
    int size() const { return static_cast<int>(_nodes.size()); }
    /// The node at a position. @failure std::out_of_range
    const Node &at(int index) const { return *_nodes.at(static_cast<std::size_t>(index)); }
    /// The node at a position, which must exist.
    const std::shared_ptr<Node> &operator[](int index) const { return _nodes[static_cast<std::size_t>(index)]; }

private:
    std::vector<std::shared_ptr<Node>> _nodes;
};
