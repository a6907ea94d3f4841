// SPDX-License-Identifier: MIT
#include "link/SerialCommunicator.h"

#include "link/Frame.h"
#include "link/SerialThread.h"
#include "waiting/BoundedWait.h"

#include <QPointer>

namespace {

constexpr int openTimeoutMs = 10000;

} // namespace

SerialCommunicator::SerialCommunicator(const QString &portName, QObject *, const Clock &clock)
    : _clock(clock), _thread(new SerialThread(portName, clock))
{
    connect(_thread, &SerialThread::packetsWaiting, this, &SerialCommunicator::onPacketsArrived, Qt::QueuedConnection);
    connect(_thread, &SerialThread::deviceDisconnected, this, &SerialCommunicator::onLost, Qt::QueuedConnection);
    connect(_thread, &SerialThread::PortOpened, this, &SerialCommunicator::portTried, Qt::QueuedConnection);
    connect(_thread, &QThread::finished, this, &SerialCommunicator::threadEnded, Qt::QueuedConnection);
    connect(this, &SerialCommunicator::OpenPort, _thread, &SerialThread::OpenPort, Qt::QueuedConnection);
    connect(this, &SerialCommunicator::ClosePort, _thread, &SerialThread::ClosePort, Qt::QueuedConnection);
    connect(this, &SerialCommunicator::SendData, _thread, &SerialThread::DataToSend, Qt::QueuedConnection);
    _thread->start(QThread::InheritPriority);
}

SerialCommunicator::~SerialCommunicator()
{
    // The object lives on the thread that it runs, so a deferred deletion would never be carried out once that ended.
    delete _thread;
}

void SerialCommunicator::onPacketsArrived()
{
    if (!_receiverTakes)
        _thread->arrivals().deliver([this](const Frame &packet) { return announce(packet); });
    else if (_unrelayed.isEmpty()) // else its events are under way
        relay();
}

/**
 * Passes on some of what has come, and the rest by events behind this one. What the receiver makes of it comes back to
 * this thread between them, so that no more of that waits here than this event brings, however slow a client's slots are.
 */
void SerialCommunicator::relay()
{
    if (passSomeOn())
        QMetaObject::invokeMethod(this, &SerialCommunicator::relay, Qt::QueuedConnection);
}

/// @return whether there is more
bool SerialCommunicator::passSomeOn()
{
    _unrelayed.append(_thread->arrivals().takeAll());
    if (!_unrelayed.isEmpty())
        _packets.put(_unrelayed.takeSome());
    return !_unrelayed.isEmpty();
}

/// @return whether the link is still there: a receiver may delete it
bool SerialCommunicator::announce(const Frame &packet)
{
    const QPointer<SerialCommunicator> alive(this);
    Q_EMIT ResponseReceived(packet.type, packet.channel, packet.payload);
    if (alive)
        packetsHandled(packet.size());
    return alive;
}

void SerialCommunicator::onLost()
{
    _isLost = true;
    Q_EMIT deviceDisconnected();
}

void SerialCommunicator::packetsHandled(qint64 bytes)
{
    _thread->packetsHandled(bytes);
}

bool SerialCommunicator::Start(bool wait)
{
    if (!wait) {
        _thread->post([this] { Q_EMIT OpenPort(); });
        return true;
    }
    BoundedWait opening(openTimeoutMs, _clock);
    opening.endOn(this, &SerialCommunicator::portTried, WaitEnd::Answered);
    opening.endOn(this, &SerialCommunicator::threadEnded, WaitEnd::LinkLost);
    if (!_thread->post([this] { Q_EMIT OpenPort(); }))
        return false;
    return opening.exec() == WaitEnd::Answered;
}

void SerialCommunicator::Stop()
{
    _thread->post([this] { Q_EMIT ClosePort(); });
}

void SerialCommunicator::SendCommand(PCcommand_t command, unsigned char channel, const QByteArray &data)
{
    SendCommand(makeFrame(command, channel, data));
}

void SerialCommunicator::SendCommand(const QByteArray &bytes)
{
    _thread->handOver(bytes.size());
    _thread->post([&] { Q_EMIT SendData(bytes); });
}

bool SerialCommunicator::WaitForBytesSent()
{
    return _thread->waitForBytesWritten();
}

void SerialCommunicator::mark(int number)
{
    QMetaObject::invokeMethod(
        this,
        [this, number] {
            while (_receiverTakes && passSomeOn()) {
            }
            Q_EMIT markPassed(number);
        },
        Qt::QueuedConnection);
}

void SerialCommunicator::hangUp()
{
    _thread->hangUp();
}
