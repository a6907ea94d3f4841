#include "PseudoTerminal.h"

#include <QFile>
#include <QFileInfo>

#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

PseudoTerminal::PseudoTerminal(const QString &linkPath, QObject *parent) : SerialEnd(parent), _wantedLink(linkPath)
{
    PseudoTerminal::plug();
}

PseudoTerminal::~PseudoTerminal()
{
    PseudoTerminal::unplug();
}

bool PseudoTerminal::plug()
{
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

bool PseudoTerminal::link()
{
    if (_wantedLink.isEmpty())
        return true;
    if (QFileInfo(_wantedLink).isSymLink())
        QFile::remove(_wantedLink); // left behind by a simulator that was killed
    if (symlink(QFile::encodeName(portName()).constData(), QFile::encodeName(_wantedLink).constData()) != 0) {
        noteFailure(QStringLiteral("cannot make the link ") + _wantedLink);
        return false;
    }
    _linkPath = _wantedLink;
    return true;
}

void PseudoTerminal::unplug()
{
    if (!_linkPath.isEmpty())
        QFile::remove(_linkPath);
    _linkPath.clear();
    if (_keptSlave >= 0)
        ::close(_keptSlave);
    _keptSlave = -1;
    SerialEnd::unplug();
}
