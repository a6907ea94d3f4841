// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>

/**
 * A number that one thread writes while another may read it. Copies and assigns like a plain number.
 *
 * @thread Each access is whole by itself; nothing is said about the order of two of them.
 */
template <typename Number>
class CrossThreadValue
{
public:
    CrossThreadValue(Number value) : _value(value) {}
    CrossThreadValue(const CrossThreadValue &other) : _value(other) {}
    CrossThreadValue &operator=(const CrossThreadValue &other) { return *this = Number(other); }
    CrossThreadValue &operator=(Number value)
    {
        _value.store(value, std::memory_order_relaxed);
        return *this;
    }
    operator Number() const { return _value.load(std::memory_order_relaxed); }

private:
    std::atomic<Number> _value;
};
