#include "simulator/cells/RedoxCell.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double faraday = 96485.33212;     ///< C/mol
constexpr double gasConstant = 8.314462618; ///< J/(mol K)
constexpr double firstStep = 1e-6;          ///< seconds after a jump
constexpr double stepShare = 0.1;           ///< of the time since the jump
constexpr double voltageStep = 2.5e-4;      ///< volts of a ramp in one step
constexpr double currentSteps = 200.0;      ///< of a ramp, until the current has changed by itself
constexpr double sameVoltage = 1e-9;        ///< what rounding may make of an unchanged control
constexpr double sameCurrent = 1e-9;        ///< the same, as a share
constexpr double window = 5.0;              ///< volts around the formal potential; beyond it the solvent would react

bool isSame(double a, double b, double tolerance)
{
    return std::abs(a - b) <= tolerance;
}

} // namespace

RedoxCell::RedoxCell(const Parameters &parameters)
    : _parameters(parameters), _molarCharge(parameters.electrons * faraday * parameters.area),
      _inverseVolts(parameters.electrons * faraday / (gasConstant * parameters.temperature)),
      _reduced(parameters.diffusivity, parameters.reduced), _oxidised(parameters.diffusivity, parameters.oxidised),
      _potential(parameters.formalPotential + std::log(parameters.oxidised / parameters.reduced) / _inverseVolts),
      _voltage(_potential)
{
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

// ---- one instant ----

double RedoxCell::faradaicCurrent(double potential) const
{
    const double flux = forward(potential) * _reduced.surface() - backward(potential) * _oxidised.surface();
    return _molarCharge * flux;
}

double RedoxCell::currentAt(double voltage) const
{
    if (isSame(voltage, _voltage, sameVoltage))
        return _current;
    if (_parameters.capacitance > 0.0)
        return (voltage - _potential) / _parameters.series;
    const double potential =
        solve([this, voltage](double tried) { return tried + _parameters.series * faradaicCurrent(tried) - voltage; });
    return (voltage - potential) / _parameters.series;
}

double RedoxCell::voltageAt(double current) const
{
    if (isSame(current, _current, sameCurrent * std::abs(_current)))
        return _voltage;
    if (_parameters.capacitance > 0.0)
        return _potential + _parameters.series * current;
    const double potential = solve([this, current](double tried) { return faradaicCurrent(tried) - current; });
    return potential + _parameters.series * current;
}

/// The root of a function that grows with the potential: bracketed around the present potential, then Illinois' method.
double RedoxCell::solve(const Residual &residual) const
{
    const double lowest = _parameters.formalPotential - window;
    const double highest = _parameters.formalPotential + window;
    double low = std::max(_potential - 1e-3, lowest);
    double high = std::min(_potential + 1e-3, highest);
    double atLow = residual(low);
    double atHigh = residual(high);
    for (double reach = 2e-3; atLow > 0.0 && low > lowest; reach *= 2.0)
        atLow = residual(low = std::max(low - reach, lowest));
    for (double reach = 2e-3; atHigh < 0.0 && high < highest; reach *= 2.0)
        atHigh = residual(high = std::min(high + reach, highest));
    if (atLow >= 0.0 || atHigh <= 0.0)
        return atLow >= 0.0 ? low : high;
    int side = 0;
    for (int i = 0; i < 200 && high - low > 1e-14; ++i) {
        const double share =
            i % 8 == 7 ? 0.5 : atLow / (atLow - atHigh); // now and then halve: the root may lie at a bend
        const double middle = low + share * (high - low);
        const double atMiddle = residual(middle);
        if (atMiddle == 0.0)
            return middle;
        double &stays = atMiddle < 0.0 ? atHigh : atLow;
        const int newSide = atMiddle < 0.0 ? 1 : -1;
        (atMiddle < 0.0 ? low : high) = middle;
        (atMiddle < 0.0 ? atLow : atHigh) = atMiddle;
        if (newSide == side)
            stays *= 0.5;
        side = newSide;
        if (share != 0.5 && std::min(middle - low, high - middle) == 0.0 && high - low < 1e-10)
            return middle;
    }
    return 0.5 * (low + high);
}

// ---- time ----

double RedoxCell::passCurrent(double current, double slope, double seconds)
{
    const bool isJump = _held != Held::Current || !isSame(current, _current, sameCurrent * std::abs(_current));
    if (isJump)
        _sinceJump = 0.0;
    return go(Held::Current, current, slope, seconds);
}

double RedoxCell::holdVoltage(double voltage, double slope, double seconds)
{
    if (_held != Held::Voltage || !isSame(voltage, _voltage, sameVoltage))
        _sinceJump = 0.0;
    return go(Held::Voltage, voltage, slope, seconds);
}

double RedoxCell::go(Held held, double value, double slope, double seconds)
{
    _held = held;
    double charge = 0.0;
    for (double done = 0.0; done < seconds;) {
        const double left = seconds - done;
        const double wanted = std::min(longestStep(held, slope), left);
        const double taken = left / std::ceil(left / wanted - 1e-9); // no sliver at the end
        const double end = done + taken;
        charge += extrapolatedStep({held, value + slope * (done + 0.5 * taken)}, {held, value + slope * end}, taken);
        _sinceJump += taken;
        done = left - taken < 1e-12 * seconds ? seconds : end;
    }
    return charge;
}

double RedoxCell::longestStep(Held held, double slope) const
{
    const double bySettling = std::max(firstStep, stepShare * _sinceJump);
    if (slope == 0.0)
        return bySettling;
    const double byRamp = held == Held::Voltage ? voltageStep / std::abs(slope)
                                                : std::max(firstStep, std::abs(_current / slope) / currentSteps);
    return std::min(bySettling, byRamp);
}

double RedoxCell::extrapolatedStep(const Target &halfway, const Target &end, double seconds)
{
    RedoxCell coarse(*this);
    const double coarseCharge = coarse.step(end, seconds);
    double charge = step(halfway, 0.5 * seconds);
    charge += step(end, 0.5 * seconds);
    _reduced.extrapolateFrom(coarse._reduced);
    _oxidised.extrapolateFrom(coarse._oxidised);
    _potential = 2.0 * _potential - coarse._potential;
    _current = 2.0 * _current - coarse._current;
    _voltage = 2.0 * _voltage - coarse._voltage;
    return 2.0 * charge - coarseCharge;
}

double RedoxCell::fluxAt(double potential, const DiffusionLayer::Surface &reduced,
                         const DiffusionLayer::Surface &oxidised) const
{
    const double kf = forward(potential);
    const double kb = backward(potential);
    return (kf * reduced.free - kb * oxidised.free) / (1.0 + kf * reduced.perFlux + kb * oxidised.perFlux);
}

/// One step of backward Euler. @return its charge
double RedoxCell::step(const Target &target, double seconds)
{
    const DiffusionLayer::Surface reduced = _reduced.prepareStep(seconds);
    const DiffusionLayer::Surface oxidised = _oxidised.prepareStep(seconds);
    const double before = _potential;
    const auto currentThrough = [&](double potential) {
        return _molarCharge * fluxAt(potential, reduced, oxidised) +
               _parameters.capacitance * (potential - before) / seconds;
    };
    _potential =
        target.held == Held::Voltage
            ? solve([&](double tried) { return tried + _parameters.series * currentThrough(tried) - target.value; })
            : solve([&](double tried) { return currentThrough(tried) - target.value; });
    _current = target.held == Held::Current ? target.value : currentThrough(_potential);
    _voltage = target.held == Held::Voltage ? target.value : _potential + _parameters.series * _current;
    const double flux = fluxAt(_potential, reduced, oxidised);
    _reduced.finishStep(reduced.free - reduced.perFlux * flux);
    _oxidised.finishStep(oxidised.free + oxidised.perFlux * flux);
    return _current * seconds;
}
