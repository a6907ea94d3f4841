// SPDX-License-Identifier: MIT
#pragma once

#include "simulator/Control.h"

#include <complex>
#include <memory>

/// Voltage of the working electrode against the reference, and current into it, at one instant.
struct CellReading {
    double voltage = 0.0;
    double current = 0.0; ///< positive current charges a battery and oxidises at the electrode
};

/**
 * A model of what hangs on a channel's leads: a state, its equations, and nothing of the instrument.
 *
 * Between two calls of advance() the state stands still. currentAt() and voltageAt() are inverse to each other at any
 * state: they say what flows, or stands at the terminals, in the very instant in which the instrument imposes the other
 * quantity.
 */
class Cell
{
public:
    virtual ~Cell() = default;

    virtual std::unique_ptr<Cell> clone() const = 0;
    virtual double voltageAt(double current) const = 0;
    virtual double currentAt(double voltage) const = 0;

    /// Lets time pass while a current flows that starts at @p current and changes by @p slope amperes a second.
    /// @return the charge that went in, in coulombs
    virtual double passCurrent(double current, double slope, double seconds) = 0;
    /// Lets time pass under a voltage that starts at @p voltage and changes by @p slope volts a second.
    /// @return the charge that went in, in coulombs
    virtual double holdVoltage(double voltage, double slope, double seconds) = 0;

    /// Small-signal impedance in ohms around the present state, at a frequency in hertz.
    virtual std::complex<double> impedance(double frequency) const = 0;

    double openCircuitVoltage() const { return voltageAt(0.0); }
};
