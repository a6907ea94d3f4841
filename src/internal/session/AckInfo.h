// SPDX-License-Identifier: MIT
#pragma once

#include "link/FirmwareErrorCode.h"
#include "link/PCcommand.h"

#include <QMetaType>

/// An acknowledgement that the instrument has sent, or one that is waited for.
class AckInfo
{
public:
    AckInfo() : AckInfo(0, PCcommand_t(0)) {}
    /// Stamps the current time.
    AckInfo(int ackChannel, PCcommand_t ackCommand, FirmwareErrorCode ackCode = FW_SUCCESS)
        : channel(ackChannel), command(ackCommand), time(getCurrentTime()), code(ackCode)
    {
    }

    /// The system clock in seconds since 1970 (UTC).
    static double getCurrentTime();

    bool answersSameCommand(const AckInfo &other) const { return channel == other.channel && command == other.command; }

    int channel;
    PCcommand_t command;
    double time; ///< seconds since 1970 (UTC)
    FirmwareErrorCode code;
};
