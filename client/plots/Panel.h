#pragma once

#include "plots/AxisScale.h"

#include <QColor>
#include <QPointF>
#include <QString>
#include <QVector>

#include <qwt_interval.h>
#include <qwt_plot.h>

namespace client {

/// The colours of curves, in the order of their use; told apart in print and by colour-blind readers too.
QColor curveColour(int index);

/// One coordinate system of a figure, dressed for print: white, black axes, inner grid in light grey.
class Panel : public QwtPlot
{
    Q_OBJECT

public:
    enum class Style { Line, Points, LineAndPoints };

    Panel();

    /// Curves appended later are divided by the scale's factor.
    void setHorizontalScale(const AxisScale &scale);
    void setVerticalScale(const AxisScale &scale);
    /// Decades instead of a linear axis; before the first curve.
    void makeLogarithmic(int axis);
    /// Gives both axes the same length for each unit; after the last curve.
    void makeAxesEqual();
    /// Points in base units. Long curves are thinned to what print resolves; points that are no numbers are left out.
    void addCurve(const QString &name, const QVector<QPointF> &points, const QColor &colour, Style style = Style::Line);
    /// A light band with a thin line at its beginning; a name goes into the legend.
    void markSpan(double from, double to, const QColor &colour, const QString &name);
    /// Names what has a name above the coordinate system.
    void showLegend();
    /// Fixes the horizontal axis; the vertical one takes the range of its curves and a margin.
    void setHorizontalRange(double from, double to);
    /// For a panel that shares its horizontal axis with the one below.
    void hideHorizontalTitle();

private:
    QwtInterval rangeOf(double (QPointF::*coordinate)() const) const;
    void leaveMargin();

    QVector<QPointF> _points;    // of all curves, thinned, in the units of the axes
    bool _isLogarithmic = false; // the vertical axis
    AxisScale _horizontal;
    AxisScale _vertical;
};

} // namespace client
