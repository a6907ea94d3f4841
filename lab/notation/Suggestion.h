// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringList>

namespace lab {

/// How many letters have to be inserted, dropped, changed or swapped to get from one word to the other.
int editDistance(const QString &from, const QString &to);

/**
 * The candidate that was probably meant by a mistyped word, whatever its case.
 *
 * @return empty when none is near: one edit for each three letters of the word, at least one
 */
QString nearestWord(const QString &word, const QStringList &candidates);

/// "; did you mean \"voltage\"?" for the end of a complaint, or nothing.
QString didYouMean(const QString &word, const QStringList &candidates);

} // namespace lab
