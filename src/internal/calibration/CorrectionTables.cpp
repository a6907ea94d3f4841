// SPDX-License-Identifier: MIT
#include "calibration/CorrectionTables.h"

#include "calibration/CsvFile.h"
#include "numerics/Constants.h"

#include <QFile>
#include <QtDebug>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

constexpr int converterCodes = 4096;
constexpr double referenceCode = 2048.0;
constexpr double sourceResistance = 1000.0; // ohms
constexpr double picofarad = 1e-12;
constexpr int cableRanges = 11; // see compatibility.md, eleven cable tables

template <typename Sample>
void replaceByEntries(const std::vector<float> &table, std::vector<Sample> &samples)
{
    for (Sample &sample : samples)
        if (sample > Sample(0) && sample < Sample(table.size()))
            sample = table[std::size_t(sample)];
}

} // namespace

void PIC_ADC_lut::import(const QString &filename)
{
    table.clear();
    if (filename.isEmpty())
        qWarning("PIC_ADC_lut::import filename is empty or null.");
    QFile file(filename);
    if (!file.exists()) {
        clearTable();
        return;
    }
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return;
    clearTable();
    const QList<CsvRow> lines = readCsvRows(file);
    const int corrected = std::min(lines.size(), converterCodes);
    for (int code = 0; code < corrected; ++code)
        if (lines.at(code).size() == 1)
            table[std::size_t(code)] = lines.at(code).first().toFloat();
}

void PIC_ADC_lut::clearTable()
{
    table.resize(converterCodes);
    for (int code = 0; code < converterCodes; ++code)
        table[std::size_t(code)] = float(code);
}

void PIC_ADC_lut::correctData(std::vector<float> &samples) const
{
    replaceByEntries(table, samples);
}

void PIC_ADC_lut::correctData(std::vector<double> &samples) const
{
    replaceByEntries(table, samples);
}

void PICInternalADCCapacitance::import(const QString &filename)
{
    coefficients.clear();
    if (filename.isEmpty())
        qWarning("PICInternalADCCapacitance::import filename is empty");
    QFile file(filename);
    if (file.exists()) {
        if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
            return;
        const QList<QByteArray> lines = readLines(file);
        for (const QByteArray &line : lines) {
            bool isNumber = false;
            const double coefficient = line.toDouble(&isNumber);
            if (isNumber)
                coefficients.push_back(coefficient);
        }
    }
    isZero = std::all_of(coefficients.begin(), coefficients.end(), [](double value) { return value == 0.0; });
    referenceCorner = sourceResistance * (2.0 * getCapacitance(referenceCode) * pi);
}

double PICInternalADCCapacitance::getCapacitance(double code) const
{
    double sum = 0.0;
    double power = 1.0;
    for (auto coefficient = coefficients.rbegin(); coefficient != coefficients.rend(); ++coefficient) {
        sum += *coefficient * power;
        power *= code;
    }
    return picofarad * sum;
}

std::complex<double> PICInternalADCCapacitance::get_Z_adj(double frequency, double code) const
{
    if (isZero)
        return 1.0;
    const double a = getCapacitance(code) * (2.0 * pi * sourceResistance) * frequency;
    const double b = referenceCorner * frequency;
    const double angle = 180.0 * (std::atan(a) - std::atan(b)) / pi;
    // See compatibility.md, degrees for radians.
    return std::polar(std::sqrt(1.0 + b * b) / std::sqrt(1.0 + a * a), angle);
}

CableCapacitanceLUT::CableCapacitanceLUT(const QString &directory)
{
    for (int range = 0; range < cableRanges; ++range) {
        const QString filename = directory + QStringLiteral("/CableParallelImpedance_range%1.csv").arg(range);
        tables.insert(currentRange_t(range),
                      frequencySweep(filename, frequencySweep::interpolate_reciprocal, infinity, 0.0));
    }
}

std::complex<double> CableCapacitanceLUT::lookupCableImpedance(double frequency, currentRange_t range,
                                                               bool *found) const
{
    const frequencySweep sweep = tables.value(range);
    *found = !sweep.isEmpty();
    return *found ? sweep.lookup(frequency) : std::complex<double>(infinity, 0.0);
}

void CableCapacitanceLUT::clearSweepTableEntries()
{
    for (frequencySweep &sweep : tables)
        sweep.clearRawData();
}
