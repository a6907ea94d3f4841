// SPDX-License-Identifier: MIT
#pragma once

#include "link/Notifications.h"
#include "link/PacketBuffer.h"
#include "waiting/Clock.h"
#include "waiting/Mailbox.h"

#include <QByteArray>
#include <QSerialPort>
#include <QThread>

#include <atomic>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <vector>

class SerialPort;

/**
 * Owns one serial port: opens it, cuts incoming bytes into packets, writes outgoing frames.
 *
 * @thread  Lives on the thread that it runs. Slots run there and are reached by queued signals alone.
 *          waitForBytesWritten() and hangUp() are the exceptions: any thread may call them, and each of their waits
 *          blocks that thread up to 1,000 ms.
 * @failure An error of the port ends the thread: deviceDisconnected() comes once, later writes are dropped.
 */
class SerialThread : public QThread
{
    Q_OBJECT

public:
    explicit SerialThread(const QString &portName, const Clock &clock = Clock::host());
    ~SerialThread() override; ///< ends the thread and waits for it

    /**
     * Lets @p action queue something to this object, unless the thread is over; any thread. Nothing may be queued without
     * it: Qt wakes the receiving thread even while that one, after an error, takes its event loop apart.
     *
     * @return whether the action was run
     */
    template <typename Action>
    bool post(Action action)
    {
        const std::shared_lock<std::shared_mutex> lock(_overLock);
        if (!_isOver)
            action();
        return !_isOver;
    }
    /// Says that a command will be posted; any thread. One that comes too late to be taken counts as dropped.
    void handOver(qint64 bytes) { _bytesHandedOver += bytes; }
    /**
     * Blocks the caller until what was handed over before has left the port, or 1,000 ms have gone by.
     *
     * @return whether all has been handed to the driver; false if any of it was dropped, since the port was closed or has
     *         failed before
     */
    bool waitForBytesWritten();
    /**
     * Does on purpose what a pulled cable does: closes the port, tells deviceDisconnected() and ends the thread. What
     * was handed over before goes out first. Blocks the caller until that is done, at most twice 1,000 ms.
     */
    void hangUp();
    /// What has arrived and waits for its receiver; it is told by packetsWaiting().
    Mailbox<PacketBuffer> &arrivals() { return _arrivals; }
    /**
     * Says that packets have been dealt with, by the size of their frames; any thread. When too much is on its way,
     * reading stops until half of it is done, and the driver holds the instrument back: a client that cannot keep up
     * loses no packet and its memory stays bounded.
     */
    void packetsHandled(qint64 bytes);

public Q_SLOTS:
    /// Opens the port, throws stale input away, raises DTR. PortOpened() comes in any case.
    void OpenPort();
    void ClosePort();
    /// Writes frames; without an open port they are dropped without a word.
    void DataToSend(const QByteArray &bytes);
    void DataArrived();
    /// Any error, of whatever kind, is the loss of the device: tells it, closes the port and ends the thread.
    void ErrorOnSerial(QSerialPort::SerialPortError error);

Q_SIGNALS:
    /// arrivals() has something to deliver.
    void packetsWaiting();
    /// For whoever wants to see the packets one by one; nothing in the library does.
    void PacketReceived(Notifications_t type, unsigned int channel, const QByteArray &payload);
    void deviceDisconnected();
    void PortOpened();

protected:
    void run() override;

private:
    /// What a caller of waitForBytesWritten() is woken by, and finds then.
    struct Departure;
    /// Such a caller: woken when the port has written so many bytes in all.
    struct Waiter {
        qint64 target;
        std::shared_ptr<Departure> departure;
    };

    bool isHeldBack();
    void showToWatchers(PacketBuffer packets);
    void lose();
    void refusePosts();
    void onBytesWritten(qint64 bytes);
    bool hadAllLeft() const;
    void addWaiter(const std::shared_ptr<Departure> &departure);
    void wakeAllWaiters();

    const Clock &_clock;
    QByteArray _buffer;        ///< bytes read from the port and not yet consumed
    SerialPort *_port;         ///< owned; null once the thread has finished
    quint32 _skippedBytes = 0; ///< for the debugger: bytes that belonged to no frame since the start
    qint64 _bytesAccepted = 0;
    qint64 _bytesWritten = 0;
    std::atomic<bool> _hasDropped{false}; ///< bytes that the port did not accept
    std::atomic<bool> _hasAllLeft{false}; ///< of what it had accepted when it was closed
    std::atomic<qint64> _bytesHandedOver{0};
    std::atomic<qint64> _bytesTaken{0}; ///< of these, accepted or dropped
    bool _lost = false;
    Mailbox<PacketBuffer> _arrivals{[this] { Q_EMIT packetsWaiting(); }};
    std::atomic<qint64> _bytesOnTheirWay{0};
    std::atomic<bool> _heldBack{false};
    std::vector<Waiter> _waiters;
    std::shared_mutex _overLock; // guards _isOver, and is held while something is queued
    bool _isOver = false;        ///< nothing that is queued will be dealt with any more
};
