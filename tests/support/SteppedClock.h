// SPDX-License-Identifier: MIT
#pragma once

#include "waiting/Clock.h"

#include <QList>
#include <QMap>
#include <QSet>

#include <atomic>
#include <climits>

/**
 * A clock that stands still until a test steps it. A step lets the waits that are due end, each on the thread that waits.
 *
 * @thread Any. What waits by it has to be gone before it is.
 */
class SteppedClock : public Clock
{
public:
    /// Takes the place of the host's clock while it lives, if so wanted.
    enum class Use { AsArgument, AsHost };
    explicit SteppedClock(Use use = Use::AsArgument);
    ~SteppedClock() override;

    qint64 now() const override { return _now; }
    std::unique_ptr<Alarm> makeAlarm(std::function<void()> ring) const override;
    bool block(std::unique_lock<std::mutex> &lock, std::condition_variable &change, int milliseconds,
               const std::function<bool()> &isOver) const override;

    void step(int milliseconds);
    /// Lets the next waits of this length be over as soon as they have begun, and time pass by as much.
    void hurry(int milliseconds, int waits = INT_MAX);
    /**
     * Steps to the next end of a wait that has one of these lengths. No step is made before what has ended by the last one
     * has been dealt with, so that time never outruns a thread. @return whether there was one
     */
    bool stepToNext(const QSet<int> &lengths);
    /// Steps to the end of the next wait of a blocked thread, whatever its length, and whatever that one has to deal with.
    bool wakeNext();
    /**
     * Delivers events and steps so, again and again, in loops that slots run as well, until a condition holds.
     *
     * @return whether it holds; false after a minute of the system's time
     */
    bool stepUntil(const std::function<bool()> &condition, const QSet<int> &lengths);

private:
    class SteppedAlarm;
    /// A wait that is under way, in a loop or blocked.
    struct Wait {
        qint64 due;
        int length;
        SteppedAlarm *alarm; ///< or, of a blocked thread, null and the next two
        std::mutex *mutex;
        std::condition_variable *change;
    };

    qint64 begin(Wait wait) const;
    void endDue() const;
    bool stepTo(const std::function<bool(const Wait &)> &isMeant);

    mutable std::mutex _mutex; ///< guards what follows, but is not needed to read the time
    mutable std::atomic<qint64> _now{0};
    mutable QList<Wait> _waits;
    mutable QSet<const SteppedAlarm *> _ringing; ///< over, and not yet dealt with
    mutable QMap<int, int> _hurried;             ///< length to number of waits
    const bool _isHost;
};
