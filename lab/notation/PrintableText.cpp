// SPDX-License-Identifier: MIT
#include "lab/notation/PrintableText.h"

#include <QVector>

namespace lab {

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

} // namespace lab
