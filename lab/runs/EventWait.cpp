// SPDX-License-Identifier: MIT
#include "lab/runs/EventWait.h"

#include <QTimer>

namespace lab {

bool EventWait::exec(int milliseconds)
{
    constexpr int heartbeatMs = 100;
    QTimer time;
    time.setSingleShot(true);
    connect(&time, &QTimer::timeout, &_loop, &QEventLoop::quit);
    if (milliseconds != untilTheEnd)
        time.start(milliseconds);
    // Qt's own dispatcher forgets that a loop was left when the same event then runs a loop of its own; the next event
    // reminds it, and without this one there may be none.
    QTimer heartbeat;
    heartbeat.start(heartbeatMs);
    if (!_hasEnded)
        _loop.exec();
    return _hasEnded;
}

void EventWait::end()
{
    _hasEnded = true;
    _loop.quit();
}

} // namespace lab
