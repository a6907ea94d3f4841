// SPDX-License-Identifier: MIT
#pragma once

#include "calibration/CalibrationData.h"
#include "hardware_models/HardwareVersion.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <array>

/// What is known of a connected instrument. A plain value, copied into the handler.
struct InstrumentInfo {
    quint8 channelCount = 0;
    QList<CalibrationData> calibration; ///< one entry for each channel
    HardwareVersion hardware;           ///< as the instrument sent it
    std::array<char, 56> recoveryMetaData = {};
    QString comPort;          ///< set as the last step of a successful handshake
    QString deviceName;       ///< the key by which the tracker knows the device
    QString firmwareVersion;  ///< as the instrument words it
    QString firmwareChecksum; ///< hexadecimal, upper case; empty if it was not received
    quint8 groundFloatState = 0;
};

/// Whether an instrument is of the line of battery cyclers, which speaks another dialect.
bool isGale(const InstrumentInfo &info);

/// The device name in a hardware record: what stands between the model byte and the first line feed, or the last byte.
QString deviceNameIn(const HardwareVersion &hardware);

/// A text of the instrument: UTF-8 up to the first NUL or the end.
QString textIn(const QByteArray &payload);
