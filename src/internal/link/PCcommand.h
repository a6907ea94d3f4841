// SPDX-License-Identifier: MIT
#pragma once

#include <QMetaType>
#include <QtGlobal>

/// Type byte of a frame from host to instrument. The numbers are the firmware's; the gaps are real.
enum PCcommand_t : quint8 {
    PC_ECHO_TEST = 0, ///< an instrument stays silent on it; what sends it back is no instrument
    PC_GALE_PRE_HANDSHAKE = 16,
    PC_BOOT_UNLOCK = 18,  ///< serial bootloader only
    PC_BOOT_PREPARE = 19, ///< serial bootloader only
    PC_BOOT_RECORD = 20,  ///< serial bootloader only
    PC_PING = 65,
    PC_READ_DEVICE_STATUS = 66,
    PC_READ_FLASH_CAL = 67,
    PC_WRITE_CAL_DATA = 68,
    PC_READ_HARDWARE_VERSION = 69,
    PC_WRITE_HARDWARE_DATA = 70,
    PC_READ_CHANNEL_COUNT = 71,
    PC_NODE_LIST_BEGIN = 74,
    PC_NODE_LIST_END = 75,
    PC_NODE_APPEND = 76,
    PC_EXPERIMENT_START = 77,
    PC_EXPERIMENT_STOP = 78,
    PC_EXPERIMENT_PAUSE = 79,
    PC_EXPERIMENT_RESUME = 80,
    PC_DEFAULT_SAMPLING = 81,
    PC_MANUAL_START = 82,
    PC_MANUAL_SAMPLING_PARAMS = 83,
    PC_MANUAL_GALVANO_RAW = 84,
    PC_MANUAL_POTENTIO_RAW = 85,
    PC_MANUAL_OCP = 86,
    PC_CURRENT_RANGE = 87,
    PC_SOFT_RESET = 88,
    PC_COMP_RANGE = 89,
    PC_SKIP_STEP = 92,
    PC_IR_COMP = 93,
    PC_READ_FIRMWARE_VERSION = 94,
    PC_READ_META_DATA = 95,
    PC_READ_MEMORY_DATA = 96,
    PC_ERASE_MEMORY_DATA = 97,
    PC_SET_TIME = 98,
    PC_SD_CAL_HEADER_WRITE = 100,
    PC_SD_CAL_DATA_APPEND = 101,
    PC_SD_CAL_HEADER_READ = 102,
    PC_SD_CAL_DATA_NEXT = 103,
    PC_READ_GROUND_FLOAT = 106,
    PC_READ_FIRMWARE_CHECKSUM = 107,
    PC_VOLTAGE_RANGE = 108,
    PC_CHANNELS_LINK = 109,
    PC_READ_CONFIG = 114,
    PC_MANUAL_GALVANO_SETPOINT = 117,
    PC_MANUAL_POTENTIO_SETPOINT = 118,
    PC_FAN_SPEED = 119,
    PC_FF_IMPEDANCE = 124,
    PC_CHANNEL_LIMITS = 125,
    PC_FAN_MODE = 126,
};
Q_DECLARE_METATYPE(PCcommand_t)

/// Channel byte of a command that concerns the device as a whole.
constexpr quint8 deviceChannel = 0;
/// Channel byte of a command to all channels at once.
constexpr quint8 allChannels = 255;
