// SPDX-License-Identifier: MIT
#include "firmware/FirmwareUpdateHandler.h"

#include "firmware/BootLoaderCOM.h"
#include "firmware/BootLoaderCommunicator.h"
#include "firmware/FirmwareImages.h"
#include "firmware/UsbPlace.h"
#include "link/SerialCommunicator.h"
#include "session/InitialInformation.h"

namespace {

constexpr int softResetMs = 100;

/// For as long as a port is questioned.
struct Hold {
    Hold() { BootLoaderCommunicator::Instance()->hold(); }
    ~Hold() { BootLoaderCommunicator::Instance()->goOn(); }
    Q_DISABLE_COPY_MOVE(Hold)
};

/// Whether the instrument that was questioned is the one that answers now.
bool isSameInstrument(SerialCommunicator &link, const InstrumentInfo &questioned)
{
    InstrumentInfo present;
    const bool isSilent = InitialInformation::getHardwareVersion(link, present);
    return !isSilent && present.hardware.hwModel == questioned.hardware.hwModel &&
           present.deviceName == questioned.deviceName;
}

/// Whether all that was sent has left the port; on a crowded machine the link may need more than its second to tell.
bool hasAllLeft(SerialCommunicator &link)
{
    constexpr int mostWaits = 3;
    for (int wait = 0; wait < mostWaits; ++wait) {
        if (link.WaitForBytesSent())
            return true;
    }
    return false;
}

/// Restarts an instrument into its bootloader, and holds the port until the command has left it.
VekErrorCode restart(const InstrumentInfo &info, const Clock &clock)
{
    SerialCommunicator link(info.comPort, nullptr, clock);
    link.Start(true);
    if (!isSameInstrument(link, info))
        return VekErrorCode(VekErrorCode::ConnectionFailed,
                            QStringLiteral("The instrument has left its port before it could be restarted into its "
                                           "bootloader. Nothing was changed; please try again."));
    link.SendCommand(PC_SOFT_RESET, factsOf(instrumentLineOf(info.hardware.hwModel)).resetChannel);
    if (!hasAllLeft(link))
        return VekErrorCode(
            VekErrorCode::ConnectionFailed,
            QStringLiteral("The instrument did not take the command to restart into its bootloader, so "
                           "that nothing was written. If it does not answer any more, please update all "
                           "available devices."));
    clock.sleep(softResetMs);
    link.Stop();
    return VekErrorCode::Success;
}

} // namespace

FirmwareUpdateHandler::FirmwareUpdateHandler(QObject *parent, const Clock &clock) : QObject(parent), _clock(clock)
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
    connect(hid, &Hid::Refused, this, &This::BootloaderRefused, queued);
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
    if (!InitialInformation::PingToInstrument(port, _clock))
        return VekErrorCode(VekErrorCode::ConnectionFailed,
                            QStringLiteral("Nimbrelle is not connect at selected USB port. Unplug USB cable from "
                                           "computer, and plug it again."));
    SerialCommunicator link(port, nullptr, _clock);
    link.Start(true);
    const VekErrorCode verdict = InitialInformation::validateFirmware(link, info);
    link.Stop();
    return verdict;
}

VekErrorCode FirmwareUpdateHandler::update(const QString &port)
{
    const Hold hold;
    InstrumentInfo info;
    info.comPort = port;
    const VekErrorCode verdict = hasCorrectFirmware(port, info);
    if (verdict == VekErrorCode::Success)
        return VekErrorCode::FirmwareUpToDate;
    if (verdict != VekErrorCode::FirmwareNotSupported)
        return verdict;
    const int model = static_cast<int>(info.hardware.hwModel);
    const VekErrorCode imageVerdict = FirmwareImages::verdictOn(model);
    if (imageVerdict != VekErrorCode::Success)
        return imageVerdict;

    const QString usbPlace = usbPlaceOf(port);
    const QStringList bootloaders = BootLoaderCommunicator::Instance()->presentPaths();
    const VekErrorCode restarted = restart(info, _clock);
    if (restarted != VekErrorCode::Success)
        return restarted;
    if (isGale(info)) {
        BootLoaderCOM::Instance()->flash(port, FirmwareImages::pathFor(model), info.deviceName);
        return VekErrorCode::Success;
    }
    BootLoaderCommunicator::Instance()->announce({info.deviceName, model, port, usbPlace, bootloaders, {}});
    BootLoaderCommunicator::Instance()->checkForAnnounced();
    return VekErrorCode::Success;
}

void FirmwareUpdateHandler::updateThroughHidConnections()
{
    BootLoaderCommunicator::Instance()->checkForHidConnections();
}

void FirmwareUpdateHandler::BootloaderSetProgress(const QString &deviceName, int percent)
{
    tell(deviceName, Stage::Writing, QStringLiteral(": Progress ") + QString::number(percent), percent);
}

void FirmwareUpdateHandler::BootloaderFinished(const QString &deviceName, bool success)
{
    if (success)
        tell(deviceName, Stage::Succeeded, QStringLiteral(": Firmware updated successfully."));
    else
        tell(deviceName, Stage::Failed, QStringLiteral(": Firmware update failed."));
}

void FirmwareUpdateHandler::BootloaderRefused(const QString &deviceName, Stage why, const QString &reason)
{
    tell(deviceName, why, QStringLiteral(": ") + reason);
}

void FirmwareUpdateHandler::BootloaderStarted(const QString &deviceName)
{
    tell(deviceName, Stage::Begun, QStringLiteral(": Firmware update has initialized."));
}

void FirmwareUpdateHandler::BootloaderFound(const QString &deviceName)
{
    tell(deviceName, Stage::BootloaderFound, QStringLiteral(": Firmware update is starting."));
}

// A library without a user interface has no dialog to show.
void FirmwareUpdateHandler::ShowBootloaderDialog()
{
}

void FirmwareUpdateHandler::UnknowHIDModelConnect(const QString &)
{
    // See compatibility.md, unknown HID model.
    tell(QString(), Stage::UnknownModel, QStringLiteral("Unknow HID model connections. "));
}

void FirmwareUpdateHandler::tell(const QString &deviceName, Stage stage, const QString &words, int percent)
{
    const QString message = deviceName + words;
    Q_EMIT firmwareUpdateNotification(message);
    Q_EMIT firmwareUpdateStageReached(deviceName, stage, percent, message);
}
