// SPDX-License-Identifier: MIT
#include "link/SerialPort.h"

#include <QSignalBlocker>

SerialPort::SerialPort(QObject *parent) : QObject(parent), _port(new QSerialPort(this))
{
    connect(_port, &QSerialPort::readyRead, this, &SerialPort::readyRead, Qt::DirectConnection);
    connect(_port, &QSerialPort::errorOccurred, this, &SerialPort::errorOccurred, Qt::DirectConnection);
    connect(_port, &QSerialPort::bytesWritten, this, &SerialPort::bytesWritten, Qt::DirectConnection);
}

bool SerialPort::open(QIODevice::OpenMode mode)
{
    return _port->open(mode);
}
void SerialPort::close()
{
    _port->close();
}
bool SerialPort::isOpen() const
{
    return _port->isOpen();
}
bool SerialPort::isWritable() const
{
    return _port->isWritable();
}
qint64 SerialPort::write(const QByteArray &bytes)
{
    return _port->write(bytes);
}
QByteArray SerialPort::readAll()
{
    return _port->readAll();
}
bool SerialPort::flush()
{
    return _port->flush();
}

qint64 SerialPort::bytesToWrite() const
{
    return _port->bytesToWrite();
}

QString SerialPort::portName() const
{
    return _port->portName();
}
void SerialPort::setPortName(const QString &name)
{
    _port->setPortName(name);
}
bool SerialPort::setBaudRate(int rate)
{
    return _port->setBaudRate(rate, QSerialPort::AllDirections);
}
bool SerialPort::setDataBits(QSerialPort::DataBits bits)
{
    return _port->setDataBits(bits);
}
bool SerialPort::setFlowControl(QSerialPort::FlowControl control)
{
    return _port->setFlowControl(control);
}
bool SerialPort::setParity(QSerialPort::Parity parity)
{
    return _port->setParity(parity);
}
bool SerialPort::setStopBits(QSerialPort::StopBits bits)
{
    return _port->setStopBits(bits);
}

bool SerialPort::setDataTerminalReady(bool on)
{
    bool done = false;
    {
        const QSignalBlocker quiet(_port);
        done = _port->setDataTerminalReady(on);
    }
    if (done)
        return true;
    if (_port->error() == QSerialPort::UnsupportedOperationError)
        _port->clearError();
    else
        Q_EMIT errorOccurred(_port->error());
    return false;
}

bool SerialPort::waitForBytesWritten(int milliseconds)
{
    return _port->waitForBytesWritten(milliseconds);
}

void SerialPort::setReadBufferSize(qint64 bytes)
{
    _port->setReadBufferSize(bytes);
}

bool SerialPort::discardInput()
{
    const QSignalBlocker quiet(_port); // a port that cannot flush has nothing to flush
    const bool done = _port->clear(QSerialPort::Input);
    if (!done)
        _port->clearError();
    return done;
}
