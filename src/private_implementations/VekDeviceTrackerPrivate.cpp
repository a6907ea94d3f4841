#include "private_implementations/VekDeviceTrackerPrivate.h"

#include "VekInstrumentHandler.h"
#include "firmware/FirmwareUpdateHandler.h"
#include "private_implementations/VekInstrumentHandlerFactoryPrivate.h"
#include "private_implementations/VekInstrumentHandlerPrivate.h"
#include "session/InitialInformation.h"

#include <QCoreApplication>
#include <QDebug>
#include <QFileInfo>
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

/// Notes a port for as long as one attempt to connect lasts.
class PortClaim
{
public:
    PortClaim(QSet<QString> &claimed, const QString &port) : _claimed(claimed), _port(port)
    {
        _isFirst = !claimed.contains(port);
        claimed.insert(port);
    }
    ~PortClaim()
    {
        if (_isFirst)
            _claimed.remove(_port);
    }
    Q_DISABLE_COPY_MOVE(PortClaim)

    bool isFirst() const { return _isFirst; }

private:
    QSet<QString> &_claimed;
    const QString _port;
    bool _isFirst;
};

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

QList<VekDeviceTrackerPrivate *> &trackersOfApplication()
{
    static QList<VekDeviceTrackerPrivate *> trackers;
    return trackers;
}

/// Runs when the application object is being destroyed: no event loop is left that could do it later.
void endHandlersOfApplication()
{
    for (VekDeviceTrackerPrivate *tracker : qAsConst(trackersOfApplication())) {
        if (tracker->thread() == QThread::currentThread())
            tracker->endHandlers();
    }
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); // links that handlers have left behind
}

} // namespace

VekDeviceTrackerPrivate::VekDeviceTrackerPrivate(QObject *parent)
    : QObject(parent), _nullHandler(std::make_shared<VekInstrumentHandler>(nullptr)),
      _firmwareUpdater(std::make_shared<FirmwareUpdateHandler>())
{
    if (trackersOfApplication().isEmpty())
        qAddPostRoutine(endHandlersOfApplication);
    trackersOfApplication().append(this);
}

VekDeviceTrackerPrivate::~VekDeviceTrackerPrivate()
{
    trackersOfApplication().removeOne(this);
    endHandlers();
    _handedOut.clear();
}

VekInstrumentHandlerPrivate *VekDeviceTrackerPrivate::instrumentHandlerFactory(const InstrumentInfo &info) const
{
    return makeInstrumentHandler(info);
}

std::optional<VekErrorCode> VekDeviceTrackerPrivate::connectToPort(const QString &port, const QString &onlyName)
{
    const PortClaim claim(_questionedPorts, keyOf(port));
    if (!claim.isFirst() || isHeld(keyOf(port)) || !InitialInformation::PingToInstrument(port))
        return std::nullopt;
    InstrumentInfo info;
    const VekErrorCode verdict = InitialInformation::getBasicInfoSuccessfully(port, info);
    if (verdict == VekErrorCode::Success && (onlyName.isEmpty() || info.deviceName == onlyName))
        connectToDeviceWithInfo(info); // its failure is not the client's: no newDeviceConnected() follows
    return verdict;
}

bool VekDeviceTrackerPrivate::connectToDeviceWithInfo(const InstrumentInfo &info)
{
    VekInstrumentHandlerPrivate *handler = instrumentHandlerFactory(info);
    if (!handler->isConnected()) {
        complain("Unable to initialize comport for ", info.deviceName);
        handler->retire();
        return false;
    }
    // Everything is connected before the start-up, in which the handler's thread begins to emit signals.
    _handlers[handler] = {keyOf(info.comPort), info.deviceName, publicHandlerOf(handler)};
    connect(
        handler, &VekInstrumentHandlerPrivate::deviceDisconnected, this, [this, handler] { onDeviceLost(handler); },
        Qt::QueuedConnection);
    connect(
        handler, &VekInstrumentHandlerPrivate::initialConnectionRequestFinished, this,
        [this, handler](bool succeeded) { onStartUpFinished(handler, succeeded); }, Qt::QueuedConnection);
    QMetaObject::invokeMethod(handler, &VekInstrumentHandlerPrivate::sendInitialDefaults, Qt::QueuedConnection);
    return true;
}

void VekDeviceTrackerPrivate::onStartUpFinished(VekInstrumentHandlerPrivate *handler, bool succeeded)
{
    const auto held = _handlers.find(handler);
    if (held == _handlers.end())
        return;
    if (succeeded && handler->isConnected()) { // if not, its loss has been or will be told, and passed over
        held->second.isStarted = true;
        addDevice(held->second);
        return;
    }
    complain("Initial device connections failed for ", held->second.name);
    _handlers.erase(held);
    handler->retire();
}

void VekDeviceTrackerPrivate::addDevice(const Device &device)
{
    const QString name = device.name; // a copy: a receiver may run an event loop in which the device goes away
    _nameToHandler[name] = device.publicHandler;
    _portToName[device.port] = name;
    Q_EMIT deviceConnected(name);
}

void VekDeviceTrackerPrivate::onDeviceLost(VekInstrumentHandlerPrivate *handler)
{
    const auto held = _handlers.find(handler);
    if (held == _handlers.end() || !held->second.isStarted)
        return;
    const Device device = held->second;
    _handlers.erase(held);
    const auto named = _nameToHandler.find(device.name);
    if (named != _nameToHandler.end() && named->second == device.publicHandler) // another device may bear the name
        _nameToHandler.erase(named);
    _portToName.erase(device.port);
    handler->retire();
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

bool VekDeviceTrackerPrivate::isHeld(const QString &portKey) const
{
    return std::any_of(_handlers.begin(), _handlers.end(),
                       [&portKey](const auto &handler) { return handler.second.port == portKey; });
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

FirmwareUpdateHandler *VekDeviceTrackerPrivate::getFirmwareUpdateHandler() const
{
    return _firmwareUpdater.get();
}

void VekDeviceTrackerPrivate::endHandlers()
{
    _nameToHandler.clear();
    _portToName.clear();
    for (const auto &held : std::exchange(_handlers, {})) {
        endThreadOf(*held.first);
        delete held.first;
    }
}
