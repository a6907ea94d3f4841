// SPDX-License-Identifier: MIT
#include "simulator/cells/SemiconductorCell.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double elementaryCharge = 1.602176634e-19;
constexpr double boltzmann = 1.380649e-23;
constexpr double vacuumPermittivity = 8.8541878128e-12;

} // namespace

/// E - Efb - kT/e, and not less than kT/e.
double SemiconductorCell::bending(double potential) const
{
    const double thermal = boltzmann * _parameters.temperature / elementaryCharge;
    return std::max(potential - _parameters.flatBand - thermal, thermal);
}

double SemiconductorCell::capacitance(double potential) const
{
    const double permittivity = _parameters.permittivity * vacuumPermittivity;
    return _parameters.area *
           std::sqrt(0.5 * elementaryCharge * permittivity * _parameters.donors / bending(potential));
}

std::complex<double> SemiconductorCell::impedance(double frequency) const
{
    const std::complex<double> admittance(1.0 / _parameters.leak, 2.0 * M_PI * frequency * capacitance(potential()));
    return series() + 1.0 / admittance;
}

/// The integral of the capacitance over the potential: 2 C x bending in depletion, a straight line below.
double SemiconductorCell::storedCharge(double potential) const
{
    const double thermal = boltzmann * _parameters.temperature / elementaryCharge;
    const double beyond = std::min(potential - _parameters.flatBand - 2.0 * thermal, 0.0);
    return capacitance(potential) * (2.0 * bending(potential) + beyond);
}

MarchingCell::CurrentLaw SemiconductorCell::prepareStep(double seconds)
{
    const double before = storedCharge(potential());
    return [this, before, seconds](double tried) {
        return tried / _parameters.leak + (storedCharge(tried) - before) / seconds;
    };
}
