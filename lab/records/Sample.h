// SPDX-License-Identifier: MIT
#pragma once

namespace lab {

constexpr double coulombsOfAmpereHour = 3600.0;

/// One row of the DC samples, as far as pictures need it.
struct Sample {
    double time;          ///< seconds since the start of the test
    double voltage;       ///< volts
    double current;       ///< amperes; positive charges a battery
    double charged;       ///< coulombs that charged since the start of the test
    double discharged;    ///< the same of discharging, without sign
    bool isPulse = false; ///< the level of a pulse, which no neighbour can stand for
    bool opensSegment = false;
    bool opensStretch = false; ///< time does not join it to the sample before: no line leads there

    double netCharge() const { return charged - discharged; }
};

} // namespace lab
