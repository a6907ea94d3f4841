// SPDX-License-Identifier: MIT
#include "hardware_models/CatalogueModel.h"

#include "hardware_models/EisRangeTables.h"
#include "hardware_models/ModelTables.h"

#include <cmath>

using namespace ModelTables;

namespace {

void set(double &limit, double value)
{
    if (!std::isnan(value)) // keep
        limit = value;
}

void setBothSigns(double &minimum, double &maximum, double value)
{
    set(minimum, -value);
    set(maximum, value);
}

QMap<voltageRange_t, ACgain_t> threeRangeGainMap()
{
    return {{voltageRange_t(0), ACgain_t::Gain1},
            {voltageRange_t(1), ACgain_t::Gain5},
            {voltageRange_t(2), ACgain_t::Gain50}};
}

QList<ACgain_t> gainList(const GainRun &run)
{
    QList<ACgain_t> gains;
    for (int i = 0; i < run.firstCount; ++i)
        gains.append(ACgain_t(run.first));
    for (int i = 0; i < run.secondCount; ++i)
        gains.append(ACgain_t(run.second));
    return gains;
}

} // namespace

CatalogueModel::CatalogueModel(HardwareModel_t model, HardwareModel_t numbersOf)
    : HardwareModel(model), _numbersOf(numbersOf), _identity(find(identityRows, model)),
      _ranges(find(rangeRows, numbersOf))
{
    take(*find(limitRows, numbersOf));
    if (const RareLimitRow *rare = find(rareLimitRows, numbersOf))
        take(*rare);
    take(*_ranges);
    take(*find(constantRows, numbersOf));
    take(*_identity);
}

void CatalogueModel::take(const IdentityRow &row)
{
    _vanityName = QString::fromLatin1(row.vanityName);
    if (row.signatureText)
        _hexSignatureText = QString::fromLatin1(row.signatureText);
    _category = *row.category;
}

void CatalogueModel::take(const LimitRow &row)
{
    setBothSigns(_vMin, _vMax, row.controlled);
    setBothSigns(_vMinOpenCircuit, _vMaxOpenCircuit, row.openCircuit);
    setBothSigns(_iMin, _iMax, row.current);
    set(_frequencyMax, row.frequency);
    set(_squareWaveFrequencyLimit, row.squareWave);
    set(_vAmpMin, row.vAmpMin);
    set(_vAmpMax, row.vAmpMax);
    set(_iAmpMax, row.iAmpMax);
    set(_iAndIAmpMax, row.iAndIAmpMax);
    set(_vAndVAmpMax, row.vAndVAmpMax);
}

void CatalogueModel::take(const RareLimitRow &row)
{
    set(_minSamplingPeriod, row.minSamplingPeriod);
    set(_vStepMin, row.vStepMin);
    set(_iAmpMin, row.iAmpMin);
    set(_frequencyMin, row.frequencyMin);
}

void CatalogueModel::take(const RangeRow &row)
{
    _numBaseCurrentRanges = row.numDC;
    _numDCcurrentRanges = row.numDC;
    _totalNumCurrentRanges = row.numTotal;
    _numHighSideRanges = row.numHighSide;
    _upperBinaryCurrentLimit = row.upperBinaryCurrent;
    _defaultCurrentGains = gainList(row.gains);
    if (row.gainMap != GainMap::none)
        _WEgainMap = row.gainMap == GainMap::M3 ? threeRangeGainMap() : fourRangeGainMap();
    _IsEIScapable = row.isEisCapable;
    _hasTemperature = row.hasTemperature;
    _fanModeSupported = row.hasFan;
    if (row.preset.bandwidthIndex >= 0)
        _compRanges = presets(row.preset.bandwidthIndex, row.preset.stabilityFactor);
    _bandwidthNames = numberNames(row.names.bandwidths);
    _stabilityNames = numberNames(row.names.stabilities);
}

void CatalogueModel::take(const ConstantRow &row)
{
    _rateConstantA = row.rateConstantA;
    _blockConstant = row.blockConstant;
    _rateConstantB = row.rateConstantB;
    _flagA = row.flagA;
    _flagB = row.flagB;
    _modeFlag = row.modeFlag;
    _boardCode = row.boardCode;
    _rateConstantC = row.rateConstantC;
    _checkFlag = row.checkFlag;
    _revisionCode = row.revisionCode;
}

signed char CatalogueModel::getDefaultStabilityRangeIndex() const
{
    return _compRanges.isEmpty() ? -1 : 0;
}

QString CatalogueModel::hexFileName() const
{
    return QString::fromLatin1(_identity->hexFile);
}

QString CatalogueModel::suitableFirmware() const
{
    return QString::fromLatin1(_identity->firmwareLabel);
}

bool CatalogueModel::sdCardHasCalData() const
{
    return _ranges->sdCardHasCalData;
}

currentRange_t CatalogueModel::getEIScurrentRangeLimit(double frequency) const
{
    if (const auto *chain = find(EisRangeTables::chainRows, _numbersOf))
        return EisRangeTables::walk(*chain, frequency);
    if (const auto *table = find(EisRangeTables::tableRows, _numbersOf))
        return EisRangeTables::walk(table->limits, table->size, frequency);
    return currentRange_t::OFF;
}

QList<currentRange_t> CatalogueModel::getCurrentRangeListForOffsetDriftCalibration() const
{
    QList<currentRange_t> ranges;
    if (const DriftRow *row = find(driftRows, _numbersOf)) {
        for (int range = row->numRanges - 1; range >= 0; --range)
            ranges.append(currentRange_t(range));
    }
    return ranges;
}
