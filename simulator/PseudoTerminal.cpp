// SPDX-License-Identifier: MIT
#include "PseudoTerminal.h"

#include "OwnPaths.h"

#include <QFile>

#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

PseudoTerminal::PseudoTerminal(QObject *parent) : SerialEnd(parent)
{
    PseudoTerminal::plug();
}

PseudoTerminal::PseudoTerminal(const QString &linkPath, QObject *parent) : SerialEnd(parent), _linkPath(linkPath)
{
}

PseudoTerminal::~PseudoTerminal()
{
    PseudoTerminal::unplug();
}

bool PseudoTerminal::plug()
{
    if (!clearLink()) // first: the new port may be given the number that an old link leads to
        return false;
    const int master = posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (open(master) && link()) {
        use(master);
        return true;
    }
    unplug();
    if (master >= 0)
        ::close(master);
    return false;
}

bool PseudoTerminal::open(int master)
{
    char name[64] = {};
    if (master < 0 || grantpt(master) != 0 || unlockpt(master) != 0 || ptsname_r(master, name, sizeof name) != 0) {
        noteFailure(QStringLiteral("no pseudo-terminal to be had"));
        return false;
    }
    setPortName(QString::fromLocal8Bit(name));
    _keptSlave = ::open(name, O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (_keptSlave >= 0 && makeRaw(_keptSlave))
        return true;
    noteFailure(QStringLiteral("cannot set up ") + portName());
    return false;
}

bool PseudoTerminal::clearLink()
{
    const QString obstacle = _linkPath.isEmpty() ? QString() : OwnPaths::clear(_linkPath, OwnPaths::Kind::Link);
    if (!obstacle.isEmpty())
        noteFailure(QStringLiteral("cannot make the link ") + _linkPath, obstacle);
    return obstacle.isEmpty();
}

bool PseudoTerminal::link()
{
    if (_linkPath.isEmpty())
        return true;
    const QString failure = OwnPaths::make(_linkPath, [this] {
        return symlink(QFile::encodeName(portName()).constData(), QFile::encodeName(_linkPath).constData()) == 0;
    });
    if (!failure.isEmpty())
        noteFailure(QStringLiteral("cannot make the link ") + _linkPath, failure);
    return failure.isEmpty();
}

void PseudoTerminal::unplug()
{
    OwnPaths::remove(_linkPath);
    if (_keptSlave >= 0)
        ::close(_keptSlave);
    _keptSlave = -1;
    SerialEnd::unplug();
}
