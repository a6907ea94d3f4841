// SPDX-License-Identifier: MIT
#pragma once

#include "calibration/FrequencySweep.h"
#include "hardware_models/RangeTypes.h"

#include <QList>
#include <QString>

#include <complex>

/**
 * The frequency response of the voltage path, by the gains of the voltage and of the current amplifier.
 *
 * The tables come in one of two forms: one for each pair of gains (matrix form), or one for each setting of the three
 * amplifier blocks (stage form). A value; const operations run on any thread.
 */
class GainMatrix
{
public:
    /// No tables: answers 1.
    GainMatrix() = default;
    /// Reads the tables in a folder; "WEgain10_Igain1.csv" decides the form.
    explicit GainMatrix(const QString &directory);

    /// The response at a frequency in hertz; 1 for gains without a table.
    std::complex<double> lookup(double frequency, ACgain_t weGain, ACgain_t iGain) const;
    /// Drops all rows, keeps the form.
    void clearSweepTableEntries();

    /// "1" to "1000"; empty for anything but the ten gains.
    static QString convertGainSettingToString(ACgain_t gain);
    /// The file of a pair of gains in matrix form.
    static QString getCSVFilename(ACgain_t weGain, ACgain_t iGain);
    /// Which tables of a stage list make up a gain; empty for a setting that is none.
    static QList<int> getIndividualStageIndices(ACgain_t gain);

private:
    std::complex<double> lookupMatrix(double frequency, ACgain_t weGain, ACgain_t iGain) const;
    std::complex<double> lookupStages(double frequency, ACgain_t gain) const;

    QList<QList<frequencySweep>>
        tables;                    ///< matrix form: [weGain][iGain]; stage form: [voltage, current][block setting]
    bool individualStages = false; ///< stage form
};
