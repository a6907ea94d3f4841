// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>

#include <functional>
#include <memory>

class VekInstrumentHandler;

/**
 * Carries what the private half of a handler tells to the public one on another thread: every signal in its order, with
 * one event for many. Queued connections would take an event for each, and most of them are samples.
 *
 * A child of the public half: it goes with it, and moves with it to other threads. What is told on the public half's own
 * thread is told at once.
 *
 * @thread The public half's; Way::tell() any.
 */
class SignalRelay : public QObject
{
public:
    using Telling = std::function<void(VekInstrumentHandler &)>;
    /// The end that the other thread holds. It outlives the relay, and leads nowhere then.
    class Way;

    explicit SignalRelay(VekInstrumentHandler &to);
    ~SignalRelay() override;

    /// Has a signal of a private half emitted as one of the public half's own.
    template <typename Sender, typename... Told, typename... Arguments>
    void connectTo(Sender *sender, void (Sender::*signal)(Told...), void (VekInstrumentHandler::*own)(Arguments...))
    {
        connect(sender, signal, [way = _way, own](const std::decay_t<Told> &...told) {
            tell(*way, [own, told...](VekInstrumentHandler &handler) { (handler.*own)(told...); });
        });
    }

private:
    static void tell(Way &way, Telling telling);
    void deliver();

    VekInstrumentHandler &_to;
    const std::shared_ptr<Way> _way;
};
