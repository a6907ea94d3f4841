// SPDX-License-Identifier: MIT
#include "firmware/HidFinderThread.h"

#include "firmware/HidCommunicator.h"
#include "waiting/BoundedWait.h"

#include <QMutexLocker>

namespace {

constexpr int searchPeriodMs = 1000;

/// The entries of the first map whose path is not in the second one.
QMap<QString, int> difference(const QMap<QString, int> &first, const QMap<QString, int> &second)
{
    QMap<QString, int> rest;
    for (auto device = first.begin(); device != first.end(); ++device) {
        if (!second.contains(device.key()))
            rest.insert(device.key(), device.value());
    }
    return rest;
}

} // namespace

HidFinderThread::HidFinderThread(QObject *parent, const Clock &clock) : QThread(parent), _clock(clock)
{
}

HidFinderThread::~HidFinderThread()
{
    requestInterruption();
    quit();
    wait();
}

void HidFinderThread::forget(const QString &path)
{
    const QMutexLocker locker(&_mutex);
    _known.remove(path);
}

void HidFinderThread::forgetAllBut(const QStringList &paths)
{
    const QMutexLocker locker(&_mutex);
    const QStringList known = _known.keys();
    for (const QString &path : known) {
        if (!paths.contains(path))
            _known.remove(path);
    }
}

void HidFinderThread::run()
{
    announceGone(HidCommunicator::SearchForBootloaderHidPath()); // whose paths may be other devices' by now
    bool hasFound = false;
    while (!hasFound && !isInterruptionRequested()) {
        const QMap<QString, int> current = HidCommunicator::SearchForBootloaderHidPath();
        hasFound = announceNew(current);
        announceGone(current);
        BoundedWait(searchPeriodMs, _clock).exec(); // quit() of the thread leaves it
    }
    // What was updated meanwhile has left as well.
    announceGone(HidCommunicator::SearchForBootloaderHidPath());
}

bool HidFinderThread::announceNew(const QMap<QString, int> &current)
{
    const QMap<QString, int> devices = getnewHIDConnection(current);
    if (!devices.isEmpty())
        Q_EMIT HidConnectionsFound(devices);
    return !devices.isEmpty();
}

void HidFinderThread::announceGone(const QMap<QString, int> &current)
{
    const QMap<QString, int> devices = RemoveUnavaliableHIDConnection(current);
    if (!devices.isEmpty())
        Q_EMIT HidConnectionsRemove(devices);
}

QMap<QString, int> HidFinderThread::getnewHIDConnection(const QMap<QString, int> &current)
{
    const QMutexLocker locker(&_mutex);
    const QMap<QString, int> devices = difference(current, _known);
    for (auto device = devices.begin(); device != devices.end(); ++device)
        _known.insert(device.key(), device.value());
    return devices;
}

QMap<QString, int> HidFinderThread::RemoveUnavaliableHIDConnection(const QMap<QString, int> &current)
{
    const QMutexLocker locker(&_mutex);
    const QMap<QString, int> devices = difference(_known, current);
    for (auto device = devices.begin(); device != devices.end(); ++device)
        _known.remove(device.key());
    return devices;
}
