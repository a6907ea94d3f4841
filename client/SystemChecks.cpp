#include "SystemChecks.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <grp.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

namespace client {

namespace {

QString userName()
{
    const passwd *entry = getpwuid(geteuid());
    return entry ? QString::fromLocal8Bit(entry->pw_name) : QString::number(geteuid());
}

/// Whether the group's list names the user; a session that began before does not know yet.
bool isListedIn(const group &entry, const QString &user)
{
    for (char **member = entry.gr_mem; *member; ++member) {
        if (user == QString::fromLocal8Bit(*member))
            return true;
    }
    return false;
}

QString readLine(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromLocal8Bit(file.readLine()).trimmed() : QString();
}

QString linkTarget(const QString &link)
{
    char target[PATH_MAX];
    const ssize_t length = readlink(QFile::encodeName(link).constData(), target, sizeof target);
    return length < 0 ? QString() : QString::fromLocal8Bit(target, static_cast<int>(length));
}

QStringList processIds(const QString &procRoot)
{
    QStringList ids;
    for (const QString &entry : QDir(procRoot).entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        if (entry[0].isDigit())
            ids.append(entry);
    }
    return ids;
}

QStringList openFiles(const QString &processFolder)
{
    QStringList targets;
    const QDir descriptors(processFolder + QLatin1String("/fd"));
    // System entries too: links to devices are no plain files.
    for (const QString &entry : descriptors.entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot))
        targets.append(linkTarget(descriptors.filePath(entry)));
    return targets;
}

bool holds(const QStringList &files, const QString &device)
{
    const bool isFarEnd = device.startsWith(QLatin1String("/dev/pts/")) && files.contains(QLatin1String("/dev/ptmx"));
    return files.contains(device) && !isFarEnd;
}

} // namespace

QString devicePath(const QString &port)
{
    const QString path = port.startsWith(QLatin1Char('/')) ? port : QStringLiteral("/dev/") + port;
    const QString canonical = QFileInfo(path).canonicalFilePath();
    return canonical.isEmpty() ? path : canonical;
}

Finding checkPresence(const QString &port)
{
    const QString path = devicePath(port);
    struct stat state = {};
    if (stat(QFile::encodeName(path).constData(), &state) != 0)
        return {Finding::Level::Bad, QStringLiteral("There is no %1.").arg(path), QStringLiteral("nimbrelle list")};
    if (!S_ISCHR(state.st_mode))
        return {Finding::Level::Bad, QStringLiteral("%1 is no serial port.").arg(path),
                QStringLiteral("nimbrelle list")};
    return {Finding::Level::Good, QStringLiteral("%1 is there.").arg(path), {}};
}

Finding checkRights(const QString &port)
{
    const QString path = devicePath(port);
    const QByteArray name = QFile::encodeName(path);
    if (access(name.constData(), R_OK | W_OK) == 0)
        return {Finding::Level::Good, QStringLiteral("This user may read and write it."), {}};
    struct stat state = {};
    const group *owner = stat(name.constData(), &state) == 0 ? getgrgid(state.st_gid) : nullptr;
    if (!owner)
        return {Finding::Level::Bad, QStringLiteral("This user may not read and write it."),
                QStringLiteral("ls -l %1").arg(path)};
    const QString group = QString::fromLocal8Bit(owner->gr_name);
    if (isListedIn(*owner, userName()))
        return {Finding::Level::Bad,
                QStringLiteral("This user is in the group \"%1\", but has logged in before that.").arg(group),
                QStringLiteral("newgrp %1").arg(group)};
    return {Finding::Level::Bad, QStringLiteral("This user may not use it: it belongs to the group \"%1\".").arg(group),
            QStringLiteral("sudo usermod -aG %1 %2 && newgrp %1").arg(group, userName())};
}

std::vector<Holder> holdersOf(const QString &device, const QString &procRoot)
{
    std::vector<Holder> holders;
    for (const QString &id : processIds(procRoot)) {
        const QString folder = QStringLiteral("%1/%2").arg(procRoot, id);
        if (id.toInt() != getpid() && holds(openFiles(folder), device))
            holders.push_back({id.toInt(), readLine(folder + QLatin1String("/comm"))});
    }
    return holders;
}

Finding checkHolders(const QString &port, const QString &procRoot)
{
    const QString path = devicePath(port);
    const std::vector<Holder> holders = holdersOf(path, procRoot);
    if (!holders.empty())
        return {Finding::Level::Bad,
                QStringLiteral("Process %1 (%2) has it open.").arg(holders.front().processId).arg(holders.front().name),
                QStringLiteral("kill %1").arg(holders.front().processId)};
    if (geteuid() != 0)
        return {Finding::Level::Good,
                QStringLiteral("No process of this user has it open (others: sudo fuser %1).").arg(path),
                {}};
    return {Finding::Level::Good, QStringLiteral("No other process has it open."), {}};
}

Finding checkModemManager(const QString &procRoot)
{
    for (const QString &id : processIds(procRoot)) {
        if (readLine(QStringLiteral("%1/%2/comm").arg(procRoot, id)) == QLatin1String("ModemManager"))
            return {Finding::Level::Doubtful,
                    QStringLiteral("ModemManager runs and may write to the port while the instrument starts."),
                    QStringLiteral("sudo systemctl stop ModemManager")};
    }
    return {Finding::Level::Good, QStringLiteral("ModemManager does not run."), {}};
}

} // namespace client
