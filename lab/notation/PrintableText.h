// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace lab {

/// Whether a terminal shows a character, in place of acting on it: no control, no change of direction, no line break.
bool isHarmless(uint character);

/// A text of an instrument as it may be shown: what would move the cursor, break the line, change the colour or turn the
/// direction of writing becomes a question mark, a line feed a blank.
QString printable(const QString &text);

} // namespace lab
