// SPDX-License-Identifier: MIT
#pragma once

#include "NimbrelleExport.h"
#include "VekErrorCode.h"
#include "VekFirmwareUpdateStage.h"

#include <QtCore/QObject>

#include <list>
#include <set>

class VekDeviceTrackerPrivate;
class VekInstrumentHandler;

/**
 * The entry point of the library: finds instruments, connects to them, and hands out their handlers.
 *
 * A connection happens only when it is asked for; the tracker does not watch for devices that are plugged in later. It
 * does notice a device that goes away.
 *
 * A device whose connecting call has returned Success is told either by newDeviceConnected() and, when it goes,
 * deviceDisconnected(), or, if it goes before it was ready, by deviceDisconnected() alone. So a client that waits for
 * both never waits for ever.
 *
 * @thread Make it and call it on one thread, the client's, which must run an event loop. The connection calls block
 *         that thread for the length of the handshake, at least a second for each port that answers, and deliver events
 *         meanwhile. One of them at a time: another that is made out of those events, by a slot or a timer, does not
 *         wait but is refused with ConnectionInProgress and disturbs nothing; so are firmware updates. The tracker may
 *         be used again under a later application object: what was connected under the first ends with it, untold.
 */
class NIMBRELLE_EXPORT VekDeviceTracker : public QObject
{
    Q_OBJECT

public:
    /// The one tracker; made on the first call, never destroyed.
    static VekDeviceTracker *Instance();

    /// For form only: a copy finds nothing and connects to nothing.
    VekDeviceTracker(const VekDeviceTracker &other);
    /// For form only: does nothing.
    VekDeviceTracker &operator=(const VekDeviceTracker &other);
    ~VekDeviceTracker() override;

    /**
     * Searches the serial ports for an instrument and connects to it if it bears the name.
     *
     * The search ends at the first port that answers: with several instruments use connectToDeviceOnComPort() or
     * connectAllPluggedInDevices(). Success therefore does not mean that the named instrument is connected; wait for
     * newDeviceConnected().
     *
     * @return DeviceNotFound for an empty name or when no port answers; ConnectionInProgress from within another such
     *         call, and while the named device starts up; else the result of the handshake
     */
    VekErrorCode connectToDevice(const QString &deviceName);
    /**
     * Connects to the instrument on a serial port, for example "ttyACM0" or "/dev/ttyACM0".
     *
     * Success means that the handshake is done; the device can be used when newDeviceConnected() comes.
     *
     * A client may poll with it by a timer: asked from within another connecting call, or for a port whose device is
     * starting up, it leaves the port alone.
     *
     * @return ConnectionFailed with the reason in words; FirmwareNotSupported when the firmware has to be updated
     *         first; ConnectionInProgress as said; Unknown when the port sends back what it is sent
     */
    VekErrorCode connectToDeviceOnComPort(const QString &portName);
    /**
     * The same for an instrument on which experiments may be running, begun by an earlier process or before the cable
     * was pulled.
     *
     * A connection sets the safety limits of each channel back, which takes them from an experiment that runs. The
     * channels named here are left alone: no limits are sent to them, so those of the experiment stay in force. If any
     * is named, nothing else that might disturb an experiment is done either: the fan keeps its mode, no calibration
     * tables are read from the SD card, and no stored data are erased.
     *
     * @param untouched numbers of channels, from 0; those that the instrument does not have are ignored
     */
    VekErrorCode connectToDeviceOnComPort(const QString &port, const std::set<unsigned char> &untouched);
    /**
     * Tries every serial port of the machine.
     *
     * @return the number of ports on which the handshake succeeded; 0 from within another connecting call
     */
    int connectAllPluggedInDevices();
    /**
     * Lets go of one instrument: closes its port and ends its threads. Another program, or the next connecting call,
     * can have the port at once.
     *
     * Nothing is stopped: what runs on the instrument goes on, drives its cell, and stays within the limits that were
     * set. Stop it first if that is not meant; commands that were given before still go out.
     *
     * From the return of this call on the device is not listed any more, and its handler answers every request with
     * DeviceNotFound; one that is under way fails. Samples that had come are delivered still. Then deviceDisconnected()
     * comes, once, of the handler and of the tracker, from the event loop. Call it when you like, inside slots of the
     * handler's signals too. It blocks the thread until the port is closed, usually some milliseconds; if the
     * instrument takes no data, for 2 s at most, and the port is then closed later.
     *
     * @param name of a device that is connected, or that is starting up: newDeviceConnected() does not come then. If
     *             several devices bear it, the one that getInstrumentHandler() gives.
     * @return DeviceNotFound when there is none
     */
    VekErrorCode disconnectDevice(const QString &name);

    /**
     * The handler of a connected device. The reference stays valid after the device has gone, until
     * purgeStaleDevices().
     *
     * @return for an unknown name an object that stands for no device, always the same
     */
    const VekInstrumentHandler &getInstrumentHandler(const QString &deviceName) const;
    /// Names of all connected devices, sorted.
    std::list<QString> getConnectedDevices() const;

    /**
     * Brings the instrument on a port to the firmware that this library carries. The device must not be connected.
     *
     * @return Success when the update is under way: its course and end come by signal; FirmwareUpToDate, for a
     *         connected device at once; ConnectionInProgress from within a connecting call; ConnectionFailed;
     *         FirmwareFileNotFound; StandInFirmware
     */
    VekErrorCode updateFirmwareOnComPort(const QString &portName) const;
    /// Updates every instrument that needs it, those left in their bootloader too. @return how many were started
    int updateFirmwareOnAllAvailableDevices();
    /**
     * Whether this library was built with a stand-in in the place of any firmware image. No update writes one into an
     * instrument, unless NIMBRELLE_ALLOW_STAND_IN=1 is in the environment, which is for simulated instruments. Any thread.
     */
    static bool carriesStandInFirmware();

    /// Turns the log file on (as at the start) or off.
    void saveLogToFile(bool save);
    /// Moves the log file, by default "Brenmoor Apparatus/API/NimbrelleAPI.log" in the documents folder. Call it at the
    /// start of a program.
    void setLogFilePath(const QString &path);

    /// Lets the handlers of devices that have gone be destroyed; the client must hold no reference to one any more.
    void purgeStaleDevices();

Q_SIGNALS:
    /// The device is ready for use.
    void newDeviceConnected(const QString &deviceName);
    /// The device has gone, or was let go by disconnectDevice(); comes once, also for one that was not ready yet.
    void deviceDisconnected(const QString &deviceName);
    /// What a firmware update is doing, in words.
    void firmwareUpdateNotification(const QString &message);
    /// A firmware update over the HID bootloader has ended.
    void firmwareUpdateFinished(const QString &deviceName, bool success);
    /**
     * firmwareUpdateNotification() once more, right behind it, as values, and for every kind of bootloader.
     *
     * @param deviceName as the instrument bears it; empty for one in its bootloader that no call has announced; the port
     *                   of an instrument that updateFirmwareOnAllAvailableDevices() leaves alone for a stand-in; at
     *                   BootloaderFound of a Gale what its bootloader says of itself
     * @param percent    of the image that is written, 0 to 100; 0 with all stages but Writing
     * @param message    the text of the notification
     */
    void firmwareUpdateStageReached(const QString &deviceName, VekFirmwareUpdateStage stage, int percent,
                                    const QString &message);

private:
    VekDeviceTracker();
    void tellOfStandIn(const QString &port, const QString &reason);

    VekDeviceTrackerPrivate *_private; // a child of this object; null in a copy
};
