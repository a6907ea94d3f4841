// SPDX-License-Identifier: MIT
#pragma once

#include <QSerialPort>

/// The settings of every instrument's port: 57600 baud in both directions, 8N1, no flow control.
struct DefaultSerialPortSettings {
    static qint32 Baudrate() { return QSerialPort::Baud57600; }
    static QSerialPort::DataBits DataBits() { return QSerialPort::Data8; }
    static QSerialPort::FlowControl FlowControl() { return QSerialPort::NoFlowControl; }
    static QSerialPort::Parity Parity() { return QSerialPort::NoParity; }
    static QSerialPort::StopBits StopBits() { return QSerialPort::OneStop; }
};
