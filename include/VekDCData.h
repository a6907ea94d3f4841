// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QMetaType>

/// One DC sample in SI units. A plain value; use it on any thread.
struct VekDCData {
    /// Seconds. On the active and recovery signals since the experiment began; on the idle signal the instrument's clock.
    double timestamp = 0.0;
    double workingElectrodeVoltage = 0.0; ///< Volts against the reference electrode.
    double counterElectrodeVoltage = 0.0; ///< Volts; NaN on the Gale line, which does not measure it.
    double current = 0.0;                 ///< Amperes; positive is anodic, or charging.
    double temperature = 0.0;             ///< Degrees Celsius; NaN where the model has no temperature input.
    /// Coulombs: the sum of the magnitude of all charge moved in the experiment, the open node included.
    /// 0 on the idle signal of the Gale line. NaN, like the next, in a sample whose own reading of the charge is no number:
    /// what it adds is not known, and the samples behind it are right again.
    double cumulativeChargeAbs = 0.0;
    double cumulativeChargeNet = 0.0; ///< Coulombs: the signed sum of the same.
};

Q_DECLARE_METATYPE(VekDCData)
