#include "channels/DeltaPacket.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace {

constexpr int wordCount = 16;
constexpr int firstPairSize = 8;

/// Bytes of a difference in a compressed packet; 0 in one whose words are in place as they stand.
int deltaWidth(int packetLength)
{
    switch (packetLength) {
    case 50:
        return 3;
    case 36:
        return 2;
    case 22:
        return 1;
    default:
        return 0;
    }
}

quint32 signExtended(const uchar *bytes, int width)
{
    quint32 value = 0;
    for (int i = 0; i < width; ++i)
        value |= quint32(bytes[i]) << (8 * i);
    const int unused = 32 - 8 * width;
    return quint32(qint32(value << unused) >> unused);
}

} // namespace

QByteArray unpackDeltaEncodedCompression(const QByteArray &packet)
{
    std::array<quint32, wordCount> words = {}; // unsigned, so that sums wrap
    std::memcpy(words.data(), packet.constData(), std::min(sizeof words, std::size_t(packet.size())));
    if (const int width = deltaWidth(packet.size())) {
        auto delta = reinterpret_cast<const uchar *>(packet.constData()) + firstPairSize;
        for (auto word = words.begin() + 2; word != words.end(); ++word, delta += width)
            *word = signExtended(delta, width);
    }
    for (std::size_t i = 2; i < wordCount; ++i)
        words[i] += words[i - 2];
    return QByteArray(reinterpret_cast<const char *>(words.data()), int(sizeof words));
}
