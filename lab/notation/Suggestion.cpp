// SPDX-License-Identifier: MIT
#include "lab/notation/Suggestion.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <vector>

namespace lab {

int editDistance(const QString &from, const QString &to)
{
    const int width = to.size() + 1;
    std::vector<int> before(width), above(width), row(width);
    for (int column = 0; column < width; ++column)
        above[column] = column;
    for (int i = 1; i <= from.size(); ++i) {
        row[0] = i;
        for (int j = 1; j < width; ++j) {
            const bool isSame = from[i - 1] == to[j - 1];
            row[j] = std::min({above[j] + 1, row[j - 1] + 1, above[j - 1] + (isSame ? 0 : 1)});
            if (i > 1 && j > 1 && from[i - 1] == to[j - 2] && from[i - 2] == to[j - 1])
                row[j] = std::min(row[j], before[j - 2] + 1);
        }
        before.swap(above);
        above.swap(row);
    }
    return above.back();
}

QString nearestWord(const QString &word, const QStringList &candidates)
{
    const int tolerance = std::max(1, word.size() / 3);
    int smallest = std::numeric_limits<int>::max();
    QString nearest;
    for (const QString &candidate : candidates) {
        if (std::abs(word.size() - candidate.size()) > tolerance)
            continue; // so many edits at least; a name in a file may be thousands of letters long
        const int distance = editDistance(word.toLower(), candidate.toLower());
        if (distance <= tolerance && distance < smallest) {
            smallest = distance;
            nearest = candidate;
        }
    }
    return nearest;
}

QString didYouMean(const QString &word, const QStringList &candidates)
{
    const QString nearest = nearestWord(word, candidates);
    return nearest.isEmpty() ? QString() : QStringLiteral("; did you mean \"%1\"?").arg(nearest);
}

} // namespace lab
