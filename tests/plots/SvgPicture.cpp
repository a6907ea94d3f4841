// SPDX-License-Identifier: MIT
#include "SvgPicture.h"

#include <QFile>
#include <QTransform>
#include <QXmlStreamReader>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

// How Figure and Panel write: sizes of letters in pixels of the picture, colours.
constexpr double labelSize = 12.5, exponentSize = 8.33, titleSize = 13.89, pointSize = 11.11;
constexpr double tickLength = 8.0, dotRadius = 2.5;
const QString gridColour = QStringLiteral("#e1e1e1");
const QString black = QStringLiteral("#000000");

struct Word {
    QPointF place;
    double size;
    QString text;
};

struct Shape {
    QString colour;
    QVector<QPointF> points;
    bool isDot;
};

/// What the file holds, in its order, in pixels.
struct Content {
    std::vector<QRectF> areas;
    std::vector<Word> words;
    std::vector<Shape> shapes;
};

bool isNear(double left, double right)
{
    return std::abs(left - right) < 0.3;
}

QTransform transformOf(const QStringRef &text)
{
    const QStringList numbers = text.mid(7, text.size() - 8).toString().split(','); // matrix(...)
    if (numbers.size() != 6)
        return {};
    return QTransform(numbers[0].toDouble(), numbers[1].toDouble(), numbers[2].toDouble(), numbers[3].toDouble(),
                      numbers[4].toDouble(), numbers[5].toDouble());
}

QVector<QPointF> pointsOf(const QStringRef &text, const QTransform &transform)
{
    QVector<QPointF> points;
    for (const QStringRef &pair : text.split(' ', Qt::SkipEmptyParts))
        points.append(transform.map(QPointF(pair.split(',')[0].toDouble(), pair.split(',')[1].toDouble())));
    return points;
}

Content readContent(QXmlStreamReader &xml)
{
    Content content;
    QTransform transform;
    QString stroke, fill;
    const auto number = [&xml](const char *name) { return xml.attributes().value(name).toDouble(); };
    while (!xml.atEnd()) {
        if (!xml.readNextStartElement())
            continue;
        if (xml.name() == "g") {
            transform = transformOf(xml.attributes().value("transform"));
            stroke = xml.attributes().value("stroke").toString();
            fill = xml.attributes().value("fill").toString();
        } else if (xml.name() == "rect" && fill == "#ffffff" && stroke == black) {
            content.areas.push_back({number("x"), number("y"), number("width"), number("height")});
        } else if (xml.name() == "polyline") {
            content.shapes.push_back({stroke, pointsOf(xml.attributes().value("points"), transform), false});
        } else if (xml.name() == "circle") {
            content.shapes.push_back({fill, {transform.map(QPointF(number("cx"), number("cy")))}, true});
        } else if (xml.name() == "text") {
            const QPointF place = transform.map(QPointF(number("x"), number("y")));
            const double size = number("font-size");
            content.words.push_back({place, size, xml.readElementText()});
        }
    }
    return content;
}

/// The numbers at the ticks of an axis, or where they stand in pixels, and how to read between them.
class Axis
{
public:
    void addTick(double pixel) { _ticks.append(pixel); }
    /// @param isExponent belongs to the label before it, whose power of ten it is
    void addLabel(double pixel, const QString &text, bool isExponent)
    {
        if (isExponent && !_labels.isEmpty())
            _labels.last().second += "e" + text;
        else
            _labels.append({pixel, text});
    }

    QStringList labels() const
    {
        QStringList texts;
        for (const auto &[pixel, text] : _labels)
            texts.append(text);
        return texts;
    }

    void sort(bool fromBelow)
    {
        std::sort(_ticks.begin(), _ticks.end());
        std::stable_sort(_labels.begin(), _labels.end(),
                         [](const auto &left, const auto &right) { return left.first < right.first; });
        if (!fromBelow)
            return;
        std::reverse(_ticks.begin(), _ticks.end());
        std::reverse(_labels.begin(), _labels.end());
    }

    double valueAt(double pixel) const
    {
        if (_ticks.size() < 2 || _ticks.size() != _labels.size())
            return std::nan("");
        const double share = shareOf(pixel);
        return isLogarithmic() ? std::pow(10.0, between(share, std::log10(number(0)), std::log10(number(-1))))
                               : between(share, number(0), number(-1));
    }

private:
    static double between(double share, double first, double last) { return first + share * (last - first); }
    double shareOf(double pixel) const { return (pixel - _ticks.first()) / (_ticks.last() - _ticks.first()); }

    /// Of the label of that place; -1 is the last one.
    double number(int place) const
    {
        const QString text = _labels[place < 0 ? _labels.size() + place : place].second;
        return text.startsWith("10e") ? std::pow(10.0, text.mid(3).toDouble()) : text.toDouble();
    }

    /// As its numbers stand: evenly, or as their logarithms are.
    bool isLogarithmic() const
    {
        if (_labels.first().second.startsWith("10e"))
            return true;
        const double linear = between(shareOf(_ticks[1]), number(0), number(-1));
        return std::abs(linear - number(1)) > 0.01 * std::abs(number(-1) - number(0));
    }

    QVector<double> _ticks;
    QVector<QPair<double, QString>> _labels;
};

/// Reads one panel out of the content, which stands between two heights.
class PanelReader
{
public:
    PanelReader(const QRectF &area, double top, double bottom) : _top(top), _bottom(bottom) { _panel.area = area; }

    DrawnPanel read(const Content &content)
    {
        for (const Word &word : content.words)
            takeWord(word);
        for (const Shape &shape : content.shapes)
            takeTick(shape);
        _horizontal.sort(false);
        _vertical.sort(true);
        _panel.horizontalLabels = _horizontal.labels();
        _panel.verticalLabels = _vertical.labels();
        for (const Shape &shape : content.shapes)
            takeCurve(shape);
        return _panel;
    }

private:
    void takeWord(const Word &word)
    {
        const QRectF &area = _panel.area;
        if (word.place.y() < _top || word.place.y() > _bottom)
            return;
        const bool isBelow = word.place.y() > area.bottom() + 10;
        const bool isExponent = isNear(word.size, exponentSize);
        if (!isExponent)
            _isInTitle = isNear(word.size, titleSize);
        if (_isInTitle)
            (isBelow ? _panel.horizontalTitle : _panel.verticalTitle) += word.text;
        else if (isNear(word.size, pointSize))
            _panel.pointLabels.append(word.text);
        else if (word.place.y() < area.top() - 8)
            _panel.legend.append(word.text);
        else if (isNear(word.size, labelSize) || isExponent)
            (isBelow ? _horizontal : _vertical)
                .addLabel(isBelow ? word.place.x() : word.place.y(), word.text, isExponent);
    }

    bool holds(const QPointF &point) const { return _panel.area.adjusted(-2, -2, 2, 2).contains(point); }

    /// The long ticks, which begin at the frame.
    void takeTick(const Shape &shape)
    {
        if (shape.colour != black || shape.points.size() != 2)
            return;
        const QPointF from = shape.points.first(), length = shape.points.last() - from;
        const QRectF &area = _panel.area;
        if (isNear(length.x(), -tickLength) && isNear(length.y(), 0) && from.y() > area.top() - 3 &&
            from.y() < area.bottom() + 3)
            _vertical.addTick(from.y());
        if (isNear(length.y(), tickLength) && isNear(length.x(), 0) && std::abs(from.y() - area.bottom()) < 3)
            _horizontal.addTick(from.x());
    }

    void takeCurve(const Shape &shape)
    {
        const bool isDressing = shape.colour == gridColour || shape.colour == black;
        if (isDressing || shape.points.isEmpty() || !holds(shape.points.first()))
            return;
        DrawnLine line{shape.colour, {}};
        for (const QPointF &point : shape.points)
            line.points.append({_horizontal.valueAt(point.x()), _vertical.valueAt(point.y())});
        if (shape.isDot)
            _panel.dotBounds |=
                QRectF(shape.points.first() - QPointF(dotRadius, dotRadius), 2.0 * QSizeF(dotRadius, dotRadius));
        if (!shape.isDot)
            _panel.lines.push_back(line);
        else if (_panel.dots.empty() || _panel.dots.back().colour != line.colour)
            _panel.dots.push_back(line);
        else
            _panel.dots.back().points += line.points;
    }

    DrawnPanel _panel;
    double _top;
    double _bottom;
    Axis _horizontal;
    Axis _vertical;
    bool _isInTitle = false; // the word before
};

} // namespace

QVector<QPointF> DrawnPanel::linePoints(const QString &colour) const
{
    QVector<QPointF> points;
    for (const DrawnLine &line : lines) {
        if (colour.isEmpty() || line.colour == colour)
            points += line.points;
    }
    return points;
}

std::vector<DrawnPanel> readPicture(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QXmlStreamReader xml(&file);
    const Content content = readContent(xml);
    std::vector<DrawnPanel> panels;
    constexpr double heightOfTitle = 30.0, heightOfNumbers = 28.0, heightOfLabel = 8.0;
    double top = heightOfTitle;
    for (std::size_t index = 0; index < content.areas.size(); ++index) {
        const bool isLast = index + 1 == content.areas.size();
        const double bottom =
            isLast ? std::numeric_limits<double>::max() : content.areas[index + 1].top() - heightOfLabel;
        panels.push_back(PanelReader(content.areas[index], top, bottom).read(content));
        top = content.areas[index].bottom() + heightOfNumbers;
    }
    return panels;
}
