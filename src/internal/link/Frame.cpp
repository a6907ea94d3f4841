#include "link/Frame.h"

#include <QtEndian>

// The frame is taken apart byte by byte, but the records inside are copied to and from structures as they stand.
static_assert(Q_BYTE_ORDER == Q_LITTLE_ENDIAN, "every number on the wire is little-endian, and so must the host be");

namespace {

constexpr quint16 magic = 0xFFEE;

quint16 wordAt(const QByteArray &buffer, int position)
{
    return qFromLittleEndian<quint16>(buffer.constData() + position);
}

Frame frameAt(const QByteArray &buffer, int position, int payloadSize)
{
    return {Notifications_t(static_cast<signed char>(buffer.at(position + 2))),
            static_cast<unsigned char>(buffer.at(position + 3)), buffer.mid(position + frameHeaderSize, payloadSize)};
}

} // namespace

QVector<Frame> takeFrames(QByteArray &buffer, quint32 &skipped)
{
    QVector<Frame> frames;
    int position = 0;
    while (position + frameHeaderSize <= buffer.size()) {
        if (wordAt(buffer, position) != magic) {
            ++position;
            ++skipped;
            continue;
        }
        const int payloadSize = wordAt(buffer, position + 4);
        if (position + frameHeaderSize + payloadSize > buffer.size())
            break;
        frames.append(frameAt(buffer, position, payloadSize));
        position += frameHeaderSize + payloadSize;
    }
    buffer.remove(0, position); // once for each arrival, not once for each frame
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
