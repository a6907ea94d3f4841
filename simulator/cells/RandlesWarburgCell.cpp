// SPDX-License-Identifier: MIT
#include "simulator/cells/RandlesWarburgCell.h"

#include <cmath>

namespace {

constexpr double anyDiffusivity = 1e-9; ///< m2/s; cancels, and suits the grid

} // namespace

RandlesWarburgCell::RandlesWarburgCell(const Parameters &parameters)
    : MarchingCell(parameters.series, 0.0), _parameters(parameters), _diffusion(anyDiffusivity, 0.0),
      _voltsPerFlux(std::sqrt(2.0 * anyDiffusivity) * parameters.warburg)
{
}

std::complex<double> RandlesWarburgCell::impedance(double frequency) const
{
    const double w = 2.0 * M_PI * frequency;
    const std::complex<double> warburg = _parameters.warburg / std::sqrt(w) * std::complex<double>(1.0, -1.0);
    const std::complex<double> admittance =
        std::complex<double>(0.0, w * _parameters.capacitance) + 1.0 / (_parameters.transfer + warburg);
    return series() + 1.0 / admittance;
}

double RandlesWarburgCell::instantCurrent(double potential) const
{
    return (potential - _diffusion.surface()) / _parameters.transfer;
}

/// The faradaic branch at the end of the step: E = Rct I + free + perFlux (sqrt(2 D) W I).
double RandlesWarburgCell::stepCurrent(double potential) const
{
    return (potential - _end.free) / (_parameters.transfer + _end.perFlux * _voltsPerFlux);
}

MarchingCell::CurrentLaw RandlesWarburgCell::prepareStep(double seconds)
{
    _end = _diffusion.prepareStep(seconds);
    const double before = potential();
    return [this, before, seconds](double tried) {
        return stepCurrent(tried) + _parameters.capacitance * (tried - before) / seconds;
    };
}

void RandlesWarburgCell::finishStep(double potential)
{
    _diffusion.finishStep(_end.free + _end.perFlux * _voltsPerFlux * stepCurrent(potential));
}

void RandlesWarburgCell::extrapolateFrom(const MarchingCell &coarse)
{
    _diffusion.extrapolateFrom(static_cast<const RandlesWarburgCell &>(coarse)._diffusion);
}
