// SPDX-License-Identifier: MIT
#include "calibration/Temperature.h"

#include <cmath>
#include <limits>

namespace {

constexpr double absoluteZero = -273.15; // degrees Celsius
constexpr float lowestTemperature = -60.0f;
constexpr float highestTemperature = 135.0f;
constexpr float noTemperature = std::numeric_limits<float>::quiet_NaN();

} // namespace

Thermistor::Thermistor(float a, float b, float c, float d) : A(a), B(b), C(c), D(d)
{
}

float Thermistor::getTemp(float ratio) const
{
    const double resistance = double(seriesResistance) * ratio / (1.0 - ratio);
    const double x = std::log(resistance / nominalResistance);
    const double reciprocal = A + B * x + C * x * x + D * x * x * x;
    const float degrees = float(1.0 / reciprocal + absoluteZero);
    if (degrees < lowestTemperature || degrees > highestTemperature)
        return noTemperature;
    return degrees;
}

float Thermistor::getRatio(float degrees) const
{
    const double kelvin = degrees - absoluteZero;
    if (kelvin <= 0.0)
        return noTemperature;
    const double resistance = nominalResistance * std::exp(logResistance(1.0 / kelvin));
    return float(resistance / (seriesResistance + resistance));
}

double Thermistor::logResistance(double reciprocalTemperature) const
{
    constexpr int maxSteps = 100;
    constexpr double tolerance = 1e-6;

    double x = 0.0;
    for (int step = 0; step < maxSteps; ++step) {
        const double residual = A + B * x + C * x * x + D * x * x * x - reciprocalTemperature;
        if (std::abs(residual) < tolerance)
            break;
        x -= residual / (B + 2.0 * C * x + 3.0 * D * x * x);
    }
    return x;
}
