// SPDX-License-Identifier: MIT
#pragma once

#include <QtGlobal>

/// How the instrument drives its fan; payload of PC_FAN_MODE.
enum FanCtrlMode_t : quint8 {
    FAN_FIXED = 0,
    FAN_VARIABLE = 1,
};
