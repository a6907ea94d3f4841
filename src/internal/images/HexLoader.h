// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

/// The two comment lines at the end of a firmware image.
struct HexSignature {
    QString text;     ///< family of the image, see HardwareModel::getHexFileSignatureText()
    QString checksum; ///< what an instrument reports while it runs this image, in upper or lower case
};

/// What the bootloader is asked to compare.
struct HexCrc {
    quint32 address = 0xFFFFFFFF; ///< lowest address of the image, as the target's processor sees it
    quint32 size = 0;             ///< bytes from the start of the flash to the end of the image
    quint16 crc = 0;              ///< over the bytes from the lowest address to the end of the image
};

/**
 * Decodes one line of Intel HEX text.
 *
 * @param record receives length, address (2 bytes, high first), type, data, checksum; untouched on failure
 * @return whether the line holds a record with the right length and checksum. Records with 128 data bytes or more
 *         are refused.
 */
bool ReadHexRecord(QString const &line, QByteArray &record);

/**
 * Reads firmware images: Intel HEX text for a PIC32-class target, with a signature in two comment lines at the end.
 *
 * The images that belong to this library are compiled in; getDefaultHexPath() names them.
 *
 * @thread Pure but for reading the file, hence free of any thread.
 */
class HexLoader
{
public:
    /// All records in the order of the file. Empty on any failure: a partly readable image is no image.
    static QList<QByteArray> ReadFile(QString const &path);
    /// The signature lines of the file; empty fields on failure.
    static HexSignature ReadHexSignature(QString const &path);
    /// Lays the records out as the target's program flash and takes the CRC; see HexCrc.
    static HexCrc CalculateCrc(QList<QByteArray> const &records);
    /// What the records store in the target's program flash, from the lowest address on; gaps are erased flash.
    static QByteArray ImageBytes(QList<QByteArray> const &records);
    /// Resource path of a firmware file; the file need not exist.
    static QString getDefaultHexPath(QString const &fileName);
};
