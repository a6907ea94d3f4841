// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QFile>

#include <initializer_list>
#include <vector>

namespace lab {

/// How finely a number is told: as finely as the instrument told it, and no finer.
enum class Precision {
    Reading,     ///< the shortest text that reads back to the same float, which is what readings travel as
    Tick,        ///< ten nanoseconds, finer than the clock of either line, so that no two of its ticks read alike
    Microsecond, ///< of the host's clock
    Total,       ///< twelve significant digits, for sums of many readings: their differences are of use, too
    Estimate,    ///< nine significant digits, for what is integrated from the rows
    Count,       ///< a whole number
};

struct CsvColumn {
    const char *heading;
    Precision precision;
};

/// A time in ticks of Precision::Tick, and back.
qint64 csvTick(double seconds);
double csvSeconds(qint64 tick);

/// A number with a decimal point in every locale; "NaN", "inf" and "-inf" for those that are none.
QByteArray csvNumber(double value, Precision precision);

/**
 * A growing table of numbers. What was appended is safe from the end of this program, however sudden, after flush().
 *
 * @failure A write that fails is remembered: error() then says why, and further rows are dropped.
 */
class TableWriter
{
public:
    /// Creates the file with its line of headings; never overwrites one.
    bool create(const QString &path, const std::vector<CsvColumn> &columns);
    bool isOpen() const { return _file.isOpen(); }
    /// @p row has one value for each column.
    void append(std::initializer_list<double> row);
    void flush();
    qint64 rowCount() const { return _rowCount; }
    QString error() const { return _error; }

private:
    void check(bool isWritten);

    QFile _file;
    std::vector<CsvColumn> _columns;
    QByteArray _line; // kept for its memory
    qint64 _rowCount = 0;
    QString _error;
};

} // namespace lab
