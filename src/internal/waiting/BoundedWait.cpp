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
        // Qt's own dispatcher forgets that a loop was left when the same event then runs a loop of its own; the next event
        // reminds it, and without this one there may be none. It decides nothing, so the system's time will do.
        constexpr int heartbeatMs = 100;
        QTimer heartbeat;
        heartbeat.start(heartbeatMs);
        _loop.exec();
    }
    return std::exchange(_end, std::nullopt).value_or(WaitEnd::Quit);
}
