// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>

#include <algorithm>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>

/**
 * Rings once when a time is over: as an event of the thread that made it, behind those that have come by then, so that a
 * slot which has held the thread for longer does not cost what came meanwhile.
 *
 * @thread The one that makes it.
 */
class Alarm : public QObject
{
public:
    explicit Alarm(std::function<void()> ring) : _ring(std::move(ring)) {}

    /// Sets it, anew if it is set.
    void start(int milliseconds);
    /// Takes back a ring that is on its way, too.
    void stop();

protected:
    virtual void arm(int milliseconds) = 0;
    virtual void disarm() = 0;
    /// Called when the time is over; @p setting is the one that it was armed with. Any thread.
    void queueRing(int setting);
    int setting() const { return _setting; }

private:
    const std::function<void()> _ring;
    int _setting = 0; ///< counts its settings
};

/**
 * Tells the time of waits and ends them. Whoever waits takes the clock as an argument: the host's in a program, one that
 * is stepped by hand in a test.
 *
 * @thread Any.
 */
class Clock
{
public:
    virtual ~Clock() = default;

    /// Milliseconds since some moment; never goes back.
    virtual qint64 now() const = 0;
    virtual std::unique_ptr<Alarm> makeAlarm(std::function<void()> ring) const = 0;
    /**
     * Blocks the thread until a condition holds, which is asked under @p lock when @p change is notified.
     *
     * @return whether it holds; false when the time was over before
     */
    virtual bool block(std::unique_lock<std::mutex> &lock, std::condition_variable &change, int milliseconds,
                       const std::function<bool()> &isOver) const = 0;
    /// Blocks the thread for a time.
    void sleep(int milliseconds) const;

    /// The clock of this process: the system's, unless replaced.
    static const Clock &host();
    /// For tests, of what makes its objects by itself: before the first of them; null puts the system's back.
    static void replaceHost(const Clock *clock);
};

/// A moment in the future of a clock. One that was not given has come.
class Deadline
{
public:
    Deadline() = default;
    Deadline(int milliseconds, const Clock &clock) : _clock(&clock), _moment(clock.now() + milliseconds) {}

    bool hasCome() const { return remaining() == 0; }
    /// Milliseconds until then; 0 when it has come.
    int remaining() const { return _clock ? int(std::max<qint64>(0, _moment - _clock->now())) : 0; }

private:
    const Clock *_clock = nullptr;
    qint64 _moment = 0;
};
