#pragma once

#include <QAbstractEventDispatcher>
#include <QThread>

/// Waits until another thread has queued something to this one, and leaves it there. @return whether it came in time
inline bool waitForPostedEvent()
{
    for (int look = 0; look < 20000; ++look) {
        if (QThread::currentThread()->eventDispatcher()->hasPendingEvents())
            return true;
        QThread::msleep(1);
    }
    return false;
}
