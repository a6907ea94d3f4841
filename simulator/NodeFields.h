// SPDX-License-Identifier: MIT
#pragma once

#include "elements/ExpNode.h"

#include <cstring>

/// A field of a node record, at an offset in bytes from its begin.
template <typename Field>
Field fieldAt(const ExpNode_t &node, int offset)
{
    Field value;
    std::memcpy(&value, reinterpret_cast<const char *>(&node) + offset, sizeof value);
    return value;
}

/// A parameter of a node, which is single precision on the wire.
inline double at(const ExpNode_t &node, int offset)
{
    return double(fieldAt<float>(node, offset));
}
