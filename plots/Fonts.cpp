// SPDX-License-Identifier: MIT
#include "plots/Fonts.h"

#include <QFontMetrics>
#include <QVector>

namespace plots {

QFont pictureFont(int points, int weight)
{
    QFont font(QStringLiteral("DejaVu Sans"), points, weight);
    font.setFamilies({QStringLiteral("DejaVu Sans"), QStringLiteral("WenQuanYi Micro Hei"), QStringLiteral("Unifont"),
                      QStringLiteral("Unifont Upper")});
    return font;
}

QString lettersWithoutGlyph(const QString &text)
{
    const QFontMetrics metrics(pictureFont(10));
    QString missing;
    for (const uint letter : text.toUcs4()) {
        const QString one = QString::fromUcs4(&letter, 1);
        if (QChar::isPrint(letter) && !metrics.inFontUcs4(letter) && !missing.contains(one))
            missing += one;
    }
    return missing;
}

} // namespace plots
