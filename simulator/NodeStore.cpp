// SPDX-License-Identifier: MIT
#include "simulator/NodeStore.h"

#include "simulator/NodeProgram.h"

#include <cstring>

namespace {

bool isKnown(NodeType_t type)
{
    const bool isStructure = type == NodeType_t::End || type == NodeType_t::Loop || type == NodeType_t::BranchLogic ||
                             type == NodeType_t::Modify;
    return isStructure || NodeProgram::isRunnable(type);
}

} // namespace

void NodeStore::begin(int count)
{
    _nodes.clear();
    _announced = count;
    _isOpen = true;
    _isComplete = false;
}

FirmwareErrorCode NodeStore::append(const QByteArray &record)
{
    if (record.size() != int(sizeof(ExpNode_t)))
        return FW_BAD_PARAMETERS;
    ExpNode_t node;
    std::memcpy(&node, record.constData(), sizeof node);
    if (!_isOpen || _nodes.size() >= _announced || !isKnown(node.nodeType()))
        return FW_NODE_NOT_APPENDED;
    _nodes.append(node);
    return FW_SUCCESS;
}

void NodeStore::end()
{
    _isComplete = _isOpen && _nodes.size() == _announced && !_nodes.isEmpty();
    _isOpen = false;
}
