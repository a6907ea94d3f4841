// SPDX-License-Identifier: MIT
#pragma once

#include "calibration/DataRecords.h"
#include "channels/CrossThreadList.h"
#include "channels/CrossThreadValue.h"

/**
 * The group of linked channels that a channel belongs to (Gale line only). Copies share nothing.
 *
 * @thread The client's thread links, the handler's thread reads. A channel that runs may lose its group meanwhile: the
 *         end of one member makes that member free for another group before the last of them has ended.
 */
struct ChannelLinker {
    CrossThreadValue<quint8> masterChannel = 0; ///< on which the group's experiment was started; else meaningless
    CrossThreadList linkedChannels;             ///< ascending, this channel included; empty without a group
    CrossThreadValue<bool> bipolar = false;     ///< the group is a pair in series; never cleared again
    // This channel's latest samples, until the whole group has one of the same moment; handler's thread alone.
    ProcessedDCData lastPoint;        ///< the latest that was due
    ProcessedDCData lastThinnedPoint; ///< the latest that was not, while the last sample of a node is wanted

    /// Lets no sample of an earlier run be taken for one of the run that begins: no sample bears this counter.
    void forgetLastPoint() { lastPoint.counter = 0xFFFF; }
    /// Lets no thinned sample of an earlier node be taken for one of the node that begins.
    void forgetThinnedPoint() { lastThinnedPoint.counter = 0xFFFF; }
};
