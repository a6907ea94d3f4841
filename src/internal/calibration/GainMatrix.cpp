// SPDX-License-Identifier: MIT
#include "calibration/GainMatrix.h"

namespace {

constexpr int gains = 10;
const char *const gainTexts[gains] = {"1", "2", "5", "10", "20", "50", "100", "200", "500", "1000"};

/// The settings of the three amplifier blocks, in the order of a stage list; voltage files, then those of the current.
const char *const stageFiles[][2] = {
    {"/WEgainBlock1_gain1.csv", "/IgainBlock1_gain1.csv"},
    {"/WEgainBlock1_gain2.csv", "/IgainBlock1_gain2.csv"},
    {"/WEgainBlock1_gain5.csv", "/IgainBlock1_gain5.csv"},
    {"/WEgainBlock1_gain10.csv", "/IgainBlock1_gain10.csv"},
    {"/WEgainBlock2_gain1.csv", "/IgainBlock2_gain1.csv"},
    {"/WEgainBlock2_gain10_alt1.csv", "/IgainBlock2_gain10_alt1.csv"},
    {"/WEgainBlock3_gain1.csv", "/IgainBlock3_gain1.csv"},
    {"/WEgainBlock3_gain10_alt2.csv", "/IgainBlock3_gain10_alt2.csv"},
};

/// Which entries of a stage list make up a gain setting.
constexpr int stagesOfGain[][3] = {
    {0, 4, 6}, {1, 4, 6}, {2, 4, 6}, {3, 4, 6}, // 1, 2, 5, 10
    {1, 5, 6}, {2, 5, 6}, {3, 5, 6},            // 20, 50, 100
    {1, 5, 7}, {2, 5, 7}, {3, 5, 7},            // 200, 500, 1000
    {0, 5, 6}, {0, 4, 7},                       // second block alone, third block alone
};
constexpr int stagedGains = int(sizeof stagesOfGain / sizeof stagesOfGain[0]);

frequencySweep stageTable(const QString &filename)
{
    return frequencySweep(filename, frequencySweep::interpolate_logFrequency, 1.0, 0.0);
}

QList<QList<frequencySweep>> readMatrix(const QString &directory)
{
    QList<QList<frequencySweep>> matrix;
    for (int we = 0; we < gains; ++we) {
        QList<frequencySweep> row;
        for (int i = 0; i < gains; ++i)
            row.append(
                stageTable(directory + QLatin1Char('/') + GainMatrix::getCSVFilename(ACgain_t(we), ACgain_t(i))));
        matrix.append(row);
    }
    return matrix;
}

QList<QList<frequencySweep>> readStages(const QString &directory)
{
    QList<frequencySweep> voltage;
    QList<frequencySweep> current;
    for (const auto &files : stageFiles) {
        voltage.append(stageTable(directory + QLatin1String(files[0])));
        current.append(stageTable(directory + QLatin1String(files[1])));
    }
    return {voltage, current};
}

} // namespace

GainMatrix::GainMatrix(const QString &directory) : tables(readMatrix(directory))
{
    individualStages = tables[index(ACgain_t::Gain10)][index(ACgain_t::Gain1)].isEmpty();
    if (individualStages)
        tables = readStages(directory);
}

std::complex<double> GainMatrix::lookup(double frequency, ACgain_t weGain, ACgain_t iGain) const
{
    if (!individualStages)
        return lookupMatrix(frequency, weGain, iGain);
    // See compatibility.md, one list for both gains.
    return lookupStages(frequency, weGain) / lookupStages(frequency, iGain);
}

std::complex<double> GainMatrix::lookupMatrix(double frequency, ACgain_t weGain, ACgain_t iGain) const
{
    const int we = index(weGain);
    const int i = index(iGain);
    if (we >= tables.size() || i >= tables.at(we).size())
        return 1.0;
    if (!tables.at(we).at(i).isEmpty())
        return tables.at(we).at(i).lookup(frequency);
    return tables.at(we).at(0).lookup(frequency) * tables.at(0).at(i).lookup(frequency);
}

std::complex<double> GainMatrix::lookupStages(double frequency, ACgain_t gain) const
{
    std::complex<double> product = 1.0;
    const QList<int> stages = getIndividualStageIndices(gain);
    for (const int stage : stages)
        product *= tables.at(0).at(stage).lookup(frequency);
    return product;
}

void GainMatrix::clearSweepTableEntries()
{
    for (QList<frequencySweep> &list : tables)
        for (frequencySweep &sweep : list)
            sweep.clearRawData();
}

QString GainMatrix::convertGainSettingToString(ACgain_t gain)
{
    return index(gain) < gains ? QString::fromLatin1(gainTexts[index(gain)]) : QString();
}

QString GainMatrix::getCSVFilename(ACgain_t weGain, ACgain_t iGain)
{
    return QStringLiteral("WEgain%1_Igain%2.csv")
        .arg(convertGainSettingToString(weGain), convertGainSettingToString(iGain));
}

QList<int> GainMatrix::getIndividualStageIndices(ACgain_t gain)
{
    if (index(gain) >= stagedGains)
        return {};
    const auto &stages = stagesOfGain[index(gain)];
    return {stages[0], stages[1], stages[2]};
}
