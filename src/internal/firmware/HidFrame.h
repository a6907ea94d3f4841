// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QList>

/**
 * The bootloader's frames in 64-byte HID reports.
 *
 * A frame is SOH, the body and its CRC (low byte first), EOT; inside, DLE stands in front of each byte that is one of
 * these three. A body is a command byte and its data.
 *
 * Cannot fail. Pure, hence free of any thread.
 */
namespace HidFrame {

constexpr int reportSize = 64; ///< without the report number

/// Wraps a body.
QByteArray make(const QByteArray &body);
/// Cuts a frame into what is written: report number 0 and 64 bytes, the last report filled up with 0xFF.
QList<QByteArray> reportsOf(const QByteArray &frame);

/**
 * Decodes bytes and gives the bodies of the frames that end in them; a body with a wrong CRC is dropped.
 *
 * @param received what has been decoded since the last SOH; kept between calls, an escape is not
 */
QList<QByteArray> takeBodies(const QByteArray &bytes, QByteArray &received);

} // namespace HidFrame
