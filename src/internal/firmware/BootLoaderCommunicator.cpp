// SPDX-License-Identifier: MIT
#include "firmware/BootLoaderCommunicator.h"

#include "firmware/BootloaderThread.h"
#include "firmware/FirmwareImages.h"
#include "firmware/HidCommunicator.h"
#include "firmware/UsbPlace.h"
#include "waiting/BoundedWait.h"
#include "waiting/ThreadBound.h"

#include <QScopedValueRollback>

#include <algorithm>
#include <utility>

namespace {

constexpr unsigned long finderEndPollMs = 20;
constexpr int longestRunMs = 3600000; // each step of a run has its own time, and no image has so many

/// Whether what stands on the path now may have the model's image: paths are given again, and a run may wait for long.
bool isStillThere(const BootLoaderCommunicator::HidData &data)
{
    const int releaseNumber = HidCommunicator::SearchForBootloaderHidPath().value(data.path, -1);
    return releaseNumber == data.model || releaseNumber == BootLoaderCommunicator::unknownModel;
}

/// Whether the image of a model may be written over HID, which is not the road of the Gale line.
VekErrorCode verdictOn(int model)
{
    if (model == static_cast<int>(HardwareModel_t::Gale))
        return VekErrorCode::FirmwareFileNotFound;
    return FirmwareImages::verdictOn(model);
}

} // namespace

BootLoaderCommunicator *BootLoaderCommunicator::Instance()
{
    return ApplicationSingleton<BootLoaderCommunicator>::instance();
}

BootLoaderCommunicator::BootLoaderCommunicator() : _patience(_clock.makeAlarm([this] { onPatienceEnded(); }))
{
    qRegisterMetaType<QMap<QString, int>>("QMap<QString,int>");
    qRegisterMetaType<VekFirmwareUpdateStage>("VekFirmwareUpdateStage");
    using Finder = HidFinderThread;
    using This = BootLoaderCommunicator;
    // The finder waits until the updates of its batch have run.
    connect(&_finder, &Finder::HidConnectionsFound, this, &This::HidConnectionsFound, Qt::BlockingQueuedConnection);
    connect(&_finder, &Finder::HidConnectionsRemove, this, &This::HidConnectionsRemove, Qt::QueuedConnection);
    connect(&_finder, &Finder::finished, this, &This::onSearchEnded, Qt::QueuedConnection);

    BootloaderThread *const thread = BootloaderThread::Instance();
    connect(thread, &BootloaderThread::ProgressChanged, this, &This::ProgressChanged, Qt::QueuedConnection);
    connect(thread, &BootloaderThread::Finished, this, &This::Finished, Qt::QueuedConnection);
    connect(thread, &BootloaderThread::Started, this, &This::Started, Qt::QueuedConnection);
    connect(thread, &BootloaderThread::BootloaderFound, this, &This::BootloaderFound, Qt::QueuedConnection);
    connect(thread, &BootloaderThread::Finished, this, &This::onRunFinished, Qt::QueuedConnection);
}

BootLoaderCommunicator::~BootLoaderCommunicator()
{
    _finder.requestInterruption();
    _finder.quit();
    // The finder may wait for a slot that nobody runs any more; taking the call away lets it go on.
    do
        QCoreApplication::removePostedEvents(this);
    while (!_finder.wait(finderEndPollMs));
}

void BootLoaderCommunicator::setReleaseNumber(QString deviceName, int model)
{
    announce({deviceName, model, QString(), QString(), {}, {}});
}

void BootLoaderCommunicator::announce(Announcement announcement)
{
    assertOnThreadOf(*this);
    const bool neverLeft = _pending.takeSame(announcement);
    announcement.deadline = Deadline(_patienceMs, _clock);
    _pending.add(announcement);
    restartPatience();
    if (neverLeft)
        Q_EMIT Finished(announcement.deviceName, false);
}

QStringList BootLoaderCommunicator::presentPaths()
{
    const QStringList paths = HidCommunicator::SearchForBootloaderHidPath().keys();
    _finder.forgetAllBut(paths);
    return paths;
}

void BootLoaderCommunicator::UpdateUnknowReleaseNumber(QString path, HardwareModel_t model)
{
    _toRun.enqueue({path, static_cast<int>(model), QString()});
    startBootLoader();
}

void BootLoaderCommunicator::checkForHidConnections()
{
    assertOnThreadOf(*this);
    if (_pending.isEmpty()) { // else an old device would take the announced one's update
        for (const QString &path : qAsConst(_unfinished))
            _finder.forget(path);
        _unfinished.clear();
    }
    _wantsAll = true;
    _finder.start();
}

void BootLoaderCommunicator::checkForAnnounced()
{
    assertOnThreadOf(*this);
    _finder.start();
}

void BootLoaderCommunicator::HidConnectionsFound(const QMap<QString, int> &devices)
{
    assertOnThreadOf(*this);
    for (auto device = devices.begin(); device != devices.end(); ++device)
        _connected.insert(device.key(), device.value());
    // All of them choose before the first one runs: what is announced during a run is none of these.
    const QMap<QString, HidData> updates = updatesOf(devices, std::exchange(_wantsAll, false));
    for (const HidData &data : updates)
        take(data);
}

/// What becomes of a batch of devices. Those that know their model choose before those that do not.
QMap<QString, BootLoaderCommunicator::HidData> BootLoaderCommunicator::updatesOf(const QMap<QString, int> &devices,
                                                                                 bool wantsAll)
{
    QStringList order = devices.keys();
    std::stable_partition(order.begin(), order.end(),
                          [&devices](const QString &path) { return devices.value(path) != unknownModel; });
    QMap<QString, HidData> updates; // by path
    for (const QString &path : qAsConst(order)) {
        const int releaseNumber = devices.value(path);
        if (const auto announced = _pending.takeFor({path, releaseNumber, usbPlaceOf(path)}))
            updates.insert(path, {path, announced->model, announced->deviceName});
        else if (wantsAll)
            updates.insert(path, {path, releaseNumber, QString()});
        else
            _unfinished.append(path);
    }
    return updates;
}

void BootLoaderCommunicator::take(const HidData &data)
{
    Q_EMIT ShowBootloaderDialog();
    if (data.model == unknownModel) {
        _unfinished.append(data.path);
        Q_EMIT FindReleaseNumber(data.path);
        return;
    }
    _toRun.enqueue(data);
    startBootLoader();
}

void BootLoaderCommunicator::HidConnectionsRemove(const QMap<QString, int> &devices)
{
    for (auto device = devices.begin(); device != devices.end(); ++device) {
        _connected.remove(device.key());
        _pending.forgetPath(device.key());
    }
}

void BootLoaderCommunicator::onSearchEnded()
{
    if (!_pending.isEmpty() || _wantsAll) // asked for while the finder was busy with a batch that did not hold it
        _finder.start();
}

void BootLoaderCommunicator::onPatienceEnded()
{
    assertOnThreadOf(*this);
    if (_isRunning)
        return; // nobody has looked for the device meanwhile; the end of the update counts anew
    const QStringList lost = _pending.takeExpired();
    restartPatience();
    if (_pending.isEmpty() && !_wantsAll) {
        _finder.requestInterruption();
        _finder.quit();
    }
    for (const QString &deviceName : lost)
        Q_EMIT Finished(deviceName, false);
}

void BootLoaderCommunicator::restartPatience()
{
    if (_pending.isEmpty())
        _patience->stop();
    else
        _patience->start(_pending.remainingTime());
}

void BootLoaderCommunicator::goOn()
{
    --_holds;
    QMetaObject::invokeMethod(this, &BootLoaderCommunicator::startBootLoader, Qt::QueuedConnection);
}

void BootLoaderCommunicator::startBootLoader()
{
    if (_isRunning || _holds > 0 || _toRun.isEmpty())
        return; // called from within an update: its turn comes below
    _isRunning = true;
    while (!_toRun.isEmpty())
        runNext();
    _isRunning = false;
    _pending.setDeadline({_patienceMs, _clock});
    restartPatience();
}

void BootLoaderCommunicator::runNext()
{
    const HidData data = _toRun.dequeue();
    const VekErrorCode verdict = verdictOn(data.model);
    _outcome = false;
    if (!isStillThere(data))
        refuse(data, VekFirmwareUpdateStage::BootloaderGone,
               QStringLiteral("The bootloader that was found has gone, or is another model's now."));
    else if (verdict == VekErrorCode::StandInFirmware)
        refuse(data, VekFirmwareUpdateStage::StandInFirmware, verdict.message());
    else
        flash(data, verdict == VekErrorCode::Success ? findHexFilePath(data.model) : QString());
    if (!_outcome)
        _toRun.clear();
    _unfinished.removeAll(data.path);
    if (!_outcome.value_or(false))
        _unfinished.append(data.path);
}

/// Without an image the run fails, and leaves the device alone.
void BootLoaderCommunicator::flash(const HidData &data, const QString &imagePath)
{
    BootloaderThread *const thread = BootloaderThread::Instance();
    thread->SetHexFile(imagePath);
    thread->SetHIDPath(data.path);
    thread->SetDeviceName(data.deviceName);
    _outcome.reset();
    BoundedWait run(longestRunMs, _clock);
    const QScopedValueRollback<BoundedWait *> underWay(_run, &run);
    thread->upLoading();
    run.exec();
}

void BootLoaderCommunicator::refuse(const HidData &data, VekFirmwareUpdateStage why, const QString &reason)
{
    Q_EMIT Refused(data.deviceName, why, reason);
    Q_EMIT Finished(data.deviceName, false);
}

void BootLoaderCommunicator::onRunFinished(const QString &, bool success)
{
    _outcome = success;
    if (_run)
        _run->end(WaitEnd::Answered);
}

QString BootLoaderCommunicator::findHexFilePath(int model)
{
    return FirmwareImages::pathFor(model);
}
