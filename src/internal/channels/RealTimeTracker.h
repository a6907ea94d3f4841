// SPDX-License-Identifier: MIT
#pragma once

#include "VekDCData.h"
#include "calibration/ComplexDataPoint.h"
#include "channels/CrossThreadValue.h"
#include "channels/CumulativeCapacityTracker.h"

#include <QByteArray>
#include <QString>

#include <limits>
#include <optional>
#include <vector>

struct Node;

/// Thins a stream of samples: one of each samplesPerPoint is reported.
struct DCDataAccumulator {
    qint32 sampleCountdown = 1;
    CrossThreadValue<qint32> samplesPerPoint = 1; ///< written by the client's thread in a manual experiment

    /// Counts one sample. @return whether it is to be reported
    bool countSample();
    /**
     * Changes the size of the groups to come; 0 counts as 1. The group under way ends with as many samples more as the new
     * size at most: a shorter interval holds at once, and before a longer one a sample that was promised still comes.
     */
    void setGroupSize(quint32 samples);
    /// Begins a group of that many samples, of which the last is reported; 0 counts as 1.
    void beginGroups(quint32 samples);
};

/// Collects what makes one impedance point.
struct ACDataAccumulator {
    qint32 packetsRemaining = 1; ///< below zero once a batch could not be analysed
    qint32 packetsTotal = 1;
    QByteArray data;                        ///< Gale line: unpacked sample words of the batch in progress
    QByteArray header;                      ///< Gale line: the batch's Gale_AC_Header_t
    std::vector<ComplexDataPoint_t> points; ///< main line: the records of the sample in progress

    /// Drops what has come of a point that is not finished.
    void forgetUnfinishedPoint();
    /// Begins a batch of that many packets.
    void beginBatch(qint32 packets);
};

/// A sample that thinning has kept from being reported.
struct HeldBackSample {
    VekDCData data;
    std::optional<double> uncounted; ///< its reading of the charge in coulombs, if the capacity tracker has not seen it
};

/**
 * What turns a channel's stream of packets into emitted points: decimation, AC batches, numbering of steps, the
 * experiment's clock, and the charge.
 *
 * @thread Written on the handler's thread while data arrive. The client's thread touches it only on a channel that is
 *         not busy, save for the two numbers that cross threads and for the capacity tracker, which guards itself.
 */
struct RealTimeTracker {
    /// Where a node stands in its experiment.
    struct Position {
        int cycleNumber; ///< how often the step has been entered
        int substepNumber;
    };

    DCDataAccumulator dc;
    ACDataAccumulator ac;
    qint32 stepNumber = 1;                       ///< step of the node last begun
    std::vector<int> stepCounters;               ///< by step number minus 1: how often it has been entered
    qint32 substepNumber = 0;                    ///< position inside the step
    QString stepName;                            ///< name of the node last begun
    double startTimestamp = 0.0;                 ///< instrument's time of the first data, seconds; 0.0: not yet known
    CrossThreadValue<double> utcStartTime = 0.0; ///< host's clock at that moment, seconds since 1970
    double lastReportedVoltage = 0.0;            ///< volts
    double voltageDifferent = -std::numeric_limits<double>::infinity(); ///< least change between emitted samples, volts
    CumulativeCapacityTracker capacity;
    std::optional<HeldBackSample> heldBack; ///< the running node's latest sample, if it is wanted and was not reported

    /// Numbers a node that begins.
    Position enterNode(const Node &node);
    /// How often the present step has been entered; 0 if it was not.
    int cycleNumber() const;
    /// Takes the instrument's time in seconds for the start of the experiment, unless one is known. NaN is a time.
    void startClockOnce(double instrumentSeconds);

private:
    void countStep();
};
