// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QtEndian>

/// One number as it travels.
template <typename Value>
QByteArray littleEndian(Value value)
{
    QByteArray bytes(sizeof value, '\0');
    qToLittleEndian(value, bytes.data());
    return bytes;
}

/// The payload that holds the values one after the other, without padding.
template <typename... Values>
QByteArray packed(Values... values)
{
    return (littleEndian(values) + ...);
}
