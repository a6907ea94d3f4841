// SPDX-License-Identifier: MIT
#pragma once

#include "simulator/cells/Cell.h"

/// An ohmic resistor between working and counter electrode: V = R I.
class ResistorCell : public Cell
{
public:
    explicit ResistorCell(double resistance) : _resistance(resistance) {}

    std::unique_ptr<Cell> clone() const override { return std::make_unique<ResistorCell>(*this); }
    double voltageAt(double current) const override { return _resistance * current; }
    double currentAt(double voltage) const override { return voltage / _resistance; }
    double passCurrent(double current, double slope, double seconds) override
    {
        return (current + 0.5 * slope * seconds) * seconds;
    }
    double holdVoltage(double voltage, double slope, double seconds) override
    {
        return passCurrent(voltage / _resistance, slope / _resistance, seconds);
    }
    std::complex<double> impedance(double) const override { return _resistance; }

private:
    double _resistance; ///< ohms
};
