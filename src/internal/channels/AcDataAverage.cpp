// SPDX-License-Identifier: MIT
#include "channels/AcDataAverage.h"

#include "numerics/Constants.h"

#include <cmath>

namespace {

/// Mean of what @p valueOf takes out of each point. By name: a reference to a field of a packed point is not aligned.
template <typename ValueOf>
double meanOf(const std::vector<ComplexDataPoint_t> &points, ValueOf valueOf)
{
    double sum = 0.0;
    for (const ComplexDataPoint_t &point : points)
        sum += valueOf(point);
    return sum / double(points.size());
}

} // namespace

ComplexDataPoint_t AcDataAverage::getDataPoint() const
{
    ComplexDataPoint_t average;
    if (_points.empty())
        return average;
    average.realZ = meanOf(_points, [](const ComplexDataPoint_t &point) { return point.realZ; });
    average.imagZ = meanOf(_points, [](const ComplexDataPoint_t &point) { return point.imagZ; });
    average.dcCurrent = meanOf(_points, [](const ComplexDataPoint_t &point) { return point.dcCurrent; });
    average.dcVoltage = meanOf(_points, [](const ComplexDataPoint_t &point) { return point.dcVoltage; });
    average.thdPercent = meanOf(_points, [](const ComplexDataPoint_t &point) { return point.thdPercent; });
    average.currentAmplitude = meanOf(_points, [](const ComplexDataPoint_t &point) { return point.currentAmplitude; });
    average.voltageAmplitude = meanOf(_points, [](const ComplexDataPoint_t &point) { return point.voltageAmplitude; });
    for (const ComplexDataPoint_t &point : _points)
        average.numPeriods += point.numPeriods;
    average.absZ = std::sqrt(average.realZ * average.realZ + average.imagZ * average.imagZ);
    average.phaseDeg = std::atan2(average.imagZ, average.realZ) * 180.0 / pi;
    const ComplexDataPoint_t &first = _points.front(); // its voltage range is not carried over: nothing reads it
    average.frequency = first.frequency;
    average.currentRange = first.currentRange;
    average.weGain = first.weGain;
    average.iGain = first.iGain;
    average.timestamp = _points.back().timestamp;
    return average;
}
