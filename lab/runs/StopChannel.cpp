// SPDX-License-Identifier: MIT
#include "lab/runs/StopChannel.h"

#include "VekInstrumentHandler.h"
#include "lab/runs/EventWait.h"

#include <set>

namespace lab {

namespace {

constexpr int confirmationTimeoutMs = 5000;

} // namespace

StopResults collectEnds(const VekInstrumentHandler &handler, const std::vector<int> &channels,
                        const std::function<bool()> &ask)
{
    StopResults results;
    EventWait wait;
    std::set<int> awaited; // an end; what is known to rest has none to tell
    for (const int channel : channels) {
        if (handler.channelReport(static_cast<unsigned char>(channel)) != VekChannelReport::Idle)
            awaited.insert(channel);
    }
    const auto isOver = [&] { return results.isLinkLost || awaited.empty(); };
    QObject::connect(&handler, &VekInstrumentHandler::experimentStopped, &wait,
                     [&](unsigned char channel, const QString &reason) {
                         results.ends.emplace(channel, reason);
                         awaited.erase(channel);
                         if (isOver())
                             wait.end();
                     });
    QObject::connect(&handler, &VekInstrumentHandler::deviceDisconnected, &wait, [&] {
        results.isLinkLost = true;
        wait.end();
    });
    if (!ask())
        results.isLinkLost = true;
    if (!isOver())
        wait.exec(confirmationTimeoutMs);
    return results;
}

StopResults stopChannels(const VekInstrumentHandler &handler, const std::vector<int> &channels)
{
    return collectEnds(handler, channels, [&] {
        bool areAsked = true; // every one of them, whatever became of the others
        for (const int channel : channels)
            areAsked &= handler.stopExperiment(static_cast<unsigned char>(channel)) == VekErrorCode::Success;
        return areAsked; // nothing but a lost link refuses a stop
    });
}

bool stopChannel(const VekInstrumentHandler &handler, unsigned char channel)
{
    return stopChannels(handler, {channel}).isConfirmed(channel);
}

} // namespace lab
