// SPDX-License-Identifier: MIT
#include "simulator/Regulator.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

constexpr double longestRamp = 0.05; ///< seconds between two solutions of a law that follows the cell

} // namespace

double Regulator::hold(const Control &control, double seconds)
{
    return control.slope == 0.0 ? holdSteadily(withinSpans(control), seconds) : holdRamp(control, seconds);
}

/// Power, resistance and the most power have no span of their own: the current that they ask for has.
Control Regulator::withinSpans(const Control &control) const
{
    Control within = control;
    if (control.law == Control::Law::Current)
        within.value = _currents.clamp(control.value);
    if (control.law == Control::Law::Voltage || control.law == Control::Law::CappedVoltage)
        within.value = _voltages.clamp(control.value);
    within.cap = _currents.clamp(control.cap);
    return within;
}

/// A ramp of current or voltage has up to three parts: it stands at one end of the span, moves, and stands at the other.
double Regulator::holdRamp(const Control &control, double seconds)
{
    const Span &span = control.law == Control::Law::Current ? _currents : _voltages;
    const auto timeAt = [&](double end) { return std::clamp((end - control.value) / control.slope, 0.0, seconds); };
    const auto [first, last] = std::minmax({timeAt(span.low), timeAt(span.high)});
    double charge = 0.0;
    for (const auto &[from, to] : {std::pair(0.0, first), std::pair(first, last), std::pair(last, seconds)}) {
        if (to <= from)
            continue;
        Control part = withinSpans(control.after(from));
        const double halfway = control.after(0.5 * (from + to)).value;
        part.slope = span.clamp(halfway) == halfway ? control.slope : 0.0;
        charge += holdSteadily(part, to - from);
    }
    return charge;
}

double Regulator::holdSteadily(const Control &control, double seconds)
{
    switch (control.law) {
    case Control::Law::OpenCircuit:
        return _cell->passCurrent(0.0, 0.0, seconds);
    case Control::Law::Current:
        return _cell->passCurrent(control.value, control.slope, seconds);
    case Control::Law::Voltage:
        return _cell->holdVoltage(control.value, control.slope, seconds);
    case Control::Law::CappedVoltage:
        return holdCapped(control, seconds);
    default:
        return followCell(control, seconds);
    }
}

/// The cap's current until the voltage is reached, then the voltage.
double Regulator::holdCapped(const Control &control, double seconds)
{
    const double capped = timeAtCap(control, seconds);
    double charge = 0.0;
    if (capped > 0.0)
        charge += _cell->passCurrent(control.cap, 0.0, capped);
    if (capped < seconds)
        charge += _cell->holdVoltage(control.value, 0.0, seconds - capped);
    return charge;
}

/// How long the voltage would ask for more than the cap, by bisection on copies of the cell.
double Regulator::timeAtCap(const Control &control, double seconds) const
{
    const auto isCappedAfter = [&](double time) {
        const std::unique_ptr<Cell> tried = _cell->clone();
        if (time > 0.0)
            tried->passCurrent(control.cap, 0.0, time);
        const double wanted = tried->currentAt(control.value);
        return control.cap >= 0.0 ? wanted > control.cap : wanted < control.cap;
    };
    if (!isCappedAfter(0.0))
        return 0.0;
    if (isCappedAfter(seconds))
        return seconds;
    double low = 0.0;
    double high = seconds;
    while (high - low > 1e-12 * seconds) {
        const double middle = 0.5 * (low + high);
        (isCappedAfter(middle) ? low : high) = middle;
    }
    return high;
}

double Regulator::followCell(const Control &control, double seconds)
{
    double charge = 0.0;
    const int steps = std::max(1, int(std::ceil(seconds / longestRamp)));
    for (int i = 0; i < steps; ++i)
        charge += followOnce(control, seconds / steps);
    return charge;
}

/// One step under a law that needs the cell's answer: the end's current is foreseen on a copy.
double Regulator::followOnce(const Control &control, double seconds)
{
    const double start = currentUnder(control);
    Regulator foreseen(*this);
    foreseen._cell->passCurrent(start, 0.0, seconds);
    const double end = foreseen.currentUnder(control);
    return _cell->passCurrent(start, (end - start) / seconds, seconds);
}

CellReading Regulator::read(const Control &wanted) const
{
    const Control control = withinSpans(wanted);
    if (control.law == Control::Law::Voltage)
        return {control.value, _cell->currentAt(control.value)};
    const double current = currentUnder(control);
    return {_cell->voltageAt(current), current};
}

double Regulator::currentUnder(const Control &control) const
{
    switch (control.law) {
    case Control::Law::OpenCircuit:
        return 0.0;
    case Control::Law::Current:
        return control.value;
    case Control::Law::Voltage:
        return _cell->currentAt(control.value);
    case Control::Law::CappedVoltage:
        return control.cap >= 0.0 ? std::min(_cell->currentAt(control.value), control.cap)
                                  : std::max(_cell->currentAt(control.value), control.cap);
    case Control::Law::Power:
        return _currents.clamp(currentAtPower(control.value));
    case Control::Law::Resistance:
        return _currents.clamp(currentAtLoad(control.value));
    case Control::Law::MaximumPower:
        return currentOfMaximumPower(control.cap);
    }
    return 0.0;
}

/// Newton's method on V(I) I = P from the current that the rest voltage suggests; 0 where the cell cannot give it.
double Regulator::currentAtPower(double watts) const
{
    const double rest = _cell->openCircuitVoltage();
    double current = std::abs(rest) > 1e-3 ? watts / rest : std::copysign(1e-6, watts);
    for (int i = 0; i < 60; ++i) {
        const double delta = 1e-6 * std::max(std::abs(current), 1e-9);
        const double miss = _cell->voltageAt(current) * current - watts;
        const double slope = (_cell->voltageAt(current + delta) * (current + delta) - watts - miss) / delta;
        const double step = miss / slope;
        current -= step;
        if (std::abs(step) <= 1e-13 * std::abs(current))
            return current;
    }
    return std::isfinite(current) && std::abs(_cell->voltageAt(current) * current - watts) < 1e-6 * std::abs(watts)
               ? current
               : 0.0;
}

/// The cell discharges through the load: V = -I R. The secant method is exact on a linear cell in one step.
double Regulator::currentAtLoad(double ohms) const
{
    double before = 0.0;
    double missBefore = _cell->voltageAt(0.0);
    double current = -missBefore / ohms;
    for (int i = 0; i < 60; ++i) {
        const double miss = _cell->voltageAt(current) + current * ohms;
        if (miss == missBefore || std::abs(current - before) <= 1e-15 * std::abs(current))
            break;
        const double next = current - miss * (current - before) / (miss - missBefore);
        before = current;
        missBefore = miss;
        current = next;
    }
    return current;
}

/// The power that a cell gives has one maximum between no current and the cap: ternary search.
double Regulator::currentOfMaximumPower(double cap) const
{
    const double direction = _cell->openCircuitVoltage() >= 0.0 ? -1.0 : 1.0;
    const auto power = [this, direction](double magnitude) {
        return -_cell->voltageAt(direction * magnitude) * direction * magnitude;
    };
    double low = 0.0;
    double high = cap;
    while (high - low > 1e-9 * cap) {
        const double third = (high - low) / 3.0;
        if (power(low + third) < power(high - third))
            low += third;
        else
            high -= third;
    }
    return direction * 0.5 * (low + high);
}
