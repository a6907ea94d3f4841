// SPDX-License-Identifier: MIT
#include "OwnPaths.h"

#include <QFile>
#include <QMap>

#include <cerrno>
#include <cstring>
#include <mutex>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

/// Tells a file from one that has come in its place: the number alone is soon given again.
struct Identity {
    dev_t device;
    ino_t number;
    qint64 madeAt; ///< nanoseconds
    bool operator==(const Identity &other) const
    {
        return device == other.device && number == other.number && madeAt == other.madeAt;
    }
};

struct Registry {
    std::mutex lock; ///< guards all of it
    QMap<QString, Identity> own;
    bool isClosed = false;
};

Registry &registry()
{
    static Registry instance;
    return instance;
}

/// Of the thing itself, not of what a link leads to. @return false if there is nothing
bool look(const QString &path, struct stat &found)
{
    return lstat(QFile::encodeName(path).constData(), &found) == 0;
}

Identity identityOf(const struct stat &found)
{
    return {found.st_dev, found.st_ino, qint64(found.st_mtim.tv_sec) * 1000000000 + found.st_mtim.tv_nsec};
}

QString reasonOf(int error)
{
    return QString::fromLocal8Bit(std::strerror(error));
}

bool leadsToATerminalThatHasGone(const QString &link)
{
    const QString target = QFile::symLinkTarget(link);
    struct stat found = {};
    return target.startsWith(QLatin1String("/dev/pts/")) && !look(target, found);
}

bool hasNoListener(const QString &socketPath)
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    const QByteArray name = QFile::encodeName(socketPath);
    if (size_t(name.size()) >= sizeof address.sun_path)
        return false;
    std::memcpy(address.sun_path, name.constData(), size_t(name.size()));
    const int fd = ::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    const bool isRefused =
        ::connect(fd, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0 && errno == ECONNREFUSED;
    ::close(fd);
    return isRefused;
}

void removeUnlessReplaced(const QString &path, const Identity &own)
{
    struct stat found = {};
    if (look(path, found) && identityOf(found) == own)
        QFile::remove(path);
}

} // namespace

QString OwnPaths::obstacleAt(const QString &path, Kind kind)
{
    struct stat found = {};
    if (!look(path, found))
        return QString();
    const bool isLeftBehind = kind == Kind::Link ? S_ISLNK(found.st_mode) && leadsToATerminalThatHasGone(path)
                                                 : S_ISSOCK(found.st_mode) && hasNoListener(path);
    return isLeftBehind ? QString() : QStringLiteral("there is something else already, or it is in use");
}

QString OwnPaths::clear(const QString &path, Kind kind)
{
    const QString obstacle = obstacleAt(path, kind);
    if (obstacle.isEmpty())
        QFile::remove(path);
    return obstacle;
}

QString OwnPaths::make(const QString &path, const std::function<bool()> &maker)
{
    Registry &paths = registry();
    const std::lock_guard<std::mutex> guard(paths.lock);
    if (paths.isClosed)
        return reasonOf(EINTR);
    struct stat found = {};
    if (!maker() || !look(path, found))
        return reasonOf(errno);
    paths.own[path] = identityOf(found);
    return QString();
}

void OwnPaths::remove(const QString &path)
{
    Registry &paths = registry();
    const std::lock_guard<std::mutex> guard(paths.lock);
    const auto own = paths.own.find(path);
    if (own == paths.own.end())
        return;
    removeUnlessReplaced(path, *own);
    paths.own.erase(own);
}

void OwnPaths::removeAll()
{
    Registry &paths = registry();
    const std::lock_guard<std::mutex> guard(paths.lock);
    paths.isClosed = true;
    for (auto own = paths.own.constBegin(); own != paths.own.constEnd(); ++own)
        removeUnlessReplaced(own.key(), own.value());
    paths.own.clear();
}
