// SPDX-License-Identifier: MIT
#include "support/ClientProcess.h"

#include <csignal>

ClientProcess::ClientProcess(const QStringList &arguments, const QProcessEnvironment &environment)
{
    _process.setProcessEnvironment(environment);
    _process.start(QStringLiteral(NIMBRELLE_CLIENT_PROGRAM), arguments);
    _process.waitForStarted();
}

ClientProcess::~ClientProcess()
{
    if (!isRunning())
        return;
    _process.kill();
    _process.waitForFinished();
}

int ClientProcess::finish(int timeoutMs)
{
    const bool hasEnded = !isRunning() || _process.waitForFinished(timeoutMs);
    return hasEnded && _process.exitStatus() == QProcess::NormalExit ? _process.exitCode() : -1;
}

void ClientProcess::sendSignal(int number)
{
    ::kill(static_cast<pid_t>(_process.processId()), number);
}
