#include "plots/TimePlot.h"

#include "plots/Figure.h"
#include "plots/RunData.h"
#include "plots/Series.h"

#include <QSet>

#include <algorithm>

namespace client {

namespace {

constexpr std::size_t mostBands = 60; ///< more would hide the curves
constexpr std::size_t mostNamed = 6;  ///< elements that a legend can name

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
    const Column &time = run.dc.column("Test Time / s");
    QSet<int> named;
    for (const Segment &segment : run.segments) {
        const double to = segment.end < time.size() ? time[segment.end] : time.back();
        const bool takesName = isNamed && !named.contains(segment.step);
        named.insert(segment.step);
        panel.markSpan(time[segment.begin], to, bandColour(segment.step),
                       takesName ? bandName(run, segment.step) : QString());
    }
}

Panel &addPanel(Figure &figure, const RunData &run, const char *heading, const QString &quantity, const QString &unit,
                const QColor &colour)
{
    const Column &time = run.dc.column("Test Time / s");
    const Column &values = run.dc.column(heading);
    Panel &panel = figure.addPanel();
    panel.setHorizontalScale(timeScale(largestMagnitude(time)));
    panel.setVerticalScale(prefixedScale(quantity, unit, largestMagnitude(values)));
    panel.addCurve({}, pointsOf(time, values), colour);
    panel.setHorizontalRange(std::min(0.0, time.front()), time.back());
    return panel;
}

} // namespace

bool drawTimePlot(const RunData &run, const QString &path)
{
    Figure figure;
    figure.setTitle(run.title);
    Panel &voltage =
        addPanel(figure, run, "Voltage / V", QStringLiteral("Voltage"), QStringLiteral("V"), curveColour(0));
    Panel &current =
        addPanel(figure, run, "Current / A", QStringLiteral("Current"), QStringLiteral("A"), curveColour(1));
    if (run.segments.size() <= mostBands) {
        const bool hasLegend = run.experiment.elements.size() <= mostNamed;
        markSegments(voltage, run, hasLegend);
        markSegments(current, run, false);
        if (hasLegend)
            voltage.showLegend();
    }
    voltage.hideHorizontalTitle();
    return figure.save(path);
}

} // namespace client
