#pragma once

#include "ExitCode.h"
#include "RunProgress.h"
#include "RunRecorder.h"
#include "VekErrorCode.h"

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

class VekInstrumentHandler;

namespace client {

/**
 * One experiment on one channel, from its start to its end, with its record.
 *
 * @thread  The main thread, whose event loop delivers the data.
 * @failure Every end of a run leads to finished(), once: its own, the instrument's, the user's, the loss of the device,
 *          and an instrument that falls silent where it owes an answer.
 */
class ExperimentRun : public QObject
{
    Q_OBJECT

public:
    /// What is done when the disk takes no more rows.
    enum class WhenUnrecorded { Stop, KeepGoing };

    /// @p handler is borrowed and outlives the run; so does @p recorder, whose files are there.
    ExperimentRun(const VekInstrumentHandler &handler, unsigned char channel, RunRecorder &recorder,
                  const RunProgress &progress, WhenUnrecorded whenUnrecorded);

    /// Starts what was uploaded to the channel. @return the library's refusal; finished() then does not come
    VekErrorCode start();
    /// Stops the experiment on the instrument and waits for its end, 10 s at most.
    void interrupt();

    /// Share done and time left where the plan knows them, element, step, last voltage and current, points.
    QString progressText() const;
    unsigned char channel() const { return _channel; }
    ExitCode exitCode() const { return _exitCode; }
    RunState state() const { return _state; }
    QString endMessage() const { return _endMessage; }

Q_SIGNALS:
    void finished();
    void progressed();

private Q_SLOTS:
    void onExperimentStarting(unsigned char channel);
    void onElementStarting(unsigned char channel, const VekExperimentNode &node);
    void onDcDataReady(unsigned char channel, const VekDCData &data);
    void onAcDataReady(unsigned char channel, const VekACData &data);
    void onExperimentStopped(unsigned char channel, const QString &reason);
    void onDeviceError(unsigned char channel, const QString &text);
    void onDeviceDisconnected();
    void onAnswerOverdue();
    void onFlushDue();

private:
    void connectSignals();
    void askForEnd();
    QString planWords() const;
    void noteSignOfLife();
    void finish(RunState state, const QString &message, ExitCode exitCode);

    const VekInstrumentHandler &_handler;
    const unsigned char _channel;
    RunRecorder &_recorder;
    RunProgress _progress;
    const WhenUnrecorded _whenUnrecorded;
    RunState _state = RunState::Running;
    ExitCode _exitCode = Done;
    QString _endMessage;
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

} // namespace client
