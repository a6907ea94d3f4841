// SPDX-License-Identifier: MIT
#include "waiting/BoundedWait.h"

#include <QAbstractEventDispatcher>
#include <QThread>
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
        // this loop runs; Qt's own, over a loop that was left by an event which then ran a loop of its own. So it is woken
        // at once, and then again and again. That decides nothing, so the system's time will do.
        constexpr int heartbeatMs = 100;
        const auto wakeDispatcher = [] {
            if (QAbstractEventDispatcher *const dispatcher = QThread::currentThread()->eventDispatcher())
                dispatcher->wakeUp(); // a thread that ends has none any more
        };
        QTimer heartbeat;
        QObject::connect(&heartbeat, &QTimer::timeout, &heartbeat, wakeDispatcher);
        heartbeat.start(heartbeatMs);
        wakeDispatcher();
        _loop.exec();
    }
    return std::exchange(_end, std::nullopt).value_or(WaitEnd::Quit);
}
