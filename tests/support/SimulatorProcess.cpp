// SPDX-License-Identifier: MIT
#include "support/SimulatorProcess.h"

#include <QFile>
#include <QRegularExpression>

#include <csignal>

namespace {

constexpr int patienceMs = 30000;

} // namespace

SimulatorProcess::SimulatorProcess(const QStringList &arguments)
{
    _process.start(QStringLiteral(NIMBRELLE_SIM_PROGRAM), arguments);
    while (!_process.canReadLine() && _process.waitForReadyRead(patienceMs)) {
    }
    _portName = QString::fromLocal8Bit(_process.readLine()).trimmed();
}

SimulatorProcess::~SimulatorProcess()
{
    finish();
}

QString SimulatorProcess::finish()
{
    if (isRunning()) {
        _process.terminate();
        if (!_process.waitForFinished(patienceMs))
            kill();
    }
    return QString::fromLocal8Bit(_process.readAllStandardError());
}

void SimulatorProcess::kill()
{
    _process.kill();
    _process.waitForFinished(patienceMs);
}

void SimulatorProcess::suspend()
{
    ::kill(pid_t(_process.processId()), SIGSTOP);
}

void SimulatorProcess::resume()
{
    ::kill(pid_t(_process.processId()), SIGCONT);
}

qint64 SimulatorProcess::writtenBytes() const
{
    QFile figures(QStringLiteral("/proc/%1/io").arg(_process.processId()));
    if (!figures.open(QIODevice::ReadOnly))
        return -1;
    const QRegularExpression row(QStringLiteral("^wchar: (\\d+)$"), QRegularExpression::MultilineOption);
    return row.match(QString::fromLatin1(figures.readAll())).captured(1).toLongLong();
}
