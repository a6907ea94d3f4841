// SPDX-License-Identifier: MIT
#pragma once

#include "VekACData.h"
#include "VekDCData.h"
#include "VekExperimentNode.h"
#include "VekInstrumentDescription.h"
#include "lab/experiments/ExperimentFile.h"
#include "lab/records/CycleTable.h"
#include "lab/records/EnergyMeter.h"
#include "lab/records/StepCounter.h"
#include "lab/records/TableWriter.h"

#include <QDateTime>
#include <QElapsedTimer>
#include <QString>

#include <limits>
#include <vector>

namespace lab {

/// What a run is made of, known before it begins.
struct RunSetup {
    VekInstrumentDescription instrument;
    int channel = 0;
    QString experimentPath;
    QByteArray experimentText;
    QString experimentName;
    QString experimentDescription;
};

/// How far a run has come, as its record says it.
enum class RunState { Running, Completed, Stopped, Interrupted, DeviceLost };

/**
 * The record of one run: a folder with dc.csv, ac.csv once there are impedance points, cycles.csv once a cycle of a
 * battery is over, and run.json.
 *
 * run.json is there from the start, in the state "running", and is replaced as a whole: when the first element begins,
 * with the flushes behind further ones, at the end. Many repetitions must not make it the main thing that is written: the
 * more elements it holds the rarer it is replaced, and it holds the first 10,000; the rows tell of the others.
 *
 * Rows are on their way to the disk after flush(); call it at least once a second.
 *
 * No two rows of a table have the same test time. The last sample of a step and the first of the next may: the end of a
 * step is kept, which comes first and tells by what it ended, and of the next step only what comes at a later time.
 * Impedance points of several tones share the record that they were measured with, and none of them may go: the second
 * is told a tick later than the first, and so on.
 *
 * @failure A failed write ends up in error() and does not end the run: the other files go on.
 */
class RunRecorder
{
public:
    /// Makes the folder, which may exist but must hold no run, and its files.
    bool create(const QString &folder, const RunSetup &setup);

    void setStart(const QDateTime &utc);
    void beginElement(const VekExperimentNode &node);
    void addDc(const VekDCData &data);
    void addAc(const VekACData &data);
    void flush();
    /// Writes all there is. @return false when anything of this run could not be written
    bool finish(RunState state, const QString &endMessage);

    QString folder() const { return _folder; }
    qint64 dcRowCount() const { return _dc.rowCount(); }
    qint64 acRowCount() const { return _ac.rowCount(); }
    const VekExperimentNode &node() const { return _steps.node(); }
    QString error() const;

private:
    /// Where in the data an element begins.
    struct ElementMark {
        VekExperimentNode node;
        int stepCount;
        int cycleCount;
        qint64 dcRow; ///< its first row, from 0
        qint64 acRow;
    };

    void addToCycle(const VekDCData &data);
    double unixTime(double testTime) const;
    QByteArray summary(RunState state, const QString &endMessage) const;
    void writeSummary(RunState state, const QString &endMessage);
    bool isSummaryDue() const;

    QString _folder;
    RunSetup _setup;
    QDateTime _startUtc;
    double _startUnix = std::numeric_limits<double>::quiet_NaN();
    TableWriter _dc;
    TableWriter _ac;
    StepCounter _steps;
    EnergyMeter _energy;
    CycleTable _cycles;
    bool _isCycling = false;
    qint64 _lastDcTick = std::numeric_limits<qint64>::min();
    qint64 _lastAcTick = std::numeric_limits<qint64>::min();
    qint64 _acRecordTick = std::numeric_limits<qint64>::min(); // of the record of that point, as the instrument told it
    std::vector<ElementMark> _marks;
    qint64 _elementCount = 0;
    bool _isSummaryStale = false;
    QElapsedTimer _sinceSummary;
    QString _error;
};

/// "running", "completed" and so on.
QString runStateName(RunState state);

} // namespace lab
