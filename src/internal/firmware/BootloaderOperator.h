// SPDX-License-Identifier: MIT
#pragma once

#include "images/HexLoader.h"
#include "waiting/Clock.h"

#include <QByteArray>
#include <QMetaType>
#include <QObject>

class HidCommunicator;

/// What a bootloader says of itself. The host does not use it.
struct BootloaderInfo {
    quint8 bytes[2] = {};
};
Q_DECLARE_METATYPE(BootloaderInfo)

/**
 * The HID bootloader's commands as methods, and its replies as signals. Replies come many times, see HidCommunicator.
 *
 * @thread Lives on the thread that makes it, which must run an event loop.
 */
class BootloaderOperator : public QObject
{
    Q_OBJECT

public:
    /// Opens the device; one that cannot be opened never replies.
    explicit BootloaderOperator(QString const &hidPath, QObject *parent = nullptr, const Clock &clock = Clock::host());

    void RequestBootloaderInfo();
    void EraseFlash();
    /// Programs records as HexLoader::ReadFile() gives them, one behind the other.
    void ProgramFlash(QByteArray const &records);
    /// Asks for the CRC of what the flash holds now.
    void RequestFirmwareCrc(HexCrc const &image);
    /// Starts the firmware; there is no reply.
    void JumpToApplication();

Q_SIGNALS:
    void BootloaderInfoReceived(BootloaderInfo const &info);
    void FirmwareCrcReceived(unsigned short crc);
    void FlashErased();
    void FlashProgramed(); // see compatibility.md, inner names

private:
    void DataReceived(QByteArray const &data);

    HidCommunicator *_communicator; // a child
};
