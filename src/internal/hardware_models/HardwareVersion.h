// SPDX-License-Identifier: MIT
#pragma once

#include "hardware_models/HardwareModelNumber.h"

/// The instrument's hardware record, payload of NT_HARDWARE_VERSION; a record of 64 bytes is filled up with zeros.
struct HardwareVersion {
    HardwareModel_t hwModel = HardwareModel_t(0);
    char rest[255] = {}; ///< the instrument's name, closed by a line feed, then bytes of the firmware's own
};
static_assert(sizeof(HardwareVersion) == 256, "the record as it travels");
