// SPDX-License-Identifier: MIT
#pragma once

#include <cmath>
#include <complex>

/**
 * A resistor and a capacitor in parallel, with the voltage across them as its state.
 *
 * du/dt = i/C - u/(R C). For a current i0 + s t the solution is, with x = t/(R C),
 *   u(t) = u(0) exp(-x) + t/C (i0 f1(x) + s t f2(x)),
 *   f1(x) = (1 - exp(-x)) / x,  f2(x) = (1 - f1(x)) / x.
 * So written it keeps its digits for whatever R, C and t: no term is larger than the voltage that it stands for. An infinite
 * R, for which x = 0, f1 = 1 and f2 = 1/2, makes the element a capacitor.
 */
struct RcElement {
    double resistance;  ///< ohms; may be infinite
    double capacitance; ///< farads
    double voltage = 0.0;

    void passCurrent(double current, double slope, double seconds)
    {
        const double x = seconds / (resistance * capacitance);
        voltage = voltage * std::exp(-x) +
                  seconds / capacitance * (current * shareOfStep(x) + slope * seconds * shareOfRamp(x));
    }

    std::complex<double> impedance(double frequency) const
    {
        return 1.0 / std::complex<double>(1.0 / resistance, 2.0 * M_PI * frequency * capacitance);
    }

private:
    /// f1
    static double shareOfStep(double x) { return x > 0.0 ? -std::expm1(-x) / x : 1.0; }

    /// f2. Below one half the difference would cancel; there it is the series of (-x)^k / (k + 2)!.
    static double shareOfRamp(double x)
    {
        if (x > 0.5)
            return (1.0 - shareOfStep(x)) / x;
        double sum = 0.0;
        double term = 0.5;
        constexpr int more = 30; // than any x up to one half needs; NaN would never end
        for (int k = 3; k < more && sum + term != sum; ++k) {
            sum += term;
            term *= -x / k;
        }
        return sum;
    }
};
