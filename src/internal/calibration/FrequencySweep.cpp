// SPDX-License-Identifier: MIT
#include "calibration/FrequencySweep.h"

#include "calibration/CsvFile.h"
#include "numerics/Constants.h"

#include <QFile>
#include <QtDebug>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

std::complex<double> fromPolar(double magnitude, double degrees)
{
    const double radians = pi * degrees / 180.0;
    return {magnitude * std::cos(radians), magnitude * std::sin(radians)}; // std::polar wants no negative magnitude
}

/// The straight line through two points, against the logarithm of x where that is asked for and possible.
double interp(double x, double x0, double x1, double y0, double y1, bool useLog)
{
    if (useLog && x > 0.0 && x0 > 0.0 && x1 > 0.0)
        return interp(std::log10(x), std::log10(x0), std::log10(x1), y0, y1, false);
    return (y1 - y0) * ((x - x0) / (x1 - x0)) + y0;
}

// A first-order low-pass with time constant t at frequency f. Each function answers NaN and raises the flag where the
// model has no answer. See compatibility.md, rows at the query's frequency.

double failed(bool *error)
{
    *error = true;
    return notANumber;
}

double FirstOrderFilt_getAtten(double f, double t, bool *error)
{
    if (f * t < 0.0)
        return failed(error);
    return 1.0 / std::sqrt(1.0 + (f * t) * (f * t));
}

double InverseFirstOrderFilt_fromAtten(double f, double m, bool *error)
{
    if (1.0 - m * m < 0.0 || !(f * m > 0.0))
        return failed(error);
    return std::sqrt(1.0 - m * m) / (f * m);
}

bool isLowPassLag(double degrees)
{
    return degrees > 0.0 && degrees < 89.99;
}

double FirstOrderFilt_getNegPhase(double f, double t, bool *error)
{
    const double degrees = std::atan(f * t) * 180.0 / pi;
    return isLowPassLag(degrees) ? degrees : failed(error);
}

double InverseFirstOrderFilt_fromNegPhase(double f, double degrees, bool *error)
{
    return isLowPassLag(degrees) ? std::tan(pi * degrees / 180.0) / f : failed(error);
}

} // namespace

frequencySweep::frequencySweep(const QString &filename, interpolateType_t type, double magnitude, double negPhase)
{
    if (filename.isEmpty()) {
        qWarning("frequencySweep: filename is empty or null");
        return;
    }
    interpolation = type;
    defaultMag = magnitude;
    defaultNegPhase = negPhase;

    QFile file(filename);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return;
    const QList<CsvRow> lines = readCsvRows(file).mid(1); // the first is a heading, whatever it says
    for (const CsvRow &line : lines) {
        Row row;
        for (const QByteArray &field : line)
            row.append(field.toDouble());
        table.append(row);
    }
    sortTableAscending();
}

void frequencySweep::sortTableAscending()
{
    if (!table.isEmpty() && table.first().value(Frequency) > table.last().value(Frequency))
        std::reverse(table.begin(), table.end());
}

std::complex<double> frequencySweep::lookup(double frequency) const
{
    double magnitude = defaultMag;
    double degrees = defaultNegPhase;
    const bool isMagnitudeFixed = boundsCheck(frequency, Magnitude, defaultMag, &magnitude);
    const bool isPhaseFixed = boundsCheck(frequency, Phase, defaultNegPhase, &degrees);
    if (isMagnitudeFixed || isPhaseFixed)
        return fromPolar(magnitude, degrees);

    int row = 1;
    while (!(table.at(row).value(Frequency) > frequency)) // the last row lies above it
        ++row;
    const double f0 = table.at(row - 1).value(Frequency);
    const double f1 = table.at(row).value(Frequency);
    return fromPolar(lookupMag(row, f0, f1, frequency, interpolation),
                     lookupNegPhase(row, f0, f1, frequency, interpolation));
}

bool frequencySweep::boundsCheck(double frequency, Column column, double fallback, double *fixed) const
{
    if (table.isEmpty() || table.first().size() <= column)
        *fixed = fallback;
    else if (!(frequency > table.first().value(Frequency))) // so written, NaN is fixed as well
        *fixed = table.first().value(column);
    else if (!(frequency < table.last().value(Frequency)))
        *fixed = table.last().value(column);
    else
        return false;
    return true;
}

double frequencySweep::lookupMag(int row, double f0, double f1, double frequency, interpolateType_t type) const
{
    const double m0 = table.at(row - 1).value(Magnitude);
    const double m1 = table.at(row).value(Magnitude);
    if (type == interpolate_firstOrder) {
        bool error = false;
        const double t0 = InverseFirstOrderFilt_fromAtten(frequency, m0, &error);
        const double t1 = InverseFirstOrderFilt_fromAtten(frequency, m1, &error);
        const double t = interp(frequency, f0, f1, t0, t1, true);
        const double magnitude = FirstOrderFilt_getAtten(frequency, t, &error);
        if (!error)
            return magnitude;
    }
    if (type == interpolate_reciprocal && m0 > 0.0 && m1 > 0.0)
        return 1.0 / interp(frequency, f0, f1, 1.0 / m0, 1.0 / m1, false);
    return interp(frequency, f0, f1, m0, m1, true);
}

double frequencySweep::lookupNegPhase(int row, double f0, double f1, double frequency, interpolateType_t type) const
{
    const double p0 = table.at(row - 1).value(Phase);
    const double p1 = table.at(row).value(Phase);
    if (type == interpolate_firstOrder) {
        bool error = false;
        const double t0 = InverseFirstOrderFilt_fromNegPhase(frequency, -p0, &error);
        const double t1 = InverseFirstOrderFilt_fromNegPhase(frequency, -p1, &error);
        const double t = interp(frequency, f0, f1, t0, t1, true);
        const double lag = FirstOrderFilt_getNegPhase(frequency, t, &error);
        if (!error)
            return lag; // see compatibility.md, positive lag
    }
    return interp(frequency, f0, f1, p0, p1, true);
}
