// SPDX-License-Identifier: MIT
#include "calibration/CsvFile.h"

#include <QFile>
#include <QtDebug>

namespace {

constexpr int longestLine = 1000;

QByteArray withoutLineEnd(QByteArray line)
{
    while (line.endsWith('\n') || line.endsWith('\r'))
        line.chop(1);
    return line;
}

} // namespace

QList<QByteArray> readLines(QFile &file, qint64 longest)
{
    QList<QByteArray> lines;
    // Not until atEnd(): a file that fails to be read never gets there.
    for (QByteArray line = file.readLine(longest); !line.isEmpty(); line = file.readLine(longest))
        lines.append(line);
    if (file.atEnd())
        return lines;
    qWarning("%s cannot be read to its end and is not used: %s", qPrintable(file.fileName()),
             qPrintable(file.errorString()));
    return {};
}

QList<CsvRow> readCsvRows(QFile &file)
{
    QList<CsvRow> rows;
    const QList<QByteArray> lines = readLines(file, longestLine);
    for (const QByteArray &line : lines) {
        CsvRow fields = withoutLineEnd(line).split(',');
        if (fields.last().isEmpty())
            fields.removeLast();
        rows.append(fields);
    }
    return rows;
}

bool isPlainFileName(const QString &name)
{
    const bool isSpecial = name.isEmpty() || name == QLatin1String(".") || name == QLatin1String("..");
    return !isSpecial && !name.contains(QLatin1Char('/')) && !name.contains(QChar(QChar::Null));
}
