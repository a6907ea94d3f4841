// SPDX-License-Identifier: MIT
#pragma once

#include "support/ClientProcess.h"
#include "support/SimulatorProcess.h"

#include <QTemporaryDir>

#include <memory>
#include <vector>

/**
 * Simulated instruments and a client that sees these alone: no serial port and no HID of the machine is in its sight.
 *
 * @thread The test's.
 */
class UpdateBench
{
public:
    /// Starts an instrument. @return the path of its port, which is there while its firmware runs
    QString plug(const QStringList &simulatorArguments);
    /// What a client's environment must be for it to see the instruments that are plugged now.
    QProcessEnvironment environment() const;
    /// Starts a client.
    std::unique_ptr<ClientProcess> client(const QStringList &arguments) const;
    /// Runs a client to its end, but for output that nobody wants.
    int run(const QStringList &arguments) const { return client(arguments)->finish(); }

    /// Waits until the port is there. @return false if it does not come
    static bool hasCome(const QString &port);

private:
    QTemporaryDir _folder;
    QStringList _ports;
    std::vector<std::unique_ptr<SimulatorProcess>> _simulators;
};
