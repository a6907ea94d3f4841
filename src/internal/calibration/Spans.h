// SPDX-License-Identifier: MIT
#pragma once

#include "calibration/DataRecords.h"

#include <algorithm>
#include <utility>

/// From a lowest to a highest value.
using Span = std::pair<double, double>;

inline Span ascending(double one, double other)
{
    return {std::min(one, other), std::max(one, other)};
}

inline Span intersection(const Span &one, const Span &other)
{
    return {std::max(one.first, other.first), std::min(one.second, other.second)};
}

/// The currents that a line reads at both ends of its converter, all else being as in the record.
template <class Calibration>
Span readableSpan(const Calibration &calibration, typename Calibration::DcRecord record, qint32 fullScale)
{
    const auto currentAt = [&calibration, &record](qint32 raw) {
        record.rawCurrent = float(raw);
        return calibration.reading(record).current;
    };
    return ascending(currentAt(fullScale), currentAt(-fullScale));
}
