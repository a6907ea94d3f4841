// SPDX-License-Identifier: MIT
#include "plots/TimePlot.h"

#include "lab/records/RunData.h"
#include "plots/Figure.h"
#include "plots/Series.h"

#include <QSet>

#include <algorithm>

namespace plots {

using namespace lab;

namespace {

constexpr std::size_t mostBands = 60;        ///< more would hide the curves
constexpr std::size_t mostNamedElements = 6; ///< elements that a legend can name
constexpr double spareTime = 0.01;           ///< behind the last sample, of the whole time

/// Light, so that curves and grid stay readable on it.
QColor bandColour(int step)
{
    return QColor::fromHsv((35 + step * 137) % 360, 22, 252);
}

QString bandName(const RunData &run, int step)
{
    const FileElement *element = run.element(step);
    return QStringLiteral("%1 %2").arg(QString::number(step), element ? element->className : QString());
}

/// Bands of one colour for each step; names only where the panel shows a legend.
void markSegments(Panel &panel, const RunData &run, bool isNamed)
{
    QSet<int> named;
    for (const Segment &segment : run.segments) {
        const double to = run.dc[std::min(segment.end, run.dc.size() - 1)].time;
        const bool takesName = isNamed && !named.contains(segment.step);
        named.insert(segment.step);
        panel.markSpan(run.dc[segment.begin].time, to, bandColour(segment.step),
                       takesName ? bandName(run, segment.step) : QString());
    }
}

/// From the start of the test to a little behind the last sample.
void fitTime(Panel &panel, const RunData &run)
{
    const auto [first, last] = std::minmax_element(
        run.dc.begin(), run.dc.end(), [](const Sample &left, const Sample &right) { return left.time < right.time; });
    const double from = std::min(0.0, first->time);
    panel.setHorizontalRange(from, last->time > from ? last->time + spareTime * (last->time - from) : from + 1.0);
}

Panel &addPanel(Figure &figure, const RunData &run, double Sample::*value, const QString &quantity, const QString &unit,
                const QColor &colour)
{
    const QVector<QPointF> curve = againstTime(run.dc, value);
    Panel &panel = figure.addPanel();
    panel.setHorizontalScale(timeScale(largestMagnitude(curve, &QPointF::x)));
    panel.setVerticalScale(prefixedScale(quantity, unit, largestMagnitude(curve, &QPointF::y)));
    panel.addCurve({}, curve, colour);
    fitTime(panel, run);
    return panel;
}

} // namespace

bool drawTimePlot(const RunData &run, const QString &path)
{
    Figure figure;
    figure.setTitle(run.title);
    Panel &voltage =
        addPanel(figure, run, &Sample::voltage, QStringLiteral("Voltage"), QStringLiteral("V"), curveColour(0));
    Panel &current =
        addPanel(figure, run, &Sample::current, QStringLiteral("Current"), QStringLiteral("A"), curveColour(1));
    if (run.segments.size() <= mostBands) {
        const bool hasLegend = run.experiment.elements.size() <= mostNamedElements;
        markSegments(voltage, run, hasLegend);
        markSegments(current, run, false);
        if (hasLegend)
            voltage.showLegend();
    }
    voltage.hideHorizontalTitle();
    return figure.save(path);
}

} // namespace plots
