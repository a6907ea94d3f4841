// SPDX-License-Identifier: MIT
#include "handlers/HandlerLink.h"

#include <utility>

HandlerLink::Call::Call(std::shared_ptr<HandlerLink> link)
    : _link(std::move(link)), _handler(_link ? _link->enter() : nullptr)
{
}

HandlerLink::Call::~Call()
{
    if (_handler)
        _link->leave();
}

void HandlerLink::refuse()
{
    const std::lock_guard<std::mutex> lock(_mutex);
    _handler = nullptr;
}

void HandlerLink::close()
{
    std::unique_lock<std::mutex> lock(_mutex);
    _handler = nullptr;
    _allCallsCameBack.wait(lock, [this] { return _callsUnderWay == 0; });
}

VekInstrumentHandlerPrivate *HandlerLink::enter()
{
    const std::lock_guard<std::mutex> lock(_mutex);
    if (_handler)
        ++_callsUnderWay;
    return _handler;
}

void HandlerLink::leave()
{
    const std::lock_guard<std::mutex> lock(_mutex);
    if (--_callsUnderWay == 0)
        _allCallsCameBack.notify_all();
}
