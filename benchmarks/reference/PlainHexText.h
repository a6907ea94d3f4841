// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QFile>
#include <QList>
#include <QRegExp>
#include <QString>

#include <numeric>

/// One line of Intel HEX text, with the form of a record written as a regular expression; see ReadHexRecord().
inline bool plainHexRecord(const QString &line, QByteArray &record)
{
    static const QRegExp form(":([0-9a-fA-F]{2}[0-9a-fA-F]{4}[0-9a-fA-F]{2}([0-9a-fA-F]{2})*[0-9a-fA-F]{2})");
    if (form.indexIn(line) < 0)
        return false;
    const QByteArray bytes = QByteArray::fromHex(line.toLatin1());
    if (bytes.size() != static_cast<qint8>(bytes.at(0)) + 5 || std::accumulate(bytes.begin(), bytes.end(), 0) % 256)
        return false;
    record = bytes;
    return true;
}

/// Every record of a file but for comment lines; none at all where a line is none.
inline QList<QByteArray> plainHexFile(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return {};
    QList<QByteArray> lines = file.readAll().split('\n');
    if (lines.last().isEmpty())
        lines.removeLast();
    QList<QByteArray> records;
    for (const QByteArray &line : lines) {
        if (line.startsWith(';'))
            continue;
        QByteArray record;
        if (!plainHexRecord(QString::fromLatin1(line.constData(), line.size()), record))
            return {};
        records.append(record);
    }
    return records;
}
