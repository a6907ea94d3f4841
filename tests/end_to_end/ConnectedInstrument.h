// SPDX-License-Identifier: MIT
#pragma once

#include "support/SimulatorProcess.h"

#include <VekDeviceTracker.h>
#include <VekExperiment.h>
#include <VekInstrumentHandler.h>

#include <QElapsedTimer>
#include <QtTest>

/**
 * A simulated instrument in a process of its own, connected through the public interface.
 *
 * Keeps what the instrument tells: samples, impedance points, announcements, ends. Check isReady() before anything else.
 *
 * @thread The test's.
 */
class ConnectedInstrument : public QObject
{
    Q_OBJECT

public:
    explicit ConnectedInstrument(const QString &name, const QStringList &simulatorArguments);
    ~ConnectedInstrument() override;

    bool isReady() const { return _handler != nullptr; }
    const VekInstrumentHandler &handler() const { return *_handler; }
    SimulatorProcess &simulator() { return _simulator; }

    struct Sample {
        int channel;
        VekDCData data;
    };
    struct Announcement {
        int channel;
        VekExperimentNode node;
        int samplesBefore; ///< samples of all channels that had come when it came
    };
    std::vector<Sample> samples;
    std::vector<Announcement> announcements;
    std::vector<VekACData> points; ///< of all channels
    QStringList ends;
    int losses = 0;

    /// Runs the event loop until so many experiments have ended; false when that takes longer.
    bool waitForEnds(int count, int timeoutMs);
    /// Runs an experiment on channel 0; false, with a warning, unless it completes.
    bool complete(const VekExperiment &experiment, int timeoutMs = 60000);
    /// The samples of the element of an announcement.
    std::vector<VekDCData> samplesOf(std::size_t announcement) const;

private:
    void connectThroughTracker(const QString &name);
    void listen();

    SimulatorProcess _simulator;
    const VekInstrumentHandler *_handler = nullptr;
};
