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
    int position = std::exchange(other._position, 0);
    for (const QByteArray &chunk : std::exchange(other._chunks, {})) {
        append(chunk.constData() + position, chunk.size() - position);
        position = 0;
    }
    other._bytes = 0;
}

Frame PacketBuffer::takeFirst()
{
    const QByteArray &chunk = _chunks.front();
    Frame frame = frameAt(chunk, _position);
    _position += frame.size();
    _bytes -= frame.size();
    if (_position == chunk.size()) {
        _chunks.pop_front();
        _position = 0;
    }
    return frame;
}

PacketBuffer PacketBuffer::takeSome()
{
    PacketBuffer some;
    some._position = std::exchange(_position, 0);
    some._bytes = _chunks.front().size() - some._position;
    some._chunks.push_back(std::move(_chunks.front()));
    _chunks.pop_front();
    _bytes -= some._bytes;
    return some;
}
