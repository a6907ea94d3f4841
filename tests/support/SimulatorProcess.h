// SPDX-License-Identifier: MIT
#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>

/**
 * A running nimbrelle-sim. The constructor returns when the port is there; the destructor ends the program and waits.
 *
 * @thread The test's; it blocks for at most the five seconds that a start or an end may take.
 */
class SimulatorProcess
{
public:
    explicit SimulatorProcess(const QStringList &arguments);
    ~SimulatorProcess();

    bool isRunning() const { return _process.state() == QProcess::Running; }
    /// Path of the port, as the program printed it on its first line; empty when it did not start.
    QString portName() const { return _portName; }
    /// Bytes that it has written so far, to its port and elsewhere; a write that the port's buffer blocks counts later.
    qint64 writtenBytes() const;
    /// Ends it as a user would (SIGTERM) and returns what it had printed to its standard error.
    QString finish();
    /// Ends it as a pulled cable would (SIGKILL).
    void kill();
    /// Makes it neither read nor write until resume().
    void suspend();
    void resume();
    int exitCode() const { return _process.exitCode(); }

private:
    QProcess _process;
    QString _portName;
};
