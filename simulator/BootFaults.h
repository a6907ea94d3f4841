// SPDX-License-Identifier: MIT
#pragma once

#include <utility>

/// What a bootloader wants done by the instrument around it.
enum class BootEvent {
    None,
    Restart,       ///< start over as the bootloader
    StartFirmware, ///< start the firmware, if the flash holds one
    PowerLoss,     ///< a fault: everything is dark for a moment
};

/// The commands of both bootloaders that a fault can leave unanswered.
enum class BootStep { None, Ping, Hardware, Channels, Unlock, Prepare, Record, Info, Erase, Program, Crc };

/**
 * What a bootloader does wrong on purpose. Each fault happens once; the next update meets a sound instrument.
 *
 * Counts begin at 1, and 0 stands for none. They go on over all updates.
 */
struct BootFaults {
    BootStep silentAt = BootStep::None; ///< gives this command no answer
    bool hasWrongCrc = false;           ///< tells another CRC than the flash has
    int refusedRecord = 0;
    int powerLossAt = 0; ///< when so many-th piece of the image comes: some records over HID, one over a serial port
    int deafMs = 0;      ///< takes no report for so long after it has come up

    bool takeSilence(BootStep step)
    {
        return step != BootStep::None && step == silentAt && std::exchange(silentAt, BootStep::None) == step;
    }
    bool takeWrongCrc() { return std::exchange(hasWrongCrc, false); }
    bool takeRefusal() { return refusedRecord > 0 && --refusedRecord == 0; }
    bool takePowerLoss() { return powerLossAt > 0 && --powerLossAt == 0; }
    int takeDeafness() { return std::exchange(deafMs, 0); }
};
