// SPDX-License-Identifier: MIT
#pragma once

/// The stages of the analogue chain whose frequency response is measured; keys of CalibrationData's tables.
namespace StageNames {
constexpr char voltageInputBuffer[] = "Voltage input buffer stage";
constexpr char currentInputBuffer[] = "Current input buffer stage";
constexpr char transimpedance1[] = "Transimpedance stage 1";
constexpr char transimpedance2[] = "Transimpedance stage 2";
constexpr char transimpedanceLumped[] = "Transimpedance stages lumped";
} // namespace StageNames
