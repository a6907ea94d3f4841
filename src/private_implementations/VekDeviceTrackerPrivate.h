#pragma once

#include <QList>
#include <QObject>
#include <QSerialPortInfo>
#include <QString>

#include <list>
#include <map>
#include <memory>

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

Q_SIGNALS:
    void deviceDisconnected(const QString &deviceName);
    void deviceConnected(const QString &deviceName);

private:
    std::map<QString, QString> _portToName;
    std::map<QString, std::shared_ptr<VekInstrumentHandler>> _nameToHandler;
    QList<std::shared_ptr<VekInstrumentHandler>> _handedOut;
    std::shared_ptr<VekInstrumentHandler> _nullHandler;
    std::shared_ptr<FirmwareUpdateHandler> _firmwareUpdater;
};
