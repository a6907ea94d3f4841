// SPDX-License-Identifier: MIT
#pragma once

#include <QJsonObject>
#include <QString>
#include <QVector>

/// The record of a run as the program nimbrelle leaves it, for tests.
namespace RunFolder {

/// Positions of the columns of dc.csv.
enum Column {
    Time,
    UnixTime,
    Voltage,
    Current,
    Cycle,
    StepCount,
    Step,
    ChargingCapacity,
    DischargingCapacity,
    NetCapacity,
    ChargingEnergy,
    DischargingEnergy,
    Temperature,
    CounterVoltage,
};

/// All complete rows of a CSV file behind its headings; none when it cannot be read.
QVector<QVector<double>> rows(const QString &path);
/// How many complete rows stand behind the headings.
int rowCount(const QString &path);
/// The content of the folder's run.json; empty when it cannot be read.
QJsonObject summary(const QString &folder);
/// Writes an experiment file around a list of elements. @return its path
QString writeExperiment(const QString &path, const QByteArray &elements);

} // namespace RunFolder
