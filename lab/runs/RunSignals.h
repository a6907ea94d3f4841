// SPDX-License-Identifier: MIT
#pragma once

#include "VekACData.h"
#include "VekDCData.h"
#include "VekExperimentEnd.h"
#include "VekExperimentNode.h"

#include <QObject>

#include <array>

class VekInstrumentHandler;

namespace lab {

class RecordedRun;

/**
 * Hears what an instrument tells and hands it to the run of the channel that it is about. If each run listened by itself,
 * every sample would call all of them.
 *
 * @thread The main thread.
 */
class RunSignals : public QObject
{
    Q_OBJECT

public:
    /// @p handler is borrowed; the runs are too, from their add() until their remove().
    explicit RunSignals(const VekInstrumentHandler &handler);

    void add(RecordedRun &run);
    void remove(const RecordedRun &run);

private Q_SLOTS:
    void onExperimentStarting(unsigned char channel);
    void onElementStarting(unsigned char channel, const VekExperimentNode &node);
    void onDcDataReady(unsigned char channel, const VekDCData &data);
    void onAcDataReady(unsigned char channel, const VekACData &data);
    void onExperimentEnded(unsigned char channel, VekExperimentEnd end, const QString &reason);
    void onDeviceError(unsigned char channel, const QString &text);
    void onDeviceDisconnected();

private:
    std::array<RecordedRun *, 256> _runs = {}; // by channel
};

} // namespace lab
