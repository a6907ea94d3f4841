// SPDX-License-Identifier: MIT
#include "plots/Cycling.h"

#include "lab/experiments/ElementTraits.h"
#include "lab/records/RunData.h"
#include "plots/Figure.h"
#include "plots/HalfCycles.h"
#include "plots/Series.h"

#include <QDir>

#include <algorithm>
#include <cmath>

namespace plots {

using namespace lab;

namespace {

constexpr double farSpreads = 3.0; ///< quartile distances beyond the quartiles: what lies there is far from the others
constexpr double leastReach = 0.5; ///< percent: as far from the quartiles nothing counts as far
constexpr int fewestForSpread = 4;

bool isCycling(const RunData &run, const std::map<int, CycleCharge> &cycles)
{
    const auto &elements = run.experiment.elements;
    const bool hasLoad = std::any_of(elements.begin(), elements.end(), isLoad);
    const bool movesBothWays = std::any_of(cycles.begin(), cycles.end(), [](const auto &each) {
        return each.second.charged > 0.0 && each.second.discharged > 0.0;
    });
    return hasLoad && movesBothWays && cycles.size() > 1;
}

/// What a count of charge rose by. It falls in its last digits, and to nothing where it begins anew.
double riseOf(double before, double now)
{
    return now < before / 2.0 ? now : std::max(0.0, now - before);
}

struct CyclingCurves {
    QVector<QPointF> charged; ///< ampere-hours
    QVector<QPointF> discharged;
    QVector<QPointF> efficiency; ///< percent
};

CyclingCurves curvesOf(const RunData &run, const std::map<int, CycleCharge> &cycles)
{
    CyclingCurves curves;
    for (const auto &[cycle, charge] : cycles) {
        const bool isWhole = run.isCompleted || cycle != cycles.rbegin()->first;
        curves.charged.append({double(cycle), charge.charged / coulombsOfAmpereHour});
        curves.discharged.append({double(cycle), charge.discharged / coulombsOfAmpereHour});
        if (isWhole && charge.charged > 0.0)
            curves.efficiency.append({double(cycle), 100.0 * charge.discharged / charge.charged});
    }
    return curves;
}

/// Shows what is usual: one first cycle of 60 % must not hide that the others fall from 99.9 to 99.8.
void fitToMost(Panel &panel, const QVector<QPointF> &curve)
{
    if (curve.size() < fewestForSpread)
        return;
    std::vector<double> sorted;
    for (const QPointF &point : curve)
        sorted.push_back(point.y());
    std::sort(sorted.begin(), sorted.end());
    const double lower = sorted[sorted.size() / 4];
    const double upper = sorted[sorted.size() * 3 / 4];
    const double reach = std::max(farSpreads * (upper - lower), leastReach);
    const auto first = std::lower_bound(sorted.begin(), sorted.end(), lower - reach);
    const auto last = std::upper_bound(sorted.begin(), sorted.end(), upper + reach) - 1;
    if (first != sorted.begin() || last + 1 != sorted.end())
        panel.setVerticalRange(*first, *last);
}

void addCapacity(Figure &figure, const CyclingCurves &curves)
{
    const double largest =
        std::max(largestMagnitude(curves.charged, &QPointF::y), largestMagnitude(curves.discharged, &QPointF::y));
    Panel &panel = figure.addPanel();
    panel.setHorizontalScale({1.0, QStringLiteral("Cycle")});
    panel.setVerticalScale(prefixedScale(QStringLiteral("Capacity"), QStringLiteral("Ah"), largest));
    panel.addCurve(QStringLiteral("Charge"), curves.charged, curveColour(1), Panel::Style::LineAndPoints);
    panel.addCurve(QStringLiteral("Discharge"), curves.discharged, curveColour(0), Panel::Style::LineAndPoints);
    panel.countFrom(int(curves.charged.first().x()), int(curves.charged.last().x()));
    panel.showLegend();
    panel.hideHorizontalTitle();
}

void addEfficiency(Figure &figure, const CyclingCurves &curves)
{
    Panel &panel = figure.addPanel();
    panel.setHorizontalScale({1.0, QStringLiteral("Cycle")});
    panel.setVerticalScale({1.0, QStringLiteral("Coulombic efficiency / %")});
    panel.addCurve({}, curves.efficiency, curveColour(2), Panel::Style::LineAndPoints);
    panel.countFrom(int(curves.charged.first().x()), int(curves.charged.last().x()));
    fitToMost(panel, curves.efficiency);
}

} // namespace

std::map<int, CycleCharge> chargeByCycle(const RunData &run)
{
    std::map<int, CycleCharge> cycles;
    double charged = 0.0, discharged = 0.0;
    for (const Segment &segment : run.segments) {
        const Sample &last = run.dc[segment.end - 1];
        CycleCharge &sum = cycles[segment.cycle];
        sum.charged += riseOf(charged, last.charged);
        sum.discharged += riseOf(discharged, last.discharged);
        charged = last.charged;
        discharged = last.discharged;
    }
    return cycles;
}

bool drawCycling(const RunData &run, const QString &folder)
{
    const std::map<int, CycleCharge> cycles = chargeByCycle(run);
    if (!isCycling(run, cycles))
        return true;
    const CyclingCurves curves = curvesOf(run, cycles);
    Figure figure;
    figure.setTitle(run.title);
    addCapacity(figure, curves);
    addEfficiency(figure, curves);
    const bool isDrawn = figure.save(QDir(folder).filePath(QStringLiteral("cycling")));
    return drawHalfCycles(run, folder) && isDrawn;
}

} // namespace plots
