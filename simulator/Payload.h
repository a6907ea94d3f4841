// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

#include <algorithm>
#include <cstring>

/// The value at an offset of a payload; what lies behind its end reads as zero.
template <typename Value>
Value readAt(const QByteArray &payload, int offset)
{
    Value value = {};
    const int available = payload.size() - offset;
    if (available > 0)
        std::memcpy(&value, payload.constData() + offset, std::min(size_t(available), sizeof value));
    return value;
}

/// The bytes of values, one after the other.
template <typename... Values>
QByteArray packed(const Values &...values)
{
    QByteArray bytes;
    (bytes.append(reinterpret_cast<const char *>(&values), sizeof values), ...);
    return bytes;
}
