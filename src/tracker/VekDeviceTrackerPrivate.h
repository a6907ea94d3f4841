// SPDX-License-Identifier: MIT
#pragma once

#include "VekErrorCode.h"
#include "VekFirmwareUpdateStage.h"
#include "waiting/Clock.h"

#include <QList>
#include <QObject>
#include <QSerialPortInfo>
#include <QString>

#include <list>
#include <map>
#include <memory>
#include <optional>
#include <set>

class FirmwareUpdateHandler;
class VekInstrumentHandler;
class VekInstrumentHandlerPrivate;
struct InstrumentInfo;

/**
 * Keeps who is connected, makes the handlers and lets them go.
 *
 * A device stands in both maps from the end of its handler's start-up until its disconnection. The public handler that a
 * client was given stays alive after that, until purgeStaleDevices().
 *
 * Each connection ends in one deviceDisconnected(), whether its cable is pulled, in the start-up already, or it is let
 * go. All of these come as the loss of the link, and where the connection is forgotten it is told. Only the end of the
 * application object is silent.
 *
 * @thread Lives on the client's thread; everything here runs there, so there is no lock. The private handlers live on
 *         threads of their own and are reached by queued calls.
 */
class VekDeviceTrackerPrivate : public QObject
{
    Q_OBJECT

public:
    explicit VekDeviceTrackerPrivate(QObject *parent = nullptr, const Clock &clock = Clock::host());
    ~VekDeviceTrackerPrivate() override;

    /// Opens the port once more and makes the handler for the instrument on it.
    virtual VekInstrumentHandlerPrivate *instrumentHandlerFactory(const InstrumentInfo &info) const;

    /**
     * Pings a port, questions it, and connects to the instrument on it.
     *
     * One port at a time: a call that comes out of the event loop of another is refused, for it would take the other's
     * bytes or its time, and to wait for it here would be to wait for ever. A client may poll by a timer all the same.
     *
     * @param onlyName  if not empty, the instrument is connected only if it bears this name
     * @param untouched channels that the start-up leaves alone
     * @return the result of the handshake; ConnectionInProgress from within another call, and for a device that is in
     *         its start-up; ConnectionFailed if the port failed behind the handshake. Nothing if nobody answered the
     *         ping, or if a device of another name than @p onlyName lives on the port.
     */
    std::optional<VekErrorCode> connectToPort(const QString &port, const QString &onlyName = QString(),
                                              const std::set<unsigned char> &untouched = {});
    /// Starts a handler up. @return false if its port could not be opened; otherwise deviceConnected() or
    /// deviceDisconnected() follows.
    bool connectToDeviceWithInfo(const InstrumentInfo &info, const std::set<unsigned char> &untouched = {});
    /// Closes the port of a device, also of one in its start-up; deviceDisconnected() follows, unless DeviceNotFound.
    VekErrorCode disconnectDevice(const QString &deviceName);
    /// Updates the instrument on a port. One that is connected needs none; ConnectionInProgress as above.
    VekErrorCode updateFirmware(const QString &port);
    /// The handler of a connected device, or the one that stands for none.
    const VekInstrumentHandler &getDeviceReference(const QString &deviceName);
    /// Name of the device that is connected on a port, however the port is written; empty if there is none.
    QString nameFromActiveComport(const QString &port) const;
    /// Every serial port of the system: the ping tells an instrument from anything else.
    QList<QSerialPortInfo> getVekSerialPorts() const;
    std::list<QString> getConnectedDevices() const; ///< sorted
    void purgeStaleDevices();
    FirmwareUpdateHandler *getFirmwareUpdateHandler();

    /// Ends what must not outlive the application object: the threads of all handlers, and these; the public ones then
    /// stand for no device.
    void endWithApplication();

Q_SIGNALS:
    void deviceDisconnected(const QString &deviceName);
    void deviceConnected(const QString &deviceName);
    void firmwareUpdateNotification(const QString &message);
    void firmwareUpdateFinished(const QString &deviceName, bool success);
    void firmwareUpdateStageReached(const QString &deviceName, VekFirmwareUpdateStage stage, int percent,
                                    const QString &message);

private:
    /// One connection to an instrument, from the making of its handler until its end has been told.
    struct Device {
        enum class Stage { StartingUp, Connected, LetGo };

        VekInstrumentHandlerPrivate *handler = nullptr; ///< owned
        QString port;                                   ///< by the key that all spellings of the port share
        QString name;
        std::shared_ptr<VekInstrumentHandler> publicHandler;
        Stage stage = Stage::StartingUp;
    };

    void onStartUpFinished(int connection, bool succeeded);
    void onDeviceLost(int connection);
    void addDevice(const Device &device);
    void removeDevice(const Device &device);
    Device *deviceNamed(const QString &name);
    const Device *deviceOn(const QString &portKey) const;
    void endHandlers();
    void makeFirmwareUpdater();

    const Clock &_clock;
    std::map<QString, QString> _portToName; // by the key of the port
    std::map<QString, std::shared_ptr<VekInstrumentHandler>> _nameToHandler;
    QList<std::shared_ptr<VekInstrumentHandler>> _handedOut; // a client may hold references to these
    std::shared_ptr<VekInstrumentHandler> _nullHandler;
    std::shared_ptr<FirmwareUpdateHandler> _firmwareUpdater;
    std::map<int, Device> _devices; // by the number of the connection, which does not come again
    int _lastConnection = 0;
    bool _isQuestioning = false;
};
