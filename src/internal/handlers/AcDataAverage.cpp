#include "handlers/AcDataAverage.h"

#include <cmath>

namespace {

constexpr double pi = 3.141592653589793;

}

ComplexDataPoint_t AcDataAverage::getDataPoint() const
{
    ComplexDataPoint_t average;
    if (_points.empty())
        return average;
    average.realZ = meanOf(&ComplexDataPoint_t::realZ);
    average.imagZ = meanOf(&ComplexDataPoint_t::imagZ);
    average.dcCurrent = meanOf(&ComplexDataPoint_t::dcCurrent);
    average.dcVoltage = meanOf(&ComplexDataPoint_t::dcVoltage);
    average.thdPercent = meanOf(&ComplexDataPoint_t::thdPercent);
    average.currentAmplitude = meanOf(&ComplexDataPoint_t::currentAmplitude);
    average.voltageAmplitude = meanOf(&ComplexDataPoint_t::voltageAmplitude);
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

double AcDataAverage::meanOf(double ComplexDataPoint_t::*field) const
{
    double sum = 0.0;
    for (const ComplexDataPoint_t &point : _points)
        sum += point.*field;
    return sum / double(_points.size());
}
