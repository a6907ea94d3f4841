// SPDX-License-Identifier: MIT
#include "logging/ErrorStringList.h"

#include <QStringList>

void ErrorStringList::addError(const QString &error)
{
    _errors.push_back(error);
}

void ErrorStringList::appendErrorList(const ErrorStringList &other)
{
    const std::vector<QString> added = other._errors; // a copy: a list may be appended to itself
    _errors.insert(_errors.end(), added.begin(), added.end());
}

std::vector<QString> ErrorStringList::getErrorList() const
{
    return _errors;
}

QString ErrorStringList::getErrorListSingleString(const QString &name) const
{
    QStringList lines;
    for (QString error : _errors)
        lines.append(error.replace(QLatin1String("%1"), name));
    return lines.join(QLatin1Char('\n'));
}
