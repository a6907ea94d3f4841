// SPDX-License-Identifier: MIT
#pragma once

#include "calibration/CalRecords.h"
#include "calibration/DataRecords.h"
#include "hardware_models/HardwareModel.h"
#include "simulator/FrontEnd.h"

#include <QByteArray>

#include <memory>

/**
 * The DC part of the front end of one channel of the mainline: turns physical values into the raw words of its records.
 *
 * Its calibration record is imperfect on purpose: each gain is a few per cent off its nominal value, each offset a few
 * hundredths of a per cent of the span, each differently for each range, gain and channel, and all follow from the seed.
 * A host that drops a term or takes a wrong row is off by more than any test allows.
 *
 * Words are the inverse of the host's formulas, in whole steps of a converter with 24 bits, of which 256 make a raw unit.
 * A range reads 6 % beyond its full scale, the widest voltage range beyond what the instrument bears at open circuit; more
 * than that reads as the end.
 */
class SimulatedCalibration
{
public:
    SimulatedCalibration(std::shared_ptr<const HardwareModel> model, quint32 seed, int channel);

    const cal_v4 &record() const { return _record; }
    QByteArray recordBytes() const;
    /// Takes a record that the host wrote; what is too short is filled with zeros.
    void setRecordBytes(const QByteArray &bytes);

    /// Amperes at the end of a current range; each range holds a tenth of the one before.
    double fullScale(currentRange_t range) const;
    /// Volts at the end of a voltage range.
    double fullScale(voltageRange_t range) const;
    /// The smallest range usable for DC that holds the value; the largest one if none does.
    currentRange_t rangeForCurrent(double current) const;
    voltageRange_t rangeForVoltage(double voltage) const;

    /// What the converters read of their own references while they measure.
    static constexpr qint16 voltageReference = 731;
    static constexpr qint16 currentReference = -417;

    /// The raw reading that stands for a voltage, and a raw unit's volts, at a gain of the voltage path.
    double rawVoltage(double voltage, ACgain_t gain) const { return rawVoltage(voltage, gain, voltageReference); }
    double voltsPerRaw(ACgain_t gain) const;
    /// The same for a current; in AC records the common mode of the high-side ranges is left out.
    double rawCurrentWithoutCommonMode(double current, currentRange_t range, ACgain_t gain) const
    {
        return rawCurrent(current, range, gain, currentReference, 0.0f);
    }
    double amperesPerRaw(currentRange_t range, ACgain_t gain) const;

    /// @see FrontEnd::dcRecord
    MainDcRecord_t toRecord(const DcSample &sample, currentRange_t currentRange, voltageRange_t voltageRange) const;

    /// The set points that a raw code of the host stands for.
    double currentFromCode(int code, currentRange_t range) const;
    double voltageFromCode(int code, voltageRange_t range) const;

private:
    void makeRecord(quint32 seed, int channel);
    void makeVoltagePath(class Imperfection &off);
    void makeCurrentPath(class Imperfection &off);
    double widestVoltage() const;
    DcSample readable(const DcSample &sample, currentRange_t currentRange, voltageRange_t voltageRange) const;
    ACgain_t gainOf(voltageRange_t range) const;
    double measuredGain(const float (&stage1)[3], float stage2, float stage3, ACgain_t gain) const;
    double rawVoltage(double voltage, ACgain_t gain, qint16 reference) const;
    double rawCurrent(double current, currentRange_t range, ACgain_t gain, qint16 reference, float counterRaw) const;

    std::shared_ptr<const HardwareModel> _model;
    cal_v4 _record = {};
};
