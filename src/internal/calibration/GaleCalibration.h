// SPDX-License-Identifier: MIT
#pragma once

#include "calibration/CalRecords.h"
#include "calibration/DataRecords.h"
#include "calibration/GaleFormulas.h"
#include "calibration/Temperature.h"

#include <QtGlobal>

#include <limits>
#include <memory>
#include <utility>

class HardwareModel;

/**
 * What one channel's record makes of the numbers of a battery cycler. It says which field of a sample goes through which
 * formula; the formulas are GaleFormulas'.
 *
 * NoCalibration and MainCalibration answer the same questions.
 *
 * @thread A value; const operations run on any thread.
 */
class GaleCalibration
{
public:
    using DcRecord = GaleDcRecord_t;
    static constexpr qint32 version = 5;

    GaleCalibration(const cal_vc07 &record, const Gale_Cfg_t &board, const std::shared_ptr<const HardwareModel> &model);
    void setModel(const std::shared_ptr<const HardwareModel> &model) { _model = model; }
    void setBoard(const Gale_Cfg_t &board);
    // Results of a tare, in amperes and volts; a range that the record does not have is left alone.
    void setCurrentOffset(int range, float amperes);
    void setVoltageOffset(int range, float volts);

    /// Inlined, so that the caller's record is read where it lies: copying it first takes as long as the arithmetic.
    Q_ALWAYS_INLINE ProcessedDCData reading(const DcRecord &record) const;

    // Setpoints; the model's limits take no part. There is no way back from the code of a current.
    int voltageCode(double volts, voltageRange_t range) const;
    int currentCode(double amperes, currentRange_t range) const;
    double voltageOfCode(int code, voltageRange_t range) const;
    double currentOfCode(int, currentRange_t) const { return 0.0; }
    double temperatureLimit(float degrees) const; ///< as the instrument takes it: a reading of the thermistor's divider

    // The smallest range that holds a value.
    currentRange_t smallestCurrentRange(float amperes) const;
    currentRange_t smallestCurrentRangeOfSine(float dc, float ac) const;
    voltageRange_t smallestVoltageRange(float volts) const;
    /// Amperes that a range can read; 0 to 0 for no range.
    std::pair<double, double> currentSpan(currentRange_t range) const;

    const cal_vc07 &record() const { return _record; }

private:
    static constexpr double thermistorFullScale = 32500.0;

    double charge(qint64 counts, currentRange_t range) const;
    qint64 largestCode() const;

    std::shared_ptr<const HardwareModel> _model; // never null
    cal_vc07 _record;
    int _configuredCurrentRanges;
    double _secondsPerCount; // of the charge integrator
    Thermistor _thermistor;
};

ProcessedDCData GaleCalibration::reading(const DcRecord &record) const
{
    ProcessedDCData point;
    point.timestamp = double(record.tick) / galeFacts.ticksPerSecond;
    point.workingElectrodeVoltage =
        GaleFormulas::voltage(_record, record.rawVoltage, record.voltageRange, record.voltageRef);
    point.counterElectrodeVoltage = std::numeric_limits<double>::quiet_NaN();
    point.current = GaleFormulas::current(_record, record.rawCurrent, record.currentRange, record.currentRef);
    point.charge = charge(record.charge, record.currentRange);
    point.temperature = _thermistor.getTemp(float(record.temperature / thermistorFullScale));
    point.counter = record.counter;
    point.currentRange = record.currentRange;
    point.voltageRange = record.voltageRange;
    point.weGain = ACgain_t::Unknown;
    point.iGain = ACgain_t::Unknown;
    return point;
}

inline double GaleCalibration::charge(qint64 counts, currentRange_t range) const
{
    // See compatibility.md, count for the charge.
    const int measured = index(range) < _configuredCurrentRanges ? index(range) : 0;
    return _secondsPerCount * double(GaleFormulas::chargeGain(_record, measured) * float(counts));
}
