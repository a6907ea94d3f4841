// SPDX-License-Identifier: MIT
#include "support/RunFolder.h"

#include <QFile>
#include <QJsonDocument>

namespace RunFolder {

QVector<QVector<double>> rows(const QString &path)
{
    QVector<QVector<double>> table;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return table;
    file.readLine();
    for (QByteArray line = file.readLine(); line.endsWith('\n'); line = file.readLine()) {
        QVector<double> row;
        for (const QByteArray &field : line.trimmed().split(','))
            row.append(field.toDouble());
        table.append(row);
    }
    return table;
}

int rowCount(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll().count('\n') - 1 : 0;
}

QJsonObject summary(const QString &folder)
{
    QFile file(folder + QLatin1String("/run.json"));
    return file.open(QIODevice::ReadOnly) ? QJsonDocument::fromJson(file.readAll()).object() : QJsonObject();
}

QString writeExperiment(const QString &path, const QByteArray &elements)
{
    QFile file(path);
    if (file.open(QIODevice::WriteOnly))
        file.write("{\"schemaVersion\": 1, \"name\": \"Test\", \"elements\": [\n" + elements + "\n]}\n");
    return path;
}

} // namespace RunFolder
