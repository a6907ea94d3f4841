// SPDX-License-Identifier: MIT
#pragma once

#include "VekACData.h"
#include "VekDCData.h"
#include "calibration/ComplexDataPoint.h"
#include "calibration/DataRecords.h"

class CumulativeCapacityTracker;

/// A sample as clients see it, on the instrument's clock and without charge.
VekDCData DcOutputData(const ProcessedDCData &point);

/**
 * The same sample with the charge of its experiment.
 *
 * @param reading what the sample itself read of the charge, in coulombs: where that is no finite number, nobody knows the
 *                totals at this moment, and they are NaN
 */
VekDCData withCharge(VekDCData data, double reading, const CumulativeCapacityTracker &capacity);

/// An impedance point as clients see it, on the instrument's clock.
VekACData AcOutputData(const ComplexDataPoint_t &point);
