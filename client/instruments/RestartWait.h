// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringList>

#include <functional>
#include <optional>

namespace client {

/**
 * Waits for instruments that start new firmware; who asks one at once would hear that it does not answer.
 *
 * Made before the update: an instrument that was left in its bootloader has no name there, and comes back on a port
 * that was not there before.
 *
 * @thread The main thread, whose event loop runs meanwhile.
 */
class RestartWait
{
public:
    struct Machine {
        /// The ports that may be asked now.
        std::function<QStringList()> ports;
        /// The name of the instrument that answers on a port, nothing without one.
        std::function<std::optional<QString>(const QString &port)> ask;
    };

    explicit RestartWait(Machine machine);

    /**
     * Asks the ports until each of these instruments has answered, or none of them has for so long, or the user
     * interrupts.
     *
     * @param names empty for an instrument whose name is not known
     * @return the names of those that have not answered
     */
    QStringList wait(QStringList names, int longestMs) const;

private:
    const Machine _machine;
    const QStringList _portsBefore;
};

/// What is said of instruments that have not answered, by their names, a line each.
QString missingText(const QStringList &names);

} // namespace client
