#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

struct PlainFrame {
    signed char type;
    unsigned char channel;
    std::vector<unsigned char> payload;
};

/// Cuts frames off a receive buffer, byte by byte as the form of a frame is written down; one cut for each arrival.
inline std::vector<PlainFrame> plainFrames(std::vector<unsigned char> &buffer, std::uint32_t &skipped)
{
    std::vector<PlainFrame> frames;
    std::size_t position = 0;
    while (position + 6 <= buffer.size()) {
        const unsigned char *header = buffer.data() + position;
        if (header[0] != 0xEE || header[1] != 0xFF) {
            ++position;
            ++skipped;
            continue;
        }
        const std::size_t size = header[4] + 256u * header[5];
        if (position + 6 + size > buffer.size())
            break;
        frames.push_back({static_cast<signed char>(header[2]), header[3], {header + 6, header + 6 + size}});
        position += 6 + size;
    }
    buffer.erase(buffer.begin(), buffer.begin() + std::ptrdiff_t(position));
    return frames;
}
