// SPDX-License-Identifier: MIT
#pragma once

#include <QFile>
#include <QTemporaryDir>

/// A temporary folder of calibration tables.
class TableFolder
{
public:
    /// Writes a file and returns its path.
    QString write(const QString &name, const QByteArray &contents) const
    {
        QFile file(path() + QLatin1Char('/') + name);
        if (!file.open(QIODevice::WriteOnly) || file.write(contents) != contents.size())
            qFatal("cannot write %s", qPrintable(file.fileName()));
        return file.fileName();
    }

    QString path() const { return _folder.path(); }

private:
    QTemporaryDir _folder;
};
