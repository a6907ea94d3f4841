// SPDX-License-Identifier: MIT
#pragma once

#include <limits>

/// Safety limits of a channel as the client set them; infinity stands for no limit.
struct ChannelLimit {
    static constexpr double none = std::numeric_limits<double>::infinity();

    double vMax = none;           ///< volts
    double vMin = -none;          ///< volts
    double iMax = none;           ///< amperes
    double iMin = -none;          ///< amperes
    double temperatureMax = none; ///< degrees Celsius
};
