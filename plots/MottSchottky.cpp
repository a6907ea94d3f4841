// SPDX-License-Identifier: MIT
#include "plots/MottSchottky.h"

#include "lab/notation/Units.h"
#include "lab/records/RunData.h"
#include "plots/Figure.h"

#include <QDir>

#include <algorithm>
#include <cmath>
#include <map>

namespace plots {

using namespace lab;

namespace {

constexpr std::size_t mostNamedFrequencies = 6;
constexpr double pi = 3.14159265358979323846;

using CurvesByFrequency = std::map<double, QVector<QPointF>, std::greater<>>;

bool isMottSchottky(const FileElement &element)
{
    return element.className == QLatin1String("MottSchottky");
}

double inverseSquareCapacitance(double frequency, double imaginaryPart)
{
    const double inverse = 2.0 * pi * frequency * imaginaryPart;
    return inverse * inverse;
}

CurvesByFrequency curvesOf(const std::vector<ImpedancePoint> &points, int step)
{
    CurvesByFrequency curves;
    for (const ImpedancePoint &point : points) {
        if (point.step == step)
            curves[point.frequency].append({point.bias, inverseSquareCapacitance(point.frequency, point.imaginary)});
    }
    return curves;
}

/// The power of ten that brings the largest number of all curves to one digit before the point.
int exponentOf(const CurvesByFrequency &curves)
{
    double largest = 0.0;
    for (const auto &[frequency, points] : curves) {
        for (const QPointF &point : points)
            largest = std::max(largest, point.y());
    }
    return largest > 0.0 ? static_cast<int>(std::floor(std::log10(largest))) : 0;
}

bool drawElement(const RunData &run, int step, const QString &path)
{
    const CurvesByFrequency curves = curvesOf(run.ac, step);
    if (curves.empty())
        return true; // the run ended before this element
    Figure figure(QSize(640, 420));
    figure.setTitle(run.title);
    Panel &panel = figure.addPanel();
    const int exponent = exponentOf(curves);
    panel.setHorizontalScale({1.0, QStringLiteral("Potential / V")});
    panel.setVerticalScale(
        {std::pow(10.0, exponent),
         QStringLiteral("<i>C</i><sup>&minus;2</sup> / 10<sup>%1</sup> F<sup>&minus;2</sup>").arg(exponent)});
    const bool isNamed = curves.size() <= mostNamedFrequencies;
    int index = 0;
    for (const auto &[frequency, points] : curves)
        panel.addCurve(isNamed ? formatQuantity(frequency, Dimension::Frequency) : QString(), points,
                       curveColour(index++), Panel::Style::LineAndPoints);
    if (isNamed)
        panel.showLegend();
    return figure.save(path);
}

} // namespace

bool drawMottSchottky(const RunData &run, const QString &folder)
{
    const auto &elements = run.experiment.elements;
    const auto count = std::count_if(elements.begin(), elements.end(), isMottSchottky);
    bool isDrawn = true;
    for (std::size_t index = 0; index < elements.size(); ++index) {
        const int step = static_cast<int>(index) + 1;
        const QString name =
            count == 1 ? QStringLiteral("mott-schottky") : QStringLiteral("mott-schottky-%1").arg(step);
        if (isMottSchottky(elements[index]))
            isDrawn = drawElement(run, step, QDir(folder).filePath(name)) && isDrawn;
    }
    return isDrawn;
}

} // namespace plots
