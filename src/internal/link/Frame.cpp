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

} // namespace

bool seekFrame(const QByteArray &buffer, int &position, quint32 &skipped)
{
    for (; position + frameHeaderSize <= buffer.size(); ++position, ++skipped) {
        if (wordAt(buffer, position) == magic)
            return position + frameSizeAt(buffer, position) <= buffer.size();
    }
    return false;
}

int frameSizeAt(const QByteArray &buffer, int position)
{
    return frameHeaderSize + wordAt(buffer, position + 4);
}

Frame frameAt(const QByteArray &buffer, int position)
{
    return {Notifications_t(static_cast<signed char>(buffer.at(position + 2))),
            static_cast<unsigned char>(buffer.at(position + 3)),
            QByteArray(buffer.constData() + position + frameHeaderSize, wordAt(buffer, position + 4))};
}

QVector<Frame> takeFrames(QByteArray &buffer, quint32 &skipped)
{
    QVector<Frame> frames;
    int position = 0;
    for (; seekFrame(buffer, position, skipped); position += frameSizeAt(buffer, position))
        frames.append(frameAt(buffer, position));
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
