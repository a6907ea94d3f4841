// SPDX-License-Identifier: MIT
#include "hardware_models/Kestrel.h"

#include "hardware_models/EisRangeTables.h"

namespace {

/// The number of each generation's Ibis; Jay and Heron are the next two.
constexpr int firstOfGeneration[] = {15, 20, 23, 26, 29, 32};

enum Kind { Ibis, Jay, Heron };

struct FirmwareRow {
    const char *signatureText;
    const char *hexFile;
};

constexpr FirmwareRow firstGenerationFirmware[] = {
    // by kind
    {"IBIS_1_0", "Nimbrelle_Ibis_Firmware.hex"},
    {"JAY_1_0", "Nimbrelle_Jay_Firmware.hex"},
    {"HERON_1_0", "Nimbrelle_Heron_Firmware.hex"},
};
constexpr FirmwareRow sharedFirmware{"KESTREL_2_x", "Nimbrelle_Kestrel_2_x_Firmware.hex"};

bool isOfKind(int model, int generation, Kind kind)
{
    return generation >= 0 && model - firstOfGeneration[generation] == kind;
}

} // namespace

Kestrel::Kestrel(HardwareModel_t model) : HardwareModel(model)
{
    if (!validateHwModel(model)) {
        _modelClass = 0;
        return;
    }
    _model = static_cast<qint8>(model);
    _modelClass = 2;
    _IsEIScapable = true;
    _hasTemperature = true;
    _flagA = true;
    _upperBinaryCurrentLimit = 32000;
    _category = KESTREL_CATEGORY;
    assignNumBandwidthSelections();
    assignEISFreq();
    assignNumIRanges();
    assignNumVRanges();
    assignHexFile();
    assignVanityName();
    assignDefaultCurrentGain();
    assignStabilityFactorNames();
    _fanModeSupported = true;
}

QString Kestrel::hexFileName() const
{
    return _hexFile;
}

QString Kestrel::suitableFirmware() const
{
    return QStringLiteral("This function can be deleted!");
}

bool Kestrel::sdCardHasCalData() const
{
    return true;
}

currentRange_t Kestrel::getEIScurrentRangeLimit(double frequency) const
{
    if (_eisFrequencyLimits.isEmpty())
        return currentRange_t::OFF;
    return EisRangeTables::walk(_eisFrequencyLimits, _eisFrequencyLimits.size(), frequency);
}

bool Kestrel::isIbis() const
{
    return isOfKind(_model, _generation, Ibis);
}

bool Kestrel::isJay() const
{
    return isOfKind(_model, _generation, Jay);
}

bool Kestrel::isHeron() const
{
    return isOfKind(_model, _generation, Heron);
}

bool Kestrel::validateHwModel(HardwareModel_t model)
{
    int generation = 0;
    for (const int first : firstOfGeneration) {
        const int kind = static_cast<int>(model) - first;
        if (Ibis <= kind && kind <= Heron) {
            _generation = generation;
            return true;
        }
        ++generation;
    }
    return false;
}

void Kestrel::assignNumBandwidthSelections()
{
    const bool isFirstGeneration = _generation == 0;
    _bandwidthNames = numberNames(isFirstGeneration ? 6 : 4);
    _defaultStabilityFactor = (isFirstGeneration ? 4 : 3) - (isHeron() ? 1 : 0);
    _defaultBandwidthIndex = 3;
    _compRanges = presets(_defaultBandwidthIndex, _defaultStabilityFactor);
}

void Kestrel::assignEISFreq()
{
    _frequencyMax = 2e6;
    const double slow = _generation < 5 ? 100000 : 1e6;
    const QList<double> limits{slow, slow, slow, slow, 2e6, 2e6, 500000, 200000, 10000, 2500, 100};
    const int first = isHeron() ? 1 : 0;
    const int lastOfNewer = isHeron() ? 10 : 9;
    const int last = _generation < 3 ? 8 : lastOfNewer;
    _eisFrequencyLimits = limits.mid(first, last - first + 1);
}

void Kestrel::assignNumIRanges()
{
    const double smallerLimit = isHeron() ? 5.0 : 10.0;
    const double limit = isIbis() ? 20.0 : smallerLimit;
    _numHighSideRanges = isHeron() ? 3 : 4;
    _iMin = -limit;
    _iMax = limit;
    _iAmpMax = limit;
    _iAndIAmpMax = limit;
    _numDCcurrentRanges = isHeron() ? 8 : 9;
    _numBaseCurrentRanges = _numDCcurrentRanges;
    _totalNumCurrentRanges = _generation < 3 ? _numDCcurrentRanges : 10;
}

void Kestrel::assignNumVRanges()
{
    const double controlled = isIbis() ? 6.0 : 10.0;
    const double openCircuit = isIbis() ? 12.0 : 15.0;
    _vAmpMin = 1.5e-5;
    _vAmpMax = controlled;
    _vAndVAmpMax = controlled;
    _vMin = -controlled;
    _vMax = controlled;
    _vMinOpenCircuit = -openCircuit;
    _vMaxOpenCircuit = openCircuit;
    _WEgainMap = fourRangeGainMap();
}

void Kestrel::assignHexFile()
{
    const FirmwareRow &row = _generation == 0 ? firstGenerationFirmware[_model - firstOfGeneration[0]] : sharedFirmware;
    _hexSignatureText = QString::fromLatin1(row.signatureText);
    _hexFile = QString::fromLatin1(row.hexFile);
}

void Kestrel::assignVanityName()
{
    if (isHeron())
        _vanityName = QStringLiteral("Heron");
    else
        _vanityName = isJay() ? QStringLiteral("Jay") : QStringLiteral("Ibis");
}

void Kestrel::assignDefaultCurrentGain()
{
    const ACgain_t highSideGain = _generation == 0 ? ACgain_t::Gain100 : ACgain_t::Gain10;
    for (int range = 0; range < _totalNumCurrentRanges; ++range)
        _defaultCurrentGains.append(range < _numHighSideRanges ? highSideGain : ACgain_t::Gain10);
}

void Kestrel::assignStabilityFactorNames()
{
    _stabilityNames = numberNames(isHeron() ? 8 : 9);
}
