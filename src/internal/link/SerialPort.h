// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>
#include <QSerialPort>

/**
 * A thin object around the QSerialPort that it owns; the seam at which a test can put another port.
 *
 * @thread Belongs to one thread, as QSerialPort does.
 */
class SerialPort : public QObject
{
    Q_OBJECT

public:
    explicit SerialPort(QObject *parent = nullptr);

    /// Tries again for 100 ms where another program seems to have the port, which may be just giving it back.
    virtual bool open(QIODevice::OpenMode mode);
    virtual void close();
    virtual bool isOpen() const;
    virtual bool isWritable() const;
    virtual qint64 write(const QByteArray &bytes);
    virtual QByteArray readAll();
    virtual bool flush();
    /// Bytes that have been taken and not yet been handed to the driver.
    qint64 bytesToWrite() const;

    QString portName() const;
    void setPortName(const QString &name);
    bool setBaudRate(int rate); ///< always for both directions
    bool setDataBits(QSerialPort::DataBits bits);
    bool setFlowControl(QSerialPort::FlowControl control);
    bool setParity(QSerialPort::Parity parity);
    bool setStopBits(QSerialPort::StopBits bits);
    /**
     * Raises or drops the DTR line. Pseudo-terminals and network serial bridges have no such line: there it answers
     * false, and that is all. Only another failure is one of the port and comes with errorOccurred().
     */
    bool setDataTerminalReady(bool on);
    /// Blocks in QSerialPort; never call it while an event loop serves the port (SerialThread::waitForBytesWritten()).
    bool waitForBytesWritten(int milliseconds);
    /// Bytes that may wait unread; what is more stays with the driver, which then holds the sender back. 0: no bound.
    void setReadBufferSize(qint64 bytes);
    /// Throws away what the driver has received and nobody has read.
    bool discardInput();

Q_SIGNALS:
    void readyRead();
    void errorOccurred(QSerialPort::SerialPortError error);
    void bytesWritten(qint64 bytes);

private:
    QSerialPort *_port;
};
