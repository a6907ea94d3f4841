// SPDX-License-Identifier: MIT
#include "link/PacketBuffer.h"

#include <algorithm>
#include <utility>

namespace {

/// Chunks grow up to here: four full reads of the port, each with the begin of a frame that the one before has left. In
/// one block, memory would be doubled, and copied, time and again.
constexpr int chunkBytes = 4 * (65536 + 1024);
/// So many frames are taken over with the buffer that they stand in; fewer are copied, which spares the next one's growth.
constexpr int leastBytesTakenOver = 1024;

} // namespace

void PacketBuffer::append(const char *frames, int size)
{
    if (size == 0)
        return;
    QByteArray *last = _others.empty() ? &_chunk : &_others.back();
    if (!last->isEmpty() && last->size() + size > chunkBytes) {
        last = &_others.emplace_back();
        last->reserve(std::max(size, chunkBytes)); // left to itself it takes up to twice what it holds
    }
    last->append(frames, size);
    _bytes += size;
}

void PacketBuffer::append(QByteArray &&frames)
{
    if (!isEmpty())
        return append(frames.constData(), frames.size());
    _bytes = frames.size();
    _chunk = std::move(frames);
}

void PacketBuffer::append(PacketBuffer &&other)
{
    if (isEmpty()) {
        *this = std::exchange(other, PacketBuffer());
        return;
    }
    while (!other.isEmpty()) {
        const PacketBuffer some = other.takeSome();
        append(some._chunk.constData() + some._position, int(some._bytes));
    }
}

Frame PacketBuffer::takeFirst()
{
    Frame frame = frameAt(_chunk.constData() + _position);
    _position += frame.size();
    _bytes -= frame.size();
    if (_position == _chunk.size())
        dropFirstChunk();
    return frame;
}

PacketBuffer PacketBuffer::takeSome()
{
    PacketBuffer some;
    some._position = _position;
    some._bytes = _chunk.size() - _position;
    some._chunk = std::move(_chunk);
    _bytes -= some._bytes;
    dropFirstChunk();
    return some;
}

void PacketBuffer::dropFirstChunk()
{
    _position = 0;
    if (_others.empty()) {
        _chunk = QByteArray();
        return;
    }
    _chunk = std::move(_others[_othersTaken++]);
    if (_othersTaken == _others.size()) {
        _others.clear();
        _othersTaken = 0;
    }
}

PacketBuffer takePackets(QByteArray &buffer, quint32 &skipped)
{
    PacketBuffer packets;
    const char *const begin = buffer.constData();
    const char *const end = begin + buffer.size();
    const char *position = begin;
    const char *run = begin; // of frames one behind the other, which is what most arrivals are
    const char *runEnd = begin;
    while (const int size = seekFrame(position, end, skipped)) {
        if (position != runEnd) {
            packets.append(run, static_cast<int>(runEnd - run));
            run = position;
        }
        position += size;
        runEnd = position;
    }
    const int runSize = static_cast<int>(runEnd - run);
    if (run == begin && runSize >= leastBytesTakenOver) {
        QByteArray rest(position, static_cast<int>(end - position));
        buffer.truncate(runSize);
        packets.append(std::exchange(buffer, std::move(rest)));
        return packets;
    }
    packets.append(run, runSize);
    cutFront(buffer, static_cast<int>(position - begin));
    return packets;
}
