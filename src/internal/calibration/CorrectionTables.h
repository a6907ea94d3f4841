// SPDX-License-Identifier: MIT
#pragma once

#include "calibration/FrequencySweep.h"
#include "hardware_models/RangeTypes.h"

#include <QMap>
#include <QString>

#include <complex>
#include <vector>

/**
 * Straightens the nonlinearity of the controller's 12-bit converter, code by code.
 *
 * A value; const operations run on any thread.
 */
class PIC_ADC_lut
{
public:
    /// Reads line i as the corrected value of code i. A file that is missing gives the identity, an empty name a warning.
    void import(const QString &filename);
    /// The identity.
    void clearTable();
    /// Replaces every sample above 0 that has an entry by that entry; a fraction counts in no index.
    void correctData(std::vector<float> &samples) const;
    void correctData(std::vector<double> &samples) const;

private:
    std::vector<float> table; ///< by raw code; empty: nothing is corrected
};

/**
 * The input capacitance of the controller's converter, which depends on the signal's level, and what it does to an
 * amplitude. A value; const operations run on any thread.
 */
class PICInternalADCCapacitance
{
public:
    /// Reads one coefficient a line, the highest power first. A file that is missing leaves no correction.
    void import(const QString &filename);
    /// Farads at a converter code.
    double getCapacitance(double code) const;
    /// What to divide an amplitude by, for a frequency in hertz and the record's mean code; 1 without a table.
    std::complex<double> get_Z_adj(double frequency, double code) const;

private:
    std::vector<double> coefficients; ///< picofarads over the code, highest power first
    bool isZero = true;               ///< no coefficient differs from 0
    double referenceCorner = 0.0;     ///< 2 pi R C at code 2048, with R = 1000 ohms
};

/// The measured parallel impedance of the cable, by current range. A value; const operations run on any thread.
class CableCapacitanceLUT
{
public:
    /// No tables: the cable looks like an open circuit.
    CableCapacitanceLUT() = default;
    /// Reads the tables of a folder.
    explicit CableCapacitanceLUT(const QString &directory);

    /// Ohms at a frequency in hertz; infinite, with `found` false, where there is no table.
    std::complex<double> lookupCableImpedance(double frequency, currentRange_t range, bool *found) const;
    /// Drops all rows.
    void clearSweepTableEntries();

private:
    QMap<currentRange_t, frequencySweep> tables;
};
