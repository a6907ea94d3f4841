// SPDX-License-Identifier: MIT
#pragma once

#include <QMetaType>
#include <QtGlobal>

/// Index of a current range: 0 has the largest full scale, each higher index a smaller one.
enum class currentRange_t : quint8 {
    Largest = 0,
    Auto = 10, ///< as an argument only: the instrument chooses
    OFF = 255, ///< no range
};

/// Index of a voltage range: 0 has the largest full scale, 3 is the smallest.
enum class voltageRange_t : quint8 {
    Largest = 0,
    Auto = 5, ///< as an argument only: the instrument chooses
};

/// Amplifier gain setting: 0 to 9 stand for 1, 2, 5, 10, 20, 50, 100, 200, 500 and 1000.
enum class ACgain_t : quint8 {
    Gain1 = 0,
    Gain2,
    Gain5,
    Gain10,
    Gain20,
    Gain50,
    Gain100,
    Gain200,
    Gain500,
    Gain1000,
    Unknown = 255, ///< the record at hand names no gain
};

constexpr int index(currentRange_t range)
{
    return static_cast<int>(range);
}
constexpr int index(voltageRange_t range)
{
    return static_cast<int>(range);
}
constexpr int index(ACgain_t gain)
{
    return static_cast<int>(gain);
}
