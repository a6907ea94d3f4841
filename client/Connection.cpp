#include "Connection.h"

#include "Console.h"
#include "SignalWatcher.h"
#include "VekDeviceTracker.h"
#include "VekInstrumentHandler.h"

#include <QEventLoop>
#include <QTimer>

namespace client {

namespace {

constexpr int startUpTimeoutMs = 15000;

/// Lets events run until a device is there, time is up, or the user has had enough.
void waitUntilNamed(const QString &name)
{
    QEventLoop loop;
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, &loop, [&] {
        if (!name.isEmpty() || SignalWatcher::wasInterrupted())
            loop.quit();
    });
    QTimer::singleShot(startUpTimeoutMs, &loop, &QEventLoop::quit);
    poll.start(20);
    loop.exec();
}

} // namespace

QString refusalText(const VekErrorCode &error)
{
    return QStringLiteral("code %1: %2").arg(QString::number(error.value()), error.message());
}

Connection::Connection(const QString &port) : _port(port)
{
}

ExitCode Connection::open()
{
    VekDeviceTracker *tracker = VekDeviceTracker::Instance();
    QObject context;
    QObject::connect(tracker, &VekDeviceTracker::newDeviceConnected, &context,
                     [this](const QString &name) { _deviceName = name; });
    const VekErrorCode result = tracker->connectToDeviceOnComPort(_port);
    if (result == VekErrorCode::Success && _deviceName.isEmpty())
        waitUntilNamed(_deviceName);
    if (SignalWatcher::wasInterrupted())
        return Interrupted;
    if (result != VekErrorCode::Success) {
        Console::instance().error(QStringLiteral("%1: %2").arg(_port, refusalText(result)));
        return NoConnection;
    }
    if (_deviceName.isEmpty()) {
        Console::instance().error(QStringLiteral("%1: the instrument answered, but did not become ready within %2 s")
                                      .arg(_port, QString::number(startUpTimeoutMs / 1000)));
        return NoConnection;
    }
    return Done;
}

const VekInstrumentHandler &Connection::handler() const
{
    return VekDeviceTracker::Instance()->getInstrumentHandler(_deviceName);
}

VekInstrumentDescription Connection::description() const
{
    return handler().getDescription();
}

ExitCode Connection::checkChannel(int channel) const
{
    const int count = handler().getNumberOfChannels();
    if (channel >= 0 && channel < count)
        return Done;
    Console::instance().error(QStringLiteral("%1: there is no channel %2; the channels are 0 to %3")
                                  .arg(_port, QString::number(channel), QString::number(count - 1)));
    return BadInput;
}

} // namespace client
