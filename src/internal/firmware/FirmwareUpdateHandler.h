// SPDX-License-Identifier: MIT
#pragma once

#include "VekErrorCode.h"
#include "VekFirmwareUpdateStage.h"
#include "waiting/Clock.h"

#include <QObject>

struct InstrumentInfo;

/**
 * Decides whether an instrument needs other firmware, sends it to its bootloader by the road that fits its model, and
 * puts into words what the bootloaders tell.
 *
 * The firmware is always the image that this library carries. What goes wrong before the instrument is reset is the
 * result of update(); what goes wrong afterwards comes by signal.
 *
 * @thread Lives on the thread that makes it, which must run an event loop: the bootloaders' signals are queued to it.
 *         Its operations are called there; they block for the length of the handshake, in local event loops.
 */
class FirmwareUpdateHandler : public QObject
{
    Q_OBJECT

public:
    explicit FirmwareUpdateHandler(QObject *parent = nullptr, const Clock &clock = Clock::host());

    /**
     * Questions the instrument on a port. What it answered stands in @p info.
     *
     * @return Success for the firmware of this library, FirmwareNotSupported for any other, else what failed
     */
    VekErrorCode hasCorrectFirmware(const QString &port, InstrumentInfo &info);
    /**
     * Restarts the instrument on a port into its bootloader and has it flashed.
     *
     * The instrument is asked once more who it is before it is restarted. One that goes through a HID bootloader has
     * failed if it has not come there within 30 s, counted anew from the end of each update that runs before its own.
     *
     * @return Success when the update is under way; FirmwareUpToDate; FirmwareFileNotFound; StandInFirmware; else what
     *         failed. Unless it says otherwise in words, nothing but Success means that the instrument was touched.
     */
    VekErrorCode update(const QString &port);
    /// Has all instruments flashed that are in their HID bootloader, announced or not.
    void updateThroughHidConnections();

Q_SIGNALS:
    /// What an update is doing, in words for people; an instrument without an announced update has no name.
    void firmwareUpdateNotification(QString const &message);
    /// An update over HID has ended. See compatibility.md, updates told in words.
    void firmwareUpdateFinished(QString const &deviceName, bool success);
    /// What firmwareUpdateNotification() has just told, as values; @p percent is 0 but for Writing.
    void firmwareUpdateStageReached(const QString &deviceName, VekFirmwareUpdateStage stage, int percent,
                                    const QString &message);

private:
    using Stage = VekFirmwareUpdateStage;

    void BootloaderSetProgress(const QString &deviceName, int percent);
    void BootloaderFinished(const QString &deviceName, bool success);
    void BootloaderRefused(const QString &deviceName, Stage why, const QString &reason);
    void BootloaderStarted(const QString &deviceName);
    void BootloaderFound(const QString &deviceName);
    void ShowBootloaderDialog();
    void UnknowHIDModelConnect(const QString &path); // see compatibility.md, inner names
    /// @param words what follows the name in the message
    void tell(const QString &deviceName, Stage stage, const QString &words, int percent = 0);

    const Clock &_clock;
};
