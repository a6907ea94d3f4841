// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QList>

/**
 * The instrument's program flash, as its bootloader fills it record by record and its firmware finds it.
 *
 * @thread None; a value.
 */
class FlashMemory
{
public:
    /// Blank flash: every byte 0xFF.
    void erase();
    /**
     * Takes one Intel HEX record in binary: length, address (high byte first), type, data, checksum.
     *
     * @return false, with nothing stored, when length or checksum are wrong or the data belong elsewhere
     */
    bool program(const QByteArray &record);
    /// Erases and programs a whole image.
    void load(const QList<QByteArray> &records);
    /// Changes the image that is there into another one, which nothing knows.
    void age();

    /// Whether there is firmware to start: the last record has come since the flash was erased, and none was refused.
    bool isComplete() const { return _hasEnd && !_isSpoiled; }
    /// From the start of the flash to the last byte that was programmed.
    QByteArray image() const { return _bytes; }
    /// CRC-16/XMODEM from an address, as the processor sees it, to so many bytes behind the start of the flash.
    quint16 crc(quint32 address, quint32 size) const;

private:
    bool execute(const QByteArray &record);
    bool store(const QByteArray &record);

    QByteArray _bytes;
    quint32 _base = 0; ///< of the addresses in records
    bool _hasEnd = false;
    bool _isSpoiled = false;
};

/// CRC-16/XMODEM, of frames and of the flash.
quint16 crc16(const QByteArray &bytes);

/// What the firmware reports as its checksum: the CRC-32 of the image, high byte first; of none, no byte.
QByteArray firmwareChecksum(const QByteArray &image);
