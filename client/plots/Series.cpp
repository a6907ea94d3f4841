#include "plots/Series.h"

#include <algorithm>
#include <cmath>

namespace client {

double largestMagnitude(const Column &values)
{
    double largest = 0.0;
    for (const double value : values) {
        if (std::isfinite(value))
            largest = std::max(largest, std::abs(value));
    }
    return largest;
}

QVector<QPointF> pointsOf(const Column &horizontal, const Column &vertical)
{
    QVector<QPointF> points;
    const std::size_t count = std::min(horizontal.size(), vertical.size());
    points.reserve(static_cast<int>(count));
    for (std::size_t row = 0; row < count; ++row)
        points.append({horizontal[row], vertical[row]});
    return points;
}

} // namespace client
