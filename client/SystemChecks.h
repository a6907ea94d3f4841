#pragma once

#include <QString>

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
};

// None of these opens a port. Roots other than the default are for tests.

/// "ttyACM0" and "/dev/ttyACM0" both give the latter; symbolic links are followed.
QString devicePath(const QString &port);
/// Whether there is such a device.
Finding checkPresence(const QString &port);
/// Whether this user may read and write it, and which group would allow that.
Finding checkRights(const QString &port);
/// Which other processes have the port open, as far as this user may see.
Finding checkHolders(const QString &port, const QString &procRoot = QStringLiteral("/proc"));
/// Whether ModemManager runs, which writes to every new serial port.
Finding checkModemManager(const QString &procRoot = QStringLiteral("/proc"));

/// The processes that hold a device open; the far end of a pseudo-terminal is none of them.
std::vector<Holder> holdersOf(const QString &device, const QString &procRoot);

} // namespace client
