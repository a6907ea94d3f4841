// SPDX-License-Identifier: MIT
#pragma once

#include "calibration/ComplexDataPoint.h"
#include "calibration/DataRecords.h"

#include <QString>

#include <vector>

/// The samples of the channels of one impedance point.
struct TimeSeries {
    /// One channel's samples in volts and amperes.
    struct Channel {
        int number = 0; ///< 0-based
        std::vector<float> current;
        std::vector<float> voltage;
    };

    Gale_AC_Header_t head = {}; ///< of the first channel
    std::vector<Channel> channels;
};

/**
 * Writes samples and result of one impedance point as CSV, for looking into a measurement.
 *
 * @param directory with its closing separator; made if it is missing
 * @param startTime seconds of the instrument's clock that count as 0
 * @failure A file that cannot be opened is not written.
 */
void writeTimeSeries(const QString &directory, const TimeSeries &series, const ComplexDataPoint_t &point,
                     double startTime);
