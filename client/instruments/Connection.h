// SPDX-License-Identifier: MIT
#pragma once

#include "VekInstrumentDescription.h"
#include "client/terminal/ExitCode.h"

#include <QString>
#include <QStringList>

#include <vector>

class VekErrorCode;
class VekInstrumentHandler;

namespace client {

/// "code 2: Firmware not ...": how a refusal is shown, number and exact text.
QString refusalText(const VekErrorCode &error);

/**
 * One instrument, connected for the life of the program.
 *
 * An experiment of an earlier program may still run on it. So a connection only looks: no limit of a channel, no fan and
 * no SD card is touched, save for the channels that are to be driven.
 *
 * @thread The main thread; open() and openToDrive() run its event loop for the length of the handshake.
 */
class Connection
{
public:
    explicit Connection(const QString &port);

    /// Connects and waits until the instrument is ready, for at most 15 s after the handshake. Tells the console nothing.
    VekErrorCode connect();
    /// The same. @return Done, or after a message to the console NoConnection; Interrupted
    ExitCode open();
    /**
     * Connects, and makes these channels ready to be driven. Their limits are still those of before: a channel that does
     * not tell whether it runs keeps them until the instrument has accepted something new on it.
     *
     * @return as open(); BadInput for a channel that is not there; Refused where one still runs an experiment of an
     *         earlier program, and the message says how to stop it
     */
    ExitCode openToDrive(const std::vector<int> &channels);

    /// Only after a connection succeeded.
    const VekInstrumentHandler &handler() const;
    VekInstrumentDescription description() const;

    /// Says so once, and answers BadInput, when the instrument has no such channel.
    ExitCode checkChannel(int channel) const;

    /// The channels that run an experiment which this program did not start, ascending.
    std::vector<int> runningChannels() const;
    /// Those of which the instrument does not tell whether they run one.
    std::vector<int> untoldChannels() const;
    /// What is said of a channel that runs somebody's experiment, with what to do about it.
    QString runningText(int channel) const;

private:
    ExitCode prepare(const std::vector<int> &channels);

    QString _port;
    QString _deviceName;
};

/// "0, 2, 5"
QString listOf(const std::vector<int> &channels);

} // namespace client
