// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

/// Unpacks an AC packet of a battery cycler byte by byte, as its form is written down, and appends its 16 words.
inline void plainDeltaPacket(const std::vector<unsigned char> &packet, std::vector<std::int32_t> &batch)
{
    const std::size_t size = packet.size();
    const std::size_t width = size == 22 ? 1 : size == 36 ? 2 : size == 50 ? 3 : 4;
    std::uint32_t sums[2] = {};
    std::size_t position = 0;
    for (int word = 0; word < 16; ++word) {
        const std::size_t bytes = word < 2 ? 4 : width;
        std::uint32_t value = 0;
        for (std::size_t i = 0; i < bytes; ++i, ++position)
            value |= std::uint32_t(position < size ? packet[position] : 0) << (8 * i);
        if (bytes < 4 && value >> (8 * bytes - 1)) // a negative one
            value -= std::uint32_t(1) << (8 * bytes);
        sums[word % 2] += value;
        batch.push_back(std::int32_t(sums[word % 2]));
    }
}
