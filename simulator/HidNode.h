// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QDeadlineTimer>
#include <QObject>
#include <QString>
#include <QTimer>

class QSocketNotifier;

/// One way to a host: a file that carries a report with each read and write. Closes the file with itself.
class ReportChannel : public QObject
{
    Q_OBJECT

public:
    /// @param deafMs for so long no report is taken
    ReportChannel(int fd, int deafMs, QObject *parent);
    ~ReportChannel() override;

    /// Takes a report to send; it leaves when the file has room.
    void write(const QByteArray &report);

Q_SIGNALS:
    void received(const QByteArray &report);

private:
    void onReadable();
    void onWritable();

    int _fd;
    QByteArrayList _outgoing;
    QSocketNotifier *_readable; ///< children
    QSocketNotifier *_writable;
};

/// What a USB device says of itself.
struct HidIdentity {
    quint16 vendor = 0x04D8;
    quint16 product = 0x003C;
    quint16 release = 0;
    QString manufacturer = QStringLiteral("Brenmoor Apparatus");
    QString name = QStringLiteral("Nimbrelle HID bootloader");
};

/**
 * The device side of a HID: 64-byte reports in both directions, without report numbers.
 *
 * A path below /dev is the node of a USB gadget and is waited for. Any other path becomes a socket that a stand-in for
 * hidapi connects to: packets (SOCK_SEQPACKET), of which the first one tells the identity, and each of the others is a
 * report. The socket is there while the device is.
 *
 * @thread Lives on one thread, which must run an event loop.
 */
class HidNode : public QObject
{
    Q_OBJECT

public:
    HidNode(const QString &path, const HidIdentity &identity, QObject *parent = nullptr);
    ~HidNode() override;

    QString path() const { return _path; }
    /// It is there already and is not made.
    bool isDevice() const { return _path.startsWith(QLatin1String("/dev/")); }
    /**
     * Makes the device appear.
     *
     * @param deafMs for so long it takes no report
     * @return false when there can be no such node; errorText() then says why
     */
    bool open(int deafMs);
    void close();
    QString errorText() const { return _errorText; }

Q_SIGNALS:
    /// A report and the channel to answer it on.
    void received(ReportChannel *channel, const QByteArray &report);

private:
    void openDevice();
    bool openSocket();
    bool bindServer();
    void onConnection();
    void use(int fd);

    QString _path;
    HidIdentity _identity;
    QString _errorText;
    QDeadlineTimer _deafness;
    QTimer _retry;
    int _server = -1;
    QSocketNotifier *_connecting = nullptr;
};
