#include "plots/Panel.h"

#include "plots/Decimation.h"

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

#include <algorithm>
#include <cmath>

namespace client {

namespace {

constexpr int mostPointsOfCurve = 8000;
constexpr double curveWidth = 1.3;
constexpr double flatness = 1e-9; ///< relative range below which a curve counts as a constant
constexpr int symbolSize = 5;
constexpr int titleSpacing = 5;
const QColor gridColour(225, 225, 225);
const QColor boundaryColour(150, 150, 150);

QFont fontOf(int points)
{
    return QFont(QStringLiteral("DejaVu Sans"), points);
}

/// Writes numbers as print has them: a decimal point in every locale, thousands in one piece.
class NumberedScale : public QwtScaleDraw
{
public:
    QwtText label(double value) const override { return QString::number(value, 'g', 6); }
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

class Band : public QwtPlotZoneItem
{
public:
    explicit Band(const QString &name) { setTitle(name); }
    QwtGraphic legendIcon(int, const QSizeF &size) const override { return defaultIcon(brush(), size); }
};

QwtText titleText(const QString &title)
{
    QwtText text(title);
    text.setFont(fontOf(10));
    return text;
}

} // namespace

QColor curveColour(int index)
{
    static const QColor colours[] = {QColor(0, 90, 160),   QColor(200, 60, 20), QColor(0, 130, 90),
                                     QColor(150, 80, 150), QColor(190, 140, 0), QColor(80, 80, 80)};
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
        setAxisFont(axis, fontOf(9));
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
    _isLogarithmic = _isLogarithmic || axis == QwtPlot::yLeft;
}

void Panel::addCurve(const QString &name, const QVector<QPointF> &points, const QColor &colour, Style style)
{
    QVector<QPointF> scaled;
    scaled.reserve(points.size());
    for (const QPointF &point : points) {
        if (std::isfinite(point.x()) && std::isfinite(point.y()))
            scaled.append({point.x() / _horizontal.divisor, point.y() / _vertical.divisor});
    }
    auto *curve = new QwtPlotCurve(name);
    curve->setSamples(decimate(scaled, mostPointsOfCurve));
    curve->setRenderHint(QwtPlotItem::RenderAntialiased);
    curve->setPen(colour, curveWidth);
    curve->setLegendAttribute(QwtPlotCurve::LegendShowLine);
    if (style == Style::Points)
        curve->setStyle(QwtPlotCurve::NoCurve);
    if (style != Style::Line) {
        curve->setLegendAttribute(QwtPlotCurve::LegendShowSymbol);
        curve->setSymbol(new QwtSymbol(QwtSymbol::Ellipse, colour, Qt::NoPen, QSize(symbolSize, symbolSize)));
    }
    curve->setItemAttribute(QwtPlotItem::Legend, !name.isEmpty());
    curve->attach(this);
    _points += decimate(scaled, mostPointsOfCurve);
    leaveMargin();
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

/// Keeps a twentieth of the range free above and below, so that no curve runs along the frame.
void Panel::leaveMargin()
{
    const QwtInterval range = rangeOf(&QPointF::y);
    if (_isLogarithmic || !range.isValid())
        return;
    const double magnitude = std::max(std::abs(range.minValue()), std::abs(range.maxValue()));
    const bool isFlat = range.width() <= flatness * magnitude;
    const double margin = (isFlat ? std::max(magnitude, 1.0) : range.width()) / 20.0;
    setAxisScale(QwtPlot::yLeft, range.minValue() - margin, range.maxValue() + margin);
}

void Panel::makeAxesEqual()
{
    const QwtInterval horizontal = rangeOf(&QPointF::x);
    const QwtInterval vertical = rangeOf(&QPointF::y);
    if (!horizontal.isValid())
        return;
    updateLayout();
    plotLayout()->activate(this, rect(), QwtPlotLayout::IgnoreFrames | QwtPlotLayout::IgnoreScrollbars);
    const QRectF canvasArea = plotLayout()->canvasRect();
    const double unitsPerPixel =
        1.1 * std::max(horizontal.width() / canvasArea.width(), vertical.width() / canvasArea.height());
    const auto anchor = [unitsPerPixel](const QwtInterval &range, double pixels) {
        const double span = unitsPerPixel * pixels;
        const double from = range.minValue() - 0.04 * span;
        return QwtInterval(from, from + span);
    };
    const QwtInterval x = anchor(horizontal, canvasArea.width());
    const QwtInterval y = anchor(vertical, canvasArea.height());
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
    legend->setFont(fontOf(9));
    insertLegend(legend, QwtPlot::TopLegend);
}

void Panel::setHorizontalRange(double from, double to)
{
    setAxisScale(QwtPlot::xBottom, from / _horizontal.divisor, to / _horizontal.divisor);
}

void Panel::hideHorizontalTitle()
{
    setAxisTitle(QwtPlot::xBottom, QString());
}

} // namespace client
