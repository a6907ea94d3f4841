// SPDX-License-Identifier: MIT
#include "link/Frame.h"

#include <QtEndian>

#include <cstring>

// The frame is taken apart byte by byte, but the records inside are copied to and from structures as they stand.
static_assert(Q_BYTE_ORDER == Q_LITTLE_ENDIAN, "every number on the wire is little-endian, and so must the host be");

namespace {

constexpr quint16 magic = 0xFFEE;
constexpr char lowMagic = char(magic & 0xFF);
constexpr char highMagic = char(magic >> 8);

quint16 wordAt(const char *bytes)
{
    return qFromLittleEndian<quint16>(bytes);
}

bool isMagic(const char *bytes)
{
    return bytes[0] == lowMagic && bytes[1] == highMagic;
}

constexpr int blockSize = 32;

/// Whether a magic begins in a block. Looks at every byte of it, so that the compiler takes sixteen at a time.
bool holdsMagic(const char *block)
{
    unsigned char found = 0;
    for (int i = 0; i < blockSize; ++i)
        found |= static_cast<unsigned char>((block[i] == lowMagic) & (block[i + 1] == highMagic));
    return found != 0;
}

/// Where the first magic begins, or @p end. Reads one byte behind the end.
const char *findMagic(const char *bytes, const char *end)
{
    if (isMagic(bytes))
        return bytes; // as between sound frames
    while (end - bytes >= blockSize && !holdsMagic(bytes))
        bytes += blockSize;
    while (bytes < end && !isMagic(bytes))
        ++bytes;
    return bytes;
}

} // namespace

int seekFrame(const char *&position, const char *end, quint32 &skipped)
{
    if (end - position < frameHeaderSize)
        return 0;
    const char *const header = findMagic(position, end - frameHeaderSize + 1);
    skipped += static_cast<quint32>(header - position);
    position = header;
    if (end - header < frameHeaderSize)
        return 0;
    const int size = frameHeaderSize + wordAt(header + 4);
    return end - header < size ? 0 : size;
}

void cutFront(QByteArray &buffer, int count)
{
    if (count == 0)
        return;
    buffer.reserve(0);
    const int rest = buffer.size() - count;
    char *bytes = buffer.data();
    std::memmove(bytes, bytes + count, static_cast<std::size_t>(rest));
    buffer.resize(rest);
}

Frame frameAt(const char *bytes)
{
    return {Notifications_t(static_cast<signed char>(bytes[2])), static_cast<unsigned char>(bytes[3]),
            QByteArray(bytes + frameHeaderSize, wordAt(bytes + 4))};
}

QVector<Frame> takeFrames(QByteArray &buffer, quint32 &skipped)
{
    QVector<Frame> frames;
    cutFrames(buffer, skipped, [&](const char *frame, int size) {
        if (frames.isEmpty())
            frames.reserve(buffer.size() / size); // the others are often as long
        frames.append(frameAt(frame));
    });
    return frames;
}

QByteArray makeFrame(quint8 type, quint8 channel, const QByteArray &payload)
{
    QByteArray frame(frameHeaderSize, '\0');
    qToLittleEndian<quint16>(magic, frame.data());
    frame[2] = static_cast<char>(type);
    frame[3] = static_cast<char>(channel);
    qToLittleEndian<quint16>(static_cast<quint16>(payload.size()), frame.data() + 4);
    return frame + payload;
}
