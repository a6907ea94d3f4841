// SPDX-License-Identifier: MIT
#include "calibration/CalibrationData.h"
#include "calibration/ComplexDataPoint.h"
#include "calibration/GaleFormulas.h"
#include "calibration/StageNames.h"
#include "hardware_models/HardwareModel.h"

#include "numerics/Constants.h"

#include <algorithm>
#include <limits>

namespace {

/// The settings of the two transimpedance stages in a low-side range.
struct StageSettings {
    int stage1;
    int stage2;
};

/// From range 2 on the settings count up, the second stage the faster; other ranges take the first of both.
StageSettings stageSettings(currentRange_t range)
{
    const int steps = index(range) - 2;
    if (steps < 0 || steps > 7)
        return {0, 0};
    return {steps / 2, steps % 2};
}

/// As many samples as the header says and both vectors hold.
int batchSize(const Gale_AC_Header_t &header, const std::vector<float> &in, const std::vector<float> &out)
{
    return int(std::min({std::size_t(header.samplesPerSignal), in.size(), out.size()}));
}

} // namespace

void CalibrationData::getGaleBatchDCVoltage(const Gale_AC_Header_t &header, const std::vector<float> &in,
                                            std::vector<float> &out) const
{
    GaleFormulas::voltageBatch(galeRecord(), header.voltageRange, header.voltageRef, in.data(), out.data(),
                               batchSize(header, in, out));
}

void CalibrationData::getGaleBatchDCCurrent(const Gale_AC_Header_t &header, const std::vector<float> &in,
                                            std::vector<float> &out) const
{
    GaleFormulas::currentBatch(galeRecord(), header.currentRange, header.currentRef, in.data(), out.data(),
                               batchSize(header, in, out));
}

double CalibrationData::getTime(const Gale_AC_Header_t *header) const
{
    return std::holds_alternative<GaleCalibration>(line) ? double(header->tick) / galeFacts.ticksPerSecond : 0.0;
}

double CalibrationData::getEWE_DCbias(double raw, const P24ExperimentalAcData *header) const
{
    const auto *const main = std::get_if<MainCalibration>(&line);
    return main ? double(main->formulas().getEWE(float(raw), header->weGain, header->voltageRef)) : notANumber;
}

double CalibrationData::getCurrent_DCbias(double raw, const P24ExperimentalAcData *header) const
{
    const auto *const main = std::get_if<MainCalibration>(&line);
    if (!main)
        return notANumber;
    return main->formulas().getCurrent(float(raw), header->currentRange, header->iGain, header->currentRef, 0.0f);
}

double CalibrationData::getEWE_DCbias(double raw, const Gale_AC_Header_t *header) const
{
    const auto *const gale = std::get_if<GaleCalibration>(&line);
    if (!gale)
        return notANumber;
    return GaleFormulas::voltageBias(gale->record(), raw, header->voltageRange, header->voltageRef);
}

double CalibrationData::getCurrent_DCbias(double raw, const Gale_AC_Header_t *header) const
{
    const auto *const gale = std::get_if<GaleCalibration>(&line);
    if (!gale)
        return notANumber;
    return GaleFormulas::currentBias(gale->record(), raw, header->currentRange, header->currentRef);
}

std::complex<double> CalibrationData::getACCurrent_main(std::complex<double> z, ACgain_t gain, currentRange_t range,
                                                        double frequency, double level, ADC_src_t source) const
{
    if (mainFormulas().invalidRangeIndex(range))
        return 0.0;
    if (source == ADC_src_t::Internal12Bit)
        z /= capacitanceCurrent.get_Z_adj(frequency, level);
    z *= mainFormulas().getACCurrentFactor(range, gain);
    return dividedByCurrentPath(z, range, frequency);
}

std::complex<double> CalibrationData::dividedByCurrentPath(std::complex<double> z, currentRange_t range,
                                                           double frequency) const
{
    const auto stage = [this, frequency](const char *name, int setting) {
        return stageResponse(QLatin1String(name), setting, frequency);
    };
    const bool isLumped = !sweepTables.value(QLatin1String(StageNames::transimpedanceLumped)).value(0).isEmpty();
    if (isLumped)
        return z / stage(StageNames::transimpedanceLumped, index(range));
    if (index(range) < hardwareModel->getNumHighSideRanges())
        return z / stage(StageNames::currentInputBuffer, 0);
    const StageSettings settings = stageSettings(range);
    z /= stage(StageNames::transimpedance2, settings.stage2);
    return z / stage(StageNames::transimpedance1, settings.stage1);
}

std::complex<double> CalibrationData::stageResponse(const QString &stage, int setting, double frequency) const
{
    return sweepTables.value(stage).value(setting).lookup(frequency); // 1 where there is no table
}

std::complex<double> CalibrationData::getACVoltage_main(std::complex<double> z, ACgain_t weGain, ACgain_t iGain,
                                                        double frequency, double level, ADC_src_t source) const
{
    if (source == ADC_src_t::Internal12Bit)
        z /= capacitanceVoltage.get_Z_adj(frequency, level);
    z *= mainFormulas().getACVoltageFactor(weGain);
    z /= gainMatrix.lookup(frequency, weGain, iGain);
    return z / stageResponse(QLatin1String(StageNames::voltageInputBuffer), 0, frequency);
}

std::complex<double> CalibrationData::getACCurrent_gale(std::complex<double> z, int range, double frequency) const
{
    return GaleFormulas::acCurrent(galeRecord(), z, currentRange_t(range), frequency);
}

std::complex<double> CalibrationData::getACVoltage_gale(std::complex<double> z, int range, double frequency) const
{
    return GaleFormulas::acVoltage(galeRecord(), z, voltageRange_t(range), frequency);
}

std::complex<double> CalibrationData::removeCMCurrent(std::complex<double> current, int range, double frequency,
                                                      double voltage) const
{
    return current - voltage * GaleFormulas::commonModeAdmittance(galeRecord(), currentRange_t(range), frequency);
}

std::complex<double> CalibrationData::adjustZforCableCapacitance(double frequency, std::complex<double> z,
                                                                 currentRange_t range) const
{
    bool found = false;
    const std::complex<double> cable = cableLut.lookupCableImpedance(frequency, range, &found);
    if (!found || std::abs(z) == 0.0 || std::abs(cable) == 0.0)
        return z;
    const std::complex<double> admittance = 1.0 / z - 1.0 / cable;
    if (std::abs(admittance) == 0.0)
        return {infinity, 0.0};
    return 1.0 / admittance;
}

ComplexDataPoint_t CalibrationData::getZOffset(double, currentRange_t, ACgain_t, ACgain_t) const
{
    ComplexDataPoint_t neutral;
    neutral.absZ = 1.0;
    neutral.phaseDeg = 0.0;
    neutral.realZ = 1.0;
    return neutral;
}

double CalibrationData::getCurrentGain(ACgain_t gain) const
{
    return mainFormulas().getCurrentGain(gain);
}

void CalibrationData::correctPIC_ADC_Data__current(std::vector<float> &samples) const
{
    adcLutCurrent.correctData(samples);
}

void CalibrationData::correctPIC_ADC_Data__voltage(std::vector<float> &samples) const
{
    adcLutVoltage.correctData(samples);
}
