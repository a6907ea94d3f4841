#pragma once

#include "NimbrelleExport.h"
#include "VekErrorCode.h"

#include <QtCore/QObject>

#include <list>

class VekDeviceTrackerPrivate;
class VekInstrumentHandler;

/**
 * The entry point of the library: finds instruments, connects to them, and hands out their handlers.
 *
 * A connection happens only when it is asked for; the tracker does not watch for devices that are plugged in later. It
 * does notice a device that goes away.
 *
 * @thread Make it and call it on one thread, the client's, which must run an event loop. The connection calls block
 *         that thread for the length of the handshake, at least a second for each port that answers, and deliver events
 *         meanwhile.
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
     * @return DeviceNotFound for an empty name or when no port answers, else the result of the handshake
     */
    VekErrorCode connectToDevice(const QString &deviceName);
    /**
     * Connects to the instrument on a serial port, for example "ttyACM0" or "/dev/ttyACM0".
     *
     * Success means that the handshake is done; the device can be used when newDeviceConnected() comes.
     *
     * @return ConnectionFailed with the reason in words; FirmwareNotSupported when the firmware has to be updated
     *         first; Unknown when the port sends back what it is sent
     */
    VekErrorCode connectToDeviceOnComPort(const QString &portName);
    /// Tries every serial port of the machine. @return the number of ports on which the handshake succeeded
    int connectAllPluggedInDevices();

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
     * @return Success when the update is under way: its course and end come by signal; FirmwareUpToDate;
     *         ConnectionFailed; FirmwareFileNotFound
     */
    VekErrorCode updateFirmwareOnComPort(const QString &portName) const;
    /// Updates every instrument that needs it, those left in their bootloader too. @return how many were started
    int updateFirmwareOnAllAvailableDevices();

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
    /// The device has gone; comes once.
    void deviceDisconnected(const QString &deviceName);
    /// What a firmware update is doing, in words.
    void firmwareUpdateNotification(const QString &message);
    /// A firmware update over the HID bootloader has ended.
    void firmwareUpdateFinished(const QString &deviceName, bool success);

private:
    VekDeviceTracker();

    VekDeviceTrackerPrivate *_private; // a child of this object; null in a copy
};
