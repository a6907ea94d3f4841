// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace plots {

/// How the numbers of an axis are written: divided by a factor, under a title that names the unit.
struct AxisScale {
    double divisor = 1.0;
    QString title; ///< "Current / mA"
};

/// The prefix that brings the largest number into 1 to 1000; @p unit without prefix.
AxisScale prefixedScale(const QString &quantity, const QString &unit, double largest);

/// Seconds, minutes, hours or days.
AxisScale timeScale(double largestSeconds);

} // namespace plots
