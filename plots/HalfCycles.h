// SPDX-License-Identifier: MIT
#pragma once

#include <QPointF>
#include <QString>
#include <QVector>

#include <vector>

namespace lab {
struct RunData;
}

namespace plots {

/// A charge or a discharge within one cycle.
struct HalfCycle {
    int cycle = 0;
    bool charges = true;
    QVector<QPointF> voltage;   ///< against the charge in coulombs that it has moved so far; breaks where rests lie
    QVector<QPointF> underLoad; ///< the same of its constant currents, powers and resistances alone
};

/// In their order; rests belong to none.
std::vector<HalfCycle> halfCyclesOf(const lab::RunData &run);

/**
 * The charge in coulombs that moves for each volt, against the voltage: what moves between the ends of each of @p bins
 * equal parts of the voltage range, divided by their width. No noise of the voltage makes it infinite.
 */
QVector<QPointF> differentialCapacity(const QVector<QPointF> &voltageOverCharge, int bins);

/**
 * Voltage against charge as "voltage-capacity", and the charge for each volt as "differential-capacity", that of
 * discharging downwards; of the first cycle, the last, and some between, where there are many.
 *
 * @return false when a picture could not be written
 */
bool drawHalfCycles(const lab::RunData &run, const QString &folder);

} // namespace plots
