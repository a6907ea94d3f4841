// SPDX-License-Identifier: MIT
#include "calibration/CalibrationData.h"

#include "calibration/RecordBytes.h"
#include "calibration/Spans.h"
#include "hardware_models/HardwareModelFactory.h"

#include <type_traits>

namespace {

/// The record in which a line sends its DC samples.
template <class Line>
using DcRecordOf = typename std::decay_t<Line>::DcRecord;

/// What a line reads in a payload. Two ways, so that a whole one is read where it lies, without a copy of its own.
template <class Line>
ProcessedDCData readingOf(const Line &line, const QByteArray &payload)
{
    using Record = DcRecordOf<Line>;
    if (payload.size() >= int(sizeof(Record)))
        return line.reading(recordAt<Record>(payload.constData()));
    return line.reading(recordFromBytes<Record>(payload));
}

} // namespace

// The record

CalibrationData::CalibrationData() : hardwareModel(HardwareModelFactory::getHardwareModel(HardwareModel_t::Invalid))
{
}

void CalibrationData::setModelType(HardwareModel_t model)
{
    hardwareModel = HardwareModelFactory::getHardwareModel(model);
    std::visit([this](auto &own) { own.setModel(hardwareModel); }, line);
    setGaleCfgData(Gale_Cfg_t());
}

void CalibrationData::importCalData(const char *data, int size)
{
    const auto magic = recordFromBytes<quint32>(data, size);
    if (magic == CalMagic::vc07)
        line = GaleCalibration(recordFromBytes<cal_vc07>(data, size), galeCfg, hardwareModel);
    else if (magic == CalMagic::v4)
        line = MainCalibration(recordFromBytes<cal_v4>(data, size), hardwareModel);
    else
        line = NoCalibration();
}

void CalibrationData::setGaleCfgData(const Gale_Cfg_t &cfg)
{
    galeCfg = cfg;
    if (auto *const gale = std::get_if<GaleCalibration>(&line))
        gale->setBoard(cfg);
}

qint32 CalibrationData::getCalVersion() const
{
    return asked([](const auto &own) { return own.version; });
}

void CalibrationData::UpdateCurrentOffset(int range, float value)
{
    if (auto *const gale = std::get_if<GaleCalibration>(&line))
        gale->setCurrentOffset(range, value);
}

void CalibrationData::UpdateVoltageOffset(int range, float value)
{
    if (auto *const gale = std::get_if<GaleCalibration>(&line))
        gale->setVoltageOffset(range, value);
}

const DeviceDCcalFormulas &CalibrationData::mainFormulas() const
{
    static const DeviceDCcalFormulas empty;
    const auto *const main = std::get_if<MainCalibration>(&line);
    return main ? main->formulas() : empty;
}

const cal_vc07 &CalibrationData::galeRecord() const
{
    static const cal_vc07 empty = {};
    const auto *const gale = std::get_if<GaleCalibration>(&line);
    return gale ? gale->record() : empty;
}

// DC samples

ProcessedDCData CalibrationData::ProcessDCDataPoint(const QByteArray &payload) const
{
    return asked([&payload](const auto &own) { return readingOf(own, payload); });
}

ProcessedDCData CalibrationData::ProcessDCDataPoint(const ExperimentalDcData &data) const
{
    return asked([&data](const auto &own) { return own.reading(data.as<DcRecordOf<decltype(own)>>()); });
}

double CalibrationData::getTime(const ExperimentalDcData *data) const
{
    return ProcessDCDataPoint(*data).timestamp;
}

double CalibrationData::getEWE(const ExperimentalDcData *data) const
{
    return ProcessDCDataPoint(*data).workingElectrodeVoltage;
}

double CalibrationData::getECE(const ExperimentalDcData *data) const
{
    return ProcessDCDataPoint(*data).counterElectrodeVoltage;
}

double CalibrationData::getCurrent(const ExperimentalDcData *data) const
{
    return ProcessDCDataPoint(*data).current;
}

double CalibrationData::getCumulativeCharge(const ExperimentalDcData *data) const
{
    return ProcessDCDataPoint(*data).charge;
}

double CalibrationData::getTemperature(const ExperimentalDcData *data) const
{
    return ProcessDCDataPoint(*data).temperature;
}

double CalibrationData::getCounter(const ExperimentalDcData *data) const
{
    return ProcessDCDataPoint(*data).counter;
}

currentRange_t CalibrationData::getCurrentRange(const ExperimentalDcData *data) const
{
    return ProcessDCDataPoint(*data).currentRange;
}

voltageRange_t CalibrationData::getVoltageRange(const ExperimentalDcData *data) const
{
    return ProcessDCDataPoint(*data).voltageRange;
}

ACgain_t CalibrationData::getWEGain(const ExperimentalDcData *data) const
{
    return ProcessDCDataPoint(*data).weGain;
}

ACgain_t CalibrationData::getIGain(const ExperimentalDcData *data) const
{
    return ProcessDCDataPoint(*data).iGain;
}

// Setpoints

int CalibrationData::GetBINVoltageForDAC(double volts, voltageRange_t range) const
{
    const voltageRange_t chosen = range == voltageRange_t::Auto ? getMinVoltageRange(float(volts)) : range;
    return asked([volts, chosen](const auto &own) { return own.voltageCode(volts, chosen); });
}

int CalibrationData::GetBINCurrentForDAC(currentRange_t range, double amps) const
{
    const currentRange_t chosen = range == currentRange_t::Auto ? getMinCurrentRange_galv(float(amps)) : range;
    return asked([amps, chosen](const auto &own) { return own.currentCode(amps, chosen); });
}

double CalibrationData::GetVCtrlFromDAC_BINcode(int code, voltageRange_t range) const
{
    return asked([code, range](const auto &own) { return own.voltageOfCode(code, range); });
}

double CalibrationData::GetICtrlFromDAC_BINcode(int code, currentRange_t range) const
{
    return asked([code, range](const auto &own) { return own.currentOfCode(code, range); });
}

double CalibrationData::getTemperatureToRatio(float degrees) const
{
    return asked([degrees](const auto &own) { return own.temperatureLimit(degrees); });
}

// Ranges

currentRange_t CalibrationData::getMinCurrentRange_dc(float amps) const
{
    return asked([amps](const auto &own) { return own.smallestCurrentRange(amps); });
}

currentRange_t CalibrationData::getMinCurrentRange_galv(float amps) const
{
    return getMinCurrentRange_dc(amps);
}

currentRange_t CalibrationData::getMinCurrentRange_GalvEIS(float dc, float ac) const
{
    return asked([dc, ac](const auto &own) { return own.smallestCurrentRangeOfSine(dc, ac); });
}

voltageRange_t CalibrationData::getMinVoltageRange(float volts) const
{
    return asked([volts](const auto &own) { return own.smallestVoltageRange(volts); });
}

std::vector<Span> CalibrationData::getCurrentMinMaxList() const
{
    std::vector<Span> spans;
    for (int range = 0; range < hardwareModel->getTotalNumCurrentRanges(); ++range) {
        const Span span = asked([range](const auto &own) { return own.currentSpan(currentRange_t(range)); });
        if (span.second != 0.0)
            spans.push_back(span);
    }
    return spans;
}

Span CalibrationData::getCurrentMinMax_gale(currentRange_t range) const
{
    const auto *const gale = std::get_if<GaleCalibration>(&line);
    return gale ? gale->currentSpan(range) : Span(0.0, 0.0);
}

Span CalibrationData::getCurrentMinMax_mainline(currentRange_t range) const
{
    const auto *const main = std::get_if<MainCalibration>(&line);
    return main ? main->currentSpan(range) : Span(0.0, 0.0);
}

std::vector<Span> CalibrationData::getVoltageMinMaxList() const
{
    std::vector<Span> spans;
    for (int i = 0; i < hardwareModel->getNumVoltageRanges(); ++i) {
        const auto range = voltageRange_t(i);
        spans.push_back(ascending(GetVCtrlFromDAC_BINcode(hardwareModel->getUpperBinaryVSetpointLimit(), range),
                                  GetVCtrlFromDAC_BINcode(hardwareModel->getLowerBinaryVSetpointLimit(), range)));
    }
    return spans;
}
