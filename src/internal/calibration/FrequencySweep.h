// SPDX-License-Identifier: MIT
#pragma once

#include <QList>
#include <QString>

#include <complex>

/**
 * The measured response of one analogue stage: frequency against magnitude (a ratio) and phase (degrees).
 *
 * A value; const operations run on any thread.
 */
class frequencySweep
{
public:
    /// How a value between two rows is formed.
    enum interpolateType_t {
        interpolate_logFrequency = 0, ///< straight lines against the logarithm of the frequency
        interpolate_firstOrder = 1,   ///< both rows read as a first-order low-pass, its time constant interpolated
        interpolate_reciprocal = 2,   ///< 1 / magnitude straight against the frequency; the phase as in 0
    };

    /// No rows: answers 1.
    frequencySweep() = default;

    /**
     * Reads a table: a heading line, then one row per line in ascending or descending order of frequency.
     *
     * A file that is missing, or holds a heading only, gives a table without rows.
     *
     * @param defaultMag      magnitude where the table has none
     * @param defaultNegPhase degrees where the table has none
     * @failure An empty name: a warning, and the object is as the default constructor makes it.
     */
    frequencySweep(const QString &filename, interpolateType_t type, double defaultMag, double defaultNegPhase);

    /// The response at a frequency in hertz; held flat beyond the first and the last row.
    std::complex<double> lookup(double frequency) const;
    /// True without a row.
    bool isEmpty() const { return table.isEmpty(); }
    /// Drops the rows; interpolation and defaults stay.
    void clearRawData() { table.clear(); }

private:
    using Row = QList<double>;
    enum Column { Frequency, Magnitude, Phase };

    void sortTableAscending();
    bool boundsCheck(double frequency, Column column, double fallback, double *fixed) const;
    double lookupMag(int row, double f0, double f1, double frequency, interpolateType_t type) const;
    double lookupNegPhase(int row, double f0, double f1, double frequency, interpolateType_t type) const;

    QList<Row> table; ///< ascending frequency; a row may be short
    interpolateType_t interpolation = interpolate_logFrequency;
    double defaultMag = 1.0;
    double defaultNegPhase = 0.0; ///< degrees
};
