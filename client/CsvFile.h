#pragma once

#include <QByteArray>
#include <QFile>
#include <QStringList>

#include <initializer_list>

namespace client {

/// A number with 17 significant digits, a decimal point in every locale; "NaN", "inf" and "-inf" for the others.
QByteArray csvNumber(double value);

/**
 * A growing table of numbers. What was appended is safe from the end of this program, however sudden, after flush().
 *
 * @failure A write that fails is remembered: error() then says why, and further rows are dropped.
 */
class CsvFile
{
public:
    /// Creates the file with its line of headings; never overwrites one.
    bool create(const QString &path, const QStringList &headings);
    bool isOpen() const { return _file.isOpen(); }
    void append(std::initializer_list<double> row);
    void flush();
    qint64 rowCount() const { return _rowCount; }
    QString error() const { return _error; }

private:
    void check(bool isWritten);

    QFile _file;
    QByteArray _line; // kept for its memory
    qint64 _rowCount = 0;
    QString _error;
};

} // namespace client
