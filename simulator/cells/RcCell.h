// SPDX-License-Identifier: MIT
#pragma once

#include "simulator/cells/Cell.h"
#include "simulator/cells/RcElement.h"

/**
 * A resistor in series with a parallel resistor and capacitor: the textbook's simplified electrode.
 *
 * V = Rs I + u with the element's u (RcElement). A voltage step of V gives, with tau = C Rs R / (Rs + R),
 *   I(t) = V / (Rs + R) (1 + R / Rs exp(-t/tau));
 * a current step of I gives V(t) = I (Rs + R (1 - exp(-t / (R C)))).
 */
class RcCell : public Cell
{
public:
    RcCell(double seriesResistance, const RcElement &element) : _series(seriesResistance), _element(element) {}

    std::unique_ptr<Cell> clone() const override { return std::make_unique<RcCell>(*this); }
    double voltageAt(double current) const override { return _element.voltage + _series * current; }
    double currentAt(double voltage) const override { return (voltage - _element.voltage) / _series; }
    double passCurrent(double current, double slope, double seconds) override;
    double holdVoltage(double voltage, double slope, double seconds) override;
    std::complex<double> impedance(double frequency) const override { return _series + _element.impedance(frequency); }

private:
    double _series; ///< ohms
    RcElement _element;
};
