// SPDX-License-Identifier: MIT
#include "lab/runs/RecordedRun.h"

#include "VekInstrumentHandler.h"
#include "lab/notation/Units.h"
#include "lab/runs/RunSignals.h"

#include <limits>

namespace lab {

namespace {

constexpr int beginTimeoutMs = 30000; ///< the first element is announced at once, however slow its samples are
constexpr int endTimeoutMs = 10000;
constexpr int flushPeriodMs = 500;
constexpr double nothingYet = std::numeric_limits<double>::quiet_NaN();

} // namespace

RecordedRun::RecordedRun(const VekInstrumentHandler &handler, RunSignals &handlerSignals, unsigned char channel,
                         RunRecorder &recorder, const RunProgress &progress, WhenUnrecorded whenUnrecorded)
    : _handler(handler), _signals(handlerSignals), _channel(channel), _recorder(recorder), _progress(progress),
      _whenUnrecorded(whenUnrecorded), _lastVoltage(nothingYet), _lastCurrent(nothingYet), _lastFrequency(nothingYet)
{
    _overdue.setSingleShot(true);
    _flush.setInterval(flushPeriodMs);
    connect(&_overdue, &QTimer::timeout, this, &RecordedRun::onAnswerOverdue);
    connect(&_flush, &QTimer::timeout, this, &RecordedRun::onFlushDue);
}

VekErrorCode RecordedRun::start()
{
    _signals.add(*this);
    const VekErrorCode result = _handler.startUploadedExperiment(_channel);
    if (result == VekErrorCode::Success) {
        _overdue.start(beginTimeoutMs);
        _flush.start();
    } else {
        _signals.remove(*this);
    }
    return result;
}

void RecordedRun::interrupt()
{
    if (_state != RunState::Running || _isInterrupted)
        return;
    _isInterrupted = true;
    askForEnd();
}

void RecordedRun::askForEnd()
{
    _isEndAsked = true;
    _handler.stopExperiment(_channel);
    _overdue.start(endTimeoutMs);
}

QString RecordedRun::progressText() const
{
    if (_state != RunState::Running)
        return runStateName(_state);
    const VekExperimentNode &node = _recorder.node();
    QStringList parts{planWords(), QStringLiteral("step %1").arg(node.stepNumber) + QLatin1Char(' ') + node.stepName};
    if (_progress.cycleCount() > 1)
        parts.append(QStringLiteral("cycle %1 of %2").arg(node.cycleNumber).arg(_progress.cycleCount()));
    else if (node.cycleNumber > 1)
        parts.append(QStringLiteral("cycle %1").arg(node.cycleNumber));
    parts.append(formatQuantity(_lastTime, Dimension::Time));
    if (_recorder.acRowCount() > 0)
        parts.append(formatQuantity(_lastFrequency, Dimension::Frequency));
    parts.append(formatQuantity(_lastVoltage, Dimension::Voltage));
    parts.append(formatQuantity(_lastCurrent, Dimension::Current));
    parts.append(QStringLiteral("%1 points").arg(_recorder.dcRowCount() + _recorder.acRowCount()));
    parts.removeAll(QString());
    return parts.join(QLatin1String(" | "));
}

QString RecordedRun::planWords() const
{
    const std::optional<double> share = _progress.shareDone(_lastTime);
    if (!share || !_sinceStart.isValid())
        return {};
    // A simulated instrument may run faster than the clock on the wall, no instrument runs slower.
    const double pace = qMax(1.0, _lastTime / qMax(1.0, double(_sinceStart.elapsed()) * 1e-3));
    return progressWords(*share, *_progress.secondsLeft(_lastTime) / pace);
}

void RecordedRun::noteStart()
{
    if (_hasStarted)
        return;
    _hasStarted = true;
    _sinceStart.start();
    noteSignOfLife();
    const double seconds = _handler.getExperimentUTCStartTime(_channel);
    _recorder.setStart(seconds > 0.0 ? QDateTime::fromMSecsSinceEpoch(qRound64(seconds * 1000.0), Qt::UTC)
                                     : QDateTime::currentDateTimeUtc());
}

void RecordedRun::noteElement(const VekExperimentNode &node)
{
    noteSignOfLife();
    _progress.begin(node, _lastTime);
    _recorder.beginElement(node);
}

void RecordedRun::noteDc(const VekDCData &data)
{
    _recorder.addDc(data);
    _lastTime = data.timestamp;
    _lastVoltage = data.workingElectrodeVoltage;
    _lastCurrent = data.current;
    Q_EMIT progressed();
}

void RecordedRun::noteAc(const VekACData &data)
{
    _recorder.addAc(data);
    _lastTime = data.timestamp;
    _lastVoltage = data.dcVoltageBias;
    _lastCurrent = data.dcCurrentBias;
    _lastFrequency = data.frequency;
    Q_EMIT progressed();
}

void RecordedRun::noteEnd(VekExperimentEnd end, const QString &reason)
{
    if (_isInterrupted)
        finish(RunState::Interrupted, reason);
    else if (end == VekExperimentEnd::Completed)
        finish(RunState::Completed, reason);
    else
        finish(RunState::Stopped, reason);
}

void RecordedRun::noteDeviceError(const QString &text)
{
    if (_state == RunState::Running)
        Q_EMIT troubled(QStringLiteral("channel %1: %2").arg(QString::number(_channel), text.simplified()));
}

void RecordedRun::noteLoss()
{
    finish(RunState::DeviceLost, QStringLiteral("The connection to the instrument was lost."));
}

void RecordedRun::onAnswerOverdue()
{
    const auto silence = [](const char *text, int timeoutMs) {
        return QString::fromLatin1(text).arg(timeoutMs / 1000);
    };
    if (_isEndAsked)
        return finish(_isInterrupted ? RunState::Interrupted : RunState::Stopped,
                      silence("The instrument did not confirm the end within %1 s.", endTimeoutMs));
    _handler.stopExperiment(_channel);
    finish(RunState::Stopped, silence("The instrument did not begin the experiment within %1 s.", beginTimeoutMs));
}

/// The instrument has begun, so it owes nothing but its end.
void RecordedRun::noteSignOfLife()
{
    if (!_isEndAsked)
        _overdue.stop();
}

void RecordedRun::onFlushDue()
{
    _recorder.flush();
    if (_recorder.error().isEmpty() || _hasToldWriteError)
        return;
    _hasToldWriteError = true;
    if (_whenUnrecorded == WhenUnrecorded::KeepGoing) {
        Q_EMIT troubled(QStringLiteral("%1; the experiment goes on").arg(_recorder.error()));
        return;
    }
    Q_EMIT troubled(QStringLiteral("%1; the experiment is stopped").arg(_recorder.error()));
    _isUnrecorded = true;
    askForEnd();
}

void RecordedRun::finish(RunState state, const QString &message)
{
    if (_state != RunState::Running)
        return;
    _overdue.stop();
    _flush.stop();
    _signals.remove(*this);
    _state = state;
    _endMessage = message;
    const bool isRecorded = _recorder.finish(state, message);
    _isRecordToBlame = (!isRecorded && state == RunState::Completed) || (_isUnrecorded && state == RunState::Stopped);
    Q_EMIT finished();
}

} // namespace lab
