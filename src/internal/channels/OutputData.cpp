// SPDX-License-Identifier: MIT
#include "channels/OutputData.h"

#include "channels/CumulativeCapacityTracker.h"

#include <cmath>
#include <limits>

VekDCData DcOutputData(const ProcessedDCData &point)
{
    VekDCData data;
    data.timestamp = point.timestamp;
    data.workingElectrodeVoltage = point.workingElectrodeVoltage;
    data.counterElectrodeVoltage = point.counterElectrodeVoltage;
    data.current = point.current;
    data.temperature = point.temperature;
    return data;
}

VekDCData withCharge(VekDCData data, double reading, const CumulativeCapacityTracker &capacity)
{
    if (!std::isfinite(reading)) {
        data.cumulativeChargeAbs = data.cumulativeChargeNet = std::numeric_limits<double>::quiet_NaN();
        return data;
    }
    const CumulativeCapacityTracker::Snapshot charge = capacity.getSnapshot_C();
    data.cumulativeChargeAbs = charge.experimentAbs;
    data.cumulativeChargeNet = charge.experimentNet;
    return data;
}

VekACData AcOutputData(const ComplexDataPoint_t &point)
{
    VekACData data;
    data.timestamp = point.timestamp;
    data.frequency = point.frequency;
    data.absoluteImpedance = point.absZ;
    data.realImpedance = point.realZ;
    data.imagImpedance = point.imagZ;
    data.phaseAngle = point.phaseDeg;
    data.totalHarmonicDistortion = point.thdPercent;
    data.numberOfCycles = point.numPeriods;
    data.dcVoltageBias = point.dcVoltage;
    data.dcCurrentBias = point.dcCurrent;
    data.currentAmplitude = point.currentAmplitude;
    data.voltageAmplitude = point.voltageAmplitude;
    return data;
}
