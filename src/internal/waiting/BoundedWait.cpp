#include "waiting/BoundedWait.h"

#include <QTimer>

#include <utility>

BoundedWait::BoundedWait(int milliseconds, const Clock &clock)
    : _alarm(clock.makeAlarm([this] { end(WaitEnd::TimeIsUp); }))
{
    _alarm->start(milliseconds);
}

void BoundedWait::end(WaitEnd reason)
{
    if (_end)
        return;
    _end = reason;
    _loop.quit();
}

void BoundedWait::endSoon(WaitEnd reason)
{
    QMetaObject::invokeMethod(
        &_context, [this, reason] { end(reason); }, Qt::QueuedConnection);
}

WaitEnd BoundedWait::exec()
{
    if (!_end) {
        // A dispatcher may sleep although something is left to do: GLib's, over events that stand behind the one in which
        // this loop runs; Qt's own, over a loop that was left by an event which then ran a loop of its own. The next event
        // wakes it, but there may be none: so one comes at once, and then others. They decide nothing, so the system's
        // time will do.
        constexpr int heartbeatMs = 100;
        QTimer heartbeat;
        QObject::connect(&heartbeat, &QTimer::timeout, &_context, [this] { beat(); });
        heartbeat.start(heartbeatMs);
        beat();
        _loop.exec();
    }
    return std::exchange(_end, std::nullopt).value_or(WaitEnd::Quit);
}

void BoundedWait::beat()
{
    QMetaObject::invokeMethod(
        &_context, [] {}, Qt::QueuedConnection);
}
