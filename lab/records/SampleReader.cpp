// SPDX-License-Identifier: MIT
#include "lab/records/SampleReader.h"

#include "lab/experiments/ElementTraits.h"
#include "lab/records/RunSummary.h"
#include "lab/records/SampleThinner.h"
#include "lab/records/TableReader.h"

#include <algorithm>
#include <cmath>
#include <string>

namespace lab {

namespace {

constexpr std::size_t mostSamples = 400000; ///< 25 MB; far more than a picture has points
constexpr double tolerance = 5.0;           ///< an interval that many times longer than those around it is a gap

enum Quantity { Time, Voltage, Current, Charging, Discharging, AllCharge, NetCharge, Step, Cycle, Execution };

const std::vector<HeadingRow> dcHeadings{
    // quantity, heading, factor; the first heading of a quantity that the table has counts
    {Time, "Test Time / s"},
    {Voltage, "Voltage / V"},
    {Current, "Current / A"},
    {Charging, "Charging Capacity / Ah", coulombsOfAmpereHour},
    {Discharging, "Discharging Capacity / Ah", coulombsOfAmpereHour},
    {AllCharge, "Charge / C"},
    {NetCharge, "Net Charge / C"},
    {Step, "Step / 1"},
    {Step, "Step Count / 1"}, // of records of version 1, which have no other
    {Cycle, "Cycle Count / 1"},
    {Execution, "Step Count / 1"},
};

/// Whether time joins two samples, from the interval between them and what is known of the intervals around it.
class TimeJoin
{
public:
    /// @param declared the longest interval of the element that begins here
    void beginSegment(double declared)
    {
        _declaredBefore = _declared;
        _declared = declared;
    }

    /// @param after the interval that follows in the same segment, 0 for none
    bool isGap(double interval, double after, bool isFirstOfSegment)
    {
        const double usual =
            isFirstOfSegment
                ? (2.0 * std::max(_before, _declaredBefore) + tolerance * std::max(after, _declared)) / tolerance
                : std::max(_before > 0.0 ? _before : after, _declared);
        const bool isLong = usual > 0.0 && interval > tolerance * usual;
        _before = isFirstOfSegment || isLong ? 0.0 : interval;
        return isLong || interval < 0.0;
    }

private:
    double _before = 0.0; // the last interval of this segment
    double _declared = 0.0;
    double _declaredBefore = 0.0;
};

class SampleReader
{
public:
    SampleReader(const QString &path, const RunSummary &summary, RunData &run)
        : _table(path, dcHeadings), _summary(summary), _run(run), _thinner(mostSamples)
    {
    }

    void read()
    {
        if (!_table.isOpen()) {
            _run.oddities.append(QStringLiteral("dc.csv: cannot be read"));
            return;
        }
        tellMissingColumns();
        _hasExecutions = _table.has(Step) && _table.field(Step).data() != _table.field(Execution).data();
        while (_table.next())
            take();
        passOn(0.0);
        _run.dc = _thinner.take();
        setBounds();
        tellDamage();
    }

private:
    void take()
    {
        Sample sample{_table.number(Time), _table.number(Voltage), _table.number(Current), 0.0, 0.0};
        if (!std::isfinite(sample.time)) {
            ++_timelessRows;
            return;
        }
        readCharge(sample);
        const bool hasMark = hasNewMark(); // both look at each row
        const bool hasCounts = hasNewCounts();
        sample.opensSegment = hasMark || hasCounts;
        passOn(sample.opensSegment ? 0.0 : sample.time - _held.time);
        if (sample.opensSegment)
            beginSegment();
        sample.isPulse = _isPulsed;
        _timeBefore = _hasHeld ? _held.time : sample.time;
        _held = sample;
        _hasHeld = true;
    }

    /// The sample before the one that was read last: the interval behind it helps to tell whether a gap precedes it.
    void passOn(double intervalAfter)
    {
        if (!_hasHeld)
            return;
        const double interval = _held.time - _timeBefore;
        const bool isGap = _join.isGap(interval, intervalAfter, _held.opensSegment);
        _held.opensStretch = isGap || _isFirst;
        _isFirst = false;
        _thinner.add(_held);
    }

    void readCharge(Sample &sample) const
    {
        if (_table.has(Charging) && _table.has(Discharging)) {
            sample.charged = _table.number(Charging);
            sample.discharged = _table.number(Discharging);
            return;
        }
        const double all = _table.number(AllCharge);
        const double net = _table.number(NetCharge);
        sample.charged = (all + net) / 2.0;
        sample.discharged = (all - net) / 2.0;
    }

    bool hasNewMark()
    {
        const std::size_t before = _nextMark;
        while (_nextMark < _summary.marks.size() && _summary.marks[_nextMark].dcRow <= _table.row())
            ++_nextMark;
        return _nextMark != before;
    }

    bool hasNewCounts()
    {
        bool isNew = _isFirst && !_hasHeld;
        for (const Quantity quantity : {Step, Cycle, Execution}) {
            std::string &last = _counts[quantity - Step];
            const std::string_view now = _table.field(quantity);
            if (now == last)
                continue;
            last = now;
            isNew = true;
        }
        return isNew;
    }

    void beginSegment()
    {
        const ElementMark mark = _nextMark > 0 ? _summary.marks[_nextMark - 1] : ElementMark();
        Segment segment;
        segment.stepName = mark.stepName;
        segment.step = countOr(Step, mark.step);
        segment.cycle = countOr(Cycle, mark.entry);
        segment.entry = _nextMark > 0 ? mark.entry : countOr(_hasExecutions ? Execution : Cycle, 0);
        _run.segments.push_back(segment);
        const FileElement *element = _run.element(segment.step);
        _isPulsed = element && isPulsed(*element);
        _join.beginSegment(element ? longestInterval(*element) : 0.0);
    }

    int countOr(Quantity quantity, int otherwise) const
    {
        const double count = _table.number(quantity);
        return std::abs(count) < 1e9 ? static_cast<int>(count) : otherwise;
    }

    void setBounds()
    {
        std::size_t next = 0;
        for (std::size_t row = 0; row < _run.dc.size(); ++row) {
            if (_run.dc[row].opensSegment)
                _run.segments[next++].begin = row;
        }
        for (std::size_t index = 0; index < _run.segments.size(); ++index)
            _run.segments[index].end =
                index + 1 < _run.segments.size() ? _run.segments[index + 1].begin : _run.dc.size();
    }

    void tellMissingColumns()
    {
        constexpr Quantity needed[] = {Time, Voltage, Current};
        for (const Quantity quantity : needed) {
            if (!_table.has(quantity))
                _run.oddities.append(
                    QStringLiteral("dc.csv: has no column \"%1\"").arg(QLatin1String(dcHeadings[quantity].heading)));
        }
    }

    void tellDamage()
    {
        const std::size_t damaged = _table.damagedRows() + (_table.has(Time) ? _timelessRows : 0);
        if (damaged > 0)
            _run.oddities.append(
                QStringLiteral("dc.csv: %1 of %2 rows are damaged and left out").arg(damaged).arg(_table.row()));
        const auto beyond = std::count_if(_summary.marks.begin(), _summary.marks.end(),
                                          [this](const ElementMark &mark) { return mark.dcRow > _table.row(); });
        if (beyond > 0)
            _run.oddities.append(QStringLiteral("run.json: %1 elements begin beyond the %2 rows of dc.csv")
                                     .arg(beyond)
                                     .arg(_table.row()));
    }

    TableReader _table;
    const RunSummary &_summary;
    RunData &_run;
    SampleThinner _thinner;
    TimeJoin _join;
    Sample _held{};
    double _timeBefore = 0.0;
    bool _hasHeld = false;
    bool _isFirst = true;
    bool _isPulsed = false;
    std::size_t _nextMark = 0;
    std::size_t _timelessRows = 0;
    bool _hasExecutions = false; // the count of steps is not the number of the step
    std::string _counts[3];
};

} // namespace

void readSamples(const QString &path, const RunSummary &summary, RunData &run)
{
    SampleReader(path, summary, run).read();
}

} // namespace lab
