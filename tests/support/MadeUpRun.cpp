// SPDX-License-Identifier: MIT
#include "support/MadeUpRun.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>

MadeUpRun::MadeUpRun(const QString &path, const QByteArray &elements, int version)
    : _path(path), _elements(elements), _version(version)
{
    QDir().mkpath(path);
}

void MadeUpRun::begin(const QString &name, int step, int entry, int cycle)
{
    const bool goesOn = _executions > 0 && step == _step && (entry == _entry || _isQuiet);
    _executions += goesOn ? 0 : 1;
    _isQuiet = name == "Quiet Time";
    _step = step;
    _entry = entry;
    _cycle = _version == 1 || cycle == 0 ? entry : cycle;
    _marks.append(QJsonObject{{"stepName", name},
                              {"stepNumber", step},
                              {"cycleNumber", entry},
                              {"substepNumber", 0},
                              {"firstDcRow", int(_dc.size())},
                              {"firstAcRow", int(_ac.size())}});
}

void MadeUpRun::add(double voltage, double current, double seconds)
{
    _time += seconds;
    (current > 0.0 ? _charged : _discharged) += std::abs(current) * seconds;
    Row row{{"Test Time / s", _time}, {"Voltage / V", voltage}, {"Current / A", current}};
    if (_version == 1) {
        row.insert(row.end(), {{"Charge / C", _charged + _discharged}, {"Net Charge / C", _charged - _discharged}});
    } else {
        row.insert(row.begin() + 1, {"Unix Time / s", 1.7e9 + _time});
        row.insert(row.end(), {{"Charging Capacity / Ah", _charged / 3600.0},
                               {"Discharging Capacity / Ah", _discharged / 3600.0},
                               {"Net Capacity / Ah", (_charged - _discharged) / 3600.0}});
    }
    appendCounts(row);
    _dc.push_back(row);
}

void MadeUpRun::addImpedance(double frequency, double real, double imaginary, double bias)
{
    Row row{{"Test Time / s", _time},
            {heading("Voltage Bias / V", "Voltage / V"), bias},
            {"Frequency / Hz", frequency},
            {heading("Real Impedance / Ohm", "Real Impedance / ohm"), real},
            {heading("Imaginary Impedance / Ohm", "Imaginary Impedance / ohm"), imaginary},
            {heading("Absolute Impedance / Ohm", "Absolute Impedance / ohm"), std::hypot(real, imaginary)},
            {"Phase / deg", std::atan2(imaginary, real) * 180.0 / std::acos(-1.0)}};
    appendCounts(row);
    _ac.push_back(row);
}

QString MadeUpRun::finish()
{
    write("dc.csv", _dc);
    if (!_ac.empty())
        write("ac.csv", _ac);
    QFile file(_path + "/run.json");
    file.open(QIODevice::WriteOnly);
    file.write(summary());
    return _path;
}

/// In version 2 the count of steps rises with each execution; the number in the program stands apart.
void MadeUpRun::appendCounts(Row &row) const
{
    row.push_back({"Step Count / 1", _version == 1 ? _step : _executions});
    row.push_back({"Cycle Count / 1", _cycle});
    if (_version != 1)
        row.push_back({"Step / 1", _step});
}

void MadeUpRun::write(const QString &name, const std::vector<Row> &rows) const
{
    QFile file(_path + "/" + name);
    file.open(QIODevice::WriteOnly);
    QByteArrayList headings;
    const Row fewest{{"Test Time / s", 0.0}, {"Voltage / V", 0.0}, {"Current / A", 0.0}};
    for (const auto &[heading, value] : rows.empty() ? fewest : rows.front())
        headings.append(heading);
    file.write(headings.join(',') + '\n');
    for (const Row &row : rows) {
        QByteArrayList fields;
        for (const auto &[heading, value] : row)
            fields.append(QByteArray::number(value, 'g', 17));
        file.write(fields.join(',') + '\n');
    }
}

QByteArray MadeUpRun::summary() const
{
    const QByteArray content = "{\"schemaVersion\": 1, \"elements\": [" + _elements + "]}";
    const QJsonObject experiment{{"name", _title}, {"content", QJsonDocument::fromJson(content).object()}};
    return QJsonDocument(
               QJsonObject{
                   {"recordVersion", _version}, {"state", _state}, {"experiment", experiment}, {"elements", _marks}})
        .toJson();
}
