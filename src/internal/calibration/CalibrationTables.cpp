// SPDX-License-Identifier: MIT
#include "calibration/CalibrationData.h"
#include "calibration/CsvFile.h"
#include "calibration/StageNames.h"

#include <QDir>
#include <QtDebug>

namespace {

struct SweepRow {
    const char *stage;
    const char *file;
    frequencySweep::interpolateType_t interpolation;
};

constexpr auto logFrequency = frequencySweep::interpolate_logFrequency;
constexpr auto firstOrder = frequencySweep::interpolate_firstOrder;

/// The files of each stage's responses, in the order of the stage's settings.
constexpr SweepRow sweepRows[] = {
    {StageNames::voltageInputBuffer, "V_inputBuffer.csv", logFrequency},
    {StageNames::currentInputBuffer, "I_inputBuffer.csv", logFrequency},
    {StageNames::transimpedance1, "TIA_stage1setting1.csv", logFrequency},
    {StageNames::transimpedance1, "TIA_stage1setting2.csv", logFrequency},
    {StageNames::transimpedance1, "TIA_stage1setting3.csv", firstOrder},
    {StageNames::transimpedance1, "TIA_stage1setting4.csv", firstOrder},
    {StageNames::transimpedance2, "TIA_stage2setting1.csv", logFrequency},
    {StageNames::transimpedance2, "TIA_stage2setting2.csv", firstOrder},
    {StageNames::transimpedanceLumped, "Range0.csv", logFrequency},
    {StageNames::transimpedanceLumped, "Range1.csv", logFrequency},
    {StageNames::transimpedanceLumped, "Range2.csv", logFrequency},
    {StageNames::transimpedanceLumped, "Range3.csv", logFrequency},
    {StageNames::transimpedanceLumped, "Range4.csv", firstOrder},
    {StageNames::transimpedanceLumped, "Range5.csv", firstOrder},
    {StageNames::transimpedanceLumped, "Range6.csv", firstOrder},
    {StageNames::transimpedanceLumped, "Range7.csv", firstOrder},
    {StageNames::transimpedanceLumped, "Range8.csv", firstOrder},
    {StageNames::transimpedanceLumped, "Range9.csv", firstOrder},
};

/// A folder within another; its parent is made if it is missing.
QString folderWithin(const QString &parent, const QString &name)
{
    QDir().mkpath(parent);
    return parent + QDir::separator() + name;
}

} // namespace

bool CalibrationData::importCalData(const QString &baseDir, const QString &deviceName)
{
    if (!isPlainFileName(deviceName)) {
        forgetTables();
        return false;
    }
    tablePath = folderWithin(folderWithin(baseDir, QStringLiteral("Calibration files")), deviceName);
    refreshLUTandInputCapacitanceTables();
    loadSweepTables();
    gainMatrix = GainMatrix(tablePath);
    cableLut = CableCapacitanceLUT(tablePath);
    dataImporter = CSVdataImporter(tablePath);
    return true;
}

void CalibrationData::forgetTables()
{
    tablePath.clear();
    adcLutVoltage = PIC_ADC_lut();
    adcLutCurrent = PIC_ADC_lut();
    capacitanceVoltage = PICInternalADCCapacitance();
    capacitanceCurrent = PICInternalADCCapacitance();
    sweepTables.clear();
    gainMatrix = GainMatrix();
    cableLut = CableCapacitanceLUT();
    dataImporter = CSVdataImporter();
}

void CalibrationData::refreshLUTandInputCapacitanceTables()
{
    const auto inFolder = [this](const char *file) { return tablePath + QDir::separator() + QLatin1String(file); };
    adcLutVoltage.import(inFolder("PIC_ADC_LUT_voltage.csv"));
    adcLutCurrent.import(inFolder("PIC_ADC_LUT_current.csv"));
    capacitanceVoltage.import(inFolder("V_input_capacitance.csv"));
    capacitanceCurrent.import(inFolder("I_input_capacitance.csv"));
}

void CalibrationData::loadSweepTables()
{
    sweepTables.clear();
    for (const SweepRow &row : sweepRows) {
        const QString file = tablePath + QDir::separator() + QLatin1String(row.file);
        sweepTables[QLatin1String(row.stage)].append(frequencySweep(file, row.interpolation, 1.0, 0.0));
    }
}

void CalibrationData::clearSweepTableEntries()
{
    for (QList<frequencySweep> &stage : sweepTables)
        for (frequencySweep &sweep : stage)
            sweep.clearRawData();
    gainMatrix.clearSweepTableEntries();
    cableLut.clearSweepTableEntries();
}

void CalibrationData::clearLUTEntries()
{
    adcLutCurrent.clearTable();
    adcLutVoltage.clearTable();
}
