#include "plots/Cycling.h"

#include "plots/Figure.h"
#include "plots/RunData.h"

#include <QDir>

#include <algorithm>

namespace client {

namespace {

constexpr double coulombsOfAmpereHour = 3600.0;

bool isLoad(const FileElement &element)
{
    for (const char *name : {"ConstantCurrent", "ConstantPower", "ConstantResistance"}) {
        if (element.className == QLatin1String(name))
            return true;
    }
    return false;
}

bool isCycling(const RunData &run, const std::map<int, CycleCharge> &cycles)
{
    const auto &elements = run.experiment.elements;
    const bool hasLoad = std::any_of(elements.begin(), elements.end(), isLoad);
    const bool movesBothWays = std::any_of(cycles.begin(), cycles.end(), [](const auto &each) {
        return each.second.charged > 0.0 && each.second.discharged > 0.0;
    });
    return hasLoad && movesBothWays && cycles.size() > 1;
}

} // namespace

std::map<int, CycleCharge> chargeByCycle(const RunData &run)
{
    const Column &net = run.dc.column("Net Charge / C");
    const Column &cycle = run.dc.column("Cycle Count / 1");
    std::map<int, CycleCharge> cycles;
    double before = 0.0;
    for (std::size_t row = 0; row < net.size(); ++row) {
        CycleCharge &sum = cycles[static_cast<int>(cycle[row])];
        const double moved = net[row] - before;
        (moved > 0.0 ? sum.charged : sum.discharged) += std::abs(moved);
        before = net[row];
    }
    return cycles;
}

bool drawCycling(const RunData &run, const QString &folder)
{
    const std::map<int, CycleCharge> cycles = chargeByCycle(run);
    if (!isCycling(run, cycles))
        return true;
    QVector<QPointF> charged, discharged, efficiency;
    double largest = 0.0;
    for (const auto &[cycle, charge] : cycles) {
        charged.append({double(cycle), charge.charged / coulombsOfAmpereHour});
        discharged.append({double(cycle), charge.discharged / coulombsOfAmpereHour});
        efficiency.append({double(cycle), 100.0 * charge.discharged / charge.charged});
        largest = std::max({largest, charged.last().y(), discharged.last().y()});
    }
    Figure figure;
    figure.setTitle(run.title);
    Panel &capacity = figure.addPanel();
    capacity.setHorizontalScale({1.0, QStringLiteral("Cycle")});
    capacity.setVerticalScale(prefixedScale(QStringLiteral("Capacity"), QStringLiteral("Ah"), largest));
    capacity.addCurve(QStringLiteral("Charge"), charged, curveColour(1), Panel::Style::LineAndPoints);
    capacity.addCurve(QStringLiteral("Discharge"), discharged, curveColour(0), Panel::Style::LineAndPoints);
    capacity.showLegend();
    capacity.hideHorizontalTitle();
    Panel &lower = figure.addPanel();
    lower.setHorizontalScale({1.0, QStringLiteral("Cycle")});
    lower.setVerticalScale({1.0, QStringLiteral("Coulombic efficiency / %")});
    lower.addCurve({}, efficiency, curveColour(2), Panel::Style::LineAndPoints);
    for (Panel *panel : {&capacity, &lower})
        panel->setHorizontalRange(cycles.begin()->first - 0.5, cycles.rbegin()->first + 0.5);
    return figure.save(QDir(folder).filePath(QStringLiteral("cycling")));
}

} // namespace client
