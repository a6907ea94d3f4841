// SPDX-License-Identifier: MIT
#include "lab/records/TableWriter.h"

#include <charconv>
#include <cmath>

namespace lab {

namespace {

constexpr double ticksPerSecond = 1e8;
constexpr double microsecondsPerSecond = 1e6;
constexpr int digitsOfTotal = 12;
constexpr int digitsOfEstimate = 9;
constexpr int mostBytesOfRow = 512; ///< of most rows: longer ones are written, too

double rounded(double value, double partsOfUnit)
{
    return std::nearbyint(value * partsOfUnit) / partsOfUnit;
}

std::to_chars_result writeNumber(char *begin, char *end, double value, Precision precision)
{
    switch (precision) {
    case Precision::Reading:
        return std::to_chars(begin, end, static_cast<float>(value));
    case Precision::Tick:
        return std::to_chars(begin, end, rounded(value, ticksPerSecond));
    case Precision::Microsecond:
        return std::to_chars(begin, end, rounded(value, microsecondsPerSecond), std::chars_format::fixed);
    case Precision::Total:
        return std::to_chars(begin, end, value, std::chars_format::general, digitsOfTotal);
    case Precision::Estimate:
        return std::to_chars(begin, end, value, std::chars_format::general, digitsOfEstimate);
    case Precision::Count:
        break;
    }
    return std::to_chars(begin, end, std::llround(value));
}

void appendNumber(QByteArray &line, double value, Precision precision)
{
    if (std::isnan(value)) {
        line += "NaN";
        return;
    }
    char digits[40];
    const auto result = writeNumber(digits, digits + sizeof digits, value, precision);
    line.append(digits, static_cast<int>(result.ptr - digits));
}

} // namespace

qint64 csvTick(double seconds)
{
    return std::llround(seconds * ticksPerSecond);
}

double csvSeconds(qint64 tick)
{
    return static_cast<double>(tick) / ticksPerSecond;
}

QByteArray csvNumber(double value, Precision precision)
{
    QByteArray text;
    appendNumber(text, value, precision);
    return text;
}

bool TableWriter::create(const QString &path, const std::vector<CsvColumn> &columns)
{
    _columns = columns;
    _file.setFileName(path);
    if (!_file.open(QIODevice::WriteOnly | QIODevice::NewOnly)) {
        _error = QStringLiteral("%1: %2").arg(path, _file.errorString());
        return false;
    }
    for (const CsvColumn &column : columns)
        _line += (_line.isEmpty() ? QByteArray() : QByteArray(",")) + column.heading;
    check(_file.write(_line + '\n') > 0);
    _line.reserve(mostBytesOfRow); // reserved memory is kept when a line is begun anew
    flush();
    return _error.isEmpty();
}

void TableWriter::append(std::initializer_list<double> row)
{
    Q_ASSERT(row.size() == _columns.size());
    _line.resize(0);
    auto column = _columns.begin();
    for (const double value : row) {
        if (!_line.isEmpty())
            _line += ',';
        appendNumber(_line, value, (column++)->precision);
    }
    _line += '\n';
    check(_file.write(_line) == _line.size());
    ++_rowCount;
}

void TableWriter::flush()
{
    if (_file.isOpen())
        check(_file.flush());
}

void TableWriter::check(bool isWritten)
{
    if (isWritten || !_error.isEmpty())
        return;
    _file.flush(); // a write that was cut short names no reason, the next one does
    _error = QStringLiteral("%1: %2").arg(_file.fileName(), _file.errorString());
}

} // namespace lab
