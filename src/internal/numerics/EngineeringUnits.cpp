// SPDX-License-Identifier: MIT
#include "numerics/EngineeringUnits.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace {

struct UnitRow {
    const char *unit;
    double factor;
};

// clang-format off
constexpr UnitRow unitRows[] = { // to seconds, amperes, volts, ohms, grams, watts, coulombs, hertz, square and cubic metres
    {"hr",    3600.0}, {"W",   1.0},    {"A/s",   1.0},
    {"min",   60.0},   {"mW",  0.001},  {"mA/s",  0.001},
    {"s",     1.0},    {"uW",  1e-6},   {"uA/s",  1e-6},
    {"ms",    0.001},  {"nW",  1e-9},   {"nA/s",  1e-9},
    {"A",     1.0},    {"C",   1.0},    {"V/s",   1.0},
    {"mA",    0.001},  {"mC",  0.001},  {"mV/s",  0.001},
    {"uA",    1e-6},   {"Ah",  3600.0}, {"uV/s",  1e-6},
    {"nA",    1e-9},   {"mAh", 3.6},    {"kHz/s", 1000.0},
    {"V",     1.0},    {"uAh", 0.0036}, {"Hz/s",  1.0},
    {"mV",    0.001},  {"MHz", 1e6},    {"mHz/s", 0.001},
    {"MOhms", 1e6},    {"kHz", 1000.0}, {"m²",    1.0},
    {"kOhms", 1000.0}, {"Hz",  1.0},    {"cm²",   0.0001},
    {"Ohms",  1.0},    {"mHz", 0.001},  {"m³",    1.0},
    {"kg",    1000.0}, {"g",   1.0},    {"cm³",   1e-6},
};
// clang-format on

struct PrefixRow {
    double factor;
    const char *prefix;
};

constexpr PrefixRow prefixRows[] = {{1e9, "G"},  {1e6, "M"},  {1e3, "k"},  {1.0, ""},
                                    {1e-3, "m"}, {1e-6, "u"}, {1e-9, "n"}, {1e-12, "p"}};

const PrefixRow &prefixFor(double magnitude)
{
    for (const PrefixRow &row : prefixRows) {
        if (magnitude >= row.factor)
            return row;
    }
    return *std::rbegin(prefixRows);
}

int decimalsFor(double magnitude, int digits)
{
    int integerDigits = 1;
    if (magnitude >= 100.0)
        integerDigits = 3;
    else if (magnitude >= 10.0)
        integerDigits = 2;
    return std::max(digits - integerDigits, 0);
}

} // namespace

double unitsMultiplier(const QString &unit)
{
    for (const UnitRow &row : unitRows) {
        if (unit == QString::fromUtf8(row.unit))
            return row.factor;
    }
    return 1.0;
}

QString valueString(double value, int digits)
{
    const PrefixRow &row = prefixFor(std::abs(value));
    const double scaled = value / row.factor;
    return QString::number(scaled, 'f', decimalsFor(std::abs(scaled), digits)) + QLatin1Char(' ') +
           QLatin1String(row.prefix);
}
