// SPDX-License-Identifier: MIT
#include "client/commands/UpdateCommand.h"

#include "VekDeviceTracker.h"
#include "client/instruments/BuildFirmware.h"
#include "client/instruments/Connection.h"
#include "client/instruments/RestartWait.h"
#include "client/instruments/SystemChecks.h"
#include "client/instruments/UpdateWatch.h"
#include "client/terminal/Console.h"
#include "client/terminal/SignalWatcher.h"

#include <QFileInfo>
#include <QSerialPortInfo>

namespace client {

namespace {

ExitCode refuseStandIn()
{
    Console::instance().error(QStringLiteral("To update it, build with the folder DIR of its real images: ") +
                              realImagesCommand());
    return Refused;
}

constexpr int restartTimeoutMs = 15000; ///< of one instrument

std::optional<QString> nameOnPort(const QString &port)
{
    Connection connection(port);
    if (connection.connect() != VekErrorCode::Success)
        return std::nullopt;
    return connection.description().deviceName;
}

QStringList instrumentPorts()
{
    QStringList ports;
    for (const QSerialPortInfo &info : QSerialPortInfo::availablePorts()) {
        if (looksLikeInstrument(info.vendorIdentifier(), info.manufacturer()))
            ports.append(info.systemLocation());
    }
    return ports;
}

/// Ports that have come up as that of an instrument; others are nobody's to open.
QStringList newcomers(const QStringList &before)
{
    QStringList ports = instrumentPorts();
    for (const QString &each : before)
        ports.removeAll(each);
    return ports;
}

/// The ports on which an instrument may come back; what USB knows as something else is not asked time and again.
QStringList portsToAsk()
{
    QStringList ports;
    for (const QSerialPortInfo &info : QSerialPortInfo::availablePorts()) {
        const bool isOther =
            info.hasVendorIdentifier() && !looksLikeInstrument(info.vendorIdentifier(), info.manufacturer());
        if (!isOther && QFileInfo::exists(info.systemLocation()))
            ports.append(info.systemLocation());
    }
    return ports;
}

ExitCode waitForRestarts(const RestartWait &restarts, const QStringList &names)
{
    const QStringList missing = restarts.wait(names, restartTimeoutMs);
    if (missing.isEmpty() || SignalWatcher::wasInterrupted())
        return Done;
    Console::instance().error(missingText(missing));
    return NoConnection;
}

} // namespace

UpdateCommand::UpdateCommand(CLI::App &parent)
    : Command(parent, "update", "Bring instruments to the firmware that this version carries",
              "  nimbrelle update ttyACM0\n"
              "  nimbrelle update --all     # opens every port; also finds instruments left in their bootloader\n"
              "An update that is cut off leaves the instrument in its bootloader, where the next one finds it.")
{
    CLI::Option_group *target = app().add_option_group("Target", "Which instruments");
    target->require_option(1);
    target->add_option("PORT", _port, "Serial port, for example ttyACM0 or /dev/ttyACM0");
    target->add_flag("--all", _updatesAll, "Every instrument that needs it");
}

int UpdateCommand::run()
{
    return _updatesAll ? updateAll() : updateOne();
}

ExitCode UpdateCommand::updateOne()
{
    const QString port = QString::fromStdString(_port);
    const QStringList before = instrumentPorts();
    const RestartWait restarts({[&] { return QStringList(port) + newcomers(before); }, nameOnPort});
    UpdateWatch watch;
    const VekErrorCode result = VekDeviceTracker::Instance()->updateFirmwareOnComPort(port);
    const QString told = QStringLiteral("%1: %2").arg(port, refusalText(result));
    switch (result.value()) {
    case VekErrorCode::Success:
        if (const ExitCode failure = watch.waitForEnds(1))
            return failure;
        return waitForRestarts(restarts, watch.updated());
    case VekErrorCode::FirmwareUpToDate:
        Console::instance().note(told);
        return Done;
    case VekErrorCode::ConnectionFailed:
        Console::instance().error(told);
        return NoConnection;
    case VekErrorCode::StandInFirmware:
        Console::instance().error(told);
        return refuseStandIn();
    default:
        Console::instance().error(told);
        return Refused;
    }
}

ExitCode UpdateCommand::updateAll()
{
    const RestartWait restarts({portsToAsk, nameOnPort});
    UpdateWatch watch;
    const int count = VekDeviceTracker::Instance()->updateFirmwareOnAllAvailableDevices();
    const ExitCode end = count > 0 ? watch.waitForEnds(count) : Done;
    const ExitCode restart = waitForRestarts(restarts, watch.updated());
    if (watch.hasMetStandIn())
        return refuseStandIn();
    if (count > 0)
        return end ? end : restart;
    Console::instance().note(QStringLiteral("No instrument that needs an update was found."));
    return Done;
}

} // namespace client
