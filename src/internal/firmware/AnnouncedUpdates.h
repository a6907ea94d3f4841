// SPDX-License-Identifier: MIT
#pragma once

#include "waiting/Clock.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

/// An update whose instrument was restarted, and is still to appear in its HID bootloader.
struct Announcement {
    QString deviceName;
    int model = 0;         ///< the instrument's own number
    QString port;          ///< the serial port that it leaves; empty if that is not known
    QString usbPlace;      ///< of that port, see usbPlaceOf(); empty if that is not known
    QStringList olderOnes; ///< HID paths of the bootloaders that were there before, none of which is this instrument
    Deadline deadline;
};

/// A HID bootloader as the system tells it.
struct AppearedDevice {
    QString path;
    int releaseNumber = 0;
    QString usbPlace;
};

/**
 * The announced updates, oldest first, and the rule by which a device takes one: it never gets another model's image.
 *
 * A device takes an announcement of the very model that its release number names, and that of the USB socket in which
 * it sits before older ones. If it does not know its model, it takes the one of its socket; failing that, it takes the
 * oldest one whose socket cannot be compared with its own, provided that all of these want the same image.
 *
 * @thread None; a value.
 */
class AnnouncedUpdates
{
public:
    static constexpr int unknownModel = 256; ///< release number of a bootloader that does not know its model

    bool isEmpty() const { return _waiting.isEmpty(); }
    void add(const Announcement &announcement) { _waiting.append(announcement); }
    /// Takes out what was announced for the same name, model and port: an instrument that is there again never left.
    bool takeSame(const Announcement &announcement);
    std::optional<Announcement> takeFor(const AppearedDevice &device);
    /// Takes out what has waited too long. @return the names of its instruments
    QStringList takeExpired();
    /// A path from which a device has gone may be the next one's.
    void forgetPath(const QString &path);
    /// Sets all deadlines anew.
    void setDeadline(const Deadline &deadline);
    /// Time until the first one expires, in milliseconds; -1 if none waits.
    int remainingTime() const;

private:
    QList<Announcement> _waiting;
};
