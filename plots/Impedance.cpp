// SPDX-License-Identifier: MIT
#include "plots/Impedance.h"

#include "lab/notation/Units.h"
#include "lab/records/RunData.h"
#include "plots/Figure.h"
#include "plots/Series.h"

#include <QDir>
#include <QHash>

#include <algorithm>
#include <cmath>
#include <map>

namespace plots {

using namespace lab;

namespace {

constexpr std::size_t mostNamedSweeps = 8;
constexpr double nearDecade = 0.03; ///< of a decade: a point that close stands for it

/// The points of one sweep over the frequencies.
struct Sweep {
    QString name;
    QVector<QPointF> nyquist;   ///< real part, minus imaginary part
    QVector<QPointF> magnitude; ///< over frequency
    QVector<QPointF> phase;     ///< over frequency
};

std::vector<Sweep> sweepsOf(const std::vector<ImpedancePoint> &points)
{
    std::vector<Sweep> sweeps;
    for (const ImpedancePoint &point : points) {
        if (point.opensSweep)
            sweeps.push_back({QStringLiteral("%1 V").arg(QString::number(point.bias, 'g', 3)), {}, {}, {}});
        Sweep &sweep = sweeps.back();
        sweep.nyquist.append({point.real, -point.imaginary});
        sweep.magnitude.append({point.frequency, point.magnitude});
        sweep.phase.append({point.frequency, point.phaseDeg});
    }
    return sweeps;
}

/// Sweeps at one potential are told apart by their numbers.
void numberSweeps(std::vector<Sweep> &sweeps)
{
    QHash<QString, int> counts;
    for (const Sweep &sweep : sweeps)
        ++counts[sweep.name];
    QHash<QString, int> numbers;
    for (Sweep &sweep : sweeps) {
        if (counts[sweep.name] > 1)
            sweep.name += QStringLiteral(", sweep %1").arg(++numbers[sweep.name]);
    }
}

/// The points of a sweep that are nearest to a whole power of ten of the frequency.
std::map<int, int> decadesOf(const Sweep &sweep)
{
    std::map<int, int> decades;
    const auto distance = [&](int index, int decade) { return std::abs(std::log10(sweep.phase[index].x()) - decade); };
    for (int index = 0; index < sweep.phase.size(); ++index) {
        if (!(sweep.phase[index].x() > 0.0))
            continue;
        const int decade = static_cast<int>(std::lround(std::log10(sweep.phase[index].x())));
        const auto [nearest, isNew] = decades.emplace(decade, index);
        if (!isNew && distance(index, decade) < distance(nearest->second, decade))
            nearest->second = index;
    }
    return decades;
}

void labelDecades(Panel &panel, const Sweep &sweep)
{
    for (const auto &[decade, index] : decadesOf(sweep)) {
        const double frequency = sweep.phase[index].x();
        if (std::abs(std::log10(frequency) - decade) < nearDecade)
            panel.labelPoint(sweep.nyquist[index], formatQuantity(frequency, Dimension::Frequency));
    }
}

void addCurves(Panel &panel, const std::vector<Sweep> &sweeps, QVector<QPointF> Sweep::*points, bool isNamed)
{
    int index = 0;
    for (const Sweep &sweep : sweeps)
        panel.addCurve(isNamed ? sweep.name : QString(), sweep.*points, curveColour(index++),
                       Panel::Style::LineAndPoints);
    if (isNamed)
        panel.showLegend();
}

bool isLegible(const std::vector<Sweep> &sweeps)
{
    return sweeps.size() > 1 && sweeps.size() <= mostNamedSweeps;
}

bool drawNyquist(const RunData &run, const std::vector<Sweep> &sweeps, const QString &path)
{
    Figure figure(QSize(640, 420));
    figure.setTitle(run.title);
    Panel &panel = figure.addPanel();
    double largest = 0.0;
    for (const Sweep &sweep : sweeps)
        largest = std::max(
            {largest, largestMagnitude(sweep.nyquist, &QPointF::x), largestMagnitude(sweep.nyquist, &QPointF::y)});
    panel.setHorizontalScale(prefixedScale(QStringLiteral("Re Z"), QString::fromUtf8(u8"Ω"), largest));
    panel.setVerticalScale(prefixedScale(QString::fromUtf8(u8"−Im Z"), QString::fromUtf8(u8"Ω"), largest));
    addCurves(panel, sweeps, &Sweep::nyquist, isLegible(sweeps));
    panel.makeAxesEqual();
    labelDecades(panel, sweeps.front());
    return figure.save(path);
}

bool drawBode(const RunData &run, const std::vector<Sweep> &sweeps, const QString &path)
{
    Figure figure;
    figure.setTitle(run.title);
    Panel &magnitude = figure.addPanel();
    Panel &phase = figure.addPanel();
    for (Panel *panel : {&magnitude, &phase}) {
        panel->setHorizontalScale({1.0, QStringLiteral("Frequency / Hz")});
        panel->makeLogarithmic(QwtPlot::xBottom);
    }
    magnitude.setVerticalScale({1.0, QString::fromUtf8(u8"|Z| / Ω")});
    magnitude.makeLogarithmic(QwtPlot::yLeft);
    phase.setVerticalScale({1.0, QString::fromUtf8(u8"Phase / °")});
    addCurves(magnitude, sweeps, &Sweep::magnitude, isLegible(sweeps));
    addCurves(phase, sweeps, &Sweep::phase, false);
    magnitude.hideHorizontalTitle();
    return figure.save(path);
}

} // namespace

bool drawImpedance(const RunData &run, const QString &folder)
{
    std::vector<Sweep> sweeps = sweepsOf(run.ac);
    if (sweeps.empty())
        return true;
    numberSweeps(sweeps);
    const QDir directory(folder);
    const bool isNyquistDrawn = drawNyquist(run, sweeps, directory.filePath(QStringLiteral("nyquist")));
    return drawBode(run, sweeps, directory.filePath(QStringLiteral("bode"))) && isNyquistDrawn;
}

} // namespace plots
