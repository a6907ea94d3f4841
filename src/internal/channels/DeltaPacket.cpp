// SPDX-License-Identifier: MIT
#include "channels/DeltaPacket.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>

namespace {

constexpr int pairCount = 8;
constexpr int pairSize = 2 * sizeof(quint32);
constexpr int unpackedSize = pairCount * pairSize;

/// A packet whose differences take so many bytes.
constexpr int packetSize(int width)
{
    return pairSize + 2 * (pairCount - 1) * width;
}

quint32 wordAt(const char *bytes)
{
    quint32 word;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

/// A signed number: the word that ends with its last byte, without the bytes in front of it.
template <int width>
quint32 differenceAt(const char *bytes)
{
    return quint32(qint32(wordAt(bytes + width - int(sizeof(quint32)))) >> (32 - 8 * width));
}

/// Sums up the pairs of a packet that is long enough.
template <int width>
void sumUp(const char *packet, char *unpacked)
{
    std::array<quint32, 2> pair = {wordAt(packet), wordAt(packet + sizeof(quint32))}; // unsigned, so that sums wrap
    std::memcpy(unpacked, pair.data(), pairSize);
    constexpr std::ptrdiff_t differenceSize = 2 * width;
    const char *difference = packet + pairSize;
    for (int i = 1; i < pairCount; ++i, difference += differenceSize) {
        pair[0] += differenceAt<width>(difference);
        pair[1] += differenceAt<width>(difference + width);
        unpacked += pairSize;
        std::memcpy(unpacked, pair.data(), pairSize);
    }
}

/// Fills up with zeros what is too short for whole words.
void sumUpWords(const QByteArray &packet, char *unpacked)
{
    std::array<char, unpackedSize> words = {};
    std::memcpy(words.data(), packet.constData(), std::min(words.size(), std::size_t(packet.size())));
    sumUp<4>(words.data(), unpacked);
}

} // namespace

void unpackDeltaEncodedCompression(const QByteArray &packet, QByteArray &batch)
{
    const int end = batch.size();
    batch.resize(end + unpackedSize);
    char *const unpacked = batch.data() + end;
    switch (packet.size()) {
    case packetSize(1):
        return sumUp<1>(packet.constData(), unpacked);
    case packetSize(2):
        return sumUp<2>(packet.constData(), unpacked);
    case packetSize(3):
        return sumUp<3>(packet.constData(), unpacked);
    default:
        return sumUpWords(packet, unpacked);
    }
}
