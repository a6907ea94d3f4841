// SPDX-License-Identifier: MIT
#include "client/instruments/SystemChecks.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

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

/// The folder of the table of samples among the open files of a process.
QString runFolderAmong(const QStringList &files)
{
    for (const QString &file : files) {
        const QFileInfo info(file);
        if (info.fileName() == QLatin1String("dc.csv"))
            return info.path();
    }
    return {};
}

constexpr const char *udevRule = "71-nimbrelle.rules";

/// A path as a shell takes it.
QString shellWord(const QString &path)
{
    static const QRegularExpression plain(QStringLiteral("^[\\w./+:@%-]+$"));
    if (plain.match(path).hasMatch())
        return path;
    return QLatin1Char('\'') + QString(path).replace(QLatin1Char('\''), QLatin1String("'\\''")) + QLatin1Char('\'');
}

QString installRuleCommand()
{
    return QStringLiteral("sudo cp %1 /etc/udev/rules.d/ && sudo udevadm control --reload && sudo udevadm trigger")
        .arg(shellWord(udevRuleFile(QCoreApplication::applicationDirPath())));
}

/// The folder of the USB device that a HID belongs to, in /sys; empty without one.
QString usbDeviceOf(const QString &hidFolder)
{
    QDir folder(QFileInfo(hidFolder + QLatin1String("/device")).canonicalFilePath());
    while (!folder.exists(QStringLiteral("idVendor"))) {
        if (!folder.exists() || !folder.cdUp() || folder.isRoot())
            return {};
    }
    return folder.path();
}

/// As the udev rule knows a bootloader: vendor and product number are those of many devices.
bool isBootloader(const QString &usbDevice)
{
    const auto says = [&usbDevice](const char *attribute, const char *value) {
        return readLine(QDir(usbDevice).filePath(QString::fromLatin1(attribute))) == QLatin1String(value);
    };
    return says("idVendor", "04d8") && says("idProduct", "003c") && says("manufacturer", "Brenmoor Apparatus") &&
           says("product", "Nimbrelle HID bootloader");
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

bool looksLikeInstrument(int usbVendor, const QString &manufacturer)
{
    constexpr int vendorOfController = 0x04d8; // and of many other devices with the same controller
    return usbVendor == vendorOfController && manufacturer == QLatin1String("Brenmoor Apparatus");
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
    constexpr gid_t nobodysGroup = 65534;
    return missingRights({path, QString::fromLocal8Bit(owner->gr_name),
                          owner->gr_gid == 0 || owner->gr_gid == nobodysGroup, isListedIn(*owner, userName())},
                         userName());
}

Finding missingRights(const PortOwner &owner, const QString &user)
{
    if (owner.isSystemGroup) // whose members may do much more than use a port
        return {
            Finding::Level::Bad,
            QStringLiteral("This user may not use it: it belongs to \"%1\" alone, as no udev rule gives it to users.")
                .arg(owner.group),
            installRuleCommand()};
    if (owner.isMember)
        return {Finding::Level::Bad,
                QStringLiteral("This user is in the group \"%1\", but has logged in before that.").arg(owner.group),
                QStringLiteral("newgrp %1").arg(owner.group)};
    return {Finding::Level::Bad,
            QStringLiteral("This user may not use it: it belongs to the group \"%1\".").arg(owner.group),
            QStringLiteral("sudo usermod -aG %1 %2 && newgrp %1").arg(owner.group, user)};
}

QStringList udevRuleFolders()
{
    return {QStringLiteral("/etc/udev/rules.d"), QStringLiteral("/run/udev/rules.d"),
            QStringLiteral("/usr/local/lib/udev/rules.d"), QStringLiteral("/usr/lib/udev/rules.d"),
            QStringLiteral("/lib/udev/rules.d")};
}

/// Beside an installed program in lib/udev/rules.d of its prefix, of one that was built here in the clone.
QString udevRuleFile(const QString &programFolder)
{
    const QString inClone = QStringLiteral("packaging/%1").arg(QLatin1String(udevRule));
    const QString inPrefix = QStringLiteral("lib/udev/rules.d/%1").arg(QLatin1String(udevRule));
    QDir folder(programFolder);
    do {
        for (const QString &each : {inPrefix, inClone}) {
            if (folder.exists(each))
                return folder.filePath(each);
        }
    } while (!folder.isRoot() && folder.cdUp());
    return inClone;
}

QStringList bootloaderNodes(const QString &sysRoot)
{
    QStringList nodes;
    const QDir hids(sysRoot + QLatin1String("/class/hidraw"));
    for (const QString &name : hids.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        const QString device = usbDeviceOf(hids.filePath(name));
        if (!device.isEmpty() && isBootloader(device))
            nodes.append(QStringLiteral("/dev/") + name);
    }
    return nodes;
}

Finding checkUdevRule(const QStringList &folders)
{
    for (const QString &folder : folders) {
        const QString path = QDir(folder).filePath(QString::fromLatin1(udevRule));
        if (QFileInfo::exists(path))
            return {Finding::Level::Good, QStringLiteral("The udev rule is installed: %1.").arg(path), {}};
    }
    return {Finding::Level::Doubtful,
            QStringLiteral("No udev rule gives instruments to users and keeps ModemManager away from them."),
            installRuleCommand()};
}

std::vector<Holder> holdersOf(const QString &device, const QString &procRoot)
{
    std::vector<Holder> holders;
    for (const QString &id : processIds(procRoot)) {
        const QString folder = QStringLiteral("%1/%2").arg(procRoot, id);
        const QStringList files = openFiles(folder);
        if (id.toInt() != getpid() && holds(files, device))
            holders.push_back({id.toInt(), readLine(folder + QLatin1String("/comm")), runFolderAmong(files)});
    }
    return holders;
}

/// No advice to end a process: what it does with the instrument is not known from outside.
static Finding holderFinding(const Holder &holder)
{
    const QString who = QStringLiteral("Process %1 (%2)").arg(QString::number(holder.processId), holder.name);
    if (holder.runFolder.isEmpty())
        return {Finding::Level::Bad, QStringLiteral("%1 has it open; close that program.").arg(who),
                QStringLiteral("ps -fp %1").arg(holder.processId)};
    return {
        Finding::Level::Bad,
        QStringLiteral("%1 has it open and records an experiment in %2; wait for its end, or end it there by Ctrl-C.")
            .arg(who, holder.runFolder),
        QStringLiteral("tail -f %1").arg(shellWord(holder.runFolder + QLatin1String("/dc.csv")))};
}

Findings checkHolders(const QString &port, const QString &procRoot)
{
    const QString path = devicePath(port);
    Findings findings;
    for (const Holder &holder : holdersOf(path, procRoot))
        findings.push_back(holderFinding(holder));
    if (!findings.empty())
        return findings;
    if (geteuid() != 0)
        return {{Finding::Level::Good,
                 QStringLiteral("No process of this user has it open (others: sudo fuser %1).").arg(path),
                 {}}};
    return {{Finding::Level::Good, QStringLiteral("No other process has it open."), {}}};
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
