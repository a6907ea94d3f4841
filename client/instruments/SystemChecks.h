// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringList>

#include <vector>

namespace client {

/// One thing that was looked at on the way to an instrument.
struct Finding {
    enum class Level {
        Good,
        Doubtful, ///< may be what is wrong
        Bad,      ///< is what is wrong
    };

    Level level = Level::Good;
    QString text;
    QString command; ///< what mends it; empty where nothing has to be done
};
using Findings = std::vector<Finding>;

/// A process that has a file open.
struct Holder {
    int processId;
    QString name;
    QString runFolder; ///< of the run that it records; empty where it records none
};

/// What the port belongs to that a user may not use.
struct PortOwner {
    QString path;
    QString group;
    bool isSystemGroup; ///< root's own, or nobody's: nobody joins it
    bool isMember;      ///< the user, by the list of the group
};

/// Whether a port is that of an instrument by what USB says of it; other serial devices may act on a question.
bool looksLikeInstrument(int usbVendor, const QString &manufacturer);

// None of these opens a port. Roots other than the default are for tests.

/// "ttyACM0" and "/dev/ttyACM0" both give the latter; symbolic links are followed.
QString devicePath(const QString &port);
/// Whether there is such a device.
Finding checkPresence(const QString &port);
/// Whether this user may read and write it, and which group would allow that.
Finding checkRights(const QString &port);
/// What to do about rights that are missing.
Finding missingRights(const PortOwner &owner, const QString &user);
/// The folders that udev reads its rules from.
QStringList udevRuleFolders();
/// Whether the rule is installed there that gives ports and bootloaders to users.
Finding checkUdevRule(const QStringList &folders = udevRuleFolders());
/// The file of that rule as this user has it, by the folder of the program.
QString udevRuleFile(const QString &programFolder);
/// The nodes of instruments that were left in their bootloader, which is a HID; that of a Gale is on its serial port.
QStringList bootloaderNodes(const QString &sysRoot = QStringLiteral("/sys"));
/// Which other processes have the port open, as far as this user may see: one finding for each.
Findings checkHolders(const QString &port, const QString &procRoot = QStringLiteral("/proc"));
/// Whether ModemManager runs, which writes to every new serial port.
Finding checkModemManager(const QString &procRoot = QStringLiteral("/proc"));

/// The processes that hold a device open; the far end of a pseudo-terminal is none of them.
std::vector<Holder> holdersOf(const QString &device, const QString &procRoot);

} // namespace client
