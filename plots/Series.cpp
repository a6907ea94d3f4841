// SPDX-License-Identifier: MIT
#include "plots/Series.h"

#include <algorithm>
#include <cmath>

namespace plots {

using namespace lab;

void appendPoint(QVector<QPointF> &curve, const QPointF &point, bool opensStretch)
{
    if (opensStretch && !curve.isEmpty())
        curve.append(lineBreak());
    curve.append(point);
}

QVector<QPointF> againstTime(const std::vector<Sample> &samples, double Sample::*value)
{
    QVector<QPointF> curve;
    curve.reserve(static_cast<int>(samples.size()));
    for (const Sample &sample : samples)
        appendPoint(curve, {sample.time, sample.*value}, sample.opensStretch);
    return curve;
}

double largestMagnitude(const QVector<QPointF> &points, double (QPointF::*coordinate)() const)
{
    double largest = 0.0;
    for (const QPointF &point : points) {
        const double magnitude = std::abs((point.*coordinate)());
        if (std::isfinite(magnitude))
            largest = std::max(largest, magnitude);
    }
    return largest;
}

} // namespace plots
