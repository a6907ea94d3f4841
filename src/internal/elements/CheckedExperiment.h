// SPDX-License-Identifier: MIT
#pragma once

#include "elements/ExperimentComplaint.h"
#include "elements/NodeList.h"

class AbstractExperiment;
class CalibrationData;
struct HardwareVersion;

/// What an upload makes of an experiment, and a plan foretells of it.
struct CheckedExperiment {
    ExperimentComplaints complaints;
    NodeList nodes; ///< what would be sent; empty with complaints
};

/// Checks an experiment, expands it if there is nothing to complain about, and checks the size of what came out.
CheckedExperiment checkAndExpand(AbstractExperiment &experiment, const CalibrationData &calibration,
                                 const HardwareVersion &hardware);
