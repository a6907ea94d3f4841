// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <map>

namespace lab {
struct RunData;
}

namespace plots {

/// What one cycle of a battery moved, in coulombs without sign.
struct CycleCharge {
    double charged = 0.0;
    double discharged = 0.0;
};

/// By cycle number, from 1.
std::map<int, CycleCharge> chargeByCycle(const lab::RunData &run);

/**
 * Capacity and coulombic efficiency against the cycle number, as "cycling", for runs of two cycles and more that both
 * charge and discharge by elements of constant current, power or resistance; what HalfCycles.h draws besides.
 *
 * A last cycle that the run did not complete has no efficiency, and one that lies far from the others is marked at the
 * end of the axis with its value.
 *
 * @return false when a picture could not be written; other runs have none
 */
bool drawCycling(const lab::RunData &run, const QString &folder);

} // namespace plots
