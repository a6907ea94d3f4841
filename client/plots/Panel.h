#pragma once

#include "plots/AxisScale.h"

#include <QColor>
#include <QPointF>
#include <QString>
#include <QVector>

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
    void makeLogarithmic(int axis);
    /// Points in base units. Long curves are thinned to what print resolves; points that are no numbers are left out.
    void addCurve(const QString &name, const QVector<QPointF> &points, const QColor &colour, Style style = Style::Line);
    /// A thin vertical line.
    void markBoundary(double horizontal);
    /// A text at the upper edge, centred between two positions.
    void labelSpan(double from, double to, const QString &text);
    /// Names the curves inside the coordinate system.
    void showLegend();
    /// Ends the axis with the data.
    void setHorizontalRange(double from, double to);

private:
    AxisScale _horizontal;
    AxisScale _vertical;
};

} // namespace client
