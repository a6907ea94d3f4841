#include "firmware/BootLoaderCommunicator.h"

#include "firmware/BootloaderThread.h"
#include "firmware/HexLoader.h"
#include "hardware_models/HardwareModelFactory.h"

namespace {

constexpr unsigned long finderEndPollMs = 20;

} // namespace

BootLoaderCommunicator *BootLoaderCommunicator::Instance()
{
    return ApplicationSingleton<BootLoaderCommunicator>::instance();
}

BootLoaderCommunicator::BootLoaderCommunicator()
{
    qRegisterMetaType<QMap<QString, int>>("QMap<QString,int>");
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
    _pending.enqueue({QString(), model, deviceName});
}

void BootLoaderCommunicator::UpdateUnknowReleaseNumber(QString path, HardwareModel_t model)
{
    _toRun.enqueue({path, static_cast<int>(model), QString()});
    startBootLoader();
}

void BootLoaderCommunicator::checkForHidConnections()
{
    if (_pending.isEmpty()) { // else an old device would take the announced one's update
        for (const QString &path : qAsConst(_unfinished))
            _finder.forget(path);
        _unfinished.clear();
    }
    _finder.start();
}

void BootLoaderCommunicator::HidConnectionsFound(const QMap<QString, int> &devices)
{
    for (auto device = devices.begin(); device != devices.end(); ++device)
        found(device.key(), device.value());
}

void BootLoaderCommunicator::found(const QString &path, int releaseNumber)
{
    _connected.insert(path, releaseNumber);
    HidData data = _pending.isEmpty() ? HidData{QString(), releaseNumber, QString()} : _pending.dequeue();
    data.path = path;
    Q_EMIT ShowBootloaderDialog();
    if (data.model == unknownModel) {
        _unfinished.append(path);
        Q_EMIT FindReleaseNumber(path);
        return;
    }
    _toRun.enqueue(data);
    startBootLoader();
}

void BootLoaderCommunicator::HidConnectionsRemove(const QMap<QString, int> &devices)
{
    for (auto device = devices.begin(); device != devices.end(); ++device)
        _connected.remove(device.key());
}

void BootLoaderCommunicator::onSearchEnded()
{
    if (!_pending.isEmpty()) // announced while the finder was busy with a batch that did not hold it
        _finder.start();
}

void BootLoaderCommunicator::startBootLoader()
{
    if (_isRunning)
        return; // called from within an update: its turn comes below
    _isRunning = true;
    while (!_toRun.isEmpty())
        runNext();
    _isRunning = false;
}

void BootLoaderCommunicator::runNext()
{
    const HidData data = _toRun.dequeue();
    BootloaderThread *const thread = BootloaderThread::Instance();
    thread->SetHexFile(findHexFilePath(data.model));
    thread->SetHIDPath(data.path);
    thread->SetDeviceName(data.deviceName);
    _outcome.reset();
    thread->upLoading();
    _runLoop.exec();
    if (!_outcome)
        _toRun.clear();
    _unfinished.removeAll(data.path);
    if (!_outcome.value_or(false))
        _unfinished.append(data.path);
}

void BootLoaderCommunicator::onRunFinished(const QString &, bool success)
{
    _outcome = success;
    _runLoop.quit();
}

QString BootLoaderCommunicator::findHexFilePath(int model)
{
    const bool fits = model == static_cast<quint8>(model);
    const auto number = fits ? static_cast<HardwareModel_t>(model) : HardwareModel_t::Invalid;
    return HexLoader::getDefaultHexPath(HardwareModelFactory::getHardwareModel(number)->hexFileName());
}
