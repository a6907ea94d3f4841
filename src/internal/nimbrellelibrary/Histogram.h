// SPDX-License-Identifier: MIT
#pragma once

#include <QMap>
#include <QString>
#include <QVector>

/**
 * Counts how often each raw 16-bit code occurs, for the tests of a converter. It is not public: clients are given volts and
 * amperes, and come by no code.
 *
 * @thread One object belongs to one thread.
 */
class Histogram
{
public:
    void append(const short *samples, int count);
    /// The text of getTotalCount() for these samples alone; what was appended stays out of it and as it is.
    static QString CountNumbers(const QVector<short> &samples);
    /// How many different codes have occurred.
    unsigned getNumEntries() const;
    /// Largest code minus smallest; not to be asked of an empty histogram.
    unsigned getRange() const;
    /// "code,count," for each code in ascending order, without line breaks.
    QString getTotalCount() const;

private:
    QMap<short, int> _counts;
};
