// SPDX-License-Identifier: MIT
#pragma once

#include "lab/records/Sample.h"

#include <QString>

#include <vector>

namespace lab {
struct RunData;
}

namespace plots {

/**
 * Where the loops of a cyclic voltammogram begin: with the first sample, and wherever the potential comes by that of
 * the first sample again, in the direction in which it set out.
 *
 * @param window      volts between the vertices; noise must be less than a quarter of it
 * @param mostLoops   what follows the last one belongs to it
 * @return indices of samples, ascending, the first 0
 */
std::vector<std::size_t> loopBegins(const std::vector<lab::Sample> &course, double window, std::size_t mostLoops);

/**
 * Current against potential for each element that sweeps, steps or pulses the potential, as "voltammogram", or
 * "voltammogram-N" by step number where there are several; one curve for each loop of each time that the element ran.
 *
 * A step of a staircase is reduced to its last sample, a pulse to one point: for differential pulses and square waves
 * the difference of its currents. A pulse that was not finished is left out.
 *
 * @return false when a picture could not be written; a run without such elements has none
 */
bool drawVoltammograms(const lab::RunData &run, const QString &folder);

} // namespace plots
