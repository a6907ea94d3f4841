#pragma once

#include "ExitCode.h"
#include "VekInstrumentDescription.h"

#include <QString>

class VekErrorCode;
class VekInstrumentHandler;

namespace client {

/// "code 2: Firmware not ...": how a refusal is shown, number and exact text.
QString refusalText(const VekErrorCode &error);

/**
 * One instrument, connected for the life of the program.
 *
 * @thread The main thread; open() runs its event loop for the length of the handshake.
 */
class Connection
{
public:
    explicit Connection(const QString &port);

    /**
     * Connects and waits until the instrument is ready, for at most 15 s after the handshake.
     *
     * @return Done, or after a message to the console NoConnection or Interrupted
     */
    ExitCode open();

    /// Only after open() succeeded.
    const VekInstrumentHandler &handler() const;
    VekInstrumentDescription description() const;

    /// Says so once, and answers BadInput, when the instrument has no such channel.
    ExitCode checkChannel(int channel) const;

private:
    QString _port;
    QString _deviceName;
};

} // namespace client
