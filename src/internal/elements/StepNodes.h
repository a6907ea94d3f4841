// SPDX-License-Identifier: MIT
#pragma once

#include "elements/NodeList.h"
#include "hardware_models/RangeTypes.h"

class CalibrationData;

/// @name What the builders share in making their nodes
/// @{

/// Longest interval in seconds at which the instrument samples a step; what is wanted beyond is decimated on the host.
constexpr float longestPeriod = 1.0f;
/// The same for the steps that need a denser record, in seconds.
constexpr float longestCurrentPeriod = 0.5f;

/// Automatic, or the smallest range that holds the current in amperes.
currentRange_t chooseCurrentRange(const CalibrationData &calibration, bool isAutomatic, double maxCurrent);
/// Automatic, or the smallest range that holds the voltage in volts, whatever its sign.
voltageRange_t chooseVoltageRange(const CalibrationData &calibration, bool isAutomatic, double maxVoltage);

/// A node that opens a step, named and sampled at least once per @p period seconds.
Node openStep(const ExpNode_t &hwNode, const QString &name, float period = longestPeriod);
/// A list of this node alone.
NodeList listOf(const Node &node);

/// A node that holds, as @p hold says, before the measurement proper.
Node quietNode(ExpNode_t hold, double quietTime, currentRange_t range);
/// Adds a quiet node if the quiet time is above 0.
void addQuietTime(NodeList &list, ExpNode_t hold, double quietTime, currentRange_t range);
/// @}
