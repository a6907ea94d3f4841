#include "support/SimulatorProcess.h"

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
