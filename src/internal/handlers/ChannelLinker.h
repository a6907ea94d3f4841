#pragma once

#include "calibration/DataRecords.h"

#include <vector>

/// The group of linked channels that a channel belongs to (Gale line only). Copies share nothing.
struct ChannelLinker {
    quint8 masterChannel = 0; ///< on which the group's experiment was started; meaningless before a linked start
    std::vector<unsigned char> linkedChannels; ///< ascending, this channel included; empty without a group
    bool bipolar = false;                      ///< the group is a pair in series; never cleared again
    ProcessedDCData lastPoint;                 ///< this channel's latest sample, kept until the whole group has one

    /// Lets no sample of an earlier run be taken for one of the run that begins: no sample bears this counter.
    void forgetLastPoint() { lastPoint.counter = 0xFFFF; }
};
