// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <limits>

/// From the lowest to the highest value that there can be.
struct Span {
    double low = -std::numeric_limits<double>::infinity();
    double high = std::numeric_limits<double>::infinity();

    double clamp(double value) const { return std::clamp(value, low, high); }
    Span times(double factor) const { return {low * factor, high * factor}; }
};

/// What the instrument holds at the cell: a quantity, its value now and its slope.
struct Control {
    enum class Law {
        OpenCircuit,
        Current,       ///< amperes
        Voltage,       ///< volts
        CappedVoltage, ///< volts, with a current that never exceeds the cap
        Power,         ///< watts; positive charges the cell
        Resistance,    ///< ohms: the load that the cell sees
        MaximumPower,  ///< whatever current takes the most power out of the cell, up to the cap
    };

    Law law = Law::OpenCircuit;
    double value = 0.0;
    double slope = 0.0; ///< of the value per second; of current and voltage alone
    double cap = 0.0;   ///< amperes, with the sign that the current has then; of CappedVoltage and MaximumPower

    /// The same control some seconds later.
    Control after(double seconds) const
    {
        Control later = *this;
        later.value += slope * seconds;
        return later;
    }
};
