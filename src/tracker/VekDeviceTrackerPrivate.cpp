// SPDX-License-Identifier: MIT
#include "tracker/VekDeviceTrackerPrivate.h"

#include "VekInstrumentHandler.h"
#include "firmware/FirmwareUpdateHandler.h"
#include "handlers/VekInstrumentHandlerPrivate.h"
#include "session/InitialInformation.h"
#include "tracker/VekInstrumentHandlerFactoryPrivate.h"
#include "waiting/ThreadBound.h"

#include <QCoreApplication>
#include <QDebug>
#include <QFileInfo>
#include <QScopedValueRollback>
#include <QThread>

#include <algorithm>
#include <utility>

namespace {

/// One spelling for "ttyACM0", "/dev/ttyACM0" and symbolic links to it.
QString keyOf(const QString &port)
{
    constexpr int mostLinks = 8; // they may run in a circle
    QFileInfo file(port.startsWith(QLatin1Char('/')) ? port : QStringLiteral("/dev/") + port);
    for (int links = 0; links < mostLinks && file.isSymLink(); ++links)
        file.setFile(file.symLinkTarget());
    return file.absoluteFilePath();
}

/// A public handler that may be let go from inside one of its own signals.
std::shared_ptr<VekInstrumentHandler> publicHandlerOf(VekInstrumentHandlerPrivate *handler)
{
    return {new VekInstrumentHandler(handler), [](VekInstrumentHandler *each) { each->deleteLater(); }};
}

void endThreadOf(const QObject &object)
{
    QThread *thread = object.thread();
    if (!thread || thread == QThread::currentThread())
        return;
    thread->quit();
    thread->wait();
}

void complain(const char *what, const QString &deviceName)
{
    qDebug().noquote().nospace() << what << deviceName << ". Please restart the device and try again.";
}

QList<VekDeviceTrackerPrivate *> &allTrackers()
{
    static QList<VekDeviceTrackerPrivate *> trackers;
    return trackers;
}

bool isEndArranged = false; ///< with the application object that is there, or will be the next

/// Runs when the application object is being destroyed: no event loop is left that could do it later.
void endAllWithApplication()
{
    isEndArranged = false; // Qt calls it once
    for (VekDeviceTrackerPrivate *tracker : qAsConst(allTrackers())) {
        if (tracker->thread() == QThread::currentThread())
            tracker->endWithApplication();
    }
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); // links that handlers have left behind
}

void arrangeEndWithApplication()
{
    if (!isEndArranged)
        qAddPostRoutine(endAllWithApplication);
    isEndArranged = true;
}

} // namespace

VekDeviceTrackerPrivate::VekDeviceTrackerPrivate(QObject *parent, const Clock &clock)
    : QObject(parent), _clock(clock), _nullHandler(std::make_shared<VekInstrumentHandler>(nullptr))
{
    makeFirmwareUpdater();
    allTrackers().append(this);
}

VekDeviceTrackerPrivate::~VekDeviceTrackerPrivate()
{
    allTrackers().removeOne(this);
    endHandlers();
    _handedOut.clear();
}

VekInstrumentHandlerPrivate *VekDeviceTrackerPrivate::instrumentHandlerFactory(const InstrumentInfo &info) const
{
    return makeInstrumentHandler(info, _clock);
}

std::optional<VekErrorCode> VekDeviceTrackerPrivate::connectToPort(const QString &port, const QString &onlyName,
                                                                   const std::set<unsigned char> &untouched)
{
    assertOnThreadOf(*this);
    const Device *const held = deviceOn(keyOf(port));
    if (held && !onlyName.isEmpty() && held->name != onlyName)
        return std::nullopt;
    if (held || _isQuestioning)
        return VekErrorCode::ConnectionInProgress;
    const QScopedValueRollback<bool> turn(_isQuestioning, true);
    if (!InitialInformation::PingToInstrument(port, _clock))
        return std::nullopt;
    InstrumentInfo info;
    const VekErrorCode verdict = InitialInformation::getBasicInfoSuccessfully(port, info, _clock);
    if (verdict != VekErrorCode::Success || (!onlyName.isEmpty() && info.deviceName != onlyName))
        return verdict;
    if (!connectToDeviceWithInfo(info, untouched))
        return VekErrorCode::ConnectionFailed;
    return verdict;
}

bool VekDeviceTrackerPrivate::connectToDeviceWithInfo(const InstrumentInfo &info,
                                                      const std::set<unsigned char> &untouched)
{
    arrangeEndWithApplication();
    VekInstrumentHandlerPrivate *handler = instrumentHandlerFactory(info);
    if (!handler->isConnected()) {
        complain("Unable to initialize comport for ", info.deviceName);
        handler->retire();
        return false;
    }
    handler->leaveUntouched(untouched);
    // Everything is connected before the start-up, in which the handler's thread begins to emit signals. A loss before
    // that makes the start-up fail.
    const int connection = ++_lastConnection;
    _devices[connection] = {handler, keyOf(info.comPort), info.deviceName, publicHandlerOf(handler)};
    connect(
        handler, &VekInstrumentHandlerPrivate::deviceDisconnected, this,
        [this, connection] { onDeviceLost(connection); }, Qt::QueuedConnection);
    connect(
        handler, &VekInstrumentHandlerPrivate::initialConnectionRequestFinished, this,
        [this, connection](bool succeeded) { onStartUpFinished(connection, succeeded); }, Qt::QueuedConnection);
    QMetaObject::invokeMethod(handler, &VekInstrumentHandlerPrivate::sendInitialDefaults, Qt::QueuedConnection);
    return true;
}

VekErrorCode VekDeviceTrackerPrivate::disconnectDevice(const QString &deviceName)
{
    assertOnThreadOf(*this);
    Device *const device = deviceNamed(deviceName);
    if (!device)
        return VekErrorCode::DeviceNotFound;
    if (device->stage == Device::Stage::Connected)
        removeDevice(*device);
    device->stage = Device::Stage::LetGo;
    device->handler->letGo(); // onDeviceLost() follows, behind the samples that have already come
    return VekErrorCode::Success;
}

VekErrorCode VekDeviceTrackerPrivate::updateFirmware(const QString &port)
{
    assertOnThreadOf(*this);
    if (deviceOn(keyOf(port)))
        return VekErrorCode::FirmwareUpToDate; // or it would not have been admitted
    if (_isQuestioning)
        return VekErrorCode::ConnectionInProgress;
    const QScopedValueRollback<bool> turn(_isQuestioning, true);
    return getFirmwareUpdateHandler()->update(port);
}

void VekDeviceTrackerPrivate::onStartUpFinished(int connection, bool succeeded)
{
    assertOnThreadOf(*this);
    const auto found = _devices.find(connection);
    if (found == _devices.end())
        return;
    Device &device = found->second;
    if (!succeeded || !device.handler->isConnected()) {
        onDeviceLost(connection);
    } else if (device.stage == Device::Stage::StartingUp) {
        device.stage = Device::Stage::Connected;
        addDevice(device);
    }
}

void VekDeviceTrackerPrivate::addDevice(const Device &device)
{
    const QString name = device.name; // a copy: a receiver may run an event loop in which the device goes away
    _nameToHandler[name] = device.publicHandler;
    _portToName[device.port] = name;
    Q_EMIT deviceConnected(name);
}

void VekDeviceTrackerPrivate::removeDevice(const Device &device)
{
    _portToName.erase(device.port);
    if (_nameToHandler[device.name] != device.publicHandler) // a later device bears the name
        return;
    _nameToHandler.erase(device.name);
    for (const auto &[connection, other] : _devices) { // an earlier one may get it back
        const bool isNamesake = other.stage == Device::Stage::Connected && other.name == device.name;
        if (isNamesake && other.publicHandler != device.publicHandler)
            _nameToHandler[other.name] = other.publicHandler;
    }
}

void VekDeviceTrackerPrivate::onDeviceLost(int connection)
{
    assertOnThreadOf(*this);
    const auto found = _devices.find(connection);
    if (found == _devices.end())
        return;
    const Device device = found->second;
    _devices.erase(found);
    if (device.stage == Device::Stage::Connected)
        removeDevice(device);
    else if (device.stage == Device::Stage::StartingUp)
        complain("Initial device connections failed for ", device.name);
    device.handler->retire();
    Q_EMIT deviceDisconnected(device.name);
}

const VekInstrumentHandler &VekDeviceTrackerPrivate::getDeviceReference(const QString &deviceName)
{
    const auto found = _nameToHandler.find(deviceName);
    if (found == _nameToHandler.end())
        return *_nullHandler;
    if (!_handedOut.contains(found->second))
        _handedOut.append(found->second);
    return *found->second;
}

QString VekDeviceTrackerPrivate::nameFromActiveComport(const QString &port) const
{
    const auto found = _portToName.find(keyOf(port));
    return found == _portToName.end() ? QString() : found->second;
}

VekDeviceTrackerPrivate::Device *VekDeviceTrackerPrivate::deviceNamed(const QString &name)
{
    const auto named = _nameToHandler.find(name);
    const auto bearsName = [&](const auto &each) {
        const Device &device = each.second;
        if (named != _nameToHandler.end())
            return device.publicHandler == named->second;
        return device.stage == Device::Stage::StartingUp && device.name == name;
    };
    const auto found = std::find_if(_devices.begin(), _devices.end(), bearsName);
    return found == _devices.end() ? nullptr : &found->second;
}

const VekDeviceTrackerPrivate::Device *VekDeviceTrackerPrivate::deviceOn(const QString &portKey) const
{
    const auto found = std::find_if(_devices.begin(), _devices.end(), [&portKey](const auto &each) {
        return each.second.port == portKey && each.second.stage != Device::Stage::LetGo;
    });
    return found == _devices.end() ? nullptr : &found->second;
}

QList<QSerialPortInfo> VekDeviceTrackerPrivate::getVekSerialPorts() const
{
    return QSerialPortInfo::availablePorts();
}

std::list<QString> VekDeviceTrackerPrivate::getConnectedDevices() const
{
    std::list<QString> names;
    for (const auto &each : _nameToHandler)
        names.push_back(each.first);
    return names;
}

void VekDeviceTrackerPrivate::purgeStaleDevices()
{
    _handedOut.clear();
}

FirmwareUpdateHandler *VekDeviceTrackerPrivate::getFirmwareUpdateHandler()
{
    if (!_firmwareUpdater)
        makeFirmwareUpdater();
    return _firmwareUpdater.get();
}

void VekDeviceTrackerPrivate::makeFirmwareUpdater()
{
    using Updater = FirmwareUpdateHandler;
    using Me = VekDeviceTrackerPrivate;
    arrangeEndWithApplication();
    _firmwareUpdater = std::make_shared<Updater>(nullptr, _clock);
    connect(_firmwareUpdater.get(), &Updater::firmwareUpdateNotification, this, &Me::firmwareUpdateNotification,
            Qt::QueuedConnection);
    connect(_firmwareUpdater.get(), &Updater::firmwareUpdateFinished, this, &Me::firmwareUpdateFinished,
            Qt::QueuedConnection);
    connect(_firmwareUpdater.get(), &Updater::firmwareUpdateStageReached, this, &Me::firmwareUpdateStageReached,
            Qt::QueuedConnection);
}

void VekDeviceTrackerPrivate::endWithApplication()
{
    endHandlers();
    _firmwareUpdater.reset(); // the bootloaders that it listens to go too; the next application gets others
}

void VekDeviceTrackerPrivate::endHandlers()
{
    _nameToHandler.clear();
    _portToName.clear();
    for (const auto &[connection, device] : std::exchange(_devices, {})) {
        endThreadOf(*device.handler);
        delete device.handler;
    }
}
