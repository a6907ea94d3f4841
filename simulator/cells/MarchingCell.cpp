// SPDX-License-Identifier: MIT
#include "simulator/cells/MarchingCell.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double firstStep = 1e-6;     ///< seconds after a jump
constexpr double stepShare = 0.1;      ///< of the time since the jump
constexpr double voltageStep = 2.5e-4; ///< volts of a ramp in one step
constexpr double currentSteps = 200.0; ///< of a ramp, until the current has changed by itself
constexpr double sameVoltage = 1e-9;   ///< what rounding may make of an unchanged control
constexpr double sameCurrent = 1e-9;   ///< the same, as a share
constexpr double reach = 30.0;         ///< volts to either side of rest within which a potential is looked for

bool isSame(double a, double b, double tolerance)
{
    return std::abs(a - b) <= tolerance;
}

} // namespace

MarchingCell::MarchingCell(double seriesResistance, double potential)
    : _series(seriesResistance), _potential(potential), _voltage(potential)
{
}

// ---- one instant ----

double MarchingCell::currentAt(double voltage) const
{
    if (isSame(voltage, _voltage, sameVoltage))
        return _current;
    if (holdsPotential())
        return (voltage - _potential) / _series;
    const double potential =
        solve([this, voltage](double tried) { return tried + _series * instantCurrent(tried) - voltage; });
    return (voltage - potential) / _series;
}

double MarchingCell::voltageAt(double current) const
{
    if (isSame(current, _current, sameCurrent * std::abs(_current)))
        return _voltage;
    if (holdsPotential())
        return _potential + _series * current;
    return solve([this, current](double tried) { return instantCurrent(tried) - current; }) + _series * current;
}

/// The root of a function that grows with the potential: bracketed around the present potential, then Illinois' method.
double MarchingCell::solve(const CurrentLaw &residual) const
{
    const double lowest = _potential - reach;
    const double highest = _potential + reach;
    double low = std::max(_potential - 1e-3, lowest);
    double high = std::min(_potential + 1e-3, highest);
    double atLow = residual(low);
    double atHigh = residual(high);
    for (double further = 2e-3; atLow > 0.0 && low > lowest; further *= 2.0)
        atLow = residual(low = std::max(low - further, lowest));
    for (double further = 2e-3; atHigh < 0.0 && high < highest; further *= 2.0)
        atHigh = residual(high = std::min(high + further, highest));
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

double MarchingCell::passCurrent(double current, double slope, double seconds)
{
    const bool isJump = _held != Held::Current || !isSame(current, _current, sameCurrent * std::abs(_current));
    if (isJump)
        _sinceJump = 0.0;
    return march(Held::Current, current, slope, seconds);
}

double MarchingCell::holdVoltage(double voltage, double slope, double seconds)
{
    if (_held != Held::Voltage || !isSame(voltage, _voltage, sameVoltage))
        _sinceJump = 0.0;
    return march(Held::Voltage, voltage, slope, seconds);
}

double MarchingCell::march(Held held, double value, double slope, double seconds)
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

double MarchingCell::longestStep(Held held, double slope) const
{
    const double bySettling = std::max(firstStep, stepShare * _sinceJump);
    if (slope == 0.0)
        return bySettling;
    const double byRamp = held == Held::Voltage ? voltageStep / std::abs(slope)
                                                : std::max(firstStep, std::abs(_current / slope) / currentSteps);
    return std::min(bySettling, byRamp);
}

double MarchingCell::extrapolatedStep(const Target &halfway, const Target &end, double seconds)
{
    const std::unique_ptr<Cell> copy = clone();
    MarchingCell &coarse = static_cast<MarchingCell &>(*copy);
    const double coarseCharge = coarse.step(end, seconds);
    double charge = step(halfway, 0.5 * seconds);
    charge += step(end, 0.5 * seconds);
    extrapolateFrom(coarse);
    _potential = 2.0 * _potential - coarse._potential;
    _current = 2.0 * _current - coarse._current;
    _voltage = 2.0 * _voltage - coarse._voltage;
    return 2.0 * charge - coarseCharge;
}

/// One step of backward Euler. @return its charge
double MarchingCell::step(const Target &target, double seconds)
{
    const CurrentLaw current = prepareStep(seconds);
    const bool isVoltage = target.held == Held::Voltage;
    _potential = isVoltage ? solve([&](double tried) { return tried + _series * current(tried) - target.value; })
                           : solve([&](double tried) { return current(tried) - target.value; });
    _current = isVoltage ? current(_potential) : target.value;
    _voltage = isVoltage ? target.value : _potential + _series * _current;
    finishStep(_potential);
    return _current * seconds;
}
