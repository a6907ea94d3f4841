#include "waiting/BoundedExec.h"

#include <QEventLoop>
#include <QTimer>

int execBounded(QEventLoop &loop, int milliseconds)
{
    constexpr int heartbeatMs = 100;
    const auto giveUp = [&loop] {
        if (loop.isRunning())
            loop.exit(timeIsUp);
    };
    QTimer time;
    time.setSingleShot(true);
    time.setTimerType(Qt::PreciseTimer); // a coarse one may cut the time short
    QObject::connect(&time, &QTimer::timeout, &time, giveUp, Qt::QueuedConnection);
    time.start(milliseconds);
    // Qt's own dispatcher forgets that a loop was left when the same event then runs a loop of its own; the next event
    // reminds it, and without this one there may be none.
    QTimer heartbeat;
    heartbeat.start(heartbeatMs);
    return loop.exec();
}
