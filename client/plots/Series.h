#pragma once

#include "plots/RunData.h"

#include <QPointF>
#include <QVector>

namespace client {

/// The largest magnitude among the finite numbers; 0 without any.
double largestMagnitude(const Column &values);

/// Two columns as the points of a curve; the longer one is cut.
QVector<QPointF> pointsOf(const Column &horizontal, const Column &vertical);

} // namespace client
