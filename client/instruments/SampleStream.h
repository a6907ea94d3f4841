// SPDX-License-Identifier: MIT
#pragma once

#include "VekDCData.h"
#include "client/terminal/ExitCode.h"

#include <QObject>
#include <QTimer>

#include <optional>

class VekInstrumentHandler;

namespace client {

/**
 * Prints samples of one channel to standard output as they come, until enough of them have come, time is up, the user
 * interrupts, the device goes away, or nobody can read them any more: the reader of a pipe has gone (without a word), or
 * a file takes no more.
 *
 * @thread The main thread.
 */
class SampleStream : public QObject
{
    Q_OBJECT

public:
    /// Which of the handler's signals is listened to.
    enum class Source { Idle, Active };

    struct Bounds {
        std::optional<double> seconds; ///< of wall time
        std::optional<int> samples;
    };

    SampleStream(const VekInstrumentHandler &handler, unsigned char channel, Source source, const Bounds &bounds);

    /// Runs the event loop until the stream ends. @return Done, Interrupted, NoConnection, Refused or LocalFailure
    ExitCode run();
    /// Whether the instrument ended the experiment itself.
    bool hasStopped() const { return _hasStopped; }

Q_SIGNALS:
    void ended();

private Q_SLOTS:
    void onDataReady(unsigned char channel, const VekDCData &data);
    void onDeviceDisconnected();
    void onInterrupted();
    void onTimeUp();
    void onReaderCheckDue();
    void onExperimentStopped(unsigned char channel, const QString &reason);

private:
    void print(const QByteArray &line);
    /// Waits until a line can be written. @return false when the stream is to end instead
    bool awaitReader() const;
    void end(ExitCode exitCode);

    const VekInstrumentHandler &_handler;
    const unsigned char _channel;
    const Bounds _bounds;
    QTimer _time;
    QTimer _readerCheck; // samples may be an hour apart, and the cell is driven meanwhile
    int _count = 0;
    bool _hasEnded = false;
    bool _hasStopped = false;
    ExitCode _exitCode = Done;
};

} // namespace client
