// SPDX-License-Identifier: MIT
#pragma once

namespace lab {

/// What kind of quantity a number is; decides which units may stand behind it.
enum class Dimension {
    Number, ///< a bare number: a count, a ratio
    Percent,
    Time,
    Voltage,
    Current,
    Resistance,
    Power,
    Charge,
    Frequency,
    VoltageRate,
    CurrentRate,
    Temperature,
};

} // namespace lab
