#pragma once

#include "link/Frame.h"

#include <QByteArray>

#include <vector>

/**
 * Packets in the order of the wire, kept as the frames that they came in: a packet that waits takes the room of its bytes.
 *
 * @thread None of its own; not shared.
 */
class PacketBuffer
{
public:
    /// Takes whole frames, one behind the other.
    void append(const char *frames, int size);
    void append(PacketBuffer &&other);
    bool isEmpty() const { return _bytes == 0; }
    qint64 bytes() const { return _bytes; }
    Frame takeFirst();
    /// Takes some of what is there, from the front: about so much as is worth an event.
    PacketBuffer takeSome();

private:
    void dropFirstChunk();

    std::vector<QByteArray> _chunks; ///< never empty ones; small ones are joined
    std::size_t _first = 0;          ///< the chunks before it have been taken
    int _position = 0;               ///< of the next frame in that chunk
    qint64 _bytes = 0;               ///< not yet taken
};

/// Cuts every complete frame off the front of a receive buffer, as takeFrames() does, and keeps them wrapped.
PacketBuffer takePackets(QByteArray &buffer, quint32 &skipped);
