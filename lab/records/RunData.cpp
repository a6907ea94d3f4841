// SPDX-License-Identifier: MIT
#include "lab/records/RunData.h"

#include "lab/experiments/ElementTraits.h"
#include "lab/records/RunSummary.h"
#include "lab/records/SampleReader.h"
#include "lab/records/TableReader.h"

#include <QDir>
#include <QFile>

#include <cmath>
#include <map>

namespace lab {

namespace {

enum ImpedanceQuantity { Frequency, Real, Imaginary, Magnitude, Phase, Bias, AcStep, AcCycle };

const std::vector<HeadingRow> impedanceHeadings{
    // The first heading of a quantity that the table has counts; the others are those of records of version 1.
    {Frequency, "Frequency / Hz"},
    {Real, "Real Impedance / ohm"},
    {Real, "Real Impedance / Ohm"},
    {Imaginary, "Imaginary Impedance / ohm"},
    {Imaginary, "Imaginary Impedance / Ohm"},
    {Magnitude, "Absolute Impedance / ohm"},
    {Magnitude, "Absolute Impedance / Ohm"},
    {Phase, "Phase / deg"},
    {Bias, "Voltage / V"},
    {Bias, "Voltage Bias / V"},
    {AcStep, "Step / 1"},
    {AcStep, "Step Count / 1"},
    {AcCycle, "Cycle Count / 1"},
};

/// Divides the points into sweeps, which run up or down through the frequencies.
class SweepDivider
{
public:
    explicit SweepDivider(const std::vector<ElementMark> &marks) : _marks(marks) {}

    bool opensSweep(std::size_t row, double frequency, double step, double cycle)
    {
        bool opens = step != _step || cycle != _cycle;
        while (_next < _marks.size() && _marks[_next].acRow <= row) {
            opens = true;
            ++_next;
        }
        const double direction = frequency - _frequency;
        opens = opens || direction == 0.0 || direction * _direction < 0.0;
        _direction = opens ? 0.0 : direction;
        _frequency = frequency;
        _step = step;
        _cycle = cycle;
        return opens;
    }

private:
    const std::vector<ElementMark> &_marks;
    std::size_t _next = 0;
    double _frequency = std::nan("");
    double _direction = 0.0; // of the sweep; 0 at its first point
    double _step = std::nan("");
    double _cycle = std::nan("");
};

void readImpedance(const QString &path, const RunSummary &summary, RunData &run)
{
    TableReader table(path, impedanceHeadings);
    SweepDivider divider(summary.marks);
    while (table.next()) {
        const double frequency = table.number(Frequency);
        const double step = table.number(AcStep);
        const bool opens = divider.opensSweep(table.row(), frequency, step, table.number(AcCycle));
        run.ac.push_back({frequency, table.number(Real), table.number(Imaginary), table.number(Magnitude),
                          table.number(Phase), table.number(Bias), std::abs(step) < 1e9 ? int(step) : 0, opens});
    }
    if (table.damagedRows() > 0)
        run.oddities.append(
            QStringLiteral("ac.csv: %1 of %2 rows are damaged and left out").arg(table.damagedRows()).arg(table.row()));
}

/// The rows that an element's quiet time can have filled, in a record without announcements; the first segment of the
/// element begins with them.
std::size_t quietRows(const RunData &run, const Segment &segment)
{
    const FileElement *element = run.element(segment.step);
    if (!element)
        return 0;
    const double interval = propertyOf(*element, "quietTimeSamplingInterval");
    const double slack = interval / 1000.0; // the sweep behind it samples far more often
    const double between = propertyOf(*element, "quietTime") - interval + slack; // its first row and its last
    std::size_t end = segment.begin;
    while (end < segment.end && run.dc[end].time - run.dc[segment.begin].time <= between)
        ++end;
    return end - segment.begin;
}

/// Whether a segment goes on with what the one before it began.
bool goesOn(const Segment *before, const Segment &segment)
{
    if (!before || before->step != segment.step)
        return false;
    return before->isQuiet || (!segment.isQuiet && before->entry == segment.entry);
}

/// Tells quiet times by their names, and where there are none by what the experiment asks for.
void markQuietTimes(RunData &run)
{
    std::vector<Segment> segments;
    for (Segment segment : run.segments) {
        const Segment *before = segments.empty() ? nullptr : &segments.back();
        segment.isQuiet = segment.stepName == QLatin1String("Quiet Time");
        const std::size_t quiet = segment.stepName.isEmpty() && !goesOn(before, segment) ? quietRows(run, segment) : 0;
        if (quiet > 0) {
            Segment first = segment;
            first.isQuiet = true;
            first.end = segment.begin += quiet;
            segments.push_back(first);
        }
        if (segment.begin < segment.end)
            segments.push_back(segment);
    }
    run.segments = segments;
}

/// An element that runs again begins with its quiet time, or enters its step anew.
void countRepeats(RunData &run)
{
    std::map<int, int> repeats; // by step
    const Segment *before = nullptr;
    for (Segment &segment : run.segments) {
        segment.repeat = repeats[segment.step] += goesOn(before, segment) ? 0 : 1;
        before = &segment;
    }
}

} // namespace

const FileElement *RunData::element(int step) const
{
    const auto index = static_cast<std::size_t>(step - 1);
    return step >= 1 && index < experiment.elements.size() ? &experiment.elements[index] : nullptr;
}

std::optional<RunData> readRun(const QString &folder)
{
    const QDir directory(folder);
    if (!directory.exists(QStringLiteral("dc.csv")) && !directory.exists(QStringLiteral("run.json")))
        return std::nullopt;
    RunData run;
    const RunSummary summary = readSummary(directory.filePath(QStringLiteral("run.json")), run.oddities);
    run.title = summary.title;
    run.experiment = summary.experiment;
    run.isCompleted = summary.isCompleted;
    readSamples(directory.filePath(QStringLiteral("dc.csv")), summary, run);
    readImpedance(directory.filePath(QStringLiteral("ac.csv")), summary, run);
    markQuietTimes(run);
    countRepeats(run);
    return run;
}

} // namespace lab
