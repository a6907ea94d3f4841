// SPDX-License-Identifier: MIT
#pragma once

#include "lab/records/RunData.h"

#include <QPointF>
#include <QVector>

#include <limits>

namespace plots {

/// A point of a curve at which its line breaks off.
inline QPointF lineBreak()
{
    constexpr double none = std::numeric_limits<double>::quiet_NaN();
    return {none, none};
}

/// Adds a point, behind a break where no line leads to it.
void appendPoint(QVector<QPointF> &curve, const QPointF &point, bool opensStretch);

/// A member of all samples against time, broken off where time is.
QVector<QPointF> againstTime(const std::vector<lab::Sample> &samples, double lab::Sample::*value);

/// The largest magnitude among the finite coordinates; 0 without any.
double largestMagnitude(const QVector<QPointF> &points, double (QPointF::*coordinate)() const);

} // namespace plots
