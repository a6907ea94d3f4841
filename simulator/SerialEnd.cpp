// SPDX-License-Identifier: MIT
#include "SerialEnd.h"

#include <QSocketNotifier>

#include <cerrno>
#include <cstring>
#include <termios.h>
#include <unistd.h>

SerialEnd::SerialEnd(QObject *parent) : QObject(parent)
{
}

SerialEnd::~SerialEnd()
{
    SerialEnd::unplug();
}

bool SerialEnd::makeRaw(int fd)
{
    termios settings = {};
    if (tcgetattr(fd, &settings) != 0)
        return false;
    cfmakeraw(&settings);
    return tcsetattr(fd, TCSANOW, &settings) == 0;
}

void SerialEnd::use(int fd)
{
    _fd = fd;
    _readable = new QSocketNotifier(fd, QSocketNotifier::Read, this);
    _writable = new QSocketNotifier(fd, QSocketNotifier::Write, this);
    _writable->setEnabled(false);
    connect(_readable, &QSocketNotifier::activated, this, [this] { onReadable(); });
    connect(_writable, &QSocketNotifier::activated, this, [this] { onWritable(); });
}

void SerialEnd::noteFailure(const QString &what)
{
    noteFailure(what, QString::fromLocal8Bit(std::strerror(errno)));
}

void SerialEnd::noteFailure(const QString &what, const QString &reason)
{
    _errorText = what + QStringLiteral(": ") + reason;
}

void SerialEnd::unplug()
{
    if (!isOpen())
        return;
    for (QSocketNotifier *notifier : {_readable, _writable}) {
        notifier->setEnabled(false);
        notifier->deleteLater(); // it may be what called us
    }
    ::close(_fd);
    _fd = -1;
    _outgoing.clear();
    _outgoingSent = 0;
}

void SerialEnd::onHangUp()
{
}

void SerialEnd::write(const QByteArray &bytes)
{
    if (!isOpen())
        return;
    _outgoing += bytes;
    onWritable();
}

void SerialEnd::onWritable()
{
    while (bytesWaiting() > 0) {
        const ssize_t sent = ::write(_fd, _outgoing.constData() + _outgoingSent, size_t(bytesWaiting()));
        if (sent <= 0)
            break;
        _outgoingSent += int(sent);
    }
    const bool allGone = bytesWaiting() == 0;
    const bool waited = _writable->isEnabled();
    if (allGone || _outgoingSent > (1 << 16)) {
        _outgoing.remove(0, _outgoingSent);
        _outgoingSent = 0;
    }
    _writable->setEnabled(!allGone);
    if (allGone && waited)
        Q_EMIT drained();
}

void SerialEnd::onReadable()
{
    char buffer[4096];
    const ssize_t count = ::read(_fd, buffer, sizeof buffer);
    if (count > 0)
        Q_EMIT received(QByteArray(buffer, int(count)));
    else if (count == 0 || errno != EAGAIN)
        onHangUp();
}
