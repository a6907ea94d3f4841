// SPDX-License-Identifier: MIT
#pragma once

#include "calibration/DataRecords.h"

#include <utility>
#include <vector>

/// One channel of a group, by its number, with its latest sample.
using LinkedPoint = std::pair<unsigned char, ProcessedDCData>;

/**
 * Joins the samples that the channels of a group took together.
 *
 * Channels in parallel add up their currents and charges and share their voltage. A bipolar pair in series shares its
 * current, so that it takes half the difference of currents and charges, and the difference of voltages.
 *
 * @param master what the joined sample takes all else from: time, temperature, ranges
 */
ProcessedDCData joinPoints(const ProcessedDCData &master, const std::vector<LinkedPoint> &members, bool bipolar);
