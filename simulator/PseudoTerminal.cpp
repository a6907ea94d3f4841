#include "PseudoTerminal.h"

#include <QFile>
#include <QFileInfo>
#include <QSocketNotifier>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

namespace {

bool makeRaw(int fd)
{
    termios settings = {};
    if (tcgetattr(fd, &settings) != 0)
        return false;
    cfmakeraw(&settings);
    return tcsetattr(fd, TCSANOW, &settings) == 0;
}

} // namespace

PseudoTerminal::PseudoTerminal(const QString &linkPath, QObject *parent) : QObject(parent)
{
    open(linkPath);
}

PseudoTerminal::~PseudoTerminal()
{
    unplug();
}

void PseudoTerminal::open(const QString &linkPath)
{
    _master = posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (_master < 0 || grantpt(_master) != 0 || unlockpt(_master) != 0)
        return fail(QStringLiteral("no pseudo-terminal to be had"));
    char name[64] = {};
    if (ptsname_r(_master, name, sizeof name) != 0)
        return fail(QStringLiteral("no name for the pseudo-terminal"));
    _portName = QString::fromLocal8Bit(name);
    _keptSlave = ::open(name, O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (_keptSlave < 0 || !makeRaw(_keptSlave))
        return fail(QStringLiteral("cannot set up ") + _portName);
    if (!linkPath.isEmpty()) {
        if (QFileInfo(linkPath).isSymLink())
            QFile::remove(linkPath); // left behind by a simulator that was killed
        if (symlink(name, QFile::encodeName(linkPath).constData()) != 0)
            return fail(QStringLiteral("cannot make the link ") + linkPath);
        _linkPath = linkPath;
    }
    _readable = std::make_unique<QSocketNotifier>(_master, QSocketNotifier::Read);
    _writable = std::make_unique<QSocketNotifier>(_master, QSocketNotifier::Write);
    _writable->setEnabled(false);
    connect(_readable.get(), &QSocketNotifier::activated, this, [this] { onReadable(); });
    connect(_writable.get(), &QSocketNotifier::activated, this, [this] { onWritable(); });
}

void PseudoTerminal::fail(const QString &what)
{
    _errorText = what + QStringLiteral(": ") + QString::fromLocal8Bit(std::strerror(errno));
    unplug();
}

void PseudoTerminal::unplug()
{
    _readable.reset();
    _writable.reset();
    if (_keptSlave >= 0)
        ::close(_keptSlave);
    if (_master >= 0)
        ::close(_master);
    _keptSlave = _master = -1;
    if (!_linkPath.isEmpty())
        QFile::remove(_linkPath);
    _linkPath.clear();
    _outgoing.clear();
    _outgoingSent = 0;
}

void PseudoTerminal::write(const QByteArray &bytes)
{
    if (!isOpen())
        return;
    _outgoing += bytes;
    onWritable();
}

void PseudoTerminal::onWritable()
{
    while (bytesWaiting() > 0) {
        const ssize_t sent = ::write(_master, _outgoing.constData() + _outgoingSent, size_t(bytesWaiting()));
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

void PseudoTerminal::onReadable()
{
    char buffer[4096];
    const ssize_t count = ::read(_master, buffer, sizeof buffer);
    if (count > 0)
        Q_EMIT received(QByteArray(buffer, int(count)));
}
