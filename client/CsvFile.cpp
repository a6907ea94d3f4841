#include "CsvFile.h"

#include <charconv>
#include <cmath>

namespace client {

namespace {

constexpr int significantDigits = 17;

void appendNumber(QByteArray &line, double value)
{
    if (std::isnan(value)) {
        line += "NaN";
        return;
    }
    char digits[32];
    const auto result =
        std::to_chars(digits, digits + sizeof digits, value, std::chars_format::general, significantDigits);
    line.append(digits, static_cast<int>(result.ptr - digits));
}

} // namespace

QByteArray csvNumber(double value)
{
    QByteArray text;
    appendNumber(text, value);
    return text;
}

bool CsvFile::create(const QString &path, const QStringList &headings)
{
    _file.setFileName(path);
    if (!_file.open(QIODevice::WriteOnly | QIODevice::NewOnly)) {
        _error = QStringLiteral("%1: %2").arg(path, _file.errorString());
        return false;
    }
    check(_file.write(headings.join(QLatin1Char(',')).toUtf8() + '\n') > 0);
    flush();
    return _error.isEmpty();
}

void CsvFile::append(std::initializer_list<double> row)
{
    _line.resize(0);
    for (const double value : row) {
        if (!_line.isEmpty())
            _line += ',';
        appendNumber(_line, value);
    }
    _line += '\n';
    check(_file.write(_line) == _line.size());
    ++_rowCount;
}

void CsvFile::flush()
{
    if (_file.isOpen())
        check(_file.flush());
}

void CsvFile::check(bool isWritten)
{
    if (isWritten || !_error.isEmpty())
        return;
    _file.flush(); // a write that was cut short names no reason, the next one does
    _error = QStringLiteral("%1: %2").arg(_file.fileName(), _file.errorString());
}

} // namespace client
