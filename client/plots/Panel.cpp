#include "plots/Panel.h"

#include "plots/Decimation.h"

#include <qwt_plot_curve.h>
#include <qwt_plot_grid.h>
#include <qwt_plot_layout.h>
#include <qwt_plot_legenditem.h>
#include <qwt_plot_marker.h>
#include <qwt_scale_engine.h>
#include <qwt_symbol.h>
#include <qwt_text.h>

#include <QFrame>

#include <cmath>

namespace client {

namespace {

constexpr int mostPointsOfCurve = 8000;
constexpr double curveWidth = 1.3;
constexpr int symbolSize = 5;
const QColor gridColour(225, 225, 225);
const QColor boundaryColour(150, 150, 150);

QFont fontOf(int points)
{
    return QFont(QStringLiteral("DejaVu Sans"), points);
}

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
        frame->setFrameStyle(QFrame::Box | QFrame::Plain);
    plotLayout()->setAlignCanvasToScales(true);
    for (const int axis : {QwtPlot::yLeft, QwtPlot::xBottom})
        setAxisFont(axis, fontOf(9));
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
    curve->attach(this);
}

void Panel::markBoundary(double horizontal)
{
    auto *marker = new QwtPlotMarker;
    marker->setLineStyle(QwtPlotMarker::VLine);
    marker->setLinePen(boundaryColour, 0.8, Qt::DashLine);
    marker->setXValue(horizontal / _horizontal.divisor);
    marker->setItemAttribute(QwtPlotItem::Legend, false);
    marker->attach(this);
}

void Panel::labelSpan(double from, double to, const QString &text)
{
    QwtText label(text);
    label.setFont(fontOf(8));
    label.setColor(QColor(90, 90, 90));
    auto *marker = new QwtPlotMarker;
    marker->setLabel(label);
    marker->setLabelAlignment(Qt::AlignHCenter | Qt::AlignBottom);
    marker->setLineStyle(QwtPlotMarker::NoLine);
    marker->setXValue((from + to) / 2.0 / _horizontal.divisor);
    marker->setYValue(axisInterval(QwtPlot::yLeft).maxValue());
    marker->attach(this);
}

void Panel::showLegend()
{
    auto *legend = new QwtPlotLegendItem;
    legend->setAlignment(Qt::AlignRight | Qt::AlignBottom);
    legend->setFont(fontOf(9));
    legend->setBackgroundBrush(QColor(255, 255, 255, 220));
    legend->setBorderPen(QPen(gridColour));
    legend->setMargin(4);
    legend->attach(this);
}

void Panel::setHorizontalRange(double from, double to)
{
    setAxisScale(QwtPlot::xBottom, from / _horizontal.divisor, to / _horizontal.divisor);
}

} // namespace client
