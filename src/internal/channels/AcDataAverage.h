// SPDX-License-Identifier: MIT
#pragma once

#include "calibration/ComplexDataPoint.h"

#include <vector>

/// Averages the records of one impedance point. Borrows the records, which are in the order of their arrival.
class AcDataAverage
{
public:
    explicit AcDataAverage(const std::vector<ComplexDataPoint_t> &points) : _points(points) {}

    /**
     * The point that the records make: means, save for the count of periods, which is their sum. Magnitude and phase are
     * those of the mean impedance, not means of their own. Settings are the first record's, the time is the last one's.
     *
     * @return all zeros without records
     */
    ComplexDataPoint_t getDataPoint() const;

private:
    const std::vector<ComplexDataPoint_t> &_points;
};
