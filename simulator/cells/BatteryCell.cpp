// SPDX-License-Identifier: MIT
#include "simulator/cells/BatteryCell.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double plateau = 3.6;
constexpr double tilt = 0.45;
constexpr double logFactor = 0.06;
constexpr double edge = 0.001;

} // namespace

BatteryCell::BatteryCell(const Parameters &parameters)
    : _parameters(parameters),
      _stored(parameters.stateOfCharge * parameters.capacity), _element{parameters.polarisation, parameters.capacitance}
{
}

double BatteryCell::openCircuitCurve(double stateOfCharge)
{
    const double s = std::clamp(stateOfCharge, 0.0, 1.0);
    const double onCurve = plateau + tilt * s + logFactor * std::log((s + edge) / (1.0 + edge - s));
    return onCurve + (stateOfCharge - s) * openCircuitSlope(s);
}

double BatteryCell::openCircuitSlope(double stateOfCharge)
{
    const double s = std::clamp(stateOfCharge, 0.0, 1.0);
    return tilt + logFactor * (1.0 / (s + edge) + 1.0 / (1.0 + edge - s));
}

double BatteryCell::voltageAt(double current) const
{
    return restVoltage() + _parameters.series * current;
}

double BatteryCell::currentAt(double voltage) const
{
    return (voltage - restVoltage()) / _parameters.series;
}

std::complex<double> BatteryCell::impedance(double frequency) const
{
    const double perCoulomb = openCircuitSlope(stateOfCharge()) / _parameters.capacity;
    const std::complex<double> storage(0.0, -perCoulomb / (2.0 * M_PI * frequency));
    return _parameters.series + _element.impedance(frequency) + storage;
}

double BatteryCell::passCurrent(double current, double slope, double seconds)
{
    const double charge = (current + 0.5 * slope * seconds) * seconds;
    _element.passCurrent(current, slope, seconds);
    _stored += storedShare(charge);
    return charge;
}

/// An upper bound of the state's rates of decay under voltage control, per second.
double BatteryCell::fastestRate() const
{
    const double curve = openCircuitSlope(stateOfCharge()) / _parameters.capacity / _parameters.series;
    const double element = (1.0 / _parameters.series + 1.0 / _parameters.polarisation) / _parameters.capacitance;
    return curve + element;
}

double BatteryCell::holdVoltage(double voltage, double slope, double seconds)
{
    double charge = 0.0;
    for (double done = 0.0; done < seconds;) {
        const double step = std::min(seconds - done, 0.1 / fastestRate());
        charge += stepUnderVoltage(voltage + slope * done, slope, step);
        done += step;
    }
    return charge;
}

/// One step of the classical Runge-Kutta method, short enough for its error to vanish beside single precision.
double BatteryCell::stepUnderVoltage(double voltage, double slope, double seconds)
{
    struct Rates {
        double charge, stored, element;
    };
    const auto rates = [&](double time, double stored, double u) {
        const double rest = openCircuitCurve(stored / _parameters.capacity) + u;
        const double current = (voltage + slope * time - rest) / _parameters.series;
        return Rates{current, storedShare(current), (current - u / _parameters.polarisation) / _parameters.capacitance};
    };
    const double half = 0.5 * seconds;
    const double u = _element.voltage;
    const Rates a = rates(0.0, _stored, u);
    const Rates b = rates(half, _stored + half * a.stored, u + half * a.element);
    const Rates c = rates(half, _stored + half * b.stored, u + half * b.element);
    const Rates d = rates(seconds, _stored + seconds * c.stored, u + seconds * c.element);
    const auto mean = [seconds](double k1, double k2, double k3, double k4) {
        return seconds * (k1 + 2.0 * k2 + 2.0 * k3 + k4) / 6.0;
    };
    _stored += mean(a.stored, b.stored, c.stored, d.stored);
    _element.voltage += mean(a.element, b.element, c.element, d.element);
    return mean(a.charge, b.charge, c.charge, d.charge);
}
