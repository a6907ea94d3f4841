// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/// Factor from a unit such as "mAh" to its base unit (coulombs, square metres, grams, ...); 1.0 if it is unknown.
double unitsMultiplier(const QString &unit);
/// Engineering notation with that many digits, a blank and a metric prefix, ready for a unit behind it.
QString valueString(double value, int digits);
