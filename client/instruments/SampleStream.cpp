// SPDX-License-Identifier: MIT
#include "client/instruments/SampleStream.h"

#include "VekInstrumentHandler.h"
#include "client/terminal/Console.h"
#include "client/terminal/SignalWatcher.h"
#include "lab/notation/PrintableText.h"
#include "lab/records/TableWriter.h"
#include "lab/runs/EventWait.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <poll.h>
#include <unistd.h>

namespace client {

using namespace lab;

namespace {

constexpr const char *headings = "Time / s,Voltage / V,Current / A,Counter Electrode Voltage / V,Temperature / degC";
constexpr int readerCheckMs = 500;

QByteArray lineOf(const VekDCData &data)
{
    QByteArray line = csvNumber(data.timestamp, Precision::Tick);
    for (const double reading :
         {data.workingElectrodeVoltage, data.current, data.counterElectrodeVoltage, data.temperature})
        line += ',' + csvNumber(reading, Precision::Reading);
    return line;
}

/// What poll() says of standard output, within so many milliseconds.
short stateOfOutput(short wanted, int milliseconds)
{
    pollfd output = {STDOUT_FILENO, wanted, 0};
    return poll(&output, 1, milliseconds) == 1 ? output.revents : short(0);
}

} // namespace

SampleStream::SampleStream(const VekInstrumentHandler &handler, unsigned char channel, Source source,
                           const Bounds &bounds)
    : _handler(handler), _channel(channel), _bounds(bounds)
{
    using Handler = VekInstrumentHandler;
    const auto signal = source == Source::Idle ? &Handler::idleDCDataReady : &Handler::activeDCDataReady;
    connect(&_handler, signal, this, &SampleStream::onDataReady);
    connect(&_handler, &Handler::deviceDisconnected, this, &SampleStream::onDeviceDisconnected);
    if (source == Source::Active)
        connect(&_handler, &Handler::experimentStopped, this, &SampleStream::onExperimentStopped);
    connect(SignalWatcher::instance(), &SignalWatcher::interrupted, this, &SampleStream::onInterrupted);
    _time.setSingleShot(true);
    connect(&_time, &QTimer::timeout, this, &SampleStream::onTimeUp);
    connect(&_readerCheck, &QTimer::timeout, this, &SampleStream::onReaderCheckDue);
    _readerCheck.start(readerCheckMs);
}

ExitCode SampleStream::run()
{
    if (_bounds.seconds)
        _time.start(qRound(*_bounds.seconds * 1000.0));
    print(headings);
    if (SignalWatcher::wasInterrupted())
        return Interrupted;
    if (!_hasEnded) {
        EventWait wait;
        connect(this, &SampleStream::ended, &wait, &EventWait::end);
        wait.exec();
    }
    return _exitCode;
}

void SampleStream::onDataReady(unsigned char channel, const VekDCData &data)
{
    if (channel != _channel || _hasEnded)
        return;
    print(lineOf(data));
    if (_bounds.samples && ++_count >= *_bounds.samples)
        end(Done);
}

void SampleStream::onDeviceDisconnected()
{
    if (!_hasEnded)
        Console::instance().error(QStringLiteral("The connection to the instrument was lost."));
    end(NoConnection);
}

void SampleStream::onInterrupted()
{
    end(Interrupted);
}

void SampleStream::onTimeUp()
{
    end(Done);
}

void SampleStream::onReaderCheckDue()
{
    if (stateOfOutput(0, 0) & POLLERR) // a pipe that nobody will read any more
        end(LocalFailure);
}

/// A reader that stands still, such as a pager, must not keep the end from being noticed while the cell is driven.
bool SampleStream::awaitReader() const
{
    constexpr int lookMs = 100;
    while (stateOfOutput(POLLOUT, lookMs) == 0) {
        if (SignalWatcher::wasInterrupted() || (_bounds.seconds && _time.remainingTime() <= 0))
            return false;
    }
    return true;
}

void SampleStream::onExperimentStopped(unsigned char channel, const QString &reason)
{
    if (channel != _channel || _hasEnded)
        return;
    _hasStopped = true;
    Console::instance().error(printable(reason));
    end(Refused);
}

void SampleStream::print(const QByteArray &line)
{
    if (!awaitReader())
        return; // the signal or the timer ends the stream as soon as events are served
    if (std::printf("%s\n", line.constData()) >= 0 && std::fflush(stdout) == 0)
        return;
    if (errno != EPIPE && !_hasEnded)
        Console::instance().error(
            QStringLiteral("standard output: %1").arg(QString::fromLocal8Bit(std::strerror(errno))));
    end(LocalFailure);
}

void SampleStream::end(ExitCode exitCode)
{
    if (_hasEnded)
        return;
    _hasEnded = true;
    _exitCode = exitCode;
    Q_EMIT ended();
}

} // namespace client
