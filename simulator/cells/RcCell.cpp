// SPDX-License-Identifier: MIT
#include "simulator/cells/RcCell.h"

#include <cmath>

double RcCell::passCurrent(double current, double slope, double seconds)
{
    _element.passCurrent(current, slope, seconds);
    return (current + 0.5 * slope * seconds) * seconds;
}

double RcCell::holdVoltage(double voltage, double slope, double seconds)
{
    // du/dt = (V - u)/(Rs C) - u/(R C): an element with Rs parallel to R, driven through Rs
    const double share = std::isinf(_element.resistance) ? 1.0 : _element.resistance / (_element.resistance + _series);
    const double tau = _series * share * _element.capacitance;
    const double start = share * (voltage - slope * tau);
    const double deviation = _element.voltage - start;
    const double integral =
        (start + 0.5 * share * slope * seconds) * seconds - deviation * tau * std::expm1(-seconds / tau);
    _element.voltage = start + share * slope * seconds + deviation * std::exp(-seconds / tau);
    return ((voltage + 0.5 * slope * seconds) * seconds - integral) / _series;
}
