// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <vector>

/**
 * The complaints of a validator, in the order in which it found them.
 *
 * A text may hold the placeholder "%1", which takes the name of the instrument's model when the list is shown.
 * A plain value; use it on any thread.
 */
class ErrorStringList
{
public:
    void addError(const QString &error);
    void appendErrorList(const ErrorStringList &other);

    /// The texts as they were added, placeholders and all.
    std::vector<QString> getErrorList() const;
    /// All texts with @p name in place of "%1", one a line, without a line feed at the end; empty without complaints.
    QString getErrorListSingleString(const QString &name) const;

private:
    std::vector<QString> _errors;
};
