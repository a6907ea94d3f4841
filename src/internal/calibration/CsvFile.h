// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

class QFile;

/// A line's fields, split at the commas; a last empty field, behind a trailing comma, is left out.
using CsvRow = QList<QByteArray>;

/**
 * All lines of an open file, with their ends. One that is longer than `longest` characters, if that is not 0, is cut
 * there, and its rest counts as the next line.
 *
 * A file that cannot be read to its end gives no line at all, and a warning: half a table would correct wrongly.
 */
QList<QByteArray> readLines(QFile &file, qint64 longest = 0);

/// The same, split into fields. A line ends after 1,000 characters at the latest.
QList<CsvRow> readCsvRows(QFile &file);

/**
 * Whether a text can name a file or folder within another: not empty, not "." or "..", without "/" and NUL.
 *
 * Names come from instruments, and none of them may lead out of the folder that it belongs into.
 */
bool isPlainFileName(const QString &name);
