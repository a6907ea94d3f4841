// SPDX-License-Identifier: MIT
#pragma once

#include <condition_variable>
#include <memory>
#include <mutex>

class VekInstrumentHandlerPrivate;

/**
 * The way from a public handler to its private half, which lives and dies on another thread.
 *
 * The private half makes it and closes it before it goes; every request of the public half passes through it as a Call.
 * Closing waits until the calls under way have come back, so that none of them ever meets a half that is being
 * destroyed: a request may be waiting for an acknowledgement when the device is pulled.
 *
 * @thread Any.
 */
class HandlerLink
{
public:
    explicit HandlerLink(VekInstrumentHandlerPrivate *handler) : _handler(handler) {}

    /// A request under way. While it lives, so does the private half, if there still is one.
    class Call
    {
    public:
        /// @param link may be null: there is no device then
        explicit Call(std::shared_ptr<HandlerLink> link);
        ~Call();
        Call(const Call &) = delete;
        Call &operator=(const Call &) = delete;

        /// Null once the link has been closed.
        VekInstrumentHandlerPrivate *handler() const { return _handler; }

    private:
        const std::shared_ptr<HandlerLink> _link;
        VekInstrumentHandlerPrivate *const _handler;
    };

    /// Lets no further call in; those under way go on.
    void refuse();
    /// Lets no further call in, and waits for those under way, which last as long as a request may.
    void close();

private:
    VekInstrumentHandlerPrivate *enter();
    void leave();

    std::mutex _mutex; // guards the two below
    VekInstrumentHandlerPrivate *_handler;
    int _callsUnderWay = 0;
    std::condition_variable _allCallsCameBack;
};
