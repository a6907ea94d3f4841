// SPDX-License-Identifier: MIT
#pragma once

#include "link/Notifications.h"
#include "link/PCcommand.h"

#include <QByteArray>
#include <QVector>

/// Bytes in front of the payload: magic 0xFFEE (2), type (1), channel (1), payload length (2); little-endian.
constexpr int frameHeaderSize = 6;

/// One packet of the serial link, unwrapped.
struct Frame {
    Notifications_t type; ///< the type byte read as signed: 0x80 and above come out negative
    unsigned int channel; ///< 0-based; 255 stands for all channels
    QByteArray payload;   ///< 0 to 65,535 bytes; the type decides their layout

    int size() const { return frameHeaderSize + payload.size(); } ///< on the wire, in bytes
};
Q_DECLARE_TYPEINFO(Frame, Q_MOVABLE_TYPE);

/**
 * Moves a position on to the next complete frame.
 *
 * The search for a magic moves on by single bytes, so that one behind a stray 0xEE is still found.
 *
 * @param position  where to begin; then of the frame that was found, else of the first byte worth keeping
 * @param skipped   raised by the count of bytes that belonged to no frame
 * @return the size of the frame, its header included; 0 if there is none
 */
int seekFrame(const char *&position, const char *end, quint32 &skipped);
/// Takes bytes off the front. Unlike QByteArray::remove() keeps the memory, which the next arrival would ask for again.
void cutFront(QByteArray &buffer, int count);
/// A complete frame, unwrapped.
Frame frameAt(const char *bytes);

/// Calls @p take with the bytes and the size of each complete frame, and cuts them off the front: takeFrames() tells more.
template <typename Take>
void cutFrames(QByteArray &buffer, quint32 &skipped, Take take)
{
    const char *position = buffer.constData();
    const char *const end = position + buffer.size();
    while (const int size = seekFrame(position, end, skipped)) {
        take(position, size);
        position += size;
    }
    cutFront(buffer, static_cast<int>(position - buffer.constData())); // once for each arrival, not once for each frame
}

/**
 * Cuts every complete frame off the front of a receive buffer.
 *
 * A frame is the header of six bytes and its payload, without checksum. The search for a magic moves on by single
 * bytes, so that one behind a stray 0xEE is still found. A false magic inside garbage promises up to 65,541 bytes, and
 * the frames behind it wait for them: the link has no way to tell, and the layers above time out.
 *
 * @param buffer  bytes in arrival order; what stays is an incomplete frame or an unscanned tail of at most 5 bytes
 * @param skipped raised by the count of bytes that belonged to no frame
 * @return the frames in arrival order; empty while the first one is incomplete
 *
 * Cannot fail: damage costs bytes, never a crash. Pure, hence free of any thread.
 */
QVector<Frame> takeFrames(QByteArray &buffer, quint32 &skipped);

/// Wraps a payload; its length is cut to 16 bits in the header, as the frame has no more room for it.
QByteArray makeFrame(quint8 type, quint8 channel, const QByteArray &payload = QByteArray());
