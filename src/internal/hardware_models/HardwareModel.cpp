// SPDX-License-Identifier: MIT
#include "hardware_models/HardwareModel.h"

#include "images/HexLoader.h"

#include <cmath>

const QString HardwareModel::NOTRELEASED_CATEGORY = QStringLiteral("Never Released");
const QString HardwareModel::OBSOLETE_CATEGORY = QStringLiteral("No Longer Supported");
const QString HardwareModel::LOWLAND_CATEGORY = QStringLiteral("Lowland Series");
const QString HardwareModel::GALE_CATEGORY = QStringLiteral("Gale Series");
const QString HardwareModel::KESTREL_CATEGORY = QStringLiteral("Kestrel Series");
const QString HardwareModel::DEFAULT_STABILITY_RANGE = QStringLiteral("Default Stability Range");
const QString HardwareModel::CUSTOM_STABILITY_RANGE = QStringLiteral("Custom Stability Range");

namespace {

bool isBetween(double lowest, double value, double highest)
{
    return lowest <= value && value <= highest;
}

bool isWhole(double value)
{
    return value == std::floor(value);
}

} // namespace

HardwareModel::HardwareModel(HardwareModel_t model) : _modelClass(static_cast<qint32>(instrumentLineOf(model)))
{
}

signed char HardwareModel::getDefaultStabilityRangeIndex() const
{
    return 0;
}

QString HardwareModel::hexFileName() const
{
    return QString();
}

QString HardwareModel::suitableFirmware() const
{
    return QString();
}

bool HardwareModel::sdCardHasCalData() const
{
    return false;
}

currentRange_t HardwareModel::getEIScurrentRangeLimit(double) const
{
    return currentRange_t::OFF;
}

QList<currentRange_t> HardwareModel::getCurrentRangeListForOffsetDriftCalibration() const
{
    return {};
}

double HardwareModel::getVMax(bool isOpenCircuit) const
{
    return isOpenCircuit ? _vMaxOpenCircuit : _vMax;
}

double HardwareModel::getVMin(bool isOpenCircuit) const
{
    return isOpenCircuit ? _vMinOpenCircuit : _vMin;
}

int HardwareModel::getNumVoltageRanges() const
{
    return _WEgainMap.isEmpty() ? 1 : _WEgainMap.size();
}

ACgain_t HardwareModel::getDefaultCurrentGain(currentRange_t range) const
{
    if (_defaultCurrentGains.isEmpty() || range == currentRange_t::OFF)
        return ACgain_t::Gain1;
    return _defaultCurrentGains.at(qMin(index(range), _defaultCurrentGains.size() - 1));
}

bool HardwareModel::isSupportACExperiment() const
{
    // Not Q_ASSERT: a wrong model table must end a release build as well.
    if (_IsEIScapable && getEIScurrentRangeLimit(2500) == currentRange_t::OFF)
        qFatal("!_IsEIScapable || this->getEIScurrentRangeLimit(2500) != currentRange_t::OFF");
    return _IsEIScapable;
}

QStringList HardwareModel::getCompRangeNameList() const
{
    QStringList names;
    for (const VekCompRange &preset : _compRanges)
        names.append(preset.getCompRangeName());
    return names;
}

QString HardwareModel::getCompRangeName(signed char index) const
{
    if (index < 0 || index >= _compRanges.size())
        return QString();
    return _compRanges.at(index).getCompRangeName();
}

VekCompRange HardwareModel::getCompRangeParams(signed char index) const
{
    if (index < 0 || index >= _compRanges.size())
        return VekCompRange(QStringLiteral("N/A"), 0, 0);
    return _compRanges.at(index);
}

QString HardwareModel::hexFileCheckSum() const
{
    return HexLoader::ReadHexSignature(HexLoader::getDefaultHexPath(hexFileName())).checksum;
}

bool HardwareModel::isWithinVoltSamplingLimit(double interval) const
{
    return interval >= _minVoltInterval;
}

bool HardwareModel::isWithinSamplingLimit(double period) const
{
    return period >= _minSamplingPeriod;
}

bool HardwareModel::isWithinFrequencyLimit(double frequency) const
{
    return isBetween(_frequencyMin, frequency, _frequencyMax);
}

bool HardwareModel::isWithinVoltageScanRateLimit(double scanRate) const
{
    return isBetween(_scanRateMin, scanRate, _scanRateMax);
}

bool HardwareModel::isWithinVoltageLimit(double voltage, bool isOpenCircuit) const
{
    return isBetween(getVMin(isOpenCircuit), voltage, getVMax(isOpenCircuit));
}

bool HardwareModel::isWithinCurrentLimit(double current) const
{
    return isBetween(_iMin, current, _iMax);
}

bool HardwareModel::isWithinCurrentStepLimit(double) const
{
    return true;
}

bool HardwareModel::isWithinVoltageStepLimit(double step) const
{
    return std::abs(step) >= _vStepMin;
}

bool HardwareModel::isWithinPowerLoadLimits(double power, bool isOpenCircuit) const
{
    return power <= _iMax * getVMax(isOpenCircuit);
}

bool HardwareModel::isWithinResistanceLoadLimits(double, bool) const
{
    return true;
}

bool HardwareModel::isWithinVAmplitudeLimits(double amplitude) const
{
    return isBetween(_vAmpMin, std::abs(amplitude), _vAmpMax);
}

bool HardwareModel::isWithinIAmplitudeLimits(double amplitude) const
{
    return isBetween(_iAmpMin, std::abs(amplitude), _iAmpMax);
}

bool HardwareModel::isStepsPerDecadeLimit(double steps) const
{
    return isBetween(_stepsPerDecadeMin, steps, _stepsPerDecadeMax) && isWhole(steps);
}

bool HardwareModel::isMinCycleLimit(double cycles) const
{
    return isBetween(_minCyclesMin, cycles, _minCyclesMax) && isWhole(cycles);
}

QStringList HardwareModel::numberNames(int count)
{
    QStringList names;
    for (int number = 0; number < count; ++number)
        names.append(QString::number(number));
    return names;
}

QList<VekCompRange> HardwareModel::presets(unsigned char defaultBandwidthIndex, unsigned char defaultStabilityFactor)
{
    return {VekCompRange(DEFAULT_STABILITY_RANGE, defaultBandwidthIndex, defaultStabilityFactor),
            VekCompRange(CUSTOM_STABILITY_RANGE, 0, 0)};
}

QMap<voltageRange_t, ACgain_t> HardwareModel::fourRangeGainMap()
{
    return {{voltageRange_t(0), ACgain_t::Gain1},
            {voltageRange_t(1), ACgain_t::Gain2},
            {voltageRange_t(2), ACgain_t::Gain10},
            {voltageRange_t(3), ACgain_t::Gain20}};
}
