// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

#include <vector>

struct PlainFrame {
    signed char type;
    unsigned char channel;
    std::vector<unsigned char> payload;
};

/// Cuts frames off a receive buffer, byte by byte as the form of a frame is written down; one cut for each arrival.
inline std::vector<PlainFrame> plainFrames(QByteArray &buffer, quint32 &skipped)
{
    const auto *bytes = reinterpret_cast<const unsigned char *>(buffer.constData());
    std::vector<PlainFrame> frames;
    int position = 0;
    while (position + 6 <= buffer.size()) {
        const unsigned char *header = bytes + position;
        if (header[0] != 0xEE || header[1] != 0xFF) {
            ++position;
            ++skipped;
            continue;
        }
        const int size = header[4] + 256 * header[5];
        if (position + 6 + size > buffer.size())
            break;
        frames.push_back({static_cast<signed char>(header[2]), header[3], {header + 6, header + 6 + size}});
        position += 6 + size;
    }
    buffer.remove(0, position);
    return frames;
}
