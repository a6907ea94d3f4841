// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

#include <cmath>

/// A stream of random numbers that is the same on every machine (the library's distributions are not): SplitMix64.
class Random
{
public:
    explicit Random(quint64 seed) : _state(seed * 0x9E3779B97F4A7C15ull + 0x632BE59BD9B4E019ull) {}

    quint64 next()
    {
        quint64 z = (_state += 0x9E3779B97F4A7C15ull);
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
        return z ^ (z >> 31);
    }
    /// From 0 up to but not including 1.
    double uniform() { return double(next() >> 11) * 0x1p-53; }
    /// -1 or 1.
    double sign() { return next() & 1u ? 1.0 : -1.0; }
    /// Mean 0, deviation 1 (Box and Muller).
    double normal()
    {
        const double radius = std::sqrt(-2.0 * std::log(1.0 - uniform()));
        return radius * std::cos(2.0 * 3.14159265358979323846 * uniform());
    }

private:
    quint64 _state;
};
