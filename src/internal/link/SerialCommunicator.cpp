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
    connect(_thread, &SerialThread::PacketReceived, this, &SerialCommunicator::relay, Qt::QueuedConnection);
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

void SerialCommunicator::relay(Notifications_t type, unsigned int channel, const QByteArray &payload)
{
    const QPointer<SerialCommunicator> alive(this); // a receiver may delete the link
    Q_EMIT ResponseReceived(type, channel, payload);
    if (alive && !_receiverConfirms)
        packetHandled();
}

void SerialCommunicator::onLost()
{
    _isLost = true;
    Q_EMIT deviceDisconnected();
}

void SerialCommunicator::packetHandled()
{
    _thread->packetHandled();
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
    // The link thread queues each packet to this object as soon as it has it, so there is nothing to wait for there.
    QMetaObject::invokeMethod(
        this, [this, number] { Q_EMIT markPassed(number); }, Qt::QueuedConnection);
}

void SerialCommunicator::hangUp()
{
    _thread->hangUp();
}
