// SPDX-License-Identifier: MIT
#pragma once

#include "lab/notation/Dimension.h"

#include <QString>

namespace lab {

/// A number read from a text, or the reason why there is none.
struct ParsedQuantity {
    double value = 0.0;                ///< in the base unit of its dimension
    QString complaint;                 ///< empty when the text was understood
    bool isAgainstOpenCircuit = false; ///< the complaint is that "vs OCP" was written

    bool isValid() const { return complaint.isEmpty(); }
};

/**
 * Reads a number with a unit: "10 mA", "1.5h", "-0.2" (a bare number is in the base unit).
 *
 * The decimal sign is a point in every locale. Units differ in case ("mHz" is not "MHz"); "u" and both Greek signs
 * stand for micro. A decimal prefix is applied by one exact power of ten, so that "9 mA" is the double nearest to 0.009.
 *
 * @return a complaint for anything else, with the unit that was probably meant
 */
ParsedQuantity parseQuantity(const QString &text, Dimension dimension);

/// A regular expression, as JSON Schema has them, for the texts that parseQuantity() takes.
QString quantityPattern(Dimension dimension);

/// The symbol of the unit that bare numbers are in: "A", "V/s", "Ohm"; empty for bare numbers.
QString baseUnit(Dimension dimension);

/// The kind of quantity in words, with its article: "a current".
QString dimensionName(Dimension dimension);

/// A number with so many significant digits at most and the prefix that leaves one to three of them before the point.
QString withPrefix(double value, const QString &unit, int digits);

/**
 * A number for people: up to five significant digits, the prefix that leaves one to three before the point, the unit.
 *
 * Infinite times, charges and the like read "unlimited", an unknown number (NaN) reads "-". Times of a minute and above
 * are written in minutes, hours or days.
 */
QString formatQuantity(double value, Dimension dimension);

} // namespace lab
