// SPDX-License-Identifier: MIT
#pragma once

/// What is known of experiments on a channel, those included that this program did not start.
enum class VekChannelReport {
    Unknown, ///< The instrument has not told: its status word does not cover the line or the channel, or has not come.
    Idle,    ///< No experiment runs.
    Running, ///< An experiment runs, perhaps paused.
};
