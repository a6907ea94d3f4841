#pragma once

#include "ExitCode.h"
#include "VekDCData.h"

#include <QObject>
#include <QTimer>

#include <optional>

class VekInstrumentHandler;

namespace client {

/**
 * Prints samples of one channel to standard output as they come, until enough of them have come, time is up, the user
 * interrupts, or the device goes away.
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

    /// Runs the event loop until the stream ends. @return Done, Interrupted, NoConnection or Refused
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
    void onExperimentStopped(unsigned char channel, const QString &reason);

private:
    void end(ExitCode exitCode);

    const VekInstrumentHandler &_handler;
    const unsigned char _channel;
    const Bounds _bounds;
    QTimer _time;
    int _count = 0;
    bool _hasEnded = false;
    bool _hasStopped = false;
    ExitCode _exitCode = Done;
};

} // namespace client
