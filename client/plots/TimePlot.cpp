#include "plots/TimePlot.h"

#include "plots/Figure.h"
#include "plots/RunData.h"
#include "plots/Series.h"

namespace client {

namespace {

constexpr int mostBoundaries = 60; ///< more would hide the curves
constexpr int mostLabels = 5;

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

void markSpans(Panel &panel, const std::vector<Span> &spans)
{
    if (spans.size() > mostBoundaries)
        return;
    for (std::size_t index = 1; index < spans.size(); ++index)
        panel.markBoundary(spans[index].from);
}

void labelSpans(Panel &panel, const std::vector<Span> &spans, const QStringList &elements)
{
    if (spans.size() > mostLabels)
        return;
    panel.updateAxes();
    for (const Span &span : spans)
        panel.labelSpan(span.from, span.to, elements.value(span.step - 1));
}

Panel &addPanel(Figure &figure, const RunData &run, const QString &heading, const QString &quantity,
                const QString &unit, const QColor &colour)
{
    const Column &time = run.dc.column(QStringLiteral("Test Time / s"));
    const Column &values = run.dc.column(heading);
    Panel &panel = figure.addPanel();
    panel.setHorizontalScale(timeScale(largestMagnitude(time)));
    panel.setVerticalScale(prefixedScale(quantity, unit, largestMagnitude(values)));
    panel.addCurve(quantity, pointsOf(time, values), colour);
    panel.setHorizontalRange(time.front(), time.back());
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
    markSpans(voltage, spans);
    markSpans(current, spans);
    labelSpans(voltage, spans, run.elements);
    return figure.save(path);
}

} // namespace client
