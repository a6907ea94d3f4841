// SPDX-License-Identifier: MIT
#pragma once

#include <QFont>
#include <QString>

namespace plots {

/// The font of all pictures, with others behind it for the scripts that it lacks.
QFont pictureFont(int points, int weight = QFont::Normal);

/// The letters of a text that no installed font has, each once.
QString lettersWithoutGlyph(const QString &text);

} // namespace plots
