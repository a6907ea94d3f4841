// SPDX-License-Identifier: MIT
#include "plots/Voltammogram.h"

#include "VekDataManipulator.h"
#include "VekDiffPulseVoltammetryElement.h"
#include "VekNormalPulseVoltammetryElement.h"
#include "VekSquareWaveVoltammetryElement.h"
#include "lab/experiments/ElementTraits.h"
#include "lab/records/RunData.h"
#include "plots/Figure.h"
#include "plots/Series.h"

#include <QDir>

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>

namespace plots {

using namespace lab;

namespace {

constexpr std::size_t mostNamedLoops = 8;
constexpr double timingTolerance = 0.25; ///< of the width of a pulse

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

double widthOf(const VekDataManipulator &pulse)
{
    return pulse.getFrequency() > 0.0 ? 0.5 / pulse.getFrequency() : pulse.getPulseWidth();
}

/// How the samples of an element become a curve.
struct CourseRow {
    const char *className;
    const char *quantity;
    Panel::Style style;
    std::unique_ptr<VekDataManipulator> (*makeManipulator)(const VekAbstractElement &); ///< null: no pulses
    PulsePoint point;
};

constexpr CourseRow courseRows[] = {
    {"CyclicVoltammetry", "Current", Panel::Style::Line, nullptr, nullptr},
    {"DCPotentialSweep", "Current", Panel::Style::Line, nullptr, nullptr},
    {"StaircasePotentialVoltammetry", "Current", Panel::Style::Points, nullptr, nullptr},
    {"NormalPulseVoltammetry", "Current", Panel::Style::LineAndPoints, manipulatorFor<VekNormalPulseVoltammetryElement>,
     pulseLevel},
    {"DiffPulseVoltammetry", "Current difference", Panel::Style::LineAndPoints,
     manipulatorFor<VekDiffPulseVoltammetryElement>, differenceOverBase},
    {"SquareWaveVoltammetry", "Current difference", Panel::Style::LineAndPoints,
     manipulatorFor<VekSquareWaveVoltammetryElement>, differenceOverMiddle},
};

const CourseRow *courseOf(const FileElement &element)
{
    for (const CourseRow &row : courseRows) {
        if (element.className == QLatin1String(row.className))
            return &row;
    }
    return nullptr;
}

/// What an element measured in one of the times that it ran, without its quiet time.
using Course = std::vector<Sample>;

std::map<int, Course> coursesOf(const RunData &run, int step)
{
    std::map<int, Course> courses; // by repeat
    for (const Segment &segment : run.segments) {
        if (segment.step != step || segment.isQuiet)
            continue;
        Course &course = courses[segment.repeat];
        course.insert(course.end(), run.dc.begin() + std::ptrdiff_t(segment.begin),
                      run.dc.begin() + std::ptrdiff_t(segment.end));
    }
    return courses;
}

QVector<QPointF> everySample(const Course &course, std::size_t begin, std::size_t end)
{
    QVector<QPointF> points;
    for (std::size_t row = begin; row < end; ++row)
        appendPoint(points, {course[row].voltage, course[row].current}, course[row].opensStretch);
    return points;
}

/// One point for each step of a staircase: its last sample.
Course lastOfSteps(const Course &course, double stepSize)
{
    Course last;
    for (std::size_t row = 0; row < course.size(); ++row) {
        const bool isLast =
            row + 1 == course.size() || std::abs(course[row + 1].voltage - course[row].voltage) > stepSize / 2.0;
        if (isLast)
            last.push_back(course[row]);
    }
    return last;
}

VekDCData dataOf(const Sample &sample)
{
    VekDCData data;
    data.timestamp = sample.time;
    data.workingElectrodeVoltage = sample.voltage;
    data.current = sample.current;
    return data;
}

/// One point for each pulse whose second level followed the first when it had to: not where samples are missing, nor
/// where the run ended within the pulse.
QVector<QPointF> everyPulse(const Course &course, VekDataManipulator &manipulator, PulsePoint point)
{
    const double width = widthOf(manipulator);
    QVector<QPointF> points;
    double firstLevelTime = std::numeric_limits<double>::quiet_NaN();
    double drawnLevelTime = firstLevelTime;
    bool opensStretch = false;
    for (const Sample &sample : course) {
        opensStretch = opensStretch || sample.opensStretch;
        manipulator.loadPrimaryData(dataOf(sample));
        if (!manipulator.isPulseCompleted()) {
            firstLevelTime = sample.time;
            continue;
        }
        if (!(std::abs(sample.time - firstLevelTime - width) < timingTolerance * width))
            continue;
        if (firstLevelTime == drawnLevelTime) // a later sample of the same level
            points.removeLast();
        appendPoint(points, point(manipulator), opensStretch);
        drawnLevelTime = firstLevelTime;
        opensStretch = false;
    }
    return points;
}

struct Curve {
    int repeat;
    int loop;
    QVector<QPointF> points;
};

/// Volts between the vertices; where their distance is not known, between the ends of the course.
double windowOf(const FileElement &element, const Course &course)
{
    const bool isKnown =
        propertyOf(element, "firstVoltageLimitVsOCP") == propertyOf(element, "secondVoltageLimitVsOCP");
    if (isKnown)
        return std::abs(propertyOf(element, "firstVoltageLimit") - propertyOf(element, "secondVoltageLimit"));
    const auto [lowest, highest] =
        std::minmax_element(course.begin(), course.end(),
                            [](const Sample &left, const Sample &right) { return left.voltage < right.voltage; });
    return highest->voltage - lowest->voltage;
}

void appendLoops(const FileElement &element, int repeat, const Course &whole, std::vector<Curve> &curves)
{
    const double stepSize = propertyOf(element, "stepSize");
    const Course course = stepSize > 0.0 ? lastOfSteps(whole, stepSize) : whole;
    const double cycles = propertyOf(element, "numberOfCycles");
    std::vector<std::size_t> begins{0};
    if (cycles > 1.0)
        begins = loopBegins(course, windowOf(element, course), static_cast<std::size_t>(cycles));
    for (std::size_t loop = 0; loop < begins.size(); ++loop) {
        const bool isLast = loop + 1 == begins.size();
        const std::size_t end = isLast ? course.size() : begins[loop + 1] + 1; // where the next begins, this one closes
        curves.push_back({repeat, static_cast<int>(loop) + 1, everySample(course, begins[loop], end)});
    }
}

std::vector<Curve> curvesOf(const RunData &run, int step, const CourseRow &row)
{
    const FileElement &element = *run.element(step);
    std::vector<Curve> curves;
    for (const auto &[repeat, course] : coursesOf(run, step)) {
        if (!row.makeManipulator) {
            appendLoops(element, repeat, course, curves);
            continue;
        }
        const auto manipulator = row.makeManipulator(*element.element);
        curves.push_back({repeat, 1, everyPulse(course, *manipulator, row.point)});
    }
    return curves;
}

/// What tells a curve from the others: its repeat, its cycle, or both.
QString nameOf(const Curve &curve, bool hasRepeats, bool hasLoops)
{
    if (!hasRepeats)
        return QStringLiteral("Cycle %1").arg(curve.loop);
    const QString repeat = QStringLiteral("Repeat %1").arg(curve.repeat);
    return hasLoops ? QStringLiteral("%1, cycle %2").arg(repeat).arg(curve.loop) : repeat;
}

void addCurves(Panel &panel, const std::vector<Curve> &curves, Panel::Style style)
{
    const bool isNamed = curves.size() > 1 && curves.size() <= mostNamedLoops;
    const bool hasRepeats = curves.back().repeat > 1;
    const bool hasLoops = std::any_of(curves.begin(), curves.end(), [](const Curve &curve) { return curve.loop > 1; });
    int index = 0;
    for (const Curve &curve : curves)
        panel.addCurve(isNamed ? nameOf(curve, hasRepeats, hasLoops) : QString(), curve.points, curveColour(index++),
                       style);
    if (isNamed)
        panel.showLegend();
}

double largestOf(const std::vector<Curve> &curves, double (QPointF::*coordinate)() const)
{
    double largest = 0.0;
    for (const Curve &curve : curves)
        largest = std::max(largest, largestMagnitude(curve.points, coordinate));
    return largest;
}

bool drawElement(const RunData &run, int step, const CourseRow &row, const QString &path)
{
    const std::vector<Curve> curves = curvesOf(run, step, row);
    if (curves.empty())
        return true; // the run ended before this element
    Figure figure(QSize(640, 460));
    figure.setTitle(run.title);
    Panel &panel = figure.addPanel();
    panel.setHorizontalScale(
        prefixedScale(QStringLiteral("Potential"), QStringLiteral("V"), largestOf(curves, &QPointF::x)));
    panel.setVerticalScale(
        prefixedScale(QString::fromLatin1(row.quantity), QStringLiteral("A"), largestOf(curves, &QPointF::y)));
    addCurves(panel, curves, row.style);
    return figure.save(path);
}

/// The samples at which the potential turns; smaller movements back and forth than @p least are none.
std::vector<std::size_t> turnsOf(const std::vector<Sample> &course, double least)
{
    std::vector<std::size_t> turns;
    std::size_t extreme = 0;
    double direction = 0.0;
    for (std::size_t row = 0; row < course.size(); ++row) {
        const double way = course[row].voltage - course[extreme].voltage;
        if (direction == 0.0 && std::abs(way) > least)
            direction = way;
        if (way * direction > 0.0)
            extreme = row;
        if (way * direction >= 0.0 || std::abs(way) <= least)
            continue;
        turns.push_back(extreme);
        direction = way;
        extreme = row;
    }
    return turns;
}

} // namespace

std::vector<std::size_t> loopBegins(const std::vector<Sample> &course, double window, std::size_t mostLoops)
{
    std::vector<std::size_t> begins{0};
    std::vector<std::size_t> turns = turnsOf(course, window / 4.0);
    if (turns.empty())
        return begins;
    const double start = course.front().voltage;
    const double direction = course[turns.front()].voltage > start ? 1.0 : -1.0;
    const double nearness = std::abs(course[1].voltage - start); // of one sampling interval
    turns.push_back(course.size());
    // Every second leg runs as the first one did.
    for (std::size_t leg = 1; leg + 1 < turns.size() && begins.size() < mostLoops; leg += 2) {
        const auto legEnd = course.begin() + std::ptrdiff_t(turns[leg + 1]);
        const auto begin = std::find_if(course.begin() + std::ptrdiff_t(turns[leg]), legEnd, [&](const Sample &sample) {
            return (sample.voltage - start) * direction >= -nearness;
        });
        if (begin != legEnd)
            begins.push_back(static_cast<std::size_t>(begin - course.begin()));
    }
    return begins;
}

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

} // namespace plots
