// SPDX-License-Identifier: MIT
#pragma once

#include "VekErrorCode.h"
#include "VekExperimentEnd.h"
#include "lab/records/RunRecorder.h"
#include "lab/runs/RunProgress.h"

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

class VekInstrumentHandler;

namespace lab {

class RunSignals;

/**
 * One experiment on one channel, from its start to its end, with its record.
 *
 * @thread  The main thread, whose event loop delivers the data.
 * @failure Every end of a run leads to finished(), once: its own, the instrument's, the user's, the loss of the device,
 *          and an instrument that falls silent where it owes an answer.
 */
class RecordedRun : public QObject
{
    Q_OBJECT

public:
    /// What is done when the disk takes no more rows.
    enum class WhenUnrecorded { Stop, KeepGoing };

    /// @p handler and @p handlerSignals are borrowed and outlive the run; so does @p recorder, whose files are there.
    RecordedRun(const VekInstrumentHandler &handler, RunSignals &handlerSignals, unsigned char channel,
                RunRecorder &recorder, const RunProgress &progress, WhenUnrecorded whenUnrecorded);

    /// Starts what was uploaded to the channel. @return the library's refusal; finished() then does not come
    VekErrorCode start();
    /// Stops the experiment on the instrument and waits for its end, 10 s at most.
    void interrupt();

    /// Share done and time left where the plan knows them, element, step, last voltage and current, points.
    QString progressText() const;
    unsigned char channel() const { return _channel; }
    RunState state() const { return _state; }
    QString endMessage() const { return _endMessage; }
    /// Whether all went well but for the record, or the record is why it was stopped; RunRecorder::error() tells more.
    bool isRecordToBlame() const { return _isRecordToBlame; }

    /// @name What the instrument tells of the channel; RunSignals hands it on
    /// @{
    void noteStart();
    void noteElement(const VekExperimentNode &node);
    void noteDc(const VekDCData &data);
    void noteAc(const VekACData &data);
    void noteEnd(VekExperimentEnd end, const QString &reason);
    void noteDeviceError(const QString &text);
    void noteLoss();
    /// @}

Q_SIGNALS:
    void finished();
    void progressed();
    /// What people have to know while the run goes on: an error of the instrument, a disk that takes no more.
    void troubled(const QString &text);

private Q_SLOTS:
    void onAnswerOverdue();
    void onFlushDue();

private:
    void askForEnd();
    QString planWords() const;
    void noteSignOfLife();
    void finish(RunState state, const QString &message);

    const VekInstrumentHandler &_handler;
    RunSignals &_signals;
    const unsigned char _channel;
    RunRecorder &_recorder;
    RunProgress _progress;
    const WhenUnrecorded _whenUnrecorded;
    RunState _state = RunState::Running;
    QString _endMessage;
    bool _isRecordToBlame = false;
    bool _isInterrupted = false;
    bool _isUnrecorded = false; // and therefore stopped
    bool _isEndAsked = false;   // by either
    bool _hasStarted = false;
    bool _hasToldWriteError = false;
    double _lastTime = 0.0;
    QElapsedTimer _sinceStart;
    double _lastVoltage;
    double _lastCurrent;
    double _lastFrequency;
    QTimer _overdue; // runs while the instrument owes its first announcement, or its end
    QTimer _flush;
};

} // namespace lab
