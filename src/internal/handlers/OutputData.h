#pragma once

#include "VekACData.h"
#include "VekDCData.h"
#include "calibration/DataRecords.h"
#include "nimbrellelibrary/ComplexDataPoint.h"

/// A sample as clients see it, on the instrument's clock and without charge.
VekDCData DcOutputData(const ProcessedDCData &point);

/// An impedance point as clients see it, on the instrument's clock.
VekACData AcOutputData(const ComplexDataPoint_t &point);
