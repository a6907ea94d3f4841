// SPDX-License-Identifier: MIT
#pragma once

#include "VekCompRange.h"
#include "hardware_models/HardwareModelNumber.h"
#include "hardware_models/RangeTypes.h"

#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>

/**
 * What one kind of instrument can do: limits, ranges, default gains, stability presets, firmware image, and the
 * sentence that is shown when a limit is broken.
 *
 * The base class itself stands for an unknown instrument: it works, has the default limits, and is named "Invalid".
 * Concrete classes start from these defaults. All numbers are in SI units: volts, amperes, seconds, hertz.
 *
 * The destructor is not virtual: make instances with std::make_shared of their own class only, as
 * HardwareModelFactory does. See compatibility.md, order of virtual operations.
 *
 * @thread Immutable once made, hence free of any thread.
 */
class HardwareModel
{
public:
    static const QString NOTRELEASED_CATEGORY;
    static const QString OBSOLETE_CATEGORY;
    static const QString LOWLAND_CATEGORY;
    static const QString GALE_CATEGORY;
    static const QString KESTREL_CATEGORY;
    static const QString DEFAULT_STABILITY_RANGE;
    static const QString CUSTOM_STABILITY_RANGE;

    /// An unknown instrument with the default limits; the number decides the model class alone.
    explicit HardwareModel(HardwareModel_t model);

    /// Index of the default preset among the stability presets; -1 where the model has none.
    virtual signed char getDefaultStabilityRangeIndex() const;
    /// File name of the firmware image; "NoLongerSupported" where there is none any more.
    virtual QString hexFileName() const;
    /// Label of the firmware that fits this model.
    virtual QString suitableFirmware() const;
    /// Whether the instrument keeps calibration tables on its SD card.
    virtual bool sdCardHasCalData() const;
    /// The most sensitive current range that may be used at this frequency in hertz; OFF without AC.
    virtual currentRange_t getEIScurrentRangeLimit(double frequency) const;
    /// The ranges whose offset drift is calibrated, in the order of the calibration.
    virtual QList<currentRange_t> getCurrentRangeListForOffsetDriftCalibration() const;

    QString getVanityName() const { return _vanityName; }
    QString getHexFileSignatureText() const { return _hexSignatureText; }
    bool supportsTemperature() const { return _hasTemperature; }
    bool isFanModeSupported() const { return _fanModeSupported; }
    double getIMin() const { return _iMin; }
    double getIMax() const { return _iMax; }
    double getVAmpMin() const { return _vAmpMin; }
    double getVAmpMax() const { return _vAmpMax; }
    double getIAmpMin() const { return _iAmpMin; }
    double getIAmpMax() const { return _iAmpMax; }
    double getVStepMin() const { return _vStepMin; }
    double getIandIAmpMax() const { return _iAndIAmpMax; }
    double getVandVAmpMax() const { return _vAndVAmpMax; }
    double getVoltageScanRateMax() const { return _scanRateMax; }
    double getMinSamplingPeriod() const { return _minSamplingPeriod; }
    double getSquareWaveFrequencyLimit() const { return _squareWaveFrequencyLimit; }
    quint8 getTotalNumCurrentRanges() const { return _totalNumCurrentRanges; }
    quint8 getNumDCcurrentRanges() const { return _numDCcurrentRanges; }
    qint32 getUpperBinaryCurrentLimit() const { return _upperBinaryCurrentLimit; }
    qint32 getUpperBinaryVSetpointLimit() const { return _upperBinaryVSetpointLimit; }
    qint32 getLowerBinaryVSetpointLimit() const { return _lowerBinaryVSetpointLimit; }
    qint32 getNumHighSideRanges() const { return _numHighSideRanges; }
    QMap<voltageRange_t, ACgain_t> getWEgainMap() const { return _WEgainMap; }

    double getVMax(bool isOpenCircuit) const;
    double getVMin(bool isOpenCircuit) const;
    /// At least 1: a model without a gain map has one voltage range.
    int getNumVoltageRanges() const;
    /// The range's default gain; ranges past the end of the list share its last entry, no range has gain 1.
    ACgain_t getDefaultCurrentGain(currentRange_t range) const;
    /// Whether impedance experiments run; ends the process if the model claims so without a range at 2500 Hz.
    bool isSupportACExperiment() const;
    QStringList getCompRangeNameList() const;
    /// Name of the preset; "" for an index that does not exist.
    QString getCompRangeName(signed char index) const;
    /// A copy of the preset; one named "N/A" with zeros for an index that does not exist.
    VekCompRange getCompRangeParams(signed char index) const;
    /// The checksum that an instrument with this library's image reports; empty without an image. Reads the image.
    QString hexFileCheckSum() const;

    // Limit checks, inclusive at both ends.
    bool isWithinVoltSamplingLimit(double interval) const;
    bool isWithinSamplingLimit(double period) const;
    bool isWithinFrequencyLimit(double frequency) const;
    bool isWithinVoltageScanRateLimit(double scanRate) const; ///< the caller takes off the sign
    bool isWithinVoltageLimit(double voltage, bool isOpenCircuit) const;
    bool isWithinCurrentLimit(double current) const;
    bool isWithinCurrentStepLimit(double step) const;                     ///< always true: there is no smallest step
    bool isWithinVoltageStepLimit(double step) const;                     ///< of either sign
    bool isWithinPowerLoadLimits(double power, bool isOpenCircuit) const; ///< one-sided: a negative power passes
    bool isWithinResistanceLoadLimits(double resistance, bool isOpenCircuit) const; ///< always true
    bool isWithinVAmplitudeLimits(double amplitude) const;                          ///< of either sign
    bool isWithinIAmplitudeLimits(double amplitude) const;                          ///< of either sign
    bool isStepsPerDecadeLimit(double steps) const;                                 ///< whole numbers only
    bool isMinCycleLimit(double cycles) const;                                      ///< whole numbers only

    // The sentence for each broken limit; "%1" is left for the vanity name.
    QString getHwModelErrorMsg() const;
    QString getACErrorMsg() const;
    QString getFrequencyLimitErrorMsg() const;
    QString getSamplingLimitErrorMsg() const;
    QString getVoltSamplingLimitErrorMsg() const;
    QString getVoltageLimitErrorMsg(bool isOpenCircuit) const;
    QString getCurrentLimitErrorMsg() const;
    QString getVoltageStepLimitErrorMsg() const;
    QString getVoltageScanRateLimitErrorMsg() const;
    QString getPowerLimitErrorMsg(bool isOpenCircuit) const;
    QString getPositiveResistanceErrorMsg() const;
    QString getResistanceLoadLimitErrorMsg(bool isOpenCircuit) const;
    QString getVAmplitudeLimitErrorMsg() const;
    QString getIAmplitudeLimitErrorMsg() const;
    QString getIandIAmplitudeLimitErrorMsg() const;
    QString getVandVAmplitudeLimitErrorMsg() const;
    QString getStepsPerDecadeLimitErrorMsg() const;
    QString getMinCyclesLimitErrorMsg() const;

protected:
    /// "0", "1" and so on, as the bandwidth and stability selections are named.
    static QStringList numberNames(int count);
    /// The two rows of a model with presets: the default one and one for the user's own numbers.
    static QList<VekCompRange> presets(unsigned char defaultBandwidthIndex, unsigned char defaultStabilityFactor);
    /// The map of the voltage ranges to the gains 1, 2, 10 and 20.
    static QMap<voltageRange_t, ACgain_t> fourRangeGainMap();

    // Several of these describe the instrument without being read by any operation; they are part of its record.
    bool _flagA = false;
    bool _flagB = false;
    QList<VekCompRange> _compRanges;
    QStringList _bandwidthNames = numberNames(11);
    QStringList _stabilityNames = numberNames(11);
    QString _vanityName = QStringLiteral("Invalid"); ///< "Invalid" marks an unknown instrument
    QString _hexSignatureText = QStringLiteral("INVALID_MODEL");
    qint32 _modelClass;            ///< the InstrumentLine of the number
    double _minVoltInterval = 0.0; ///< smallest voltage interval of a sampled record
    double _minSamplingPeriod = 0.0002;
    double _reservedLimit = 0.01;
    bool _IsEIScapable = false;
    bool _hasTemperature = false;
    quint8 _boardCode = 1;
    double _vMinOpenCircuit = -20.0;
    double _vMaxOpenCircuit = 20.0;
    double _vMin = -10.0; ///< under control, as _vMax
    double _vMax = 10.0;
    double _vAmpMin = 0.00024;
    double _vAmpMax = 1.0;
    double _vStepMin = 0.0003;
    double _scanRateMin = 0.0; ///< volts per second
    double _scanRateMax = 150.0;
    double _vAndVAmpMax = 10.0; ///< largest sum of bias potential and amplitude
    double _iMin = -1.0;
    double _iMax = 1.0;
    double _iLoadMin = 1e-10; ///< smallest current that counts as a load
    double _iAmpMin = 2.4e-13;
    double _iAmpMax = 1.0;
    double _iAndIAmpMax = 20.0; ///< largest sum of bias current and amplitude
    double _frequencyMin = 1e-5;
    double _frequencyMax = 1e6;
    qint32 _rateConstantA = 750;
    qint32 _blockConstant = 1024;
    qint32 _rateConstantB = 37500;
    bool _modeFlag = false;
    qint32 _rateConstantC = 0;
    quint8 _numBaseCurrentRanges = 0; ///< equals _numDCcurrentRanges on every model
    quint8 _numDCcurrentRanges = 0;
    quint8 _totalNumCurrentRanges = 0;
    qint32 _upperBinaryCurrentLimit = 0; ///< full-scale count of the current converters
    qint32 _upperBinaryVSetpointLimit = 32767;
    qint32 _reservedBinaryLimit = 0;
    qint32 _lowerBinaryVSetpointLimit = -32768;
    qint32 _numHighSideRanges = 0; ///< how many of the largest ranges measure on the high side
    QMap<voltageRange_t, ACgain_t> _WEgainMap;
    QList<ACgain_t> _defaultCurrentGains; ///< by current range
    bool _checkFlag = true;
    bool _fanModeSupported = false;
    qint32 _revisionCode = -1;
    QString _category = NOTRELEASED_CATEGORY;
    double _squareWaveFrequencyLimit = 500.0;
    qint32 _stepsPerDecadeMin = 1;
    qint32 _stepsPerDecadeMax = 100;
    qint32 _minCyclesMin = 1;
    qint32 _minCyclesMax = 1000;
};
