// SPDX-License-Identifier: MIT
#include "link/SerialThread.h"

#include "link/DefaultSerialPortSettings.h"
#include "link/Frame.h"
#include "link/SerialPort.h"
#include "waiting/ThreadBound.h"

#include <QMetaMethod>

#include <utility>

namespace {

constexpr int writeTimeoutMs = 1000;
constexpr int closeTimeoutMs = 1000;
constexpr int readBufferBytes = 1 << 16;
/// Of frames that may be on their way to the client: 10 s of what full-speed USB can carry.
constexpr qint64 mostBytesOnTheirWay = 12'000'000;

void configure(SerialPort &port, const QString &portName)
{
    port.setPortName(
        QString(portName.constData(), portName.size())); // not shared: it is let go of on the link's thread
    port.setBaudRate(DefaultSerialPortSettings::Baudrate());
    port.setDataBits(DefaultSerialPortSettings::DataBits());
    port.setFlowControl(DefaultSerialPortSettings::FlowControl());
    port.setParity(DefaultSerialPortSettings::Parity());
    port.setStopBits(DefaultSerialPortSettings::StopBits());
    port.setReadBufferSize(readBufferBytes);
}

} // namespace

struct SerialThread::Departure {
    void end(bool allHasLeft)
    {
        const std::lock_guard<std::mutex> lock(mutex);
        isOver = true;
        hasLeft = allHasLeft;
        change.notify_all();
    }

    std::mutex mutex; // guards the two below
    bool isOver = false;
    bool hasLeft = false;
    std::condition_variable change;
};

SerialThread::SerialThread(const QString &portName, const Clock &clock) : _clock(clock), _port(new SerialPort(this))
{
    qRegisterMetaType<Notifications_t>();
    qRegisterMetaType<QSerialPort::SerialPortError>();
    setObjectName(QStringLiteral("link ") + portName);
    configure(*_port, portName);
    connect(_port, &SerialPort::readyRead, this, &SerialThread::DataArrived, Qt::QueuedConnection);
    connect(_port, &SerialPort::errorOccurred, this, &SerialThread::ErrorOnSerial, Qt::QueuedConnection);
    connect(_port, &SerialPort::bytesWritten, this, &SerialThread::onBytesWritten, Qt::DirectConnection);
    moveToThread(this);
}

SerialThread::~SerialThread()
{
    quit();
    wait();
    delete _port; // there still if the thread was never started
}

void SerialThread::run()
{
    exec();
    refusePosts();
    ClosePort();
    delete _port;
    _port = nullptr;
    wakeAllWaiters();
}

void SerialThread::refusePosts()
{
    const std::unique_lock<std::shared_mutex> lock(_overLock);
    _isOver = true;
}

void SerialThread::OpenPort()
{
    assertOnThreadOf(*this);
    if (_port && !_port->isOpen() && _port->open(QIODevice::ReadWrite)) {
        _port->discardInput(); // right after open, readAll() does not see what the driver holds
        _port->readAll();
        _port->setDataTerminalReady(true);
    }
    Q_EMIT PortOpened();
}

void SerialThread::ClosePort()
{
    assertOnThreadOf(*this);
    if (!_port || !_port->isOpen())
        return;
    _port->flush();
    // An instrument that restarts on a command hangs up before Qt tells that the command has been written.
    _hasAllLeft = _port->bytesToWrite() == 0;
    wakeAllWaiters(); // first: the kernel may hold the close up to 30 s if the instrument takes no data
    _port->close();
}

void SerialThread::DataToSend(const QByteArray &bytes)
{
    assertOnThreadOf(*this);
    const bool isWritable = _port && _port->isOpen() && _port->isWritable();
    const qint64 accepted = isWritable ? _port->write(bytes) : 0;
    _bytesTaken += bytes.size();
    if (accepted > 0)
        _bytesAccepted += accepted;
    _hasDropped = _hasDropped || accepted < bytes.size();
}

void SerialThread::DataArrived()
{
    if (!_port || isHeldBack())
        return;
    _buffer += _port->readAll();
    PacketBuffer packets = takePackets(_buffer, _skippedBytes);
    if (packets.isEmpty())
        return;
    showToWatchers(packets);
    _bytesOnTheirWay += packets.bytes();
    _arrivals.put(std::move(packets));
}

void SerialThread::showToWatchers(PacketBuffer packets)
{
    static const QMetaMethod packetReceived = QMetaMethod::fromSignal(&SerialThread::PacketReceived);
    if (!isSignalConnected(packetReceived))
        return;
    while (!packets.isEmpty()) {
        const Frame packet = packets.takeFirst();
        Q_EMIT PacketReceived(packet.type, packet.channel, packet.payload);
    }
}

bool SerialThread::isHeldBack()
{
    // The flag is raised before the second look, so that the receiver cannot finish in between unseen.
    _heldBack = true;
    if (_bytesOnTheirWay >= mostBytesOnTheirWay)
        return true;
    _heldBack = false;
    return false;
}

void SerialThread::packetsHandled(qint64 bytes)
{
    constexpr qint64 half = mostBytesOnTheirWay / 2;
    const qint64 before = _bytesOnTheirWay.fetch_sub(bytes);
    if (before > half && before - bytes <= half && _heldBack.exchange(false))
        post([this] { QMetaObject::invokeMethod(this, &SerialThread::DataArrived, Qt::QueuedConnection); });
}

void SerialThread::ErrorOnSerial(QSerialPort::SerialPortError error)
{
    if (error != QSerialPort::NoError)
        lose();
}

void SerialThread::lose()
{
    assertOnThreadOf(*this);
    if (_lost)
        return;
    _lost = true; // Qt repeats the error of a vanished device thousands of times a second until the port is closed
    ClosePort();
    Q_EMIT deviceDisconnected();
    quit();
}

void SerialThread::hangUp()
{
    waitForBytesWritten(); // closing throws away what Qt has not handed to the driver
    post([this] { QMetaObject::invokeMethod(this, &SerialThread::lose, Qt::QueuedConnection); });
    wait(closeTimeoutMs); // of the system's time: it is the kernel that keeps it
}

bool SerialThread::waitForBytesWritten()
{
    if (!isRunning())
        return hadAllLeft();
    // Queued behind every write that this caller has handed over. The departure is shared: the caller may have given up
    // before the link thread comes to it.
    const auto departure = std::make_shared<Departure>();
    const bool isPosted = post([&] {
        QMetaObject::invokeMethod(
            this, [this, departure] { addWaiter(departure); }, Qt::QueuedConnection);
    });
    if (!isPosted)
        return hadAllLeft();
    std::unique_lock<std::mutex> lock(departure->mutex);
    const auto isOver = [&departure] { return departure->isOver; };
    return _clock.block(lock, departure->change, writeTimeoutMs, isOver) && departure->hasLeft;
}

/// Whether a port that is closed by now took everything along, the commands included that came too late for it.
bool SerialThread::hadAllLeft() const
{
    return _hasAllLeft && !_hasDropped && _bytesTaken == _bytesHandedOver;
}

void SerialThread::addWaiter(const std::shared_ptr<Departure> &departure)
{
    assertOnThreadOf(*this);
    const bool isOpen = _port && _port->isOpen();
    if (isOpen && _bytesWritten < _bytesAccepted) {
        _waiters.push_back({_bytesAccepted, departure});
        return;
    }
    departure->end(isOpen ? !_hasDropped : hadAllLeft());
}

void SerialThread::onBytesWritten(qint64 bytes)
{
    _bytesWritten += bytes;
    while (!_waiters.empty() && _waiters.front().target <= _bytesWritten) {
        _waiters.front().departure->end(!_hasDropped);
        _waiters.erase(_waiters.begin());
    }
}

void SerialThread::wakeAllWaiters()
{
    for (const Waiter &waiter : _waiters)
        waiter.departure->end(hadAllLeft());
    _waiters.clear();
    _bytesWritten = _bytesAccepted; // what a closed port had not written is gone
}
