// SPDX-License-Identifier: MIT
#pragma once

#include "plots/AxisScale.h"

#include <QColor>
#include <QPointF>
#include <QSet>
#include <QString>
#include <QVector>

#include <qwt_interval.h>
#include <qwt_plot.h>

namespace plots {

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
    /// Points in base units. Long curves are thinned to what print resolves. The line breaks off at a point that is no
    /// number; a point alone between two breaks becomes a dot. A name stands in the legend once.
    void addCurve(const QString &name, const QVector<QPointF> &points, const QColor &colour, Style style = Style::Line);
    /// A light band with a thin line at its beginning; a name goes into the legend.
    void markSpan(double from, double to, const QColor &colour, const QString &name);
    /// Writes a few words beside a point where they hide the least, if there is place; after makeAxesEqual().
    void labelPoint(const QPointF &point, const QString &text);
    /// Names what has a name above the coordinate system.
    void showLegend();
    /// Fixes the horizontal axis; without this it takes the range of its curves and a margin.
    void setHorizontalRange(double from, double to);
    /// Fixes the horizontal axis for whole numbers, with room for half of one at both ends.
    void countFrom(int first, int last);
    /// Fixes the vertical axis for most points of the curves; those beyond are marked at its end, with their value.
    void setVerticalRange(double from, double to);
    /// For a panel that shares its horizontal axis with the one below.
    void hideHorizontalTitle();
    /// Where the coordinate system lies in the panel, in pixels.
    QRectF canvasArea();

private:
    struct LabelSide {
        Qt::Alignment alignment;
        QRectF place; ///< in pixels of the canvas
    };

    QwtInterval rangeOf(double (QPointF::*coordinate)() const) const;
    void leaveMargin(int axis, double (QPointF::*coordinate)() const, double share);
    void leaveLogarithmicMargin(int axis, const QwtInterval &range);
    QPointF pixelOf(const QPointF &point) const;
    int hiddenBy(const QRectF &pixels) const;
    LabelSide bestSide(const QPointF &pixel, const QSizeF &size);
    void markBeyond(const QPointF &place, bool isAbove, double value);

    QVector<QPointF> _points; // of all curves, thinned, in the units of the axes; no breaks
    QVector<QRectF> _labels;  // in pixels of the canvas
    QSet<QString> _names;     // in the legend
    bool _isLogarithmic[QwtPlot::axisCnt] = {};
    bool _isFixed[QwtPlot::axisCnt] = {};
    AxisScale _horizontal;
    AxisScale _vertical;
};

} // namespace plots
