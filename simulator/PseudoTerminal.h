#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>

#include <memory>

class QSocketNotifier;

/**
 * The instrument's end of a pseudo-terminal; a program under test opens the other end as a serial port.
 *
 * Bytes are handed on as they are (raw mode), in both directions. Nothing is lost when the other side does not read:
 * what the kernel does not take waits here, and bytesWaiting() tells how much that is.
 *
 * @thread Lives on one thread, which must run an event loop.
 */
class PseudoTerminal : public QObject
{
    Q_OBJECT

public:
    /// @param linkPath where a symbolic link to the port is made; none if empty. It goes with the object.
    explicit PseudoTerminal(const QString &linkPath = QString(), QObject *parent = nullptr);
    ~PseudoTerminal() override;

    /// False when no terminal or no link could be made; errorText() then says why.
    bool isOpen() const { return _master >= 0; }
    QString errorText() const { return _errorText; }
    /// Path of the other end, for example "/dev/pts/4".
    QString portName() const { return _portName; }

    /// Takes bytes to send; they leave in order, as fast as the other side makes room.
    void write(const QByteArray &bytes);
    /// Bytes that the kernel has not taken yet.
    int bytesWaiting() const { return _outgoing.size() - _outgoingSent; }
    /// Pulls the cable: the other side sees its port vanish.
    void unplug();

Q_SIGNALS:
    void received(const QByteArray &bytes);
    /// The kernel has taken everything that was waiting.
    void drained();

private:
    void open(const QString &linkPath);
    void onReadable();
    void onWritable();
    void fail(const QString &what);

    int _master = -1;
    int _keptSlave = -1; ///< held open so that the terminal outlives each program that opens and closes it
    QString _portName;
    QString _linkPath;
    QString _errorText;
    QByteArray _outgoing;
    int _outgoingSent = 0;
    std::unique_ptr<QSocketNotifier> _readable;
    std::unique_ptr<QSocketNotifier> _writable;
};
