// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

/// The CRC of firmware images and of the HID bootloader's frames. @thread Pure, hence free of any thread.
class CrcCalculator
{
public:
    /// CRC-16/XMODEM: polynomial 0x1021, start value 0, not reflected, no final XOR.
    static uint16_t Get16(char const *data, unsigned int size);

private:
    static uint16_t CalculateCrc(char const *data, unsigned int size);
};
