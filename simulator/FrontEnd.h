// SPDX-License-Identifier: MIT
#pragma once

#include "hardware_models/RangeTypes.h"
#include "link/Notifications.h"
#include "simulator/ImpedanceSweep.h"
#include "simulator/Random.h"
#include "simulator/cells/Cell.h"

#include <QByteArray>
#include <QVector>

#include <algorithm>
#include <cmath>
#include <complex>
#include <limits>
#include <vector>

/// One DC sample in physical units, as the cell gave it.
struct DcSample {
    quint64 tick = 0; ///< 1e8 a second
    double voltage = 0.0;
    double current = 0.0;
    double counterElectrode = 0.0; ///< volts
    double charge = 0.0;           ///< cumulative, coulombs
    double temperature = 0.0;      ///< degrees Celsius; NaN without a sensor
};

/// What is to be put into one AC record: the plan, and the cell's answer to it.
struct AcMeasurement {
    AcPlan plan;
    quint64 tick = 0;                             ///< at the end of the record, 1e8 a second
    CellReading mean;                             ///< DC part
    std::vector<std::complex<double>> impedances; ///< of the cell, one for each tone of the plan
    double currentShare = 1.0; ///< of a channel in a group: what it carries of the cell's current and voltage
    double voltageShare = 1.0;
};

/**
 * The analogue front end of one channel: physical values to the raw words of its line, and what the line's hosts need to
 * get them back.
 *
 * The instrument's own clock has 1e8 ticks a second here, whatever the line; wireTick() makes the line's of them.
 */
class FrontEnd
{
public:
    struct Packet {
        Notifications_t type;
        QByteArray payload;
    };

    virtual ~FrontEnd() = default;

    virtual QByteArray calibration() const = 0;
    /// Takes a calibration record from the host; the channel then converts by it.
    virtual void setCalibration(const QByteArray &record) = 0;

    virtual int currentRangeCount() const = 0;
    virtual int voltageRangeCount() const = 0;
    /// Amperes and volts at the end of a range.
    virtual double fullScale(currentRange_t range) const = 0;
    virtual double fullScale(voltageRange_t range) const = 0;
    /// The smallest range usable for DC that holds the value; the largest one if none does.
    virtual currentRange_t rangeForCurrent(double current) const = 0;
    virtual voltageRange_t rangeForVoltage(double voltage) const = 0;
    /// Amperes and volts that can be set.
    virtual double settableCurrent() const = 0;
    virtual double settableVoltage() const = 0;
    /// Volts beyond which the instrument protects itself.
    virtual double bearableVoltage() const = 0;
    /// Amperes and volts that can be set within one range: what its converter's first and last code stand for.
    Span settable(currentRange_t range) const
    {
        return spanOf(currentFromCode(firstCode, range), currentFromCode(lastCode, range));
    }
    Span settable(voltageRange_t range) const
    {
        return spanOf(voltageFromCode(firstCode, range), voltageFromCode(lastCode, range));
    }

    /// Payload of NT_DC_DATA. What is too much for its range reads as the range's end, and all readings are whole steps of
    /// the converter.
    virtual QByteArray dcRecord(const DcSample &sample, currentRange_t currentRange, voltageRange_t voltageRange,
                                quint8 counter) const = 0;
    /// Everything that travels for one AC record, in order.
    virtual QVector<Packet> acPackets(const AcMeasurement &measurement, Random &random) const = 0;
    /// The set points that a raw code of the host stands for; beyond the converter's codes it is the nearest of them.
    virtual double currentFromCode(int code, currentRange_t range) const = 0;
    virtual double voltageFromCode(int code, voltageRange_t range) const = 0;

    /// What the instrument measures of its own offsets before an experiment; the channel then converts by it.
    virtual QVector<Packet> tare(Random &) { return {}; }
    virtual quint64 wireTick(quint64 tick) const { return tick; }
    /// Whether a temperature passes a limit as the host sends it.
    virtual bool isTooHot(double degrees, float limit) const { return degrees > double(limit); }

private:
    static constexpr int firstCode = std::numeric_limits<int>::min();
    static constexpr int lastCode = std::numeric_limits<int>::max();

    static Span spanOf(double one, double other) { return {std::min(one, other), std::max(one, other)}; }
};

/// What a converter with 24 bits can tell.
constexpr Span converterSteps = {-8388608.0, 8388607.0};

/// Its word for a reading in steps.
inline double converterWord(double steps)
{
    return converterSteps.clamp(std::round(steps));
}
