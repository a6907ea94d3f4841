// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace lab {
struct RunData;
}

namespace plots {

/**
 * Nyquist and Bode plots of the impedance points, as "nyquist" and "bode", one curve for each sweep.
 *
 * @return false when a picture could not be written; a run without impedance points has none
 */
bool drawImpedance(const lab::RunData &run, const QString &folder);

} // namespace plots
