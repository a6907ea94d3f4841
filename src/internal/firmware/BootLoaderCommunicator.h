#pragma once

#include "firmware/ApplicationSingleton.h"
#include "firmware/HidFinderThread.h"
#include "hardware_models/HardwareModelNumber.h"

#include <QEventLoop>
#include <QMap>
#include <QObject>
#include <QQueue>
#include <QString>
#include <QStringList>

#include <optional>

/**
 * Matches instruments that appear in their HID bootloader with the updates that were announced, and flashes them one
 * after the other.
 *
 * The first device that appears takes the first announced update. One that nobody announced is flashed for the model in
 * its release number, without a name; one that does not know its model waits until UpdateUnknowReleaseNumber().
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
        int model = 0; ///< as the USB release number tells it
        QString deviceName;
    };
    static constexpr int unknownModel = 256;

    static BootLoaderCommunicator *Instance();
    ~BootLoaderCommunicator() override;

    /// Path of the image for a release number; of none, should the number be no model's.
    static QString findHexFilePath(int model);

    /// Announces that an instrument of this model will appear.
    void setReleaseNumber(QString deviceName, int model);
    /// The answer to FindReleaseNumber(): flashes the device for this model.
    void UpdateUnknowReleaseNumber(QString path, HardwareModel_t model);
    /// Looks for devices until some are found. One whose update has failed is found again, if no other is announced.
    void checkForHidConnections();

Q_SIGNALS:
    void ProgressChanged(QString deviceName, int percent);
    void Finished(QString deviceName, bool success);
    void Started(QString deviceName);
    void BootloaderFound(QString deviceName);
    void ShowBootloaderDialog();
    /// A device does not know its model.
    void FindReleaseNumber(QString path);

private:
    friend class ApplicationSingleton<BootLoaderCommunicator>;
    BootLoaderCommunicator();

    void HidConnectionsFound(const QMap<QString, int> &devices);
    void HidConnectionsRemove(const QMap<QString, int> &devices);
    void onSearchEnded();
    void onRunFinished(const QString &deviceName, bool success);
    void found(const QString &path, int releaseNumber);
    void startBootLoader();
    void runNext();

    HidFinderThread _finder;
    QMap<QString, int> _connected; ///< HID path to release number
    QQueue<HidData> _pending;      ///< announced, still to appear
    QQueue<HidData> _toRun;
    QEventLoop _runLoop;
    bool _isRunning = false;
    std::optional<bool> _outcome; ///< of the last run; empty until it has come, also if the application quits
    QStringList _unfinished;      ///< paths of devices that are still in their bootloader for all we know
};
