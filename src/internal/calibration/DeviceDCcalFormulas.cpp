// SPDX-License-Identifier: MIT
#include "calibration/DeviceDCcalFormulas.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr float lowestCode = -32768.0f;
constexpr float highestCode = 32767.0f;
constexpr float usableCode = 32000.0f; // leaves headroom to the ends of the DAC
constexpr signed char noRange = -1;

/// Clamps to what the DAC takes; a record without gains can yield NaN, which gives 0.
int clampedCode(float code)
{
    return std::isnan(code) ? 0 : int(std::clamp(code, lowestCode, highestCode));
}

bool isRangeOrNone(signed char range)
{
    return range >= -1 && range <= 10;
}

/// The range with the larger full scale, which has the smaller number; one that is no range gives way to the other.
currentRange_t largerRange(currentRange_t one, currentRange_t other)
{
    const auto a = static_cast<signed char>(index(one));
    const auto b = static_cast<signed char>(index(other));
    if (!isRangeOrNone(a) || a == noRange)
        return other;
    if (!isRangeOrNone(b) || b == noRange)
        return one;
    return currentRange_t(std::min(a, b));
}

} // namespace

void DeviceDCcalFormulas::copyCalData(const cal_v4 *record)
{
    currentRangeSlots = currentRanges;
    voltageRangeSlots = voltageRanges;
    copySingleValues(*record);
    copyRangeValues(*record);
    fillGainLadder(weGainValue, record->weStage1Gain, record->weStage2Gain, record->weStage3Gain);
    fillGainLadder(iGainValue, record->iStage1Gain, record->iStage2Gain, record->iStage3Gain);
    deriveVoltageGains(*record);
    for (int range = 0; range < voltageRanges; ++range)
        vRangeLimit[range] = deriveVoltageLimit(voltageRange_t(range));
}

void DeviceDCcalFormulas::copySingleValues(const cal_v4 &record)
{
    recordTag = record.calMagic;
    maxACSignal = record.maxACSignal;
    eweRefCoeff = record.eweRefCoeff;
    iRefCoeff = record.iRefCoeff;
    highSideCMCoeff = record.highSideCMCoeff;
    eceWeGain = record.eceWeGain;
    eceWeOffset = record.eceWeOffset;
    eceCeGain = record.eceCeGain;
    eceCeOffset = record.eceCeOffset;
}

void DeviceDCcalFormulas::copyRangeValues(const cal_v4 &record)
{
    std::copy_n(record.vCtrlGain, voltageRanges, vCtrlGain);
    std::copy_n(record.vCtrlOffset, voltageRanges, vCtrlOffset);
    std::copy_n(record.currentGain, currentRanges, currentGain);
    std::copy_n(record.currentOffset, currentRanges, currentOffset);
    std::copy_n(record.iCtrlGain, currentRanges, iCtrlGain);
    std::copy_n(record.iCtrlOffset, currentRanges, iCtrlOffset);
    std::copy_n(record.iStageOffset, recordGains, iStageOffset);
}

void DeviceDCcalFormulas::fillGainLadder(float (&ladder)[gainSettings], const float (&stage1)[3], float stage2,
                                         float stage3)
{
    ladder[0] = 1.0f;
    for (int i = 0; i < 3; ++i) {
        ladder[1 + i] = stage1[i];
        ladder[4 + i] = stage1[i] * stage2;
        ladder[7 + i] = ladder[4 + i] * stage3; // in this order: the instrument rounds the product so
    }
    ladder[10] = stage2;
    ladder[11] = stage3;
    ladder[12] = stage3 * stage1[2];
    ladder[13] = stage3 * stage2;
}

void DeviceDCcalFormulas::deriveVoltageGains(const cal_v4 &record)
{
    for (int gain = 0; gain < gainSettings; ++gain) {
        eweGain[gain] = record.eweGainBase / weGainValue[gain];
        eweOffset[gain] = gain < recordGains ? record.eweOffset[gain] : 0.0f;
    }
}

double DeviceDCcalFormulas::deriveVoltageLimit(voltageRange_t range) const
{
    const int i = index(range);
    const ACgain_t gain = getWEgainFromVRange(range);
    return std::min({std::abs((lowestCode - vCtrlOffset[i]) / vCtrlGain[i]),
                     std::abs((highestCode - vCtrlOffset[i]) / vCtrlGain[i]), std::abs(getEWE(lowestCode, gain, 0)),
                     std::abs(getEWE(highestCode, gain, 0))});
}

void DeviceDCcalFormulas::setWEgainMap(const std::map<voltageRange_t, ACgain_t> &map)
{
    weGainMap = map;
    vRangeMap.clear();
    for (const auto &[range, gain] : map)
        vRangeMap[gain] = range;
}

float DeviceDCcalFormulas::getCurrentRdgBIN(float value, currentRange_t range, ACgain_t gain, short ref,
                                            float /*ce*/) const
{
    if (invalidGain(gain) || invalidRangeIndex(range))
        return 0.0f;
    const int g = index(gain);
    return iGainValue[g] * (value - float(ref) * iRefCoeff) - iStageOffset[g];
}

int DeviceDCcalFormulas::getVCtrlBIN(float volts, voltageRange_t range) const
{
    if (invalidRangeIndex(range))
        return 0;
    const int r = index(range);
    return clampedCode(std::trunc(vCtrlGain[r] * volts + vCtrlOffset[r]));
}

int DeviceDCcalFormulas::getICtrlBIN(float amps, currentRange_t range) const
{
    if (invalidRangeIndex(range))
        return 0;
    const int r = index(range);
    return clampedCode(std::round(iCtrlGain[r] * amps + iCtrlOffset[r]));
}

double DeviceDCcalFormulas::getVSetpointFromBIN(short code, voltageRange_t range) const
{
    if (invalidRangeIndex(range))
        return 0.0;
    const int r = index(range);
    return (float(code) - vCtrlOffset[r]) / vCtrlGain[r];
}

double DeviceDCcalFormulas::getISetpointFromBIN(short code, currentRange_t range) const
{
    if (invalidRangeIndex(range))
        return 0.0;
    const int r = index(range);
    return (float(code) - iCtrlOffset[r]) / iCtrlGain[r];
}

double DeviceDCcalFormulas::getICtrlFromCode(double code, currentRange_t range) const
{
    if (invalidRangeIndex(range))
        return 0.0;
    const int r = index(range);
    return (code - double(iCtrlOffset[r])) / double(iCtrlGain[r]);
}

voltageRange_t DeviceDCcalFormulas::getMinVoltageRange(float volts) const
{
    int range = std::min(numVoltageRanges, qint32(voltageRanges)) - 1;
    while (range >= 1 && vRangeLimit[range] < std::abs(double(volts)))
        --range;
    return voltageRange_t(std::max(range, 0));
}

currentRange_t DeviceDCcalFormulas::getMinCurrentRange_DC(float amps) const
{
    const auto holds = [this, amps](int r) {
        const float code = std::trunc(iCtrlOffset[r] + iCtrlGain[r] * amps);
        return code >= -usableCode && code <= usableCode;
    };
    int range = std::min(numDCcurrentRanges, qint32(currentRanges)) - 1;
    while (range >= 1 && !holds(range))
        --range;
    return currentRange_t(std::max(range, 0));
}

currentRange_t DeviceDCcalFormulas::getMinCurrentRange_Galv(float amps) const
{
    return getMinCurrentRange_DC(amps);
}

currentRange_t DeviceDCcalFormulas::getMinCurrentRange_GalvEIS(float dc, float ac) const
{
    const float amplitude = std::abs(ac);
    int range = std::min(numDCcurrentRanges, qint32(currentRanges)) - 1;
    while (range >= 1 && double(amplitude) > getMaxACSignal_galv(currentRange_t(range)))
        --range;
    return largerRange(getMinCurrentRange_Galv(std::abs(dc) + amplitude), currentRange_t(range));
}

ACgain_t DeviceDCcalFormulas::getWEgainFromVRange(voltageRange_t range) const
{
    const auto found = weGainMap.find(range);
    return found == weGainMap.end() ? ACgain_t::Gain1 : found->second;
}

voltageRange_t DeviceDCcalFormulas::getVRangeFromWEgain(ACgain_t gain) const
{
    const auto found = vRangeMap.find(gain);
    return found == vRangeMap.end() ? voltageRange_t(255) : found->second;
}

float DeviceDCcalFormulas::getWEGainFromSetting(ACgain_t gain) const
{
    return invalidGain(gain) ? 1.0f : weGainValue[index(gain)];
}

double DeviceDCcalFormulas::getMaxACSignal_galv(currentRange_t range) const
{
    if (invalidRangeIndex(range))
        return 0.0;
    // Of the first voltage range for all: see compatibility.md, scale of the drive.
    return std::abs(vCtrlGain[0] * maxACSignal / iCtrlGain[index(range)]);
}

double DeviceDCcalFormulas::getCurrentGain(ACgain_t gain) const
{
    return invalidGain(gain) ? 0.0 : double(iGainValue[index(gain)]);
}

double DeviceDCcalFormulas::getACCurrentFactor(currentRange_t range, ACgain_t gain) const
{
    if (invalidGain(gain) || invalidRangeIndex(range))
        return 0.0;
    return currentGain[index(range)] / iGainValue[index(gain)];
}

double DeviceDCcalFormulas::getACVoltageFactor(ACgain_t gain) const
{
    return invalidGain(gain) ? 0.0 : double(eweGain[0] / weGainValue[index(gain)]);
}
