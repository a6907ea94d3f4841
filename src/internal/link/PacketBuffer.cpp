#include "link/PacketBuffer.h"

#include <utility>

namespace {

/// Chunks grow up to here. In one block, memory would be doubled, and copied, time and again.
constexpr int chunkBytes = 1 << 16;

} // namespace

void PacketBuffer::append(const char *frames, int size)
{
    if (size == 0)
        return;
    if (_chunks.empty() || _chunks.back().size() + size > chunkBytes)
        _chunks.emplace_back();
    _chunks.back().append(frames, size);
    _bytes += size;
}

void PacketBuffer::append(PacketBuffer &&other)
{
    if (isEmpty()) {
        *this = std::exchange(other, PacketBuffer());
        return;
    }
    while (!other.isEmpty()) {
        const QByteArray &chunk = other._chunks[other._first];
        append(chunk.constData() + other._position, chunk.size() - other._position);
        other._bytes -= chunk.size() - other._position;
        other.dropFirstChunk();
    }
}

Frame PacketBuffer::takeFirst()
{
    const QByteArray &chunk = _chunks[_first];
    Frame frame = frameAt(chunk.constData() + _position);
    _position += frame.size();
    _bytes -= frame.size();
    if (_position == chunk.size())
        dropFirstChunk();
    return frame;
}

PacketBuffer PacketBuffer::takeSome()
{
    PacketBuffer some;
    some._position = _position;
    some._bytes = _chunks[_first].size() - _position;
    some._chunks.push_back(_chunks[_first]);
    _bytes -= some._bytes;
    dropFirstChunk();
    return some;
}

void PacketBuffer::dropFirstChunk()
{
    _position = 0;
    _chunks[_first++].clear();
    if (_first == _chunks.size()) {
        _chunks.clear();
        _first = 0;
    }
}

PacketBuffer takePackets(QByteArray &buffer, quint32 &skipped)
{
    PacketBuffer packets;
    const char *position = buffer.constData();
    const char *const end = position + buffer.size();
    const char *run = position; // of frames one behind the other, which is what most arrivals are
    const char *runEnd = position;
    while (const int size = seekFrame(position, end, skipped)) {
        if (position != runEnd) {
            packets.append(run, static_cast<int>(runEnd - run));
            run = position;
        }
        position += size;
        runEnd = position;
    }
    packets.append(run, static_cast<int>(runEnd - run));
    cutFront(buffer, static_cast<int>(position - buffer.constData()));
    return packets;
}
