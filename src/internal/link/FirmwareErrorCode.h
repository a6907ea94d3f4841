// SPDX-License-Identifier: MIT
#pragma once

#include "VekExperimentEnd.h"

#include <QMetaType>
#include <QString>

/// The instrument's verdict on a command, one signed byte of an acknowledgement.
enum FirmwareErrorCode : qint8 {
    FW_NO_RESPONSE = -1, ///< the host's own: the acknowledgement did not arrive
    FW_SUCCESS = 0,
    FW_ALREADY_SET = 1,
    FW_BAD_BANDWIDTH_INDEX = 2,
    FW_BAD_STABILITY_INDEX = 3,
    FW_MANUAL_START_FAILED = 4,
    FW_BAD_CURRENT_RANGE = 5,
    FW_BAD_VOLTAGE_RANGE = 6,
    FW_CHANNEL_NOT_IDLE = 7,
    FW_NODE_NOT_APPENDED = 8,
    FW_NO_EXPERIMENT = 9,
    FW_BAD_CHANNEL_STATE = 10,
    FW_BAD_PARAMETERS = 11,
    FW_NOT_SUPPORTED = 12,
};
Q_DECLARE_METATYPE(FirmwareErrorCode)

/// The words for a verdict; "Unknown Error Code" for a number that the firmware does not define.
QString handle_error(FirmwareErrorCode code);
/// The end of an experiment whose start has met with the verdict.
VekExperimentEnd refusalOf(FirmwareErrorCode code);
