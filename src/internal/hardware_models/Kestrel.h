// SPDX-License-Identifier: MIT
#pragma once

#include "hardware_models/HardwareModel.h"

/**
 * The Kestrel series as a rule instead of rows: generation and kind (Ibis, Jay or Heron) follow from the number, and
 * all other values from these two.
 *
 * A number outside the series gives the base class's defaults, an "Invalid" model. Not set here are the square-wave
 * limit, the rate constants, the revision code and the sampling period. See compatibility.md, defaults of the Kestrels.
 */
class Kestrel : public HardwareModel
{
public:
    explicit Kestrel(HardwareModel_t model);

    QString hexFileName() const override;
    QString suitableFirmware() const override;
    bool sdCardHasCalData() const override;
    currentRange_t getEIScurrentRangeLimit(double frequency) const override;

protected:
    bool isIbis() const;
    bool isJay() const;
    bool isHeron() const;

    qint8 _model = -1;       ///< -1 until the number has proved to be in the series
    qint32 _generation = -1; ///< 0 for 1.0, 1 for 2.0, ..., 5 for 2.4
    QString _hexFile;
    QList<double> _eisFrequencyLimits; ///< hertz, by current range
    qint32 _defaultStabilityFactor = 0;
    qint32 _defaultBandwidthIndex = 0;

private:
    /// Sets the generation; false for a number outside the series, also for the two that lie inside its span.
    bool validateHwModel(HardwareModel_t model);
    void assignNumBandwidthSelections();
    void assignEISFreq();
    void assignNumIRanges();
    void assignNumVRanges();
    void assignHexFile();
    void assignVanityName();
    void assignDefaultCurrentGain();
    void assignStabilityFactorNames();
};
