#include "calibration/CsvFile.h"

#include <QFile>

namespace {

constexpr int longestLine = 1000;

QByteArray withoutLineEnd(QByteArray line)
{
    while (line.endsWith('\n') || line.endsWith('\r'))
        line.chop(1);
    return line;
}

} // namespace

QList<CsvRow> readCsvRows(QFile &file)
{
    QList<CsvRow> rows;
    while (!file.atEnd()) {
        CsvRow fields = withoutLineEnd(file.readLine(longestLine)).split(',');
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
