// SPDX-License-Identifier: MIT
#pragma once

#include "elements/NodeMakers.h"

#include <cstring>

/// The record that ends every list.
inline ExpNode_t endNode()
{
    ExpNode_t node;
    std::memset(static_cast<void *>(&node), 0, sizeof node);
    return node;
}

inline ExpNode_t timed(ExpNode_t node, float seconds)
{
    Vek_Node_SetTimeLimit(node, seconds, true);
    return node;
}
