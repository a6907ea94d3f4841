// SPDX-License-Identifier: MIT
#pragma once

#include "calibration/CalRecords.h"
#include "hardware_models/RangeTypes.h"

#include <QtGlobal>

#include <map>

/**
 * The DC arithmetic of the mainline: which voltage or current a raw reading stands for, which DAC code yields a
 * setpoint, which range holds a value. It works in single precision, as the instrument's own calibration does.
 *
 * Gains have 14 settings: the ten of ACgain_t, then the amplifier's second stage, its third, the third with the first's
 * largest, and the third with the second.
 *
 * @thread  A value; const operations run on any thread.
 * @failure An index outside its interval gives the neutral answer named with each operation. A record with zero gains
 *          gives infinities and NaN.
 */
class DeviceDCcalFormulas
{
public:
    /// Takes a record over. Call the four setters first: its last step needs the gain map.
    void copyCalData(const cal_v4 *record);
    void setNumHighSideRanges(int count) { numHighSideRanges = count; }
    void setNumDCcurrentRanges(int count) { numDCcurrentRanges = count; }
    void setNumVoltageRanges(int count) { numVoltageRanges = count; }
    /// The gain of each voltage range. If two ranges share a gain, the gain means the higher range.
    void setWEgainMap(const std::map<voltageRange_t, ACgain_t> &map);

    // Readings. An invalid gain or range gives 0.0.
    float getEWE(float raw, ACgain_t gain, short ref) const; ///< volts
    float getECE(float ce, float we) const;                  ///< volts
    /// Amperes; `ce` is the raw counter-electrode term, which disturbs the high-side ranges.
    float getCurrent(float raw, currentRange_t range, ACgain_t gain, short ref, float ce) const;
    /// The reading that a corrected value came from; the range's own gain and offset and `ce` take no part.
    float getCurrentRdgBIN(float value, currentRange_t range, ACgain_t gain, short ref, float ce) const;

    // Setpoints, as codes of a signed 16-bit DAC. An invalid range gives 0. See compatibility.md, truncated codes.
    int getVCtrlBIN(float volts, voltageRange_t range) const;           ///< truncates
    int getICtrlBIN(float amps, currentRange_t range) const;            ///< rounds
    double getVSetpointFromBIN(short code, voltageRange_t range) const; ///< volts
    double getISetpointFromBIN(short code, currentRange_t range) const; ///< amperes

    // The smallest range that holds a value; range 0 when none does.
    voltageRange_t getMinVoltageRange(float volts) const;
    currentRange_t getMinCurrentRange_DC(float amps) const;
    currentRange_t getMinCurrentRange_Galv(float amps) const;
    /// For a sine of amplitude `ac` around `dc`.
    currentRange_t getMinCurrentRange_GalvEIS(float dc, float ac) const;

    ACgain_t getWEgainFromVRange(voltageRange_t range) const; ///< gain setting 0 for a range without one
    voltageRange_t getVRangeFromWEgain(ACgain_t gain) const;  ///< 255 for a gain that is no range's
    float getWEGainFromSetting(ACgain_t gain) const;          ///< factor of the voltage path; 1.0 for an invalid one
    double getMaxACSignal_pot() const { return maxACSignal; } ///< control counts
    double getMaxACSignal_galv(currentRange_t range) const;   ///< amperes; 0.0 for an invalid range

    double getCurrentGain(ACgain_t gain) const; ///< factor of the current path; 0.0 for an invalid one
    /// Amperes per unit of an AC reading, before the frequency response; 0.0 for an invalid gain or range.
    double getACCurrentFactor(currentRange_t range, ACgain_t gain) const;
    /// Volts per unit of an AC reading, before the frequency response; 0.0 for an invalid gain.
    double getACVoltageFactor(ACgain_t gain) const;
    /// The setpoint that a code in double precision stands for; unlike getISetpointFromBIN() it takes any valid range.
    double getICtrlFromCode(double code, currentRange_t range) const;

    bool invalidRangeIndex(currentRange_t range) const; ///< outside 0 to 9
    bool invalidRangeIndex(voltageRange_t range) const; ///< outside 0 to 3
    bool invalidGain(ACgain_t gain) const;              ///< outside 0 to 13

private:
    static constexpr int gainSettings = 14;
    static constexpr int recordGains = 10;
    static constexpr int currentRanges = 10;
    static constexpr int voltageRanges = 4;

    static void fillGainLadder(float (&ladder)[gainSettings], const float (&stage1)[3], float stage2, float stage3);
    void copySingleValues(const cal_v4 &record);
    void copyRangeValues(const cal_v4 &record);
    void deriveVoltageGains(const cal_v4 &record);
    double deriveVoltageLimit(voltageRange_t range) const;

    qint32 currentRangeSlots = 0;
    qint32 voltageRangeSlots = 0;
    quint32 recordTag = 0;
    qint32 numHighSideRanges = 0;
    qint32 numDCcurrentRanges = 0;
    qint32 numVoltageRanges = 0;
    float maxACSignal = 0.0f;
    float eweRefCoeff = 0.0f;
    float iRefCoeff = 0.0f;
    float highSideCMCoeff = 0.0f;
    float eceWeGain = 0.0f;
    float eceWeOffset = 0.0f;
    float eceCeGain = 0.0f;
    float eceCeOffset = 0.0f;
    float vCtrlGain[voltageRanges] = {};
    float vCtrlOffset[voltageRanges] = {};
    float currentGain[currentRanges] = {};
    float currentOffset[currentRanges] = {};
    float iCtrlGain[currentRanges] = {};
    float iCtrlOffset[currentRanges] = {};
    float iGainValue[gainSettings] = {};   ///< factor of the current path
    float iStageOffset[gainSettings] = {}; ///< of the settings that the record names, else 0
    float eweGain[gainSettings] = {};      ///< volts per raw unit
    float eweOffset[gainSettings] = {};    ///< volts, of the settings that the record names, else 0
    float weGainValue[gainSettings] = {};  ///< factor of the voltage path
    std::map<voltageRange_t, ACgain_t> weGainMap;
    std::map<ACgain_t, voltageRange_t> vRangeMap;
    double vRangeLimit[voltageRanges] = {}; ///< volts: the largest magnitude that the range can both read and set
};

// What every sample passes, and what it asks.

inline float DeviceDCcalFormulas::getEWE(float raw, ACgain_t gain, short ref) const
{
    if (invalidGain(gain))
        return 0.0f;
    const int g = index(gain);
    return eweOffset[g] + (eweGain[g] * raw + float(ref) * eweRefCoeff);
}

inline float DeviceDCcalFormulas::getECE(float ce, float we) const
{
    return eceCeOffset + eceCeGain * ce - eceWeGain * we - eceWeOffset;
}

inline float DeviceDCcalFormulas::getCurrent(float raw, currentRange_t range, ACgain_t gain, short ref, float ce) const
{
    if (invalidGain(gain) || invalidRangeIndex(range))
        return 0.0f;
    const int g = index(gain);
    const int r = index(range);
    float x = (iStageOffset[g] + raw) / iGainValue[g];
    x += iRefCoeff * float(ref);
    if (r < numHighSideRanges)
        x += highSideCMCoeff * ce;
    return currentOffset[r] + currentGain[r] * x;
}

inline bool DeviceDCcalFormulas::invalidRangeIndex(currentRange_t range) const
{
    return index(range) >= currentRanges;
}

inline bool DeviceDCcalFormulas::invalidRangeIndex(voltageRange_t range) const
{
    return index(range) >= voltageRanges;
}

inline bool DeviceDCcalFormulas::invalidGain(ACgain_t gain) const
{
    return index(gain) >= gainSettings;
}
