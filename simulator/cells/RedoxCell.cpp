// SPDX-License-Identifier: MIT
#include "simulator/cells/RedoxCell.h"

#include <cmath>

namespace {

constexpr double faraday = 96485.33212;     ///< C/mol
constexpr double gasConstant = 8.314462618; ///< J/(mol K)

} // namespace

RedoxCell::RedoxCell(const Parameters &parameters)
    : MarchingCell(parameters.series, restPotential(parameters)), _parameters(parameters),
      _molarCharge(parameters.electrons * faraday * parameters.area),
      _inverseVolts(parameters.electrons * faraday / (gasConstant * parameters.temperature)),
      _reduced(parameters.diffusivity, parameters.reduced), _oxidised(parameters.diffusivity, parameters.oxidised)
{
}

/// After Nernst.
double RedoxCell::restPotential(const Parameters &parameters)
{
    const double volts = gasConstant * parameters.temperature / (parameters.electrons * faraday);
    return parameters.formalPotential + volts * std::log(parameters.oxidised / parameters.reduced);
}

double RedoxCell::forward(double potential) const
{
    const double over = potential - _parameters.formalPotential;
    return _parameters.rate * std::exp((1.0 - _parameters.transfer) * _inverseVolts * over);
}

double RedoxCell::backward(double potential) const
{
    const double over = potential - _parameters.formalPotential;
    return _parameters.rate * std::exp(-_parameters.transfer * _inverseVolts * over);
}

double RedoxCell::instantCurrent(double potential) const
{
    const double flux = forward(potential) * _reduced.surface() - backward(potential) * _oxidised.surface();
    return _molarCharge * flux;
}

std::complex<double> RedoxCell::impedance(double frequency) const
{
    const std::complex<double> jw(0.0, 2.0 * M_PI * frequency);
    const double kf = forward(potential());
    const double kb = backward(potential());
    const double slope =
        _molarCharge * _inverseVolts *
        ((1.0 - _parameters.transfer) * kf * _reduced.surface() + _parameters.transfer * kb * _oxidised.surface());
    const std::complex<double> faradaic = (1.0 + (kf + kb) / std::sqrt(jw * _parameters.diffusivity)) / slope;
    return series() + 1.0 / (1.0 / faradaic + jw * _parameters.capacitance);
}

// ---- time ----

double RedoxCell::stepFlux(double potential) const
{
    const double kf = forward(potential);
    const double kb = backward(potential);
    return (kf * _reducedEnd.free - kb * _oxidisedEnd.free) /
           (1.0 + kf * _reducedEnd.perFlux + kb * _oxidisedEnd.perFlux);
}

MarchingCell::CurrentLaw RedoxCell::prepareStep(double seconds)
{
    _reducedEnd = _reduced.prepareStep(seconds);
    _oxidisedEnd = _oxidised.prepareStep(seconds);
    const double before = potential();
    return [this, before, seconds](double tried) {
        return _molarCharge * stepFlux(tried) + _parameters.capacitance * (tried - before) / seconds;
    };
}

void RedoxCell::finishStep(double potential)
{
    const double flux = stepFlux(potential);
    _reduced.finishStep(_reducedEnd.free - _reducedEnd.perFlux * flux);
    _oxidised.finishStep(_oxidisedEnd.free + _oxidisedEnd.perFlux * flux);
}

void RedoxCell::extrapolateFrom(const MarchingCell &coarse)
{
    const auto &other = static_cast<const RedoxCell &>(coarse);
    _reduced.extrapolateFrom(other._reduced);
    _oxidised.extrapolateFrom(other._oxidised);
}
