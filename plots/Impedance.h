#pragma once

#include <QString>

namespace client {

struct RunData;

/**
 * Nyquist and Bode plots of the impedance points, as "nyquist" and "bode", one curve for each sweep.
 *
 * @return false when a picture could not be written; a run without impedance points has none
 */
bool drawImpedance(const RunData &run, const QString &folder);

} // namespace client
