// SPDX-License-Identifier: MIT
#pragma once

#include "link/Notifications.h"
#include "link/PCcommand.h"
#include "link/PacketBuffer.h"
#include "waiting/Clock.h"
#include "waiting/Mailbox.h"

#include <QByteArray>
#include <QObject>

class SerialThread;

/**
 * One end of a serial link: takes commands, gives packets, and keeps the port on a thread of its own.
 *
 * A communicator is constructed with the port closed, opened by Start(), closed by Stop() and may be started again. Once
 * deviceDisconnected() has come it is of no further use.
 *
 * @thread Lives on the thread that makes it, which must run an event loop (or a local one) for packets to be delivered.
 *         Sending may be called from any thread: it hands the bytes over by a queued signal and says nothing of whether
 *         they reached the port.
 */
class SerialCommunicator : public QObject
{
    Q_OBJECT

public:
    /// @p parent is accepted and left unused: the object belongs to whoever made it.
    explicit SerialCommunicator(const QString &portName, QObject *parent = nullptr, const Clock &clock = Clock::host());
    /// Ends the link thread and waits until the port is closed.
    ~SerialCommunicator() override;

    /**
     * Opens the port. With @p wait it runs a local event loop until the port has been tried, at most 10 s.
     *
     * @return without @p wait always true; with it, whether the attempt came to an end. A port that cannot be opened is
     *         not told apart here: deviceDisconnected() follows.
     */
    Q_INVOKABLE bool Start(bool wait = false);
    /// Closes the port; the link thread goes on.
    Q_INVOKABLE virtual void Stop();
    /// Sends a command in a frame.
    Q_INVOKABLE virtual void SendCommand(PCcommand_t command, unsigned char channel = deviceChannel,
                                         const QByteArray &data = QByteArray());
    /// Sends bytes as they stand, unframed.
    Q_INVOKABLE void SendCommand(const QByteArray &bytes);
    /**
     * Has the packets wait in packets() instead of coming by ResponseReceived(). Their receiver, on whatever thread,
     * delivers them from there when packetsWaiting() reaches it, and says by packetsHandled() when it is done with them;
     * without this a packet counts as done when the signal has been emitted. Call it before Start().
     */
    void letReceiverTakePackets() { _receiverTakes = true; }
    Mailbox<PacketBuffer> &packets() { return _packets; }
    /// Says that packets of so many bytes, headers included, have been dealt with; any thread.
    void packetsHandled(qint64 bytes);
    /// Blocks until what was handed over before has left the port, or 1,000 ms have gone by. @return whether all has left
    Q_INVOKABLE bool WaitForBytesSent();
    /**
     * Sends markPassed() with @p number along the way of the packets: it arrives behind all those that have reached the
     * process by now. Any thread.
     */
    void mark(int number);
    /**
     * Gives the port up for good, as if the cable had been pulled: deviceDisconnected() follows. What was handed over
     * before goes out first. Blocks until the port is closed; at most 2 s, after which the kernel may hold it still.
     */
    void hangUp();
    /// Whether deviceDisconnected() has come; on the communicator's thread.
    bool isLost() const { return _isLost; }
    /// By which everybody who waits for this link tells the time.
    const Clock &clock() const { return _clock; }

Q_SIGNALS:
    void OpenPort();
    void ClosePort();
    void SendData(const QByteArray &bytes);
    void ResponseReceived(Notifications_t type, unsigned int channel, const QByteArray &payload);
    void packetsWaiting();
    void markPassed(int number);
    /// The port has failed; comes once.
    void deviceDisconnected();
    // For Start(), which must not connect to the link thread's own signals: that thread may be emitting started().
    void portTried();
    void threadEnded();

private:
    void onLost();
    void onPacketsArrived();
    void relay();
    bool passSomeOn();
    bool announce(const Frame &packet);

    const Clock &_clock;
    SerialThread *_thread; // owned
    Mailbox<PacketBuffer> _packets{[this] { Q_EMIT packetsWaiting(); }};
    PacketBuffer _unrelayed; ///< taken from the link's thread
    bool _receiverTakes = false;
    bool _isLost = false;
};
