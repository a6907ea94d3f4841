// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringList>

namespace client {

/// Columns that a text takes on a terminal: two for each wide character, none for one that combines.
int columnsOf(const QString &text);

/// As much of the begin of a text as fits into so many columns.
QString cutToColumns(const QString &text, int columns);

/// Lines that texts take, each beginning a new one, on a terminal of so many columns that breaks long lines.
int rowsOf(const QStringList &texts, int columns);

} // namespace client
