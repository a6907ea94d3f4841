#pragma once

#include <cmath>
#include <complex>

/**
 * A resistor and a capacitor in parallel, with the voltage across them as its state.
 *
 * du/dt = i/C - u/(R C). For a current i0 + s t the solution is, with tau = R C,
 *   u(t) = p(t) + (u(0) - p(0)) exp(-t/tau),  p(t) = R (i0 - s tau + s t).
 * An infinite R makes it a capacitor: u(t) = u(0) + q/C.
 */
struct RcElement {
    double resistance;  ///< ohms; may be infinite
    double capacitance; ///< farads
    double voltage = 0.0;

    void passCurrent(double current, double slope, double seconds)
    {
        if (std::isinf(resistance)) {
            voltage += (current + 0.5 * slope * seconds) * seconds / capacitance;
            return;
        }
        const double tau = resistance * capacitance;
        const double start = resistance * (current - slope * tau);
        const double decay = std::exp(-seconds / tau);
        voltage = start + resistance * slope * seconds + (voltage - start) * decay;
    }

    std::complex<double> impedance(double frequency) const
    {
        return 1.0 / std::complex<double>(1.0 / resistance, 2.0 * M_PI * frequency * capacitance);
    }
};
