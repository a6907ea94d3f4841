// SPDX-License-Identifier: MIT
#include "UpdateBench.h"

#include <QDir>
#include <QFileInfo>
#include <QtTest>

QString UpdateBench::plug(const QStringList &simulatorArguments)
{
    const int number = _ports.size();
    const QString port = _folder.filePath(QStringLiteral("port%1").arg(number));
    const QString node = _folder.filePath(QStringLiteral("hid/%1").arg(number));
    QDir(_folder.path()).mkpath(QStringLiteral("hid"));
    _ports.append(port);
    _simulators.push_back(
        std::make_unique<SimulatorProcess>(QStringList{"--link", port, "--hid", node} + simulatorArguments));
    return port;
}

QProcessEnvironment UpdateBench::environment() const
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("LD_LIBRARY_PATH"), QStringLiteral(NIMBRELLE_STAND_INS));
    environment.insert(QStringLiteral("NIMBRELLE_ALLOW_STAND_IN"), QStringLiteral("1"));
    environment.insert(QStringLiteral("NIMBRELLE_TEST_HID"), _folder.filePath(QStringLiteral("hid")));
    environment.insert(QStringLiteral("NIMBRELLE_TEST_PORTS"), _ports.join(QLatin1Char(':')));
    return environment;
}

std::unique_ptr<ClientProcess> UpdateBench::client(const QStringList &arguments) const
{
    return std::make_unique<ClientProcess>(arguments, environment());
}

bool UpdateBench::hasCome(const QString &port)
{
    return QTest::qWaitFor([&port] { return QFileInfo::exists(port); }, 10000);
}
