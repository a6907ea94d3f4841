// SPDX-License-Identifier: MIT
#pragma once

#include <QPointF>
#include <QVector>

namespace plots {

/**
 * Thins a curve that a picture cannot resolve: of each run of points the first, the lowest, the highest and the last
 * stay, in their order, so that no peak is lost.
 *
 * @param mostPoints at least 4; the result has no more, and a curve that has no more comes back as it is
 */
QVector<QPointF> decimate(const QVector<QPointF> &points, int mostPoints);

} // namespace plots
