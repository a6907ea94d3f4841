#include "TerminalText.h"

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

bool isHarmless(uint character)
{
    switch (QChar::category(character)) {
    case QChar::Other_Control: // those above U+007F and U+007F itself, too
    case QChar::Other_Format:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
        return false;
    default:
        return true;
    }
}

QString printable(const QString &text)
{
    constexpr uint lineSeparator = 0x2028;
    constexpr uint paragraphSeparator = 0x2029;
    QVector<uint> shown = text.toUcs4();
    for (uint &character : shown) {
        const bool breaksLine = character == '\n' || character == lineSeparator || character == paragraphSeparator;
        if (breaksLine)
            character = ' ';
        else if (!isHarmless(character))
            character = '?';
    }
    return QString::fromUcs4(shown.constData(), shown.size());
}

} // namespace client
