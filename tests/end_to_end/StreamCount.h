// SPDX-License-Identifier: MIT
#pragma once

#include "ConnectedInstrument.h"

#include <vector>

/**
 * Streams DC samples on the channels of one simulated instrument and counts them on both sides.
 *
 * The instrument must have been started with `--stats`. Samples and announcements are counted and not kept.
 *
 * @thread The test's.
 */
class StreamCount : public QObject
{
    Q_OBJECT

public:
    struct Channel {
        qint64 delivered = 0;
        qint64 gaps = 0;       ///< samples that come more than one interval after the one before
        qint64 repeats = 0;    ///< samples that do not come after the one before
        qint64 sent = -1;      ///< what the instrument says; -1 until finish() has heard it
        double lastTime = 0.0; ///< seconds; the first sample comes one interval after the start
        int cycles = 0;        ///< number of the last one that was announced
    };

    /// @param interval of sampling, in seconds
    StreamCount(ConnectedInstrument &instrument, int channelCount, double interval);
    /// One endless element with such an interval.
    static VekExperiment steadyCurrent(double interval);

    /// Uploads an experiment to each channel, then starts all; false when a request is refused.
    bool start(const VekExperiment &experiment);
    /// Stops all channels and waits for their ends, before which all their samples come.
    bool stop(int timeoutMs);
    /// Stops what still runs, ends the instrument and takes what it says that it has sent.
    bool finish(int timeoutMs);

    const std::vector<Channel> &channels() const { return _channels; }
    qint64 delivered() const;
    qint64 sent() const;
    /// Of all channels: sent and not delivered, delivered twice, or out of order; 0 when all is well.
    qint64 faults() const;
    /// One line for each channel, for a test's message.
    QString text() const;

private:
    void listen();
    void count(Channel &channel, double time) const;
    bool readStatistics(const QString &statistics);

    ConnectedInstrument &_instrument;
    const double _interval;
    std::vector<Channel> _channels;
};
