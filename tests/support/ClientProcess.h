// SPDX-License-Identifier: MIT
#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>

/**
 * One run of the program nimbrelle.
 *
 * @thread The test's, which it blocks while it waits.
 */
class ClientProcess
{
public:
    explicit ClientProcess(const QStringList &arguments,
                           const QProcessEnvironment &environment = QProcessEnvironment::systemEnvironment());
    ~ClientProcess();

    /// Waits for its end. @return the exit code; -1 when it did not end in time or crashed
    int finish(int timeoutMs = 30000);
    void sendSignal(int number);
    bool isRunning() const { return _process.state() == QProcess::Running; }
    QByteArray output() { return _output += _process.readAllStandardOutput(); }
    QString errors() { return _errors += QString::fromUtf8(_process.readAllStandardError()); }

    /// Runs it and throws its output away. @return the exit code
    static int run(const QStringList &arguments) { return ClientProcess(arguments).finish(); }

private:
    QProcess _process;
    QByteArray _output;
    QString _errors;
};
