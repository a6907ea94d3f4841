// SPDX-License-Identifier: MIT
#pragma once

#include "calibration/RecordBytes.h"
#include "hardware_models/LineFacts.h"
#include "hardware_models/RangeTypes.h"

#include <QtGlobal>

#include <cstddef>

/// The converter that took the samples of an AC record.
enum class ADC_src_t : quint8 {
    Internal12Bit = 0, ///< the controller's own
    External16Bit = 1,
};

#pragma pack(push, 1)
/// One raw DC sample of the mainline: 44 bytes, little-endian; payload of NT_DC_DATA.
struct MainDcRecord_t {
    float firstRaw;   ///< working-electrode term of the counter-electrode formula
    float rawVoltage; ///< working electrode
    float rawCurrent;
    float secondRaw;     ///< counter electrode
    double charge;       ///< cumulative, coulombs
    quint64 tick;        ///< mainFacts.ticksPerSecond
    qint16 voltageRef;   ///< reference word of the voltage reading
    qint16 currentRef;   ///< reference word of the current reading
    quint32 temperature; ///< word of the thermocouple converter
    currentRange_t currentRange;
    voltageRange_t voltageRange;
    ACgain_t weGain; ///< of the voltage path
    ACgain_t iGain;  ///< of the current path
};

/// One raw DC sample of a battery cycler: 36 bytes, little-endian; payload of NT_DC_DATA.
struct GaleDcRecord_t {
    quint64 tick; ///< galeFacts.ticksPerSecond
    float rawCurrent;
    float rawVoltage;
    float temperature; ///< reading of the thermistor's divider
    quint8 reserved20;
    quint8 counter; ///< the same on the samples that the channels of a group took together
    currentRange_t currentRange;
    voltageRange_t voltageRange;
    qint16 currentRef; ///< reference word of the current reading
    qint16 voltageRef; ///< reference word of the voltage reading
    qint64 charge;     ///< cumulative, counts of the charge integrator
};

/**
 * Head of a mainline AC record: 29 bytes, little-endian; payload of NT_AC_DATA. Behind it stand all current samples,
 * then all voltage samples.
 */
struct P24ExperimentalAcData {
    quint64 tick;       ///< mainFacts.ticksPerSecond
    float frequency;    ///< hertz, of the signal
    float samplePeriod; ///< seconds
    qint32 samplesPerSignal;
    quint8 flags; ///< bit 0: float samples, else signed 16-bit ones; bit 1: ADC_src_t
    currentRange_t currentRange;
    voltageRange_t voltageRange;
    ACgain_t weGain;   ///< of the voltage path
    ACgain_t iGain;    ///< of the current path
    qint16 currentRef; ///< reference word of the current reading
    qint16 voltageRef; ///< reference word of the voltage reading

    bool hasFloatSamples() const { return flags & 1u; }
    ADC_src_t adcSource() const { return ADC_src_t((flags >> 1) & 1u); }
};

/// Head of a battery cycler's AC batch: 34 bytes, little-endian; payload of NT_AC_DATA_INVALID.
struct Gale_AC_Header_t {
    quint64 tick; ///< galeFacts.ticksPerSecond
    quint32 samplesPerSignal;
    float frequency; ///< hertz, of the signal; of a multi-tone drive its base
    quint32 reserved16;
    float sampleFrequency; ///< hertz
    quint16 driveMode;     ///< 2: multi-tone
    quint16 nSum;          ///< samples that the instrument summed into each value
    currentRange_t currentRange;
    voltageRange_t voltageRange;
    qint16 currentRef; ///< reference word of the current reading
    qint16 voltageRef; ///< reference word of the voltage reading
};
#pragma pack(pop)

/**
 * A raw DC sample of either line: 44 bytes, of which a battery cycler's record fills 36. Which of the two it is, the
 * channel's CalibrationData knows.
 */
class ExperimentalDcData
{
public:
    /// All zeros.
    ExperimentalDcData() = default;
    explicit ExperimentalDcData(const MainDcRecord_t &record) : _bytes(record) {}
    explicit ExperimentalDcData(const GaleDcRecord_t &record)
        : _bytes(recordFromBytes<MainDcRecord_t>(reinterpret_cast<const char *>(&record), int(sizeof record)))
    {
    }

    /// Takes the payload of NT_DC_DATA; what it lacks reads as zero.
    static ExperimentalDcData fromPayload(const QByteArray &payload)
    {
        return ExperimentalDcData(recordFromBytes<MainDcRecord_t>(payload));
    }

    /// The sample as the record of a line.
    template <class Record>
    Record as() const
    {
        static_assert(sizeof(Record) <= sizeof(MainDcRecord_t), "a sample holds the record of either line");
        return recordAt<Record>(reinterpret_cast<const char *>(&_bytes));
    }

private:
    MainDcRecord_t _bytes = {};
};

/// One DC sample in physical units, with what only the handlers use.
struct ProcessedDCData {
    double timestamp = 0.0;               ///< seconds of the instrument's clock
    double workingElectrodeVoltage = 0.0; ///< volts
    double counterElectrodeVoltage = 0.0; ///< volts; NaN on a battery cycler
    double current = 0.0;                 ///< amperes
    double charge = 0.0;                  ///< coulombs, cumulative
    double temperature = 0.0;             ///< degrees Celsius; NaN where there is none
    quint16 counter = 0;                  ///< battery cycler: the same on samples that a group took together
    double spare = 0.0;                   ///< always 0
    currentRange_t currentRange = currentRange_t::Largest;
    voltageRange_t voltageRange = voltageRange_t::Largest;
    ACgain_t weGain = ACgain_t::Gain1;
    ACgain_t iGain = ACgain_t::Gain1;
};

static_assert(sizeof(MainDcRecord_t) == 44, "the record as it travels");
static_assert(offsetof(MainDcRecord_t, charge) == 16, "");
static_assert(offsetof(MainDcRecord_t, tick) == 24, "");
static_assert(offsetof(MainDcRecord_t, voltageRef) == 32, "");
static_assert(offsetof(MainDcRecord_t, temperature) == 36, "");
static_assert(offsetof(MainDcRecord_t, iGain) == 43, "");

static_assert(sizeof(GaleDcRecord_t) == 36, "the record as it travels");
static_assert(offsetof(GaleDcRecord_t, rawVoltage) == 12, "");
static_assert(offsetof(GaleDcRecord_t, counter) == 21, "");
static_assert(offsetof(GaleDcRecord_t, currentRef) == 24, "");
static_assert(offsetof(GaleDcRecord_t, charge) == 28, "");

static_assert(sizeof(P24ExperimentalAcData) == 29, "the record as it travels");
static_assert(offsetof(P24ExperimentalAcData, samplesPerSignal) == 16, "");
static_assert(offsetof(P24ExperimentalAcData, iGain) == 24, "");
static_assert(offsetof(P24ExperimentalAcData, voltageRef) == 27, "");

static_assert(sizeof(Gale_AC_Header_t) == 34, "the record as it travels");
static_assert(offsetof(Gale_AC_Header_t, sampleFrequency) == 20, "");
static_assert(offsetof(Gale_AC_Header_t, nSum) == 26, "");
static_assert(offsetof(Gale_AC_Header_t, currentRange) == 28, "");
static_assert(offsetof(Gale_AC_Header_t, voltageRef) == 32, "");
