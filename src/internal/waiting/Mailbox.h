// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <mutex>
#include <utility>

/**
 * Carries things from one thread to another in their order, with one event for many of them.
 *
 * An event for each would cost more than what is done with the thing: memory for its arguments, a lock, and the
 * awakening of a thread that is about to sleep.
 *
 * @tparam Store  what the things wait in: `append(...)` takes one or several of them, `append(Store &&)` another's, and
 *                `isEmpty()` and `takeFirst()` are as in a list
 * @thread put() any; deliver() the receiver's own.
 */
template <typename Store>
class Mailbox
{
public:
    /// @param wake  has deliver() called on the receiver's thread, by an event; called by whoever puts something in,
    ///              and by deliver()
    explicit Mailbox(std::function<void()> wake) : _wake(std::move(wake)) {}

    template <typename... Things>
    void put(Things &&...things)
    {
        {
            const std::lock_guard<std::mutex> lock(_guard);
            _arrived.append(std::forward<Things>(things)...);
            if (std::exchange(_isWakeUnderWay, true))
                return;
        }
        _wake();
    }

    /**
     * Hands out what has come. A receiver may run an event loop of its own: the rest is handed out there, as events
     * would be.
     *
     * @param receive  takes one thing; returns false when the mailbox is no more, or no longer wanted
     */
    template <typename Receive>
    void deliver(Receive receive)
    {
        takeArrived();
        if (_open.isEmpty())
            return;
        auto first = _open.takeFirst();
        if (!_open.isEmpty())
            wakeForTheRest();
        while (receive(std::move(first)) && !_open.isEmpty())
            first = _open.takeFirst();
    }

    /// The receiver's: all that has come, to be passed on as it is.
    Store takeAll()
    {
        takeArrived();
        return std::exchange(_open, Store());
    }

private:
    void takeArrived()
    {
        const std::lock_guard<std::mutex> lock(_guard);
        _isWakeUnderWay = false;
        _open.append(std::exchange(_arrived, Store()));
    }
    void wakeForTheRest()
    {
        {
            const std::lock_guard<std::mutex> lock(_guard);
            if (std::exchange(_isWakeUnderWay, true))
                return;
        }
        _wake();
    }

    const std::function<void()> _wake;
    std::mutex _guard; // guards the two below
    Store _arrived;
    bool _isWakeUnderWay = false;
    Store _open; // the receiver's: what it has been woken for
};
