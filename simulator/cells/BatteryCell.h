// SPDX-License-Identifier: MIT
#pragma once

#include "simulator/cells/Cell.h"
#include "simulator/cells/RcElement.h"

/**
 * A small lithium-ion cell: an open-circuit curve, a series resistance and one polarisation element.
 *
 * V = U(s) + u + Rs I with the state of charge s = q / Q and
 *   U(s) = 3.6 + 0.45 s + 0.06 ln((s + 0.001) / (1.001 - s)) volts,
 * a sloping plateau between two logarithmic ends, as of an intercalation electrode with a nearly ideal solid solution.
 * Beyond 0 and 1 the curve goes on as its tangent. While charging only the share `efficiency` of the current is stored:
 * dq/dt = efficiency I for I > 0, else I. Impedance: Rs + R / (1 + j w R C) + (dU/dq) / (j w).
 */
class BatteryCell : public Cell
{
public:
    struct Parameters {
        double capacity = 36.0; ///< coulombs (10 mAh)
        double stateOfCharge = 0.5;
        double series = 0.5;        ///< ohms
        double polarisation = 0.25; ///< ohms
        double capacitance = 80.0;  ///< farads
        double efficiency = 1.0;
    };

    explicit BatteryCell(const Parameters &parameters);

    std::unique_ptr<Cell> clone() const override { return std::make_unique<BatteryCell>(*this); }
    double voltageAt(double current) const override;
    double currentAt(double voltage) const override;
    double passCurrent(double current, double slope, double seconds) override;
    double holdVoltage(double voltage, double slope, double seconds) override;
    std::complex<double> impedance(double frequency) const override;

    double stateOfCharge() const { return _stored / _parameters.capacity; }
    /// Volts at rest, and their slope, at a state of charge.
    static double openCircuitCurve(double stateOfCharge);
    static double openCircuitSlope(double stateOfCharge);

private:
    double storedShare(double charge) const { return charge > 0.0 ? charge * _parameters.efficiency : charge; }
    double restVoltage() const { return openCircuitCurve(stateOfCharge()) + _element.voltage; }
    double fastestRate() const;
    double stepUnderVoltage(double voltage, double slope, double seconds);

    Parameters _parameters;
    double _stored; ///< coulombs
    RcElement _element;
};
