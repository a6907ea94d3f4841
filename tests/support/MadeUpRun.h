// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QJsonArray>
#include <QString>

#include <utility>
#include <vector>

/// The folder of a run as a test wants it, in either format of the record, one row each second unless told otherwise.
class MadeUpRun
{
public:
    /// @param elements of the experiment file, without the brackets
    MadeUpRun(const QString &path, const QByteArray &elements, int version = 2);

    /// @param entry how many times the step has been entered, quiet times too
    /// @param cycle as the table of version 2 counts; that of version 1 has the entry, and so has this one without it
    void begin(const QString &name, int step, int entry = 1, int cycle = 0);
    void wait(double seconds) { _time += seconds; }
    void add(double voltage, double current, double seconds = 1.0);
    void addImpedance(double frequency, double real, double imaginary, double bias = 0.0);
    void setTitle(const QString &title) { _title = title; }
    void setState(const QString &state) { _state = state; }
    /// Writes the files. @return the folder
    QString finish();

private:
    using Row = std::vector<std::pair<QByteArray, double>>;

    QByteArray heading(const char *version1, const char *version2) const { return _version == 1 ? version1 : version2; }
    void appendCounts(Row &row) const;
    void write(const QString &name, const std::vector<Row> &rows) const;
    QByteArray summary() const;

    QString _path;
    QByteArray _elements;
    int _version;
    QString _title = QStringLiteral("Test");
    QString _state = QStringLiteral("completed");
    std::vector<Row> _dc;
    std::vector<Row> _ac;
    QJsonArray _marks;
    double _time = 0.0;
    double _charged = 0.0;
    double _discharged = 0.0;
    int _step = 1;
    int _cycle = 1;
    int _entry = 0;
    int _executions = 0;
    bool _isQuiet = false;
};
