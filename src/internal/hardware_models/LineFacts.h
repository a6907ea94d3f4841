// SPDX-License-Identifier: MIT
#pragma once

#include "hardware_models/HardwareModelNumber.h"
#include "link/PCcommand.h"

/// The numbers in which the two lines of instruments differ.
struct LineFacts {
    double ticksPerSecond; ///< of the clock that stamps samples and records
    int channelsPerBoard;  ///< that share one configuration; 1: each has its own
    quint8 resetChannel;   ///< to which the command to restart goes
};

constexpr LineFacts mainFacts = {1e8, 1, deviceChannel};
constexpr LineFacts galeFacts = {8.75e7, 2, allChannels};

/// An instrument without a line is spoken to as if it were of the main line.
constexpr const LineFacts &factsOf(InstrumentLine line)
{
    return line == InstrumentLine::Gale ? galeFacts : mainFacts;
}
