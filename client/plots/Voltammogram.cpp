#include "plots/Voltammogram.h"

#include "VekDataManipulator.h"
#include "VekDiffPulseVoltammetryElement.h"
#include "VekNormalPulseVoltammetryElement.h"
#include "VekSquareWaveVoltammetryElement.h"
#include "plots/Figure.h"
#include "plots/RunData.h"
#include "plots/Series.h"

#include <QDir>

#include <algorithm>
#include <map>

namespace client {

namespace {

constexpr std::size_t mostNamedSweeps = 8;

/// The levels of a complete pulse as a point of the picture.
using PulsePoint = QPointF (*)(const VekDataManipulator &);

QPointF pulseLevel(const VekDataManipulator &pulse)
{
    return {pulse.getPulseVoltage(), pulse.getPulseCurrent()};
}

QPointF differenceOverBase(const VekDataManipulator &pulse)
{
    return {pulse.getBaseVoltage(), pulse.getPulseCurrent() - pulse.getBaseCurrent()};
}

/// The two levels of a square wave lie around the step of the staircase.
QPointF differenceOverMiddle(const VekDataManipulator &pulse)
{
    return {(pulse.getBaseVoltage() + pulse.getPulseVoltage()) / 2.0, pulse.getPulseCurrent() - pulse.getBaseCurrent()};
}

template <typename Element>
std::unique_ptr<VekDataManipulator> manipulatorFor(const VekAbstractElement &element)
{
    return std::make_unique<VekDataManipulator>(static_cast<const Element &>(element));
}

/// How the samples of an element become a curve.
struct CourseRow {
    const char *className;
    const char *quantity;
    std::unique_ptr<VekDataManipulator> (*makeManipulator)(const VekAbstractElement &); ///< null: every sample counts
    PulsePoint point;
};

constexpr CourseRow courseRows[] = {
    {"CyclicVoltammetry", "Current", nullptr, nullptr},
    {"DCPotentialSweep", "Current", nullptr, nullptr},
    {"StaircasePotentialVoltammetry", "Current", nullptr, nullptr},
    {"NormalPulseVoltammetry", "Current", manipulatorFor<VekNormalPulseVoltammetryElement>, pulseLevel},
    {"DiffPulseVoltammetry", "Current difference", manipulatorFor<VekDiffPulseVoltammetryElement>, differenceOverBase},
    {"SquareWaveVoltammetry", "Current difference", manipulatorFor<VekSquareWaveVoltammetryElement>,
     differenceOverMiddle},
};

const CourseRow *courseOf(const FileElement &element)
{
    for (const CourseRow &row : courseRows) {
        if (element.className == QLatin1String(row.className))
            return &row;
    }
    return nullptr;
}

VekDCData sampleAt(const Table &dc, std::size_t row)
{
    VekDCData data;
    data.timestamp = dc.column("Test Time / s")[row];
    data.workingElectrodeVoltage = dc.column("Voltage / V")[row];
    data.current = dc.column("Current / A")[row];
    return data;
}

QVector<QPointF> everySample(const Table &dc, const Segment &segment)
{
    const Column &voltage = dc.column("Voltage / V");
    const Column &current = dc.column("Current / A");
    QVector<QPointF> points;
    for (std::size_t row = segment.begin; row < segment.end; ++row)
        points.append({voltage[row], current[row]});
    return points;
}

/// One point for each pulse: the levels of its last sample.
QVector<QPointF> everyPulse(const Table &dc, const Segment &segment, VekDataManipulator &manipulator, PulsePoint point)
{
    QVector<QPointF> points;
    bool wasCompleted = false;
    for (std::size_t row = segment.begin; row < segment.end; ++row) {
        manipulator.loadPrimaryData(sampleAt(dc, row));
        const bool isCompleted = manipulator.isPulseCompleted();
        if (isCompleted && wasCompleted)
            points.last() = point(manipulator);
        else if (isCompleted)
            points.append(point(manipulator));
        wasCompleted = isCompleted;
    }
    return points;
}

/// The curves of one element by cycle, from 1; the way to the first vertex belongs to the first.
std::map<int, QVector<QPointF>> curvesOf(const RunData &run, int step, const CourseRow &course)
{
    std::map<int, QVector<QPointF>> curves;
    for (const Segment &segment : run.segments) {
        if (segment.step != step || segment.stepName == QLatin1String("Quiet Time"))
            continue;
        QVector<QPointF> &curve = curves[std::max(1, segment.substep)];
        if (!course.makeManipulator) {
            curve += everySample(run.dc, segment);
            continue;
        }
        const auto manipulator = course.makeManipulator(*run.element(step)->element);
        curve += everyPulse(run.dc, segment, *manipulator, course.point);
    }
    return curves;
}

double largestOf(const std::map<int, QVector<QPointF>> &curves, double (QPointF::*coordinate)() const)
{
    double largest = 0.0;
    for (const auto &[cycle, points] : curves) {
        for (const QPointF &point : points)
            largest = std::max(largest, std::abs((point.*coordinate)()));
    }
    return largest;
}

bool drawElement(const RunData &run, int step, const CourseRow &course, const QString &path)
{
    const std::map<int, QVector<QPointF>> curves = curvesOf(run, step, course);
    if (curves.empty())
        return true; // the run ended before this element
    Figure figure(QSize(640, 460));
    figure.setTitle(run.title);
    Panel &panel = figure.addPanel();
    panel.setHorizontalScale(
        prefixedScale(QStringLiteral("Potential"), QStringLiteral("V"), largestOf(curves, &QPointF::x)));
    panel.setVerticalScale(
        prefixedScale(QString::fromLatin1(course.quantity), QStringLiteral("A"), largestOf(curves, &QPointF::y)));
    const bool isNamed = curves.size() > 1 && curves.size() <= mostNamedSweeps;
    for (const auto &[cycle, points] : curves)
        panel.addCurve(isNamed ? QStringLiteral("Cycle %1").arg(cycle) : QString(), points, curveColour(cycle - 1),
                       course.makeManipulator ? Panel::Style::LineAndPoints : Panel::Style::Line);
    if (isNamed)
        panel.showLegend();
    return figure.save(path);
}

} // namespace

bool drawVoltammograms(const RunData &run, const QString &folder)
{
    const auto &elements = run.experiment.elements;
    const auto count = std::count_if(elements.begin(), elements.end(),
                                     [](const FileElement &element) { return courseOf(element) != nullptr; });
    bool isDrawn = true;
    for (std::size_t index = 0; index < elements.size(); ++index) {
        const CourseRow *course = courseOf(elements[index]);
        const int step = static_cast<int>(index) + 1;
        const QString name = count == 1 ? QStringLiteral("voltammogram") : QStringLiteral("voltammogram-%1").arg(step);
        if (course)
            isDrawn = drawElement(run, step, *course, QDir(folder).filePath(name)) && isDrawn;
    }
    return isDrawn;
}

} // namespace client
