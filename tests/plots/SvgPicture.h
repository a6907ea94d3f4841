// SPDX-License-Identifier: MIT
#pragma once

#include <QPointF>
#include <QRectF>
#include <QString>
#include <QStringList>
#include <QVector>

#include <vector>

/// A line of a picture, or a dot, in the numbers of the axes.
struct DrawnLine {
    QString colour;
    QVector<QPointF> points;
};

/// One coordinate system as somebody reads it who holds a ruler to the labels of its axes.
struct DrawnPanel {
    QRectF area; ///< in pixels
    QString horizontalTitle;
    QString verticalTitle;
    QStringList horizontalLabels; ///< from left to right
    QStringList verticalLabels;   ///< from below
    QStringList legend;
    QStringList pointLabels;
    std::vector<DrawnLine> lines; ///< in the order in which they were drawn
    std::vector<DrawnLine> dots;  ///< the symbols of one colour each
    QRectF dotBounds;             ///< what they take, in pixels

    /// All points of the lines of a colour, or of all lines.
    QVector<QPointF> linePoints(const QString &colour = {}) const;
};

/// Reads a picture that Figure has written. @return its panels from above; none for one that cannot be read
std::vector<DrawnPanel> readPicture(const QString &path);
