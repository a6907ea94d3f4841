// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <functional>
#include <map>
#include <vector>

class VekInstrumentHandler;

namespace lab {

struct StopResults {
    std::map<int, QString> ends; ///< by channel, others too: how the instrument worded the end that it told
    bool isLinkLost = false;

    bool isConfirmed(int channel) const { return ends.count(channel) > 0; } // not by the end of another
};

/**
 * Stops what runs on channels and lets events run until the instrument has confirmed an end for each, for at most 5 s: a
 * program that ended earlier might leave a cell under control. A channel on which nothing ran confirms nothing.
 *
 * @thread The main thread.
 */
StopResults stopChannels(const VekInstrumentHandler &handler, const std::vector<int> &channels);

/// The same for one channel. @return whether its end was confirmed
bool stopChannel(const VekInstrumentHandler &handler, unsigned char channel);

/// The part of it that waits. @param ask asks for the ends; false when that could not be sent
StopResults collectEnds(const VekInstrumentHandler &handler, const std::vector<int> &channels,
                        const std::function<bool()> &ask);

} // namespace lab
