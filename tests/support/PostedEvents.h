// SPDX-License-Identifier: MIT
#pragma once

#include <QThread>

extern Q_CORE_EXPORT uint qGlobalPostedEventsCount(); // of this thread; Qt exports it for its own tests

/// Waits until another thread has queued something to this one, and leaves it there. @return whether it came in time
inline bool waitForPostedEvent()
{
    for (int look = 0; look < 20000; ++look) {
        if (qGlobalPostedEventsCount() > 0)
            return true;
        QThread::msleep(1);
    }
    return false;
}
