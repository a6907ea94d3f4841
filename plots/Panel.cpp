// SPDX-License-Identifier: MIT
#include "plots/Panel.h"

#include "plots/Decimation.h"
#include "plots/Fonts.h"

#include <qwt_legend.h>
#include <qwt_plot_curve.h>
#include <qwt_plot_grid.h>
#include <qwt_plot_layout.h>
#include <qwt_plot_marker.h>
#include <qwt_plot_zoneitem.h>
#include <qwt_scale_draw.h>
#include <qwt_scale_engine.h>
#include <qwt_scale_widget.h>
#include <qwt_symbol.h>
#include <qwt_text.h>

#include <QFrame>
#include <QPainter>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace plots {

namespace {

constexpr int mostPointsOfCurve = 8000;
constexpr qint64 fewestOfStretch = 8;
constexpr double curveWidth = 1.3;
constexpr double dotRadius = 1.3;
constexpr double horizontalMargin = 0.03; ///< of the range, so that no point is cut by the frame
constexpr double verticalMargin = 0.05;
constexpr int mostCounted = 12; ///< numbers that an axis has place for one by one
constexpr double logarithmicMargin = 0.03;
constexpr double shortAxis = 200.0;   ///< ends of an axis whose decades are too few to read it by
constexpr double shortestAxis = 10.0; ///< the same of one that needs every digit
constexpr double flatness = 1e-9;     ///< relative range below which a curve counts as a constant
constexpr int symbolSize = 5;
constexpr int titleSpacing = 5;
const QColor gridColour(225, 225, 225);
const QColor boundaryColour(150, 150, 150);

int exponentOf(double value)
{
    return static_cast<int>(std::floor(std::log10(std::abs(value))));
}

/// Writes numbers as print has them: a decimal point in every locale, thousands in one piece, and as many digits as
/// tell one tick from the next.
class NumberedScale : public QwtScaleDraw
{
public:
    QwtText label(double value) const override
    {
        const QList<double> ticks = scaleDiv().ticks(QwtScaleDiv::MajorTick);
        const double step = ticks.size() > 1 ? std::abs(ticks[1] - ticks[0]) : 0.0;
        if (std::abs(value) <= step * 1e-6)
            return QStringLiteral("0");
        const int needed = step > 0.0 ? exponentOf(value) - exponentOf(step) + 2 : 0;
        return QString::number(value, 'g', std::clamp(needed, 6, 15));
    }
};

/// Writes powers of ten as such; a short axis has other numbers between them.
class DecadeScale : public QwtScaleDraw
{
public:
    QwtText label(double value) const override
    {
        const double exponent = std::round(std::log10(value));
        if (std::abs(value / std::pow(10.0, exponent) - 1.0) > 1e-6)
            return QString::number(value, 'g', 4);
        return QwtText(QStringLiteral("10<sup>%1</sup>").arg(exponent), QwtText::RichText);
    }
};

/// A curve whose line breaks off before some of its points.
class BrokenCurve : public QwtPlotCurve
{
public:
    /// @param stretches the first points of all stretches, and behind them the number of points
    BrokenCurve(const QString &name, const QVector<int> &stretches) : QwtPlotCurve(name), _stretches(stretches) {}

protected:
    void drawCurve(QPainter *painter, int style, const QwtScaleMap &xMap, const QwtScaleMap &yMap, const QRectF &canvas,
                   int, int) const override
    {
        for (int index = 0; index + 1 < _stretches.size(); ++index) {
            const int from = _stretches[index];
            const int to = _stretches[index + 1] - 1;
            if (to > from)
                QwtPlotCurve::drawCurve(painter, style, xMap, yMap, canvas, from, to);
            else if (style != NoCurve)
                drawDot(painter, xMap, yMap, from);
        }
    }

private:
    void drawDot(QPainter *painter, const QwtScaleMap &xMap, const QwtScaleMap &yMap, int index) const
    {
        const QPointF centre(xMap.transform(sample(index).x()), yMap.transform(sample(index).y()));
        painter->save();
        painter->setBrush(pen().color());
        painter->setPen(Qt::NoPen);
        painter->drawEllipse(centre, dotRadius, dotRadius);
        painter->restore();
    }

    QVector<int> _stretches;
};

/// The points of a curve without its breaks, scaled and thinned, and where its stretches begin.
struct Stretches {
    QVector<QPointF> points;
    QVector<int> begins; ///< and the number of points behind them

    void append(const QVector<QPointF> &stretch, qint64 allPoints)
    {
        if (stretch.isEmpty())
            return;
        begins.append(points.size());
        const qint64 share = mostPointsOfCurve * qint64(stretch.size()) / allPoints;
        points += decimate(stretch, static_cast<int>(std::max(fewestOfStretch, share)));
    }
};

class Band : public QwtPlotZoneItem
{
public:
    explicit Band(const QString &name) { setTitle(name); }
    QwtGraphic legendIcon(int, const QSizeF &size) const override { return defaultIcon(brush(), size); }
    /// Leaves the frame free.
    void draw(QPainter *painter, const QwtScaleMap &xMap, const QwtScaleMap &yMap, const QRectF &canvas) const override
    {
        QwtPlotZoneItem::draw(painter, xMap, yMap, canvas.adjusted(0, 1, 0, -1));
    }
};

QwtText titleText(const QString &title)
{
    QwtText text(title);
    text.setFont(pictureFont(10));
    return text;
}

} // namespace

QColor curveColour(int index)
{
    static const QColor colours[] = {QColor(0, 90, 160),   QColor(200, 60, 20), QColor(0, 130, 90),
                                     QColor(150, 80, 150), QColor(190, 140, 0), QColor(80, 80, 80),
                                     QColor(60, 170, 210), QColor(120, 60, 30)};
    return colours[static_cast<std::size_t>(index) % std::size(colours)];
}

Panel::Panel()
{
    setAutoReplot(false);
    setCanvasBackground(Qt::white);
    if (auto *frame = qobject_cast<QFrame *>(canvas()))
        frame->setFrameStyle(QFrame::NoFrame); // the renderer draws the axes as a frame
    plotLayout()->setAlignCanvasToScales(true);
    for (const int axis : {QwtPlot::yLeft, QwtPlot::xBottom}) {
        setAxisScaleDraw(axis, new NumberedScale);
        setAxisFont(axis, pictureFont(9));
        axisWidget(axis)->setSpacing(titleSpacing);
    }
    auto *grid = new QwtPlotGrid;
    grid->setMajorPen(gridColour, 0.6);
    grid->attach(this);
}

void Panel::setHorizontalScale(const AxisScale &scale)
{
    _horizontal = scale;
    setAxisTitle(QwtPlot::xBottom, titleText(scale.title));
}

void Panel::setVerticalScale(const AxisScale &scale)
{
    _vertical = scale;
    setAxisTitle(QwtPlot::yLeft, titleText(scale.title));
}

void Panel::makeLogarithmic(int axis)
{
    setAxisScaleEngine(axis, new QwtLogScaleEngine);
    setAxisScaleDraw(axis, new DecadeScale);
    _isLogarithmic[axis] = true;
}

void Panel::addCurve(const QString &name, const QVector<QPointF> &points, const QColor &colour, Style style)
{
    Stretches stretches;
    QVector<QPointF> stretch;
    for (const QPointF &point : points) {
        const QPointF scaled(point.x() / _horizontal.divisor, point.y() / _vertical.divisor);
        if (std::isfinite(scaled.x()) && std::isfinite(scaled.y())) {
            stretch.append(scaled);
            continue;
        }
        stretches.append(stretch, points.size());
        stretch.clear();
    }
    stretches.append(stretch, points.size());
    stretches.begins.append(stretches.points.size());

    auto *curve = new BrokenCurve(name, stretches.begins);
    curve->setSamples(stretches.points);
    curve->setRenderHint(QwtPlotItem::RenderAntialiased);
    curve->setPen(colour, curveWidth);
    curve->setLegendAttribute(QwtPlotCurve::LegendShowLine, style != Style::Points);
    if (style == Style::Points)
        curve->setStyle(QwtPlotCurve::NoCurve);
    if (style != Style::Line) {
        curve->setLegendAttribute(QwtPlotCurve::LegendShowSymbol);
        curve->setSymbol(new QwtSymbol(QwtSymbol::Ellipse, colour, Qt::NoPen, QSize(symbolSize, symbolSize)));
    }
    curve->setItemAttribute(QwtPlotItem::Legend, !name.isEmpty() && !_names.contains(name));
    curve->attach(this);
    _names.insert(name);
    _points += stretches.points;
    leaveMargin(QwtPlot::xBottom, &QPointF::x, horizontalMargin);
    leaveMargin(QwtPlot::yLeft, &QPointF::y, verticalMargin);
}

QwtInterval Panel::rangeOf(double (QPointF::*coordinate)() const) const
{
    if (_points.isEmpty())
        return {};
    const double first = (_points.first().*coordinate)();
    QwtInterval range(first, first);
    for (const QPointF &point : _points)
        range |= (point.*coordinate)();
    return range;
}

/// Keeps a share of the range free at both ends, so that nothing lies on the frame.
void Panel::leaveMargin(int axis, double (QPointF::*coordinate)() const, double share)
{
    const QwtInterval range = rangeOf(coordinate);
    if (_isFixed[axis] || !range.isValid())
        return;
    if (_isLogarithmic[axis])
        return leaveLogarithmicMargin(axis, range);
    const double magnitude = std::max(std::abs(range.minValue()), std::abs(range.maxValue()));
    const bool isFlat = range.width() <= flatness * magnitude;
    const double margin = (isFlat ? (magnitude > 0.0 ? magnitude : 1.0) : range.width()) * share;
    setAxisScale(axis, range.minValue() - margin, range.maxValue() + margin);
}

/// An axis of few decades has numbers between them too.
void Panel::leaveLogarithmicMargin(int axis, const QwtInterval &range)
{
    if (range.minValue() <= 0.0)
        return;
    const double factor = std::pow(2.0 * range.maxValue() / range.minValue(), logarithmicMargin);
    const double from = range.minValue() / factor, to = range.maxValue() * factor;
    setAxisScale(axis, from, to);
    if (to / from > shortAxis)
        return;
    setAxisScaleDraw(axis, new NumberedScale);
    QList<double> ticks[QwtScaleDiv::NTickTypes];
    for (double decade = std::pow(10.0, std::floor(std::log10(from))); decade < to; decade *= 10.0) {
        for (int digit = 1; digit < 10; ++digit) {
            const bool isMajor = digit == 1 || digit == 2 || digit == 5 || to / from < shortestAxis;
            if (digit * decade > from && digit * decade < to)
                ticks[isMajor ? QwtScaleDiv::MajorTick : QwtScaleDiv::MinorTick].append(digit * decade);
        }
    }
    if (ticks[QwtScaleDiv::MajorTick].size() > 1)
        return setAxisScaleDiv(axis, QwtScaleDiv(from, to, ticks));
    setAxisScaleEngine(axis, new QwtLinearScaleEngine); // so short that both kinds look alike
}

QRectF Panel::canvasArea()
{
    updateLayout(); // gives the axes their lengths, on which the room for the labels at their ends depends
    updateAxes();
    updateLayout();
    plotLayout()->activate(this, rect(), QwtPlotLayout::IgnoreFrames | QwtPlotLayout::IgnoreScrollbars);
    return plotLayout()->canvasRect();
}

void Panel::makeAxesEqual()
{
    const QwtInterval horizontal = rangeOf(&QPointF::x);
    const QwtInterval vertical = rangeOf(&QPointF::y);
    if (!horizontal.isValid())
        return;
    const QRectF area = canvasArea();
    const double widest = std::max(horizontal.width() / area.width(), vertical.width() / area.height());
    const double unitsPerPixel = widest > 0.0 ? 1.1 * widest : 0.1 * std::abs(horizontal.minValue()) / area.width();
    const auto anchor = [unitsPerPixel](const QwtInterval &range, double pixels) {
        const double span = unitsPerPixel * pixels;
        const double from = range.minValue() - 0.04 * span;
        return QwtInterval(from, from + span);
    };
    const QwtInterval x = anchor(horizontal, area.width());
    const QwtInterval y = anchor(vertical, area.height());
    setAxisScale(QwtPlot::xBottom, x.minValue(), x.maxValue());
    setAxisScale(QwtPlot::yLeft, y.minValue(), y.maxValue());
}

void Panel::markSpan(double from, double to, const QColor &colour, const QString &name)
{
    auto *band = new Band(name);
    band->setOrientation(Qt::Vertical);
    band->setInterval(from / _horizontal.divisor, to / _horizontal.divisor);
    band->setBrush(colour);
    band->setPen(QPen(Qt::NoPen));
    band->setItemAttribute(QwtPlotItem::Legend, !name.isEmpty());
    band->attach(this);
    auto *line = new QwtPlotMarker;
    line->setLineStyle(QwtPlotMarker::VLine);
    line->setLinePen(boundaryColour, 0.8, Qt::DashLine);
    line->setXValue(from / _horizontal.divisor);
    line->setZ(band->z() + 1); // under the curves
    line->attach(this);
}

void Panel::showLegend()
{
    auto *legend = new QwtLegend;
    legend->setFont(pictureFont(9));
    insertLegend(legend, QwtPlot::TopLegend);
}

void Panel::setHorizontalRange(double from, double to)
{
    _isFixed[QwtPlot::xBottom] = true;
    setAxisScale(QwtPlot::xBottom, from / _horizontal.divisor, to / _horizontal.divisor);
}

void Panel::countFrom(int first, int last)
{
    _isFixed[QwtPlot::xBottom] = true;
    const bool isShort = last - first < mostCounted;
    setAxisScale(QwtPlot::xBottom, first - 0.5, last + 0.5, isShort ? 1.0 : 0.0);
    if (isShort)
        setAxisMaxMinor(QwtPlot::xBottom, 0);
}

void Panel::setVerticalRange(double from, double to)
{
    _isFixed[QwtPlot::yLeft] = true;
    const double margin = (to > from ? to - from : std::max(1.0, std::abs(to)) * 0.01) * 2.0 * verticalMargin;
    const double lowest = (from - margin) / _vertical.divisor;
    const double highest = (to + margin) / _vertical.divisor;
    setAxisScale(QwtPlot::yLeft, lowest, highest);
    for (const QPointF &point : _points) {
        if (point.y() < lowest || point.y() > highest)
            markBeyond({point.x(), point.y() > highest ? highest : lowest}, point.y() > highest, point.y());
    }
}

/// An arrow at the end of the axis, beside it the value that lies beyond.
void Panel::markBeyond(const QPointF &place, bool isAbove, double value)
{
    constexpr QSize arrow(8, 8);
    auto *marker = new QwtPlotMarker;
    marker->setSymbol(
        new QwtSymbol(isAbove ? QwtSymbol::UTriangle : QwtSymbol::DTriangle, boundaryColour, Qt::NoPen, arrow));
    marker->setValue(place);
    QwtText text(QString::number(value, 'g', 4));
    text.setFont(pictureFont(8));
    marker->setLabel(text);
    marker->setLabelAlignment(Qt::AlignRight | (isAbove ? Qt::AlignBottom : Qt::AlignTop));
    marker->attach(this);
}

QPointF Panel::pixelOf(const QPointF &point) const
{
    return {canvasMap(QwtPlot::xBottom).transform(point.x()), canvasMap(QwtPlot::yLeft).transform(point.y())};
}

/// How much of the curves a place would hide.
int Panel::hiddenBy(const QRectF &pixels) const
{
    constexpr int parts = 8; // of the way from one point to the next
    int count = 0;
    for (int index = 1; index < _points.size(); ++index) {
        const QPointF from = pixelOf(_points[index - 1]), way = pixelOf(_points[index]) - from;
        for (int part = 0; part < parts; ++part)
            count += pixels.contains(from + way * part / parts);
    }
    return count;
}

/// The side of a point on which a label hides the least of the curves. Its place is empty where there is none.
Panel::LabelSide Panel::bestSide(const QPointF &pixel, const QSizeF &size)
{
    const QRectF canvas(QPointF(), canvasArea().size());
    const double aside = size.width() / 2 + symbolSize, above = size.height() / 2 + symbolSize;
    const std::pair<Qt::Alignment, QPointF> sides[] = {{Qt::AlignTop | Qt::AlignHCenter, {0, -above}},
                                                       {Qt::AlignRight | Qt::AlignVCenter, {aside, 0}},
                                                       {Qt::AlignLeft | Qt::AlignVCenter, {-aside, 0}},
                                                       {Qt::AlignBottom | Qt::AlignHCenter, {0, above}}};
    int fewest = std::numeric_limits<int>::max();
    LabelSide best;
    for (const auto &[alignment, offset] : sides) {
        QRectF place(QPointF(), size);
        place.moveCenter(pixel + offset);
        const bool isTaken = std::any_of(_labels.begin(), _labels.end(),
                                         [&place](const QRectF &other) { return other.intersects(place); });
        const int hidden = hiddenBy(place);
        if (isTaken || hidden >= fewest || !canvas.contains(place))
            continue;
        fewest = hidden;
        best = {alignment, place};
    }
    return best;
}

void Panel::labelPoint(const QPointF &point, const QString &text)
{
    QwtText label(text);
    label.setFont(pictureFont(8));
    canvasArea(); // lays out what the maps need
    const QPointF scaled(point.x() / _horizontal.divisor, point.y() / _vertical.divisor);
    const LabelSide side = bestSide(pixelOf(scaled), label.textSize());
    if (side.place.isEmpty())
        return;
    _labels.append(side.place);
    auto *marker = new QwtPlotMarker;
    marker->setValue(scaled);
    marker->setLabel(label);
    marker->setLabelAlignment(side.alignment);
    marker->setSpacing(symbolSize);
    marker->attach(this);
}

void Panel::hideHorizontalTitle()
{
    setAxisTitle(QwtPlot::xBottom, QString());
}

} // namespace plots
