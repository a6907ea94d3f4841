// SPDX-License-Identifier: MIT
#pragma once

#include "waiting/Clock.h"

#include <QEventLoop>
#include <QObject>

#include <memory>
#include <optional>

/// What has ended a wait.
enum class WaitEnd {
    Answered, ///< what was waited for has come
    TimeIsUp,
    LinkLost,
    Destroyed, ///< the object that was to bring it is no more
    Quit,      ///< the thread, or the application, has been told to quit
};

/**
 * Lets the events of this thread run until something ends the wait, at most for a time, which begins when it is made:
 * before the question is sent. The first reason counts, and one that came before exec() is not missed.
 *
 * The end of the time stands in line with the events of the thread, behind what has come by then.
 *
 * @thread The one that makes it; endSoon() may be called on any.
 */
class BoundedWait
{
public:
    explicit BoundedWait(int milliseconds, const Clock &clock = Clock::host());

    void end(WaitEnd reason);
    /// The same by an event of the waiting thread.
    void endSoon(WaitEnd reason);
    /// Lets a signal end it, one of another thread by a queued call. The end of the sender ends it, too.
    template <typename Sender, typename Signal>
    void endOn(const Sender *sender, Signal signal, WaitEnd reason)
    {
        QObject::connect(sender, signal, &_context, [this, reason] { end(reason); });
        QObject::connect(sender, &QObject::destroyed, &_context, [this] { end(WaitEnd::Destroyed); });
    }
    /// Begins the time anew.
    void restart(int milliseconds) { _alarm->start(milliseconds); }
    /**
     * Waits. It may take longer than its time where events run loops of their own: until those are left.
     *
     * @return what has ended it; the next call waits for another end
     */
    WaitEnd exec();

private:
    QObject _context; ///< undoes the connections, and takes back what is queued
    QEventLoop _loop;
    std::unique_ptr<Alarm> _alarm;
    std::optional<WaitEnd> _end;
};
