// SPDX-License-Identifier: MIT
#include "SignalRelay.h"

#include "VekInstrumentHandler.h"
#include "waiting/Mailbox.h"

#include <QPointer>
#include <QThread>

#include <deque>
#include <iterator>
#include <mutex>

class SignalRelay::Way
{
public:
    explicit Way(SignalRelay &relay) : _relay(&relay) {}

    void tell(Telling telling)
    {
        {
            const std::lock_guard<std::mutex> lock(_guard);
            if (!_relay)
                return;
            if (_relay->thread() != QThread::currentThread())
                return _tellings.put(std::move(telling));
        }
        telling(_relay->_to); // on the relay's own thread, which alone may end it
    }
    template <typename Receive>
    void deliver(Receive receive)
    {
        _tellings.deliver(receive);
    }
    void close()
    {
        const std::lock_guard<std::mutex> lock(_guard);
        _relay = nullptr;
    }

private:
    class Tellings
    {
    public:
        void append(Telling telling) { _waiting.push_back(std::move(telling)); }
        void append(Tellings &&others)
        {
            if (isEmpty())
                std::swap(_waiting, others._waiting);
            else
                std::move(others._waiting.begin(), others._waiting.end(), std::back_inserter(_waiting));
        }
        bool isEmpty() const { return _waiting.empty(); }
        Telling takeFirst()
        {
            Telling first = std::move(_waiting.front());
            _waiting.pop_front();
            return first;
        }

    private:
        std::deque<Telling> _waiting;
    };

    void wake() const { QMetaObject::invokeMethod(_relay, &SignalRelay::deliver, Qt::QueuedConnection); }

    std::mutex _guard; // guards the next, and is held while something is posted to it
    SignalRelay *_relay;
    Mailbox<Tellings> _tellings{[this] { wake(); }};
};

SignalRelay::SignalRelay(VekInstrumentHandler &to) : QObject(&to), _to(to), _way(std::make_shared<Way>(*this))
{
}

SignalRelay::~SignalRelay()
{
    _way->close();
}

void SignalRelay::tell(Way &way, Telling telling)
{
    way.tell(std::move(telling));
}

void SignalRelay::deliver()
{
    const QPointer<SignalRelay> alive(this); // a slot may delete the handler
    const std::shared_ptr<Way> way = _way;
    way->deliver([&](const Telling &telling) {
        telling(_to);
        return !alive.isNull();
    });
}
