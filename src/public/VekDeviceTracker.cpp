// SPDX-License-Identifier: MIT
#include "VekDeviceTracker.h"

#include "VekInstrumentHandler.h"
#include "firmware/FirmwareImages.h"
#include "firmware/FirmwareUpdateHandler.h"
#include "firmware/HidCommunicator.h"
#include "logging/Logger.h"
#include "tracker/VekDeviceTrackerPrivate.h"

namespace {

// clang-format off
const QLatin1String alreadyConnected("Nimbrelle is already connected.");
const QLatin1String noAnswer(
    "The Nimbrelle is not connecting to the selected USB port, and the initialization ping has failed. There could be "
    "multiple reasons for this issue, one of which could be that the Nimbrelle User Interface (NUI) is currently open, "
    "resulting in the COM port being occupied. If the NUI is open, please close it.");
// clang-format on

} // namespace

VekDeviceTracker *VekDeviceTracker::Instance()
{
    static VekDeviceTracker *const tracker = new VekDeviceTracker;
    return tracker;
}

VekDeviceTracker::VekDeviceTracker() : _private(new VekDeviceTrackerPrivate(this))
{
    qRegisterMetaType<VekErrorCode>();
    qRegisterMetaType<VekFirmwareUpdateStage>("VekFirmwareUpdateStage");
    connect(_private, &VekDeviceTrackerPrivate::firmwareUpdateNotification, this,
            &VekDeviceTracker::firmwareUpdateNotification);
    connect(_private, &VekDeviceTrackerPrivate::firmwareUpdateFinished, this,
            &VekDeviceTracker::firmwareUpdateFinished);
    connect(_private, &VekDeviceTrackerPrivate::firmwareUpdateStageReached, this,
            &VekDeviceTracker::firmwareUpdateStageReached);
    connect(_private, &VekDeviceTrackerPrivate::deviceDisconnected, this, &VekDeviceTracker::deviceDisconnected);
    connect(_private, &VekDeviceTrackerPrivate::deviceConnected, this, &VekDeviceTracker::newDeviceConnected);
}

// See compatibility.md, tracker that can be copied.
VekDeviceTracker::VekDeviceTracker(const VekDeviceTracker &) : QObject(), _private(nullptr)
{
}

VekDeviceTracker &VekDeviceTracker::operator=(const VekDeviceTracker &)
{
    return *this;
}

VekDeviceTracker::~VekDeviceTracker() = default;

VekErrorCode VekDeviceTracker::connectToDevice(const QString &deviceName)
{
    if (!_private || deviceName.isEmpty())
        return VekErrorCode::DeviceNotFound;
    const QList<QSerialPortInfo> ports = _private->getVekSerialPorts();
    for (const QSerialPortInfo &port : ports) {
        if (_private->nameFromActiveComport(port.portName()) == deviceName)
            return VekErrorCode::Success;
        // Whatever stands behind it. See compatibility.md, first port ends the search.
        if (const auto result = _private->connectToPort(port.portName(), deviceName))
            return *result;
    }
    return VekErrorCode::DeviceNotFound;
}

VekErrorCode VekDeviceTracker::connectToDeviceOnComPort(const QString &portName)
{
    return connectToDeviceOnComPort(portName, {});
}

VekErrorCode VekDeviceTracker::connectToDeviceOnComPort(const QString &portName,
                                                        const std::set<unsigned char> &untouched)
{
    if (!_private)
        return VekErrorCode::DeviceNotFound;
    if (!_private->nameFromActiveComport(portName).isEmpty())
        return VekErrorCode(VekErrorCode::ConnectionFailed, alreadyConnected);
    return _private->connectToPort(portName, QString(), untouched)
        .value_or(VekErrorCode(VekErrorCode::ConnectionFailed, noAnswer));
}

int VekDeviceTracker::connectAllPluggedInDevices()
{
    if (!_private)
        return 0;
    int connected = 0;
    const QList<QSerialPortInfo> ports = _private->getVekSerialPorts();
    for (const QSerialPortInfo &port : ports) {
        if (connectToDeviceOnComPort(port.portName()) == VekErrorCode::Success)
            ++connected;
    }
    return connected;
}

VekErrorCode VekDeviceTracker::disconnectDevice(const QString &name)
{
    if (!_private)
        return VekErrorCode::DeviceNotFound;
    return _private->disconnectDevice(name);
}

const VekInstrumentHandler &VekDeviceTracker::getInstrumentHandler(const QString &deviceName) const
{
    if (!_private)
        return Instance()->getInstrumentHandler(QString());
    return _private->getDeviceReference(deviceName);
}

std::list<QString> VekDeviceTracker::getConnectedDevices() const
{
    return _private ? _private->getConnectedDevices() : std::list<QString>();
}

VekErrorCode VekDeviceTracker::updateFirmwareOnComPort(const QString &portName) const
{
    if (!_private)
        return VekErrorCode::DeviceNotFound;
    return _private->updateFirmware(portName);
}

int VekDeviceTracker::updateFirmwareOnAllAvailableDevices()
{
    if (!_private)
        return 0;
    int started = HidCommunicator::SearchForBootloaderHidPath().size();
    if (started > 0)
        _private->getFirmwareUpdateHandler()->updateThroughHidConnections();
    const QList<QSerialPortInfo> ports = _private->getVekSerialPorts();
    for (const QSerialPortInfo &port : ports) {
        const VekErrorCode result = updateFirmwareOnComPort(port.portName());
        if (result == VekErrorCode::Success)
            ++started;
        else if (result == VekErrorCode::StandInFirmware)
            tellOfStandIn(port.portName(), result.message());
    }
    return started;
}

void VekDeviceTracker::tellOfStandIn(const QString &port, const QString &reason)
{
    const QString message = port + QStringLiteral(": ") + reason;
    Q_EMIT firmwareUpdateNotification(message);
    Q_EMIT firmwareUpdateStageReached(port, VekFirmwareUpdateStage::StandInFirmware, 0, message);
}

bool VekDeviceTracker::carriesStandInFirmware()
{
    return FirmwareImages::includeStandIn();
}

void VekDeviceTracker::saveLogToFile(bool save)
{
    Logger::getInstance().setSaveLogToFile(save);
}

void VekDeviceTracker::setLogFilePath(const QString &path)
{
    Logger::getInstance().setLogFilePath(path);
}

void VekDeviceTracker::purgeStaleDevices()
{
    if (_private)
        _private->purgeStaleDevices();
}
