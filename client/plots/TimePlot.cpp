#include "plots/TimePlot.h"

#include "plots/Figure.h"
#include "plots/RunData.h"
#include "plots/Series.h"

#include <QSet>

#include <algorithm>

namespace client {

namespace {

constexpr int mostSpans = 60; ///< more bands would hide the curves
constexpr int mostNamed = 6;  ///< elements that a legend can name

/// Light, so that curves and grid stay readable on it.
QColor bandColour(int step)
{
    return QColor::fromHsv((35 + step * 137) % 360, 22, 252);
}

/// A stretch of rows that belong to one step of one cycle.
struct Span {
    double from;
    double to;
    int step;
};

std::vector<Span> spansOf(const RunData &run)
{
    const Column &time = run.dc.column(QStringLiteral("Test Time / s"));
    const Column &step = run.dc.column(QStringLiteral("Step Count / 1"));
    const Column &cycle = run.dc.column(QStringLiteral("Cycle Count / 1"));
    std::vector<Span> spans;
    for (std::size_t row = 0; row < time.size(); ++row) {
        const bool isNew = row == 0 || step[row] != step[row - 1] || cycle[row] != cycle[row - 1];
        if (isNew)
            spans.push_back({time[row], time[row], static_cast<int>(step[row])});
        spans.back().to = time[row];
    }
    return spans;
}

/// Bands of one colour for each step; names only where the panel shows a legend.
void markSpans(Panel &panel, const std::vector<Span> &spans, const QStringList &elements, bool isNamed)
{
    if (spans.size() > mostSpans)
        return;
    QSet<int> named;
    for (const Span &span : spans) {
        const bool takesName = isNamed && !named.contains(span.step);
        named.insert(span.step);
        const QString name = QStringLiteral("%1 %2").arg(QString::number(span.step), elements.value(span.step - 1));
        panel.markSpan(span.from, span.to, bandColour(span.step), takesName ? name : QString());
    }
}

Panel &addPanel(Figure &figure, const RunData &run, const QString &heading, const QString &quantity,
                const QString &unit, const QColor &colour)
{
    const Column &time = run.dc.column(QStringLiteral("Test Time / s"));
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
    Panel &voltage = addPanel(figure, run, QStringLiteral("Voltage / V"), QStringLiteral("Voltage"),
                              QStringLiteral("V"), curveColour(0));
    Panel &current = addPanel(figure, run, QStringLiteral("Current / A"), QStringLiteral("Current"),
                              QStringLiteral("A"), curveColour(1));
    const std::vector<Span> spans = spansOf(run);
    const bool hasLegend = run.elements.size() <= mostNamed && spans.size() <= mostSpans;
    markSpans(voltage, spans, run.elements, hasLegend);
    markSpans(current, spans, run.elements, false);
    if (hasLegend)
        voltage.showLegend();
    voltage.hideHorizontalTitle();
    return figure.save(path);
}

} // namespace client
