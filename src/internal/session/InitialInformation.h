// SPDX-License-Identifier: MIT
#pragma once

#include "VekErrorCode.h"
#include "session/InstrumentInfo.h"
#include "waiting/Clock.h"

class SerialCommunicator;

/**
 * The handshake: questions a port and decides whether the instrument behind it is admitted.
 *
 * The questions that return a bool return true when the answer did NOT come, except PingToInstrument(). See
 * compatibility.md, true when nothing came.
 * Nothing is retried. Each question waits up to 1,000 ms; the wait ends earlier if the port fails, and of a failed port
 * nothing more is asked. An answer that has reached the process by then counts, however long a slot of the client has
 * held the thread meanwhile.
 *
 * @thread Any thread but a link thread; it is blocked for the length of the question, in a local event loop that goes on
 *         delivering events.
 */
class InitialInformation
{
public:
    InitialInformation() = delete;

    /// Opens the port, pings, closes it. @return true if an instrument, or an echo, has answered
    static bool PingToInstrument(const QString &port, const Clock &clock = Clock::host());
    /**
     * The whole handshake, on a link of its own. After a failure @p info is half filled and good for nothing.
     *
     * @return Success; ConnectionFailed with the question that failed; FirmwareNotSupported; Unknown for a port that
     *         sends back what it is sent
     */
    static VekErrorCode getBasicInfoSuccessfully(const QString &port, InstrumentInfo &info,
                                                 const Clock &clock = Clock::host());
    /// The first half of it, up to the comparison of the firmware checksums.
    static VekErrorCode validateFirmware(SerialCommunicator &link, InstrumentInfo &info);

    /// @name Questions: true when the answer did not come
    /// @{
    static bool testForEcho(SerialCommunicator &link);
    static bool doHandShake(SerialCommunicator &link);
    static bool getHardwareVersion(SerialCommunicator &link, InstrumentInfo &info);
    static bool getChannelAmount(SerialCommunicator &link, InstrumentInfo &info);
    static bool getFirmwareChecksum(SerialCommunicator &link, InstrumentInfo &info);
    static bool getFirmwareVersion(SerialCommunicator &link, InstrumentInfo &info);
    static bool getCalData(SerialCommunicator &link, InstrumentInfo &info);
    /// The board configurations of the Gale line; any other line has none, and false is returned at once.
    static bool getConfigData(SerialCommunicator &link, InstrumentInfo &info);
    /// @}

    /// @name Verdicts: true when right
    /// @{
    static bool hasCorrectFirmware(const InstrumentInfo &info);
    static bool hasCorrectHardwareVersion(const InstrumentInfo &info);
    /// @}
};
