// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>

class QSocketNotifier;

/**
 * The instrument's end of a serial line: a file of the kernel's that carries bytes in both directions.
 *
 * Bytes are handed on as they are. Nothing is lost when the other side does not read: what the kernel does not take waits
 * here, and bytesWaiting() tells how much that is.
 *
 * @thread Lives on one thread, which must run an event loop.
 */
class SerialEnd : public QObject
{
    Q_OBJECT

public:
    explicit SerialEnd(QObject *parent = nullptr);
    ~SerialEnd() override;

    /// Makes the line usable. @return false when it cannot be had; errorText() then says why
    virtual bool plug() = 0;
    /// Pulls the cable; what waits is thrown away.
    virtual void unplug();

    bool isOpen() const { return _fd >= 0; }
    QString errorText() const { return _errorText; }
    /// Path of the port, for example "/dev/pts/4".
    QString portName() const { return _portName; }

    /// Takes bytes to send; they leave in order, as fast as the other side makes room.
    void write(const QByteArray &bytes);
    /// Bytes that the kernel has not taken yet.
    int bytesWaiting() const { return _outgoing.size() - _outgoingSent; }

Q_SIGNALS:
    void received(const QByteArray &bytes);
    /// The kernel has taken everything that was waiting.
    void drained();

protected:
    /// Reads and writes this file from now on; it is closed by unplug().
    void use(int fd);
    void setPortName(const QString &name) { _portName = name; }
    /// Notes what has failed with the system's reason for it, or another one.
    void noteFailure(const QString &what);
    void noteFailure(const QString &what, const QString &reason);
    /// The file has nothing more to read: the other side is gone for good.
    virtual void onHangUp();

    /// Turns off all that a terminal does with bytes.
    static bool makeRaw(int fd);

private:
    void onReadable();
    void onWritable();

    int _fd = -1;
    QString _portName;
    QString _errorText;
    QByteArray _outgoing;
    int _outgoingSent = 0;
    QSocketNotifier *_readable = nullptr; ///< children, while the file is open
    QSocketNotifier *_writable = nullptr;
};
