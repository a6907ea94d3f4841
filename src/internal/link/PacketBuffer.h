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
    void append(QByteArray &&frames);
    void append(PacketBuffer &&other);
    bool isEmpty() const { return _bytes == 0; }
    qint64 bytes() const { return _bytes; }
    Frame takeFirst();
    /// Takes some of what is there, from the front: about so much as is worth an event.
    PacketBuffer takeSome();

private:
    void dropFirstChunk();

    QByteArray _chunk; ///< the first, which is the only one as long as the receiver keeps up
    int _position = 0; ///< of the next frame in it
    std::vector<QByteArray> _others;
    std::size_t _othersTaken = 0;
    qint64 _bytes = 0; ///< not yet taken
};

/// Cuts every complete frame off the front of a receive buffer, as takeFrames() does, and keeps them wrapped.
PacketBuffer takePackets(QByteArray &buffer, quint32 &skipped);
