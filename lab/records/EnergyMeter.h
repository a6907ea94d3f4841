// SPDX-License-Identifier: MIT
#pragma once

#include <limits>

namespace lab {

/**
 * Integrates the energy that goes into and comes out of a cell over the rows of a table, in watt-hours.
 *
 * Between two rows of a step power runs along a straight line (the trapezoid), and where the current changes its sign it
 * passes through zero. Into a step leads no such line: the row before is the last moment of another one, so the first
 * row's power counts from there. An interval with a reading that is no number is passed over.
 */
class EnergyMeter
{
public:
    void add(double time, double voltage, double current, int stepCount);

    double charging() const { return _charging; }
    double discharging() const { return _discharging; } ///< not negative while the voltage is positive

private:
    struct Moment {
        double time = 0.0;
        double current = std::numeric_limits<double>::quiet_NaN();
        double power = std::numeric_limits<double>::quiet_NaN();
        int stepCount = 0;
    };

    void book(double current, double wattSeconds);

    Moment _last;
    double _charging = 0.0;
    double _discharging = 0.0;
};

} // namespace lab
