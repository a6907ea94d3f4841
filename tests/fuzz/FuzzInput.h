// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QtGlobal>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <limits>

/**
 * Reads a fuzzer's bytes as whatever a target needs next. Numbers are little-endian; bytes that are missing read as
 * zero, so every input means something. make_corpus.py writes seeds in the same form.
 */
class FuzzInput
{
public:
    FuzzInput(const std::uint8_t *data, std::size_t size)
        : _bytes(reinterpret_cast<const char *>(data)), _size(int(size))
    {
    }

    bool isEmpty() const { return _position >= _size; }

    template <typename Number>
    Number take()
    {
        Number number{};
        const QByteArray raw = bytes(int(sizeof number));
        std::memcpy(&number, raw.constData(), std::size_t(raw.size()));
        return number;
    }

    bool flag() { return take<quint8>() & 1; }
    /// A choice from 0 to count - 1, in one byte.
    int below(int count) { return take<quint8>() % count; }
    template <typename Choices>
    const auto &oneOf(const Choices &choices)
    {
        return choices[below(int(std::size(choices)))];
    }

    /**
     * A number in physical units: one byte says where it comes from. Below 20 it is an extreme, an odd byte stands in
     * front of the eight bytes of a double, an even one in front of a signed 16-bit count of thousandths.
     */
    double number()
    {
        constexpr auto infinity = std::numeric_limits<double>::infinity();
        constexpr double extremes[] = {
            0.0,    -0.0,   1.0,    -1.0,     infinity,     -infinity,     std::numeric_limits<double>::quiet_NaN(),
            1e308,  -1e308, 1e-308, 4.9e-324, 2147483647.0, -2147483648.0, 4294967296.0,
            1.8e19, 1e38,   -1e38,  1e-38,    32767.0,      65536.0};
        const auto kind = take<quint8>();
        if (kind < std::size(extremes))
            return extremes[kind];
        return kind % 2 ? take<double>() : take<qint16>() / 1000.0;
    }

    /// So many bytes, fewer at the end of the input.
    QByteArray bytes(int count)
    {
        const int taken = qBound(0, count, _size - _position);
        const QByteArray piece(_bytes + _position, taken);
        _position += taken;
        return piece;
    }
    /// As bytes(), filled up with zeros.
    QByteArray record(int count) { return bytes(count).leftJustified(count, '\0'); }
    /// Bytes behind a length of one byte.
    QByteArray text() { return bytes(take<quint8>()); }
    QByteArray rest() { return bytes(_size); }

private:
    const char *_bytes;
    int _size;
    int _position = 0;
};
