// SPDX-License-Identifier: MIT
#include "elements/NodeList.h"

#include <algorithm>
#include <iterator>

namespace {

struct NameRow {
    NodeType_t type;
    const char *name;
};

constexpr NameRow defaultNames[] = {
    // clang-format off
    {NodeType_t::End,                     "Experiment complete"},
    {NodeType_t::OpenCircuit,             "Open Circuit Potential"},
    {NodeType_t::SweepVoltage,            "Potential Linear Sweep"},
    {NodeType_t::SweepCurrent,            "Current Linear Sweep"},
    {NodeType_t::ConstantVoltage,         "Constant Potential"},
    {NodeType_t::ConstantCurrent,         "Constant Current"},
    {NodeType_t::PulseNormalVoltage,      "NP Potential Voltammetry"},
    {NodeType_t::PulseNormalCurrent,      "NP Current Voltammetry"},
    {NodeType_t::PulseDiffVoltage,        "DP Potential Voltammetry"},
    {NodeType_t::PulseDiffCurrent,        "DP Current Voltammetry"},
    {NodeType_t::PulseSqrVoltage,         "SW Potential Voltammetry"},
    {NodeType_t::PulseSqrCurrent,         "SW Current Voltammetry"},
    {NodeType_t::SineVoltage,             "Potential sine wave"},
    {NodeType_t::ConstantResistance,      "Constant Resistance Discharge"},
    {NodeType_t::ConstantPower,           "Constant Power"},
    {NodeType_t::MaximumPowerPoint,       "Max Power Discharge"},
    {NodeType_t::EisVoltage,              "Potentiostatic EIS"},
    {NodeType_t::EisCurrent,              "Galvanostatic EIS"},
    {NodeType_t::EisPseudoGalvanostatic,  "Pseudo-Galvanostatic EIS"},
    {NodeType_t::EisCurrentFixedGains,    "Galvanostatic imp. fixed gains"},
    {NodeType_t::EisVoltageFixedSettings, "Potentiostatic imp. fixed gains"},
    {NodeType_t::EisPotentiostatic26,     "Potentiostatic EIS"},
    {NodeType_t::EisFixedDcBias,          "EIS fixed DC bias offset"},
    // clang-format on
};

} // namespace

void NodeList::addNode(const Node &node)
{
    auto added = std::make_shared<Node>(node);
    const NodeType_t type = node.hwNode.nodeType();
    if (added->stepName.isEmpty())
        added->stepName = getDefaultNodeName(type);
    if (added->stepNumber == -1)
        added->stepNumber = getStepNumber(added->newSubStep, type);
    _nodes.push_back(std::move(added));
}

void NodeList::insert(int index, const Node &node)
{
    _nodes.insert(_nodes.begin() + index, std::make_shared<Node>(node));
}

void NodeList::append(const NodeList &other)
{
    const auto nodes = other._nodes; // a copy: a list may be appended to itself
    _nodes.insert(_nodes.end(), nodes.begin(), nodes.end());
}

void NodeList::append(NodeList &&other)
{
    _nodes.insert(_nodes.end(), std::make_move_iterator(other._nodes.begin()),
                  std::make_move_iterator(other._nodes.end()));
    other._nodes.clear();
}

void NodeList::appendCopies(int first, int count)
{
    for (int i = first; i < first + count; ++i)
        _nodes.push_back(std::make_shared<Node>(*(*this)[i]));
}

int NodeList::getStepNumber(bool newSubStep, NodeType_t type) const
{
    if (isEmpty())
        return 1;
    const bool opensStep = newSubStep && type != NodeType_t::Loop;
    return _nodes.back()->stepNumber + (opensStep ? 1 : 0);
}

QString NodeList::getDefaultNodeName(NodeType_t type)
{
    const auto row = std::find_if(std::begin(defaultNames), std::end(defaultNames),
                                  [type](const NameRow &candidate) { return candidate.type == type; });
    return row == std::end(defaultNames) ? QString() : QString::fromLatin1(row->name);
}

QList<ExpNode_t> NodeList::getHWNodeList() const
{
    QList<ExpNode_t> records;
    for (const auto &node : _nodes)
        records.append(node->hwNode);
    return records;
}
