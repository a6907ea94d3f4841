#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

class QFile;

/// A line's fields, split at the commas; a last empty field, behind a trailing comma, is left out.
using CsvRow = QList<QByteArray>;

/// All lines of an open file. A line ends after 1,000 characters at the latest, the rest counts as the next line.
QList<CsvRow> readCsvRows(QFile &file);

/**
 * Whether a text can name a file or folder within another: not empty, not "." or "..", without "/" and NUL.
 *
 * Names come from instruments, and none of them may lead out of the folder that it belongs into.
 */
bool isPlainFileName(const QString &name);
