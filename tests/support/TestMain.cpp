// SPDX-License-Identifier: MIT
#include "support/TestMain.h"

IsolatedHome::IsolatedHome()
{
    // Set before the first look-up: Qt reads both variables again on every call.
    qputenv("HOME", QFile::encodeName(_home.path()));
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(_home.filePath(QStringLiteral(".config"))));
    QDir().mkpath(documents());
}

QString IsolatedHome::documents() const
{
    return _home.filePath(QStringLiteral("Documents"));
}
