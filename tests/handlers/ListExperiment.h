// SPDX-License-Identifier: MIT
#pragma once

#include "elements/AbstractExperiment.h"
#include "elements/NodeList.h"
#include "logging/ErrorStringList.h"

#include <initializer_list>

/// An experiment made of given nodes, with given complaints.
class ListExperiment : public AbstractExperiment
{
public:
    ListExperiment(std::initializer_list<Node> nodes)
    {
        for (const Node &node : nodes)
            _nodes.addNode(node);
    }
    void append(const Node &node) { _nodes.addNode(node); }
    void complain(const QString &text) { _complaints.addError(text); }

    std::shared_ptr<AbstractExperiment> clone() const override { return std::make_shared<ListExperiment>(*this); }
    QString GetShortName() const override { return {}; }
    QString GetFullName() const override { return {}; }
    QString GetDescription() const override { return {}; }
    QStringList GetCategory() const override { return {}; }
    QList<quint8> GetTypes() const override { return {}; }
    NodeList GetNodesData(const CalibrationData &, const HardwareVersion &) const override { return _nodes; }
    ErrorStringList validateInput(const HardwareVersion &) override { return _complaints; }

private:
    NodeList _nodes;
    ErrorStringList _complaints;
};

/// A node of a type under a name, as the first of an element.
inline Node makeNode(int type, const QString &name, int stepNumber, quint32 downsampleFactor = 1)
{
    Node node;
    node.hwNode.type = quint8(type);
    node.hwNode.flags = 0; // no charge limit: the instrument's counter goes on
    node.setNodeMembers(name, true, 0.0, stepNumber);
    node.downsampleFactor = downsampleFactor;
    return node;
}
