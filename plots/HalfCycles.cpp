// SPDX-License-Identifier: MIT
#include "plots/HalfCycles.h"

#include "lab/experiments/ElementTraits.h"
#include "lab/records/RunData.h"
#include "plots/Figure.h"
#include "plots/Series.h"

#include <QDir>

#include <algorithm>
#include <cmath>
#include <set>

namespace plots {

using namespace lab;

namespace {

constexpr std::size_t mostCycles = 6; ///< more would hide each other
constexpr int mostBins = 120;
constexpr int pointsOfBin = 2;
constexpr double restShare = 1e-4; ///< of the largest charge of a segment: one that moves less rests

double movedBy(const RunData &run, const Segment &segment)
{
    const double before = segment.begin > 0 ? run.dc[segment.begin - 1].netCharge() : 0.0;
    return run.dc[segment.end - 1].netCharge() - before;
}

double largestMove(const RunData &run)
{
    double largest = 0.0;
    for (const Segment &segment : run.segments)
        largest = std::fmax(largest, std::abs(movedBy(run, segment)));
    return largest;
}

bool isRest(const RunData &run, const Segment &segment, double leastMove)
{
    const FileElement *element = run.element(segment.step);
    const bool isOpen =
        element && element->className == QLatin1String("OpenCircuit"); // its first row tells of the load before
    return isOpen || !(std::abs(movedBy(run, segment)) > leastMove);
}

bool isUnderLoad(const RunData &run, const Segment &segment)
{
    const FileElement *element = run.element(segment.step);
    return element && isLoad(*element);
}

/// Appends the samples of a segment, behind a break if another segment lies between it and what is there.
void appendCurve(QVector<QPointF> &curve, const RunData &run, const Segment &segment, double start, bool follows)
{
    for (std::size_t row = segment.begin; row < segment.end; ++row) {
        const Sample &sample = run.dc[row];
        const bool opensStretch = sample.opensStretch || (row == segment.begin && !follows);
        appendPoint(curve, {std::abs(sample.netCharge() - start), sample.voltage}, opensStretch);
    }
}

std::set<int> chosenCycles(const std::vector<HalfCycle> &halfCycles)
{
    std::set<int> all;
    for (const HalfCycle &each : halfCycles)
        all.insert(each.cycle);
    const std::vector<int> cycles(all.begin(), all.end());
    if (cycles.size() <= mostCycles)
        return all;
    std::set<int> chosen;
    for (std::size_t index = 0; index < mostCycles; ++index)
        chosen.insert(cycles[index * (cycles.size() - 1) / (mostCycles - 1)]);
    return chosen;
}

struct NamedCurve {
    int cycle;
    QVector<QPointF> points;
};

void addCurves(Panel &panel, const std::vector<NamedCurve> &curves, const std::set<int> &cycles)
{
    for (const NamedCurve &curve : curves) {
        const auto index = std::distance(cycles.begin(), cycles.find(curve.cycle));
        panel.addCurve(QStringLiteral("Cycle %1").arg(curve.cycle), curve.points, curveColour(static_cast<int>(index)));
    }
    panel.showLegend();
}

double largestOf(const std::vector<NamedCurve> &curves, double (QPointF::*coordinate)() const)
{
    double largest = 0.0;
    for (const NamedCurve &curve : curves)
        largest = std::max(largest, largestMagnitude(curve.points, coordinate));
    return largest;
}

QVector<QPointF> inAmpereHours(const HalfCycle &half)
{
    QVector<QPointF> points = half.voltage;
    for (QPointF &point : points)
        point.rx() /= coulombsOfAmpereHour;
    return points;
}

QVector<QPointF> signedDifferential(const HalfCycle &half)
{
    const int bins = std::min(mostBins, half.underLoad.size() / pointsOfBin);
    QVector<QPointF> points = differentialCapacity(half.underLoad, bins);
    for (QPointF &point : points)
        point.ry() *= (half.charges ? 1.0 : -1.0) / coulombsOfAmpereHour;
    return points;
}

std::vector<NamedCurve> curvesOf(const std::vector<HalfCycle> &halves, const std::set<int> &cycles,
                                 QVector<QPointF> (*pointsOf)(const HalfCycle &))
{
    std::vector<NamedCurve> curves;
    for (const HalfCycle &half : halves) {
        if (cycles.count(half.cycle) > 0)
            curves.push_back({half.cycle, pointsOf(half)});
    }
    return curves;
}

bool drawVoltage(const RunData &run, const std::vector<HalfCycle> &halves, const QString &path)
{
    const std::set<int> cycles = chosenCycles(halves);
    const std::vector<NamedCurve> curves = curvesOf(halves, cycles, inAmpereHours);
    Figure figure(QSize(640, 420));
    figure.setTitle(run.title);
    Panel &panel = figure.addPanel();
    panel.setHorizontalScale(
        prefixedScale(QStringLiteral("Capacity"), QStringLiteral("Ah"), largestOf(curves, &QPointF::x)));
    panel.setVerticalScale(
        prefixedScale(QStringLiteral("Voltage"), QStringLiteral("V"), largestOf(curves, &QPointF::y)));
    addCurves(panel, curves, cycles);
    return figure.save(path);
}

bool drawDifferential(const RunData &run, const std::vector<HalfCycle> &halves, const QString &path)
{
    const std::set<int> cycles = chosenCycles(halves);
    const std::vector<NamedCurve> curves = curvesOf(halves, cycles, signedDifferential);
    Figure figure(QSize(640, 420));
    figure.setTitle(run.title);
    Panel &panel = figure.addPanel();
    panel.setHorizontalScale(
        prefixedScale(QStringLiteral("Voltage"), QStringLiteral("V"), largestOf(curves, &QPointF::x)));
    panel.setVerticalScale(prefixedScale(QStringLiteral("dQ/dV"), QStringLiteral("Ah V<sup>&minus;1</sup>"),
                                         largestOf(curves, &QPointF::y)));
    addCurves(panel, curves, cycles);
    return figure.save(path);
}

/// Adds the charge that moves on the way from one point to the next to the bins that the way passes.
void spread(const QPointF &from, const QPointF &to, double lowest, double width, QVector<double> &bins)
{
    const double charge = to.x() - from.x();
    const double low = (std::min(from.y(), to.y()) - lowest) / width;
    const double high = (std::max(from.y(), to.y()) - lowest) / width;
    const int first = std::clamp(static_cast<int>(low), 0, bins.size() - 1);
    const int last = std::clamp(static_cast<int>(high), 0, bins.size() - 1);
    if (first == last)
        bins[first] += charge;
    for (int bin = first; bin <= last && first != last; ++bin)
        bins[bin] += charge * (std::min(high, bin + 1.0) - std::max(low, double(bin))) / (high - low);
}

} // namespace

std::vector<HalfCycle> halfCyclesOf(const RunData &run)
{
    const double leastMove = restShare * largestMove(run);
    std::vector<HalfCycle> halves;
    double start = 0.0;
    const Segment *before = nullptr; // the last that belongs to a half cycle
    for (const Segment &segment : run.segments) {
        if (isRest(run, segment, leastMove))
            continue;
        const bool charges = movedBy(run, segment) > 0.0;
        if (!before || halves.back().cycle != segment.cycle || halves.back().charges != charges) {
            halves.push_back({segment.cycle, charges, {}, {}});
            start = segment.begin > 0 ? run.dc[segment.begin - 1].netCharge() : 0.0;
        }
        const bool follows = before && before->end == segment.begin;
        appendCurve(halves.back().voltage, run, segment, start, follows);
        if (isUnderLoad(run, segment))
            appendCurve(halves.back().underLoad, run, segment, start, follows);
        before = &segment;
    }
    return halves;
}

QVector<QPointF> differentialCapacity(const QVector<QPointF> &voltageOverCharge, int bins)
{
    QVector<QPointF> points;
    QVector<QPointF> sound;
    std::copy_if(voltageOverCharge.begin(), voltageOverCharge.end(), std::back_inserter(sound),
                 [](const QPointF &point) { return std::isfinite(point.x()) && std::isfinite(point.y()); });
    if (bins < 1 || sound.size() < 2)
        return points;
    const auto [low, high] = std::minmax_element(
        sound.begin(), sound.end(), [](const QPointF &left, const QPointF &right) { return left.y() < right.y(); });
    const double lowest = low->y();
    const double width = (high->y() - lowest) / bins;
    if (!(width > 0.0))
        return points;
    QVector<double> charges(bins, 0.0);
    for (int index = 1; index < voltageOverCharge.size(); ++index) {
        const QPointF from = voltageOverCharge[index - 1], to = voltageOverCharge[index];
        if (std::isfinite(from.x() + from.y() + to.x() + to.y()))
            spread(from, to, lowest, width, charges);
    }
    for (int bin = 0; bin < bins; ++bin)
        points.append({lowest + (bin + 0.5) * width, charges[bin] / width});
    return points;
}

bool drawHalfCycles(const RunData &run, const QString &folder)
{
    const std::vector<HalfCycle> halves = halfCyclesOf(run);
    if (halves.empty())
        return true;
    const QDir directory(folder);
    const bool isDrawn = drawVoltage(run, halves, directory.filePath(QStringLiteral("voltage-capacity")));
    return drawDifferential(run, halves, directory.filePath(QStringLiteral("differential-capacity"))) && isDrawn;
}

} // namespace plots
