// SPDX-License-Identifier: MIT
#pragma once

#include "VekFirmwareUpdateStage.h"
#include "firmware/AnnouncedUpdates.h"
#include "firmware/ApplicationSingleton.h"
#include "firmware/HidFinderThread.h"
#include "hardware_models/HardwareModelNumber.h"

#include <QMap>
#include <QObject>
#include <QQueue>
#include <QString>
#include <QStringList>

#include <memory>
#include <optional>

class BoundedWait;

/**
 * Matches instruments that appear in their HID bootloader with the updates that were announced, and flashes them one
 * after the other.
 *
 * Which announcement a device takes is AnnouncedUpdates' rule. A device that takes none is left alone, unless all devices
 * were asked for: then it is flashed for the model in its release number, without a name; one that does not know its
 * model waits until UpdateUnknowReleaseNumber().
 *
 * An announcement whose instrument has not come ends as failed after 30 s, counted anew from the end of every update that
 * runs meanwhile.
 *
 * @thread Lives on the thread that first called Instance(), which must run an event loop. An update blocks in a local
 *         event loop there, delivering signals meanwhile. Every operation is called on that thread.
 */
class BootLoaderCommunicator : public QObject
{
    Q_OBJECT

public:
    /// An update: of which device, to which model's firmware, for which instrument.
    struct HidData {
        QString path;
        int model = 0; ///< as the USB release number tells it, or as it was announced
        QString deviceName;
    };
    static constexpr int unknownModel = AnnouncedUpdates::unknownModel;

    static BootLoaderCommunicator *Instance();
    ~BootLoaderCommunicator() override;

    /// Path of the image for a release number; of none, should the number be no model's.
    static QString findHexFilePath(int model);

    /// Announces that an instrument of this model will appear, of which nothing else is known.
    void setReleaseNumber(QString deviceName, int model);
    /// Paths of the bootloaders that are there now; what comes on any other path from now on is a new device.
    QStringList presentPaths();
    /// Announces an instrument that was restarted. What was announced of it before ends as failed: it is on its port again.
    void announce(Announcement announcement);
    /// The answer to FindReleaseNumber(): flashes the device for this model, unless it names another one by now.
    void UpdateUnknowReleaseNumber(QString path, HardwareModel_t model); // see compatibility.md, inner names
    /// Looks for devices until some are found, and wants all of these. One whose update has failed is found again, if no
    /// other is announced.
    void checkForHidConnections();
    /// Looks for the devices that were announced, and leaves others alone.
    void checkForAnnounced();
    /// Lets no update begin before as many calls of goOn(): it would hold the thread while somebody questions a port.
    void hold() { ++_holds; }
    void goOn();
    /// Whether devices are being looked for, or the last of their updates are under way.
    bool isSearching() const { return _finder.isRunning(); }
    /// How long a device is waited for; for tests.
    void setPatience(int milliseconds) { _patienceMs = milliseconds; }

Q_SIGNALS:
    void ProgressChanged(QString deviceName, int percent);
    void Finished(QString deviceName, bool success);
    void Started(QString deviceName);
    void BootloaderFound(QString deviceName);
    void ShowBootloaderDialog();
    /// A device does not know its model.
    void FindReleaseNumber(QString path);
    /// Nothing is written to a device, for this reason in words; Finished() follows.
    void Refused(QString deviceName, VekFirmwareUpdateStage why, QString reason);

private:
    friend class ApplicationSingleton<BootLoaderCommunicator>;
    BootLoaderCommunicator();

    void HidConnectionsFound(const QMap<QString, int> &devices);
    void HidConnectionsRemove(const QMap<QString, int> &devices);
    void onSearchEnded();
    void onRunFinished(const QString &deviceName, bool success);
    void onPatienceEnded();
    QMap<QString, HidData> updatesOf(const QMap<QString, int> &devices, bool wantsAll);
    void take(const HidData &data);
    void startBootLoader();
    void runNext();
    void flash(const HidData &data, const QString &imagePath);
    void refuse(const HidData &data, VekFirmwareUpdateStage why, const QString &reason);
    void restartPatience();

    HidFinderThread _finder;
    QMap<QString, int> _connected; ///< HID path to release number
    AnnouncedUpdates _pending;
    const Clock &_clock = Clock::host();
    const std::unique_ptr<Alarm> _patience; ///< until the first of them expires
    int _patienceMs = 30000;
    bool _wantsAll = false; ///< devices of the next batch that nobody has announced are flashed too
    QQueue<HidData> _toRun;
    BoundedWait *_run = nullptr; ///< that is under way
    bool _isRunning = false;
    int _holds = 0;
    std::optional<bool> _outcome; ///< of the last run; empty until it has come, also if the application quits
    QStringList _unfinished;      ///< paths of devices that are still in their bootloader for all we know
};
