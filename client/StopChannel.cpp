#include "StopChannel.h"

#include "EventWait.h"
#include "VekInstrumentHandler.h"

#include <set>

namespace client {

namespace {

constexpr int confirmationTimeoutMs = 5000;

} // namespace

StopResults stopChannels(const VekInstrumentHandler &handler, const std::vector<int> &channels)
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
    for (const int channel : channels) {
        if (handler.stopExperiment(static_cast<unsigned char>(channel)) != VekErrorCode::Success)
            results.isLinkLost = true; // nothing else refuses a stop
    }
    if (!isOver())
        wait.exec(confirmationTimeoutMs);
    return results;
}

bool stopChannel(const VekInstrumentHandler &handler, unsigned char channel)
{
    return stopChannels(handler, {channel}).ends.count(channel) > 0; // not that of another channel
}

} // namespace client
