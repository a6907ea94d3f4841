// SPDX-License-Identifier: MIT
#include "link/SerialPort.h"

#include <QSignalBlocker>
#include <QThread>

namespace {

constexpr int lockTries = 20;
constexpr unsigned long lockPauseMs = 5;

} // namespace

SerialPort::SerialPort(QObject *parent) : QObject(parent), _port(new QSerialPort(this))
{
    connect(_port, &QSerialPort::readyRead, this, &SerialPort::readyRead, Qt::DirectConnection);
    connect(_port, &QSerialPort::errorOccurred, this, &SerialPort::errorOccurred, Qt::DirectConnection);
    connect(_port, &QSerialPort::bytesWritten, this, &SerialPort::bytesWritten, Qt::DirectConnection);
}

bool SerialPort::open(QIODevice::OpenMode mode)
{
    // Who closes a port gives the device back first and takes the lock file away behind that: for a moment the port of a
    // program that has just ended, or the number of a pseudo-terminal that is free again, looks as if it were in use.
    for (int i = 1; i < lockTries; ++i) {
        const QSignalBlocker noErrorYet(_port);
        if (_port->open(mode))
            return true;
        if (_port->error() != QSerialPort::PermissionError)
            break;
        QThread::msleep(lockPauseMs);
    }
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
