// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QMetaType>

/// One impedance point in SI units, phases in degrees. A plain value; use it on any thread.
struct VekACData {
    double timestamp = 0.0;               ///< Seconds since the experiment began.
    double frequency = 0.0;               ///< Hertz.
    double absoluteImpedance = 0.0;       ///< Ohms; infinite when no current was measured.
    double realImpedance = 0.0;           ///< Ohms.
    double imagImpedance = 0.0;           ///< Ohms; negative for a capacitance.
    double phaseAngle = 0.0;              ///< Degrees.
    double totalHarmonicDistortion = 0.0; ///< Percent: the larger of the two signals' distortion.
    double numberOfCycles = 0.0;          ///< Count of whole periods that the point is made of.
    double dcVoltageBias = 0.0;           ///< Volts.
    double dcCurrentBias = 0.0;           ///< Amperes.
    double currentAmplitude = 0.0;        ///< Amperes.
    double voltageAmplitude = 0.0;        ///< Volts.
};

Q_DECLARE_METATYPE(VekACData)
