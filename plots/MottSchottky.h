// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace lab {
struct RunData;
}

namespace plots {

/**
 * The inverse square of the capacitance against the potential for each frequency of each Mott-Schottky element, as
 * "mott-schottky", or "mott-schottky-N" by step number where there are several.
 *
 * The capacitance is that of a capacitor in series with a resistor: -1 / (2 pi f Im Z).
 *
 * @return false when a picture could not be written; a run without such elements has none
 */
bool drawMottSchottky(const lab::RunData &run, const QString &folder);

} // namespace plots
