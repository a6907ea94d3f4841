#pragma once

#include "VekErrorCode.h"

#include <QList>
#include <QObject>
#include <QSerialPortInfo>
#include <QSet>
#include <QString>

#include <list>
#include <map>
#include <memory>
#include <optional>

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
 * @thread Lives on the client's thread; everything here runs there, so there is no lock. The private handlers live on
 *         threads of their own and are reached by queued calls.
 */
class VekDeviceTrackerPrivate : public QObject
{
    Q_OBJECT

public:
    explicit VekDeviceTrackerPrivate(QObject *parent = nullptr);
    ~VekDeviceTrackerPrivate() override;

    /// Opens the port once more and makes the handler for the instrument on it.
    virtual VekInstrumentHandlerPrivate *instrumentHandlerFactory(const InstrumentInfo &info) const;

    /**
     * Pings a port, questions it, and connects to the instrument on it.
     *
     * Asked again for a port that it is just questioning, or on which a handler lives, it leaves that port alone: a
     * client may poll by a timer, which goes on ticking during the handshake.
     *
     * @param onlyName if not empty, the instrument is connected only if it bears this name
     * @return the result of the handshake; nothing if nobody answered the ping
     */
    std::optional<VekErrorCode> connectToPort(const QString &port, const QString &onlyName = QString());
    /// Starts a handler up. @return false if its port could not be opened; otherwise deviceConnected() may follow.
    bool connectToDeviceWithInfo(const InstrumentInfo &info);
    /// The handler of a connected device, or the one that stands for none.
    const VekInstrumentHandler &getDeviceReference(const QString &deviceName);
    /// Name of the device that is connected on a port, however the port is written; empty if there is none.
    QString nameFromActiveComport(const QString &port) const;
    /// Every serial port of the system: the ping tells an instrument from anything else.
    QList<QSerialPortInfo> getVekSerialPorts() const;
    std::list<QString> getConnectedDevices() const; ///< sorted
    void purgeStaleDevices();
    FirmwareUpdateHandler *getFirmwareUpdateHandler() const;

    /// Ends the threads of all handlers and destroys these; the public ones then stand for no device.
    void endHandlers();

Q_SIGNALS:
    void deviceDisconnected(const QString &deviceName);
    void deviceConnected(const QString &deviceName);

private:
    /// An instrument whose handler is in start-up or connected.
    struct Device {
        QString port; ///< by the key that all spellings of the port share
        QString name;
        std::shared_ptr<VekInstrumentHandler> publicHandler;
        bool isStarted = false; ///< its start-up is over and the client has been told of it
    };

    void onStartUpFinished(VekInstrumentHandlerPrivate *handler, bool succeeded);
    void onDeviceLost(VekInstrumentHandlerPrivate *handler);
    void addDevice(const Device &device);
    bool isHeld(const QString &portKey) const;

    std::map<QString, QString> _portToName; // by the key of the port
    std::map<QString, std::shared_ptr<VekInstrumentHandler>> _nameToHandler;
    QList<std::shared_ptr<VekInstrumentHandler>> _handedOut; // a client may hold references to these
    std::shared_ptr<VekInstrumentHandler> _nullHandler;
    std::shared_ptr<FirmwareUpdateHandler> _firmwareUpdater;
    std::map<VekInstrumentHandlerPrivate *, Device> _handlers; // owned
    QSet<QString> _questionedPorts;
};
