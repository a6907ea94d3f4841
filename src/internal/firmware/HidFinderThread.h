// SPDX-License-Identifier: MIT
#pragma once

#include "waiting/Clock.h"

#include <QMap>
#include <QMutex>
#include <QString>
#include <QStringList>
#include <QThread>

/**
 * Polls once a second for instruments in their HID bootloader, until something new has been found: one start serves one
 * batch of devices. A device that stays connected is not found twice, unless it is forgotten.
 *
 * @thread The object lives on the thread that makes it; the signals come from the polling thread. forget() may be called
 *         from any thread.
 */
class HidFinderThread : public QThread
{
    Q_OBJECT

public:
    explicit HidFinderThread(QObject *parent = nullptr, const Clock &clock = Clock::host());
    ~HidFinderThread() override;

    /// Makes the next search take a device for new.
    void forget(const QString &path);
    /// Makes the next search take every device for new but those on these paths. Any thread.
    void forgetAllBut(const QStringList &paths);

Q_SIGNALS:
    /// HID path to release number of the devices that have come.
    void HidConnectionsFound(QMap<QString, int> devices);
    /// The same of those that have gone.
    void HidConnectionsRemove(QMap<QString, int> devices);

protected:
    void run() override;

private:
    bool announceNew(const QMap<QString, int> &current);
    void announceGone(const QMap<QString, int> &current);
    QMap<QString, int> getnewHIDConnection(const QMap<QString, int> &current);
    // See compatibility.md, inner names.
    QMap<QString, int> RemoveUnavaliableHIDConnection(const QMap<QString, int> &current);

    const Clock &_clock;
    QMap<QString, int> _known;
    QMutex _mutex; // guards _known
};
