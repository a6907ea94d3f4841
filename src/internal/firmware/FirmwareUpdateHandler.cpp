#include "firmware/FirmwareUpdateHandler.h"

#include "firmware/BootLoaderCOM.h"
#include "firmware/BootLoaderCommunicator.h"
#include "firmware/HexLoader.h"
#include "link/SerialCommunicator.h"
#include "session/InitialInformation.h"

#include <QThread>

namespace {

constexpr unsigned long resetMs = 100;

/// Restarts the instrument into its HID bootloader, and announces it there.
void sendToHidBootloader(SerialCommunicator &link, const InstrumentInfo &info)
{
    link.SendCommand(PC_SOFT_RESET, deviceChannel);
    link.WaitForBytesSent();
    QThread::msleep(resetMs);
    link.Stop();
    BootLoaderCommunicator::Instance()->setReleaseNumber(info.deviceName, static_cast<int>(info.hardware.hwModel));
}

/// Restarts all boards, and has the serial bootloader take over the port.
void flashOverSerialPort(SerialCommunicator *link, const InstrumentInfo &info, const QString &imagePath)
{
    link->SendCommand(PC_SOFT_RESET, allChannels);
    link->WaitForBytesSent();
    link->Stop();
    link->deleteLater();
    QThread::msleep(resetMs);
    BootLoaderCOM::Instance()->flash(info.comPort, imagePath, info.deviceName);
}

} // namespace

FirmwareUpdateHandler::FirmwareUpdateHandler(QObject *parent) : QObject(parent)
{
    using This = FirmwareUpdateHandler;
    using Hid = BootLoaderCommunicator;
    using Serial = BootLoaderCOM;
    const auto queued = Qt::QueuedConnection;
    Hid *const hid = Hid::Instance();
    connect(hid, &Hid::ShowBootloaderDialog, this, &This::ShowBootloaderDialog, queued);
    connect(hid, &Hid::ProgressChanged, this, &This::BootloaderSetProgress, queued);
    connect(hid, &Hid::Finished, this, &This::BootloaderFinished, queued);
    connect(hid, &Hid::Finished, this, &This::firmwareUpdateFinished, queued);
    connect(hid, &Hid::Started, this, &This::BootloaderStarted, queued);
    connect(hid, &Hid::BootloaderFound, this, &This::BootloaderFound, queued);
    connect(hid, &Hid::FindReleaseNumber, this, &This::UnknowHIDModelConnect, queued);
    Serial *const serial = Serial::Instance();
    connect(serial, &Serial::ShowDialog, this, &This::ShowBootloaderDialog, queued);
    connect(serial, &Serial::Found, this, &This::BootloaderFound, queued);
    connect(serial, &Serial::Started, this, &This::BootloaderStarted, queued);
    connect(serial, &Serial::Progress, this, &This::BootloaderSetProgress, queued);
    connect(serial, &Serial::Finished, this, &This::BootloaderFinished, queued);
}

VekErrorCode FirmwareUpdateHandler::hasCorrectFirmware(const QString &port, InstrumentInfo &info)
{
    if (!InitialInformation::PingToInstrument(port))
        return VekErrorCode(VekErrorCode::ConnectionFailed,
                            QStringLiteral("Nimbrelle is not connect at selected USB port. Unplug USB cable from "
                                           "computer, and plug it again."));
    SerialCommunicator link(port);
    link.Start(true);
    const VekErrorCode verdict = InitialInformation::validateFirmware(link, info);
    link.Stop();
    return verdict;
}

VekErrorCode FirmwareUpdateHandler::update(const QString &port)
{
    InstrumentInfo info;
    info.comPort = port;
    const VekErrorCode verdict = hasCorrectFirmware(port, info);
    if (verdict == VekErrorCode::Success)
        return VekErrorCode::FirmwareUpToDate;
    if (verdict != VekErrorCode::FirmwareNotSupported)
        return verdict;
    const QString imagePath = BootLoaderCommunicator::findHexFilePath(static_cast<int>(info.hardware.hwModel));
    if (HexLoader::ReadFile(imagePath).isEmpty())
        return VekErrorCode::FirmwareFileNotFound;

    auto *const link = new SerialCommunicator(port);
    link->Start(true);
    if (info.hardware.hwModel == HardwareModel_t::Gale) {
        flashOverSerialPort(link, info, imagePath);
        return VekErrorCode::Success;
    }
    sendToHidBootloader(*link, info);
    updateThroughHidConnections();
    link->deleteLater();
    return VekErrorCode::Success;
}

void FirmwareUpdateHandler::updateThroughHidConnections()
{
    BootLoaderCommunicator::Instance()->checkForHidConnections();
}

void FirmwareUpdateHandler::BootloaderSetProgress(const QString &deviceName, int percent)
{
    Q_EMIT firmwareUpdateNotification(deviceName + QStringLiteral(": Progress ") + QString::number(percent));
}

void FirmwareUpdateHandler::BootloaderFinished(const QString &deviceName, bool success)
{
    Q_EMIT firmwareUpdateNotification(deviceName + (success ? QStringLiteral(": Firmware updated successfully.")
                                                            : QStringLiteral(": Firmware update failed.")));
}

void FirmwareUpdateHandler::BootloaderStarted(const QString &deviceName)
{
    Q_EMIT firmwareUpdateNotification(deviceName + QStringLiteral(": Firmware update has initialized."));
}

void FirmwareUpdateHandler::BootloaderFound(const QString &deviceName)
{
    Q_EMIT firmwareUpdateNotification(deviceName + QStringLiteral(": Firmware update is starting."));
}

// A library without a user interface has no dialog to show.
void FirmwareUpdateHandler::ShowBootloaderDialog()
{
}

void FirmwareUpdateHandler::UnknowHIDModelConnect(const QString &)
{
    Q_EMIT firmwareUpdateNotification(QStringLiteral("Unknow HID model connections. "));
}
