#pragma once

#include <QString>

namespace client {

struct RunData;

/**
 * Current against potential for each element that sweeps, steps or pulses the potential, as "voltammogram", or
 * "voltammogram-N" by step number where there are several. Pulses are reduced to one point each; the difference of
 * their currents is drawn for differential pulses and square waves.
 *
 * @return false when a picture could not be written; a run without such elements has none
 */
bool drawVoltammograms(const RunData &run, const QString &folder);

} // namespace client
