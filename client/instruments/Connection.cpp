// SPDX-License-Identifier: MIT
#include "client/instruments/Connection.h"

#include "VekDeviceTracker.h"
#include "VekInstrumentHandler.h"
#include "client/terminal/Console.h"
#include "client/terminal/SignalWatcher.h"
#include "lab/runs/EventWait.h"

#include <QTimer>

#include <algorithm>
#include <limits>
#include <set>

namespace client {

using namespace lab;

namespace {

constexpr int startUpTimeoutMs = 15000;

/// Lets events run until something is true, time is up, or the user has had enough.
template <typename Condition>
void waitUntil(Condition isTrue)
{
    EventWait wait;
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, &wait, [&] {
        if (isTrue() || SignalWatcher::wasInterrupted())
            wait.end();
    });
    poll.start(20);
    if (!isTrue())
        wait.exec(startUpTimeoutMs);
}

std::set<unsigned char> everyChannel()
{
    std::set<unsigned char> channels;
    for (int channel = 0; channel <= std::numeric_limits<unsigned char>::max(); ++channel)
        channels.insert(static_cast<unsigned char>(channel));
    return channels;
}

std::vector<int> channelsReported(const VekInstrumentHandler &handler, VekChannelReport report)
{
    std::vector<int> channels;
    for (int channel = 0; channel < handler.getNumberOfChannels(); ++channel) {
        if (handler.channelReport(static_cast<unsigned char>(channel)) == report)
            channels.push_back(channel);
    }
    return channels;
}

} // namespace

QString refusalText(const VekErrorCode &error)
{
    return QStringLiteral("code %1: %2").arg(QString::number(error.value()), error.message());
}

Connection::Connection(const QString &port) : _port(port)
{
}

VekErrorCode Connection::connect()
{
    VekDeviceTracker *tracker = VekDeviceTracker::Instance();
    QObject context;
    QObject::connect(tracker, &VekDeviceTracker::newDeviceConnected, &context,
                     [this](const QString &name) { _deviceName = name; });
    bool isLost = false; // in its start-up already
    QObject::connect(tracker, &VekDeviceTracker::deviceDisconnected, &context, [&] { isLost = true; });
    const VekErrorCode result = tracker->connectToDeviceOnComPort(_port, everyChannel());
    if (result != VekErrorCode::Success)
        return result;
    waitUntil([&] { return !_deviceName.isEmpty() || isLost; });
    if (isLost)
        return VekErrorCode(VekErrorCode::ConnectionFailed,
                            QStringLiteral("the connection to the instrument was lost before it was ready"));
    if (!_deviceName.isEmpty())
        return result;
    return VekErrorCode(
        VekErrorCode::ConnectionFailed,
        QStringLiteral("the instrument answered, but did not become ready within %1 s").arg(startUpTimeoutMs / 1000));
}

ExitCode Connection::open()
{
    const VekErrorCode result = connect();
    if (SignalWatcher::wasInterrupted())
        return Interrupted;
    if (result == VekErrorCode::Success)
        return Done;
    Console::instance().error(QStringLiteral("%1: %2").arg(_port, refusalText(result)));
    return NoConnection;
}

ExitCode Connection::openToDrive(const std::vector<int> &channels)
{
    if (const ExitCode failure = open())
        return failure;
    for (const int channel : channels) {
        if (const ExitCode failure = checkChannel(channel))
            return failure;
    }
    const std::vector<int> running = runningChannels();
    for (const int channel : channels) {
        if (std::find(running.begin(), running.end(), channel) == running.end())
            continue;
        Console::instance().error(runningText(channel));
        return Refused;
    }
    return prepare(channels);
}

/// The idle ones too: the start-up of the instrument as a whole waits for the last channel that may be running.
ExitCode Connection::prepare(const std::vector<int> &channels)
{
    std::set<unsigned char> free(channels.begin(), channels.end());
    for (const int channel : channelsReported(handler(), VekChannelReport::Idle))
        free.insert(static_cast<unsigned char>(channel));
    bool isPrepared = false;
    QObject context;
    QObject::connect(&handler(), &VekInstrumentHandler::channelsPrepared, &context, [&] { isPrepared = true; });
    const VekErrorCode result = handler().prepareChannels(free);
    if (result == VekErrorCode::Success && !isPrepared)
        waitUntil([&] { return isPrepared; });
    if (SignalWatcher::wasInterrupted())
        return Interrupted;
    if (isPrepared)
        return Done;
    Console::instance().error(QStringLiteral("%1: the channels did not become ready").arg(_port));
    return NoConnection;
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

std::vector<int> Connection::runningChannels() const
{
    return channelsReported(handler(), VekChannelReport::Running);
}

std::vector<int> Connection::untoldChannels() const
{
    return channelsReported(handler(), VekChannelReport::Unknown);
}

QString Connection::runningText(int channel) const
{
    return QStringLiteral(
               "%1: channel %2 still runs an experiment that this program did not start. It goes on by itself; "
               "to end it: nimbrelle stop %1 --channel %2")
        .arg(_port, QString::number(channel));
}

QString listOf(const std::vector<int> &channels)
{
    QStringList numbers;
    for (const int channel : channels)
        numbers.append(QString::number(channel));
    return numbers.join(QLatin1String(", "));
}

} // namespace client
