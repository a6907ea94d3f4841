// SPDX-License-Identifier: MIT
#include "simulator/HidNode.h"

#include "simulator/OwnPaths.h"

#include <QFile>
#include <QSocketNotifier>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

constexpr int reportSize = 64;
constexpr int retryMs = 20;
constexpr int waitingHosts = 8;

/// The fields as lines, numbers in decimal.
QByteArray packetOf(const HidIdentity &identity)
{
    return QStringLiteral("%1\n%2\n%3\n%4\n%5")
        .arg(identity.vendor)
        .arg(identity.product)
        .arg(identity.release)
        .arg(identity.manufacturer, identity.name)
        .toUtf8();
}

} // namespace

ReportChannel::ReportChannel(int fd, int deafMs, QObject *parent)
    : QObject(parent), _fd(fd), _readable(new QSocketNotifier(fd, QSocketNotifier::Read, this)),
      _writable(new QSocketNotifier(fd, QSocketNotifier::Write, this))
{
    _writable->setEnabled(false);
    _readable->setEnabled(deafMs == 0);
    if (deafMs > 0)
        QTimer::singleShot(deafMs, this, [this] { _readable->setEnabled(true); });
    connect(_readable, &QSocketNotifier::activated, this, [this] { onReadable(); });
    connect(_writable, &QSocketNotifier::activated, this, [this] { onWritable(); });
}

ReportChannel::~ReportChannel()
{
    _readable->setEnabled(false);
    _writable->setEnabled(false);
    ::close(_fd);
}

void ReportChannel::write(const QByteArray &report)
{
    _outgoing.append(report);
    onWritable();
}

void ReportChannel::onWritable()
{
    while (!_outgoing.isEmpty()) {
        const QByteArray &report = _outgoing.first();
        if (::write(_fd, report.constData(), size_t(report.size())) < 0 && errno == EAGAIN)
            break;
        _outgoing.removeFirst(); // sent, or the host is gone
    }
    _writable->setEnabled(!_outgoing.isEmpty());
}

void ReportChannel::onReadable()
{
    char report[reportSize];
    const ssize_t size = ::read(_fd, report, sizeof report);
    if (size > 0)
        Q_EMIT received(QByteArray(report, int(size)));
    else if (size == 0 || errno == ECONNRESET)
        deleteLater(); // the host has closed its side
}

HidNode::HidNode(const QString &path, const HidIdentity &identity, QObject *parent)
    : QObject(parent), _path(path), _identity(identity)
{
    _retry.setInterval(retryMs);
    connect(&_retry, &QTimer::timeout, this, &HidNode::openDevice);
}

HidNode::~HidNode()
{
    close();
}

bool HidNode::open(int deafMs)
{
    _deafness.setRemainingTime(deafMs);
    if (!isDevice())
        return openSocket();
    _retry.start();
    openDevice();
    return true;
}

void HidNode::close()
{
    _retry.stop();
    if (_server >= 0) {
        _connecting->setEnabled(false);
        _connecting->deleteLater();
        ::close(_server);
        OwnPaths::remove(_path);
    }
    _server = -1;
    const auto channels = findChildren<ReportChannel *>();
    for (ReportChannel *channel : channels) {
        channel->disconnect(this);
        channel->deleteLater(); // it may be what called us
    }
}

void HidNode::openDevice()
{
    const int fd = ::open(QFile::encodeName(_path).constData(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0)
        return;
    _retry.stop();
    use(fd);
}

bool HidNode::openSocket()
{
    QString failure = OwnPaths::clear(_path, OwnPaths::Kind::Socket);
    if (failure.isEmpty())
        failure = OwnPaths::make(_path, [this] { return bindServer(); });
    if (!failure.isEmpty()) {
        _errorText = QStringLiteral("cannot make the socket %1: %2").arg(_path, failure);
        return false;
    }
    _connecting = new QSocketNotifier(_server, QSocketNotifier::Read, this);
    connect(_connecting, &QSocketNotifier::activated, this, [this] { onConnection(); });
    return true;
}

/// @return false with errno
bool HidNode::bindServer()
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    const QByteArray name = QFile::encodeName(_path);
    errno = ENAMETOOLONG;
    if (size_t(name.size()) >= sizeof address.sun_path)
        return false;
    std::memcpy(address.sun_path, name.constData(), size_t(name.size()));
    const int server = ::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (server < 0)
        return false;
    if (::bind(server, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0 &&
        ::listen(server, waitingHosts) == 0) {
        _server = server;
        return true;
    }
    const int error = errno;
    ::close(server);
    errno = error;
    return false;
}

void HidNode::onConnection()
{
    const int fd = ::accept4(_server, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
    if (fd < 0)
        return;
    const QByteArray identity = packetOf(_identity);
    if (::send(fd, identity.constData(), size_t(identity.size()), MSG_NOSIGNAL) < 0)
        ::close(fd);
    else
        use(fd);
}

void HidNode::use(int fd)
{
    auto *const channel = new ReportChannel(fd, int(_deafness.remainingTime()), this);
    connect(channel, &ReportChannel::received, this,
            [this, channel](const QByteArray &report) { Q_EMIT received(channel, report); });
}
