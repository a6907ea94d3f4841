#include "SampleStream.h"

#include "Console.h"
#include "CsvFile.h"
#include "SignalWatcher.h"
#include "VekInstrumentHandler.h"

#include <QEventLoop>

#include <cstdio>

namespace client {

namespace {

constexpr const char *headings = "Time / s,Voltage / V,Current / A,Counter Electrode Voltage / V,Temperature / degC";

void printSample(const VekDCData &data)
{
    QByteArray line;
    for (const double value :
         {data.timestamp, data.workingElectrodeVoltage, data.current, data.counterElectrodeVoltage, data.temperature}) {
        if (!line.isEmpty())
            line += ',';
        line += csvNumber(value);
    }
    std::printf("%s\n", line.constData());
    std::fflush(stdout);
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
}

ExitCode SampleStream::run()
{
    std::printf("%s\n", headings);
    if (_bounds.seconds)
        _time.start(qRound(*_bounds.seconds * 1000.0));
    if (SignalWatcher::wasInterrupted())
        return Interrupted;
    if (!_hasEnded) {
        QEventLoop loop;
        connect(this, &SampleStream::ended, &loop, &QEventLoop::quit);
        loop.exec();
    }
    return _exitCode;
}

void SampleStream::onDataReady(unsigned char channel, const VekDCData &data)
{
    if (channel != _channel || _hasEnded)
        return;
    printSample(data);
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

void SampleStream::onExperimentStopped(unsigned char channel, const QString &reason)
{
    if (channel != _channel || _hasEnded)
        return;
    _hasStopped = true;
    Console::instance().error(reason);
    end(Refused);
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
