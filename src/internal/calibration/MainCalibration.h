// SPDX-License-Identifier: MIT
#pragma once

#include "calibration/CalRecords.h"
#include "calibration/DataRecords.h"
#include "calibration/DeviceDCcalFormulas.h"
#include "calibration/Temperature.h"

#include <QtGlobal>

#include <limits>
#include <memory>
#include <utility>

class HardwareModel;

/**
 * What one channel's record makes of the numbers of a mainline instrument. It says which field of a sample goes through
 * which formula; the formulas are DeviceDCcalFormulas'.
 *
 * NoCalibration and GaleCalibration answer the same questions.
 *
 * @thread A value; const operations run on any thread.
 */
class MainCalibration
{
public:
    using DcRecord = MainDcRecord_t;
    static constexpr qint32 version = 4;

    MainCalibration(const cal_v4 &record, const std::shared_ptr<const HardwareModel> &model);
    /// The limits of another model; the formulas keep the counts of ranges that they were made with.
    void setModel(const std::shared_ptr<const HardwareModel> &model);

    /// Inlined, so that the caller's record is read where it lies: copying it first takes as long as the arithmetic.
    Q_ALWAYS_INLINE ProcessedDCData reading(const DcRecord &record) const;

    // Setpoints. Values beyond the model's limits are held to them; codes beyond the DAC's 16 bits stand for 0.0.
    int voltageCode(double volts, voltageRange_t range) const;
    int currentCode(double amperes, currentRange_t range) const;
    double voltageOfCode(int code, voltageRange_t range) const;
    double currentOfCode(int code, currentRange_t range) const;
    double temperatureLimit(float degrees) const { return degrees; } ///< as the instrument takes it

    // The smallest range that holds a value.
    currentRange_t smallestCurrentRange(float amperes) const { return _formulas.getMinCurrentRange_DC(amperes); }
    currentRange_t smallestCurrentRangeOfSine(float dc, float ac) const
    {
        return _formulas.getMinCurrentRange_GalvEIS(dc, ac);
    }
    voltageRange_t smallestVoltageRange(float volts) const { return _formulas.getMinVoltageRange(volts); }
    /// Amperes that a range can both read and set; of one that serves AC alone, that it can read. 0 to 0 for no range.
    std::pair<double, double> currentSpan(currentRange_t range) const;

    const DeviceDCcalFormulas &formulas() const { return _formulas; }

private:
    std::shared_ptr<const HardwareModel> _model; // never null
    bool _hasThermocouple = false;
    DeviceDCcalFormulas _formulas;
};

ProcessedDCData MainCalibration::reading(const DcRecord &record) const
{
    ProcessedDCData point;
    point.timestamp = double(record.tick) / mainFacts.ticksPerSecond;
    point.workingElectrodeVoltage = _formulas.getEWE(record.rawVoltage, record.weGain, record.voltageRef);
    point.counterElectrodeVoltage = _formulas.getECE(record.secondRaw, record.firstRaw);
    point.current =
        _formulas.getCurrent(record.rawCurrent, record.currentRange, record.iGain, record.currentRef, record.secondRaw);
    point.charge = record.charge;
    point.temperature = _hasThermocouple ? double(TemperatureParser().getTemp(record.temperature))
                                         : std::numeric_limits<double>::quiet_NaN();
    point.currentRange = record.currentRange;
    point.voltageRange = record.voltageRange;
    point.weGain = record.weGain;
    point.iGain = record.iGain;
    return point;
}
