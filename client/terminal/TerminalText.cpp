// SPDX-License-Identifier: MIT
#include "client/terminal/TerminalText.h"

#include <QVector>

#include <cwchar>

namespace client {

namespace {

int columnsOf(uint character)
{
    const int columns = wcwidth(static_cast<wchar_t>(character));
    return columns < 0 ? 1 : columns; // what the locale does not have is written as a question mark
}

} // namespace

int columnsOf(const QString &text)
{
    int columns = 0;
    for (const uint character : text.toUcs4())
        columns += columnsOf(character);
    return columns;
}

QString cutToColumns(const QString &text, int columns)
{
    const QVector<uint> characters = text.toUcs4();
    int count = 0;
    for (int taken = 0; count < characters.size(); ++count) {
        taken += columnsOf(characters[count]);
        if (taken > columns)
            break;
    }
    return QString::fromUcs4(characters.constData(), count);
}

int rowsOf(const QStringList &texts, int columns)
{
    int rows = 0;
    for (const QString &text : texts)
        rows += qMax(1, (columnsOf(text) + columns - 1) / columns);
    return rows;
}

} // namespace client
