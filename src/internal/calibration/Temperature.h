// SPDX-License-Identifier: MIT
#pragma once

#include <limits>

/**
 * A thermistor at the lower end of a voltage divider, as the battery cyclers measure temperature.
 *
 * Its resistance R and absolute temperature T obey 1/T = A + B x + C x^2 + D x^3 with x = ln(R / nominal resistance), the
 * extended equation of Steinhart and Hart. A value; use it on any thread.
 */
class Thermistor
{
public:
    /// Coefficients of the part that the cyclers carry.
    Thermistor() = default;
    Thermistor(float a, float b, float c, float d);

    /// Degrees Celsius for the divider's output over its supply; NaN outside -60 to 135 degrees.
    float getTemp(float ratio) const;
    /// The way back, to the tolerance of a setting: the residual in 1/T is below 1e-6. NaN at or below absolute zero.
    float getRatio(float degrees) const;

private:
    /// x of the equation for a reciprocal absolute temperature.
    double logResistance(double reciprocalTemperature) const;

    float seriesResistance = 10000.0f;  ///< ohms
    float nominalResistance = 10000.0f; ///< ohms, at 25 degrees
    float A = 0.003354016f;
    float B = 0.000256524f;
    float C = 2.60597e-6f;
    float D = 6.32926e-8f;
};

/// Reads the word of the mainline's thermocouple converter. Without state; use it on any thread.
class TemperatureParser
{
public:
    /// Degrees Celsius in steps of 0.25; NaN when the converter flags a fault.
    float getTemp(unsigned word) const
    {
        if (word & faultBit)
            return std::numeric_limits<float>::quiet_NaN();
        return float(static_cast<int>(word) >> readingShift) * degreesPerCount;
    }

private:
    static constexpr unsigned faultBit = 1u << 16;
    static constexpr int readingShift = 18; // the reading fills bits 31 to 18
    static constexpr float degreesPerCount = 0.25f;
};
