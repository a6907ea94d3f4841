// SPDX-License-Identifier: MIT
#include "images/CrcCalculator.h"

namespace {

/// Entry n is n times 0x1021 in carry-less multiplication: the effect of one nibble.
constexpr uint16_t nibbleTable[] = {0x0000, 0x1021, 0x2042, 0x3063, 0x4084, 0x50A5, 0x60C6, 0x70E7,
                                    0x8108, 0x9129, 0xA14A, 0xB16B, 0xC18C, 0xD1AD, 0xE1CE, 0xF1EF};

uint16_t addNibble(uint16_t crc, unsigned int nibble)
{
    return static_cast<uint16_t>(crc << 4) ^ nibbleTable[((crc >> 12) ^ nibble) & 0x0F];
}

} // namespace

uint16_t CrcCalculator::Get16(char const *data, unsigned int size)
{
    return CalculateCrc(data, size);
}

uint16_t CrcCalculator::CalculateCrc(char const *data, unsigned int size)
{
    uint16_t crc = 0;
    for (unsigned int i = 0; i < size; ++i) {
        const auto byte = static_cast<uint8_t>(data[i]);
        crc = addNibble(crc, byte >> 4);
        crc = addNibble(crc, byte & 0x0F);
    }
    return crc;
}
