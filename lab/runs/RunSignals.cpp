// SPDX-License-Identifier: MIT
#include "lab/runs/RunSignals.h"

#include "VekInstrumentHandler.h"
#include "lab/runs/RecordedRun.h"

namespace lab {

RunSignals::RunSignals(const VekInstrumentHandler &handler)
{
    using Handler = VekInstrumentHandler;
    connect(&handler, &Handler::experimentStarting, this, &RunSignals::onExperimentStarting);
    connect(&handler, &Handler::experimentNewElementStarting, this, &RunSignals::onElementStarting);
    connect(&handler, &Handler::activeDCDataReady, this, &RunSignals::onDcDataReady);
    connect(&handler, &Handler::activeACDataReady, this, &RunSignals::onAcDataReady);
    connect(&handler, &Handler::experimentEnded, this, &RunSignals::onExperimentEnded);
    connect(&handler, &Handler::deviceError, this, &RunSignals::onDeviceError);
    connect(&handler, &Handler::deviceDisconnected, this, &RunSignals::onDeviceDisconnected);
}

void RunSignals::add(RecordedRun &run)
{
    _runs[run.channel()] = &run;
}

void RunSignals::remove(const RecordedRun &run)
{
    _runs[run.channel()] = nullptr;
}

void RunSignals::onExperimentStarting(unsigned char channel)
{
    if (RecordedRun *const run = _runs[channel])
        run->noteStart();
}

void RunSignals::onElementStarting(unsigned char channel, const VekExperimentNode &node)
{
    if (RecordedRun *const run = _runs[channel])
        run->noteElement(node);
}

void RunSignals::onDcDataReady(unsigned char channel, const VekDCData &data)
{
    if (RecordedRun *const run = _runs[channel])
        run->noteDc(data);
}

void RunSignals::onAcDataReady(unsigned char channel, const VekACData &data)
{
    if (RecordedRun *const run = _runs[channel])
        run->noteAc(data);
}

void RunSignals::onExperimentEnded(unsigned char channel, VekExperimentEnd end, const QString &reason)
{
    if (RecordedRun *const run = _runs[channel])
        run->noteEnd(end, reason);
}

void RunSignals::onDeviceError(unsigned char channel, const QString &text)
{
    if (RecordedRun *const run = _runs[channel])
        run->noteDeviceError(text);
}

void RunSignals::onDeviceDisconnected()
{
    for (RecordedRun *const run : _runs) {
        if (run)
            run->noteLoss();
    }
}

} // namespace lab
