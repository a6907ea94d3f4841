#include "commands/UpdateCommand.h"

#include "BuildFirmware.h"
#include "Connection.h"
#include "Console.h"
#include "SignalWatcher.h"
#include "UpdateWatch.h"
#include "VekDeviceTracker.h"

#include <QElapsedTimer>
#include <QThread>

namespace client {

namespace {

ExitCode refuseStandIn()
{
    Console::instance().error(QStringLiteral("To update it, build with the folder DIR of its real images: ") +
                              realImagesCommand());
    return Refused;
}

/// An instrument starts its new firmware now; who asks it at once would hear that it does not answer.
void waitForRestart(const QString &port)
{
    constexpr int longestMs = 15000;
    constexpr unsigned long pauseMs = 200;
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < longestMs && !SignalWatcher::wasInterrupted()) {
        if (Connection(port).connect() == VekErrorCode::Success)
            return;
        QThread::msleep(pauseMs);
    }
    Console::instance().note(
        QStringLiteral("%1: the instrument has not come back yet; it may have another port now (nimbrelle list).")
            .arg(port));
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
    UpdateWatch watch;
    const VekErrorCode result = VekDeviceTracker::Instance()->updateFirmwareOnComPort(QString::fromStdString(_port));
    const QString told = QStringLiteral("%1: %2").arg(QString::fromStdString(_port), refusalText(result));
    switch (result.value()) {
    case VekErrorCode::Success:
        if (const ExitCode failure = watch.waitForEnds(1))
            return failure;
        waitForRestart(QString::fromStdString(_port));
        return Done;
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
    UpdateWatch watch;
    const int count = VekDeviceTracker::Instance()->updateFirmwareOnAllAvailableDevices();
    const ExitCode end = count > 0 ? watch.waitForEnds(count) : Done;
    if (watch.hasMetStandIn())
        return refuseStandIn();
    if (count > 0)
        return end;
    Console::instance().note(QStringLiteral("No instrument that needs an update was found."));
    return Done;
}

} // namespace client
