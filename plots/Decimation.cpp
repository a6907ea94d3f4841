// SPDX-License-Identifier: MIT
#include "plots/Decimation.h"

#include <algorithm>

namespace plots {

namespace {

constexpr int keptOfEach = 4;

using Iterator = QVector<QPointF>::const_iterator;

bool isLower(const QPointF &left, const QPointF &right)
{
    return left.y() < right.y();
}

void keepExtremes(Iterator begin, Iterator end, QVector<QPointF> &kept)
{
    const auto [lowest, highest] = std::minmax_element(begin, end, isLower);
    Iterator chosen[keptOfEach] = {begin, lowest, highest, end - 1};
    std::sort(chosen, chosen + keptOfEach);
    const Iterator *last = std::unique(chosen, chosen + keptOfEach);
    for (const Iterator *each = chosen; each != last; ++each)
        kept.append(**each);
}

} // namespace

QVector<QPointF> decimate(const QVector<QPointF> &points, int mostPoints)
{
    if (points.size() <= mostPoints)
        return points;
    const qint64 groups = std::max(1, mostPoints / keptOfEach);
    QVector<QPointF> kept;
    kept.reserve(mostPoints);
    for (qint64 group = 0; group < groups; ++group) {
        const auto begin = points.cbegin() + group * points.size() / groups;
        const auto end = points.cbegin() + (group + 1) * points.size() / groups;
        keepExtremes(begin, end, kept);
    }
    return kept;
}

} // namespace plots
