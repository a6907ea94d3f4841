// SPDX-License-Identifier: MIT
#include "simulator/cells/CoatingCell.h"

#include <cmath>

std::complex<double> CoatingCell::impedance(double frequency) const
{
    const std::complex<double> jw(0.0, 2.0 * M_PI * frequency);
    const std::complex<double> metal = 1.0 / (jw * _parameters.layerCapacitance + 1.0 / _parameters.transfer);
    return series() + 1.0 / (jw * _parameters.coatingCapacitance + 1.0 / (_parameters.pores + metal));
}

/// Backward Euler of Cdl du/dt = (E - u)/Rpo - u/Rct.
double CoatingCell::metalAtEnd(double potential) const
{
    const double storage = _parameters.layerCapacitance / _seconds;
    return (storage * _metal + potential / _parameters.pores) /
           (storage + 1.0 / _parameters.pores + 1.0 / _parameters.transfer);
}

MarchingCell::CurrentLaw CoatingCell::prepareStep(double seconds)
{
    _seconds = seconds;
    const double before = potential();
    return [this, before, seconds](double tried) {
        return (tried - metalAtEnd(tried)) / _parameters.pores +
               _parameters.coatingCapacitance * (tried - before) / seconds;
    };
}

void CoatingCell::finishStep(double potential)
{
    _metal = metalAtEnd(potential);
}

void CoatingCell::extrapolateFrom(const MarchingCell &coarse)
{
    _metal = 2.0 * _metal - static_cast<const CoatingCell &>(coarse)._metal;
}
