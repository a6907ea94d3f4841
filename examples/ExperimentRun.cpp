// SPDX-License-Identifier: MIT
#include "ExperimentRun.h"

#include <VekDeviceTracker.h>
#include <VekExperiment.h>
#include <VekInstrumentHandler.h>

#include <QCoreApplication>
#include <QEventLoop>
#include <QStringList>
#include <QTimer>

#include <iomanip>
#include <iostream>

namespace {

constexpr int startUpTimeoutMs = 15000;

int fail(ExitCode code, const QString &why)
{
    std::cerr << qPrintable(why) << '\n';
    return code;
}

/// Waits until the device on the port is ready; its name is empty if that failed.
VekErrorCode connectTo(const QString &port, QString &deviceName)
{
    VekDeviceTracker *tracker = VekDeviceTracker::Instance();
    QEventLoop loop;
    QObject::connect(tracker, &VekDeviceTracker::newDeviceConnected, &loop, [&](const QString &name) {
        deviceName = name;
        loop.quit();
    });
    const VekErrorCode result = tracker->connectToDeviceOnComPort(port);
    if (result == VekErrorCode::Success && deviceName.isEmpty()) {
        QTimer::singleShot(startUpTimeoutMs, &loop, &QEventLoop::quit);
        loop.exec();
    }
    return result;
}

void passOn(const VekInstrumentHandler &handler, const RunObservers &observers, QObject *context)
{
    if (observers.onStep)
        QObject::connect(&handler, &VekInstrumentHandler::experimentNewElementStarting, context,
                         [=](unsigned char, const VekExperimentNode &node) { observers.onStep(node); });
    if (observers.onSample)
        QObject::connect(&handler, &VekInstrumentHandler::activeDCDataReady, context,
                         [=](unsigned char, const VekDCData &data) { observers.onSample(data); });
    if (observers.onImpedancePoint)
        QObject::connect(&handler, &VekInstrumentHandler::activeACDataReady, context,
                         [=](unsigned char, const VekACData &data) { observers.onImpedancePoint(data); });
}

int waitForEnd(const VekInstrumentHandler &handler, QEventLoop &loop)
{
    QObject::connect(&handler, &VekInstrumentHandler::experimentEnded, &loop,
                     [&loop](unsigned char, VekExperimentEnd end, const QString &reason) {
                         std::cerr << qPrintable(reason) << '\n';
                         loop.exit(end == VekExperimentEnd::Completed ? Done : Refused);
                     });
    QObject::connect(&handler, &VekInstrumentHandler::deviceDisconnected, &loop,
                     [&loop] { loop.exit(fail(NoConnection, QStringLiteral("The device has gone."))); });
    return loop.exec();
}

} // namespace

int runExperiment(const VekExperiment &experiment, const char *headings, const RunObservers &observers,
                  const std::vector<unsigned char> &linkedChannels)
{
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 2)
        return fail(BadUsage, QStringLiteral("usage: %1 PORT").arg(arguments.value(0)));

    QString deviceName;
    const VekErrorCode connected = connectTo(arguments[1], deviceName);
    if (connected != VekErrorCode::Success)
        return fail(NoConnection, connected.message());
    if (deviceName.isEmpty())
        return fail(NoConnection, QStringLiteral("The device did not become ready."));

    const VekInstrumentHandler &handler = VekDeviceTracker::Instance()->getInstrumentHandler(deviceName);
    const int group = linkedChannels.empty() ? 0 : handler.setLinkedChannels(linkedChannels);
    if (group < 0)
        return fail(Refused, QStringLiteral("The channels cannot be linked."));
    const auto channel = static_cast<unsigned char>(group);
    QEventLoop loop;
    passOn(handler, observers, &loop);
    VekErrorCode started = handler.uploadExperimentToChannel(channel, experiment);
    if (started == VekErrorCode::Success)
        started = handler.startUploadedExperiment(channel);
    if (started != VekErrorCode::Success)
        return fail(Refused, started.message());
    std::cout << std::setprecision(9) << headings << '\n';
    return waitForEnd(handler, loop);
}
