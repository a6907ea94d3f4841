// SPDX-License-Identifier: MIT
#pragma once

#include "VekExperimentEnd.h"

#include <QString>

/// Why the instrument ended an experiment: byte 8 of NT_EXPERIMENT_DONE.
enum ExpStopType_t : quint8 {
    STOP_COMPLETED = 1,
    STOP_BY_USER = 2,
    STOP_CURRENT_MIN = 3,
    STOP_CURRENT_MAX = 4,
    STOP_VOLTAGE_MIN = 5,
    STOP_VOLTAGE_MAX = 6,
    STOP_TEMPERATURE_MAX = 7,
    STOP_NO_TEMPERATURE = 8,
    STOP_OVERHEATED = 9,
    STOP_CURRENT_INSTRUMENT = 10,
    STOP_VOLTAGE_INSTRUMENT = 11,
    STOP_PULSE_CURRENT = 12,
    STOP_CONTROL_FAULT = 13,
    STOP_BAD_NODE = 14,
    STOP_RECOVERY_ACTION = 15,
    STOP_NOT_IDLE = 16,
};

/**
 * The text that a client sees at the end of an experiment. All but the first two values carry the prefix
 * "Experiment stopped: "; a value that is not listed gives the reason "unknown reason." behind it.
 */
QString getStopMessage(ExpStopType_t type);
/// The same for programs.
VekExperimentEnd experimentEndOf(ExpStopType_t type);
