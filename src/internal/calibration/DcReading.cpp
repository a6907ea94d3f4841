#include "calibration/CalibrationData.h"
#include "calibration/GaleFormulas.h"
#include "hardware_models/HardwareModel.h"

#include "numerics/Constants.h"

#include <limits>

namespace {

constexpr double thermistorFullScale = 32500.0;

} // namespace

ProcessedDCData CalibrationData::ProcessDCDataPoint(const ExperimentalDcData &data) const
{
    ProcessedDCData point;
    point.timestamp = getTime(&data);
    point.temperature = getTemperature(&data);
    point.currentRange = getCurrentRange(&data);
    point.voltageRange = getVoltageRange(&data);
    point.workingElectrodeVoltage = getEWE(&data);
    point.current = getCurrent(&data);
    point.charge = getCumulativeCharge(&data);
    point.counterElectrodeVoltage = getECE(&data);
    point.counter = quint16(getCounter(&data));
    point.weGain = getWEGain(&data);
    point.iGain = getIGain(&data);
    return point;
}

double CalibrationData::getTime(const ExperimentalDcData *data) const
{
    if (isMainline())
        return double(data->main().tick) / mainlineTicksPerSecond;
    if (isGale())
        return double(data->gale().tick) / galeTicksPerSecond;
    return 0.0;
}

double CalibrationData::getTime(const Gale_AC_Header_t *header) const
{
    return isGale() ? double(header->tick) / galeTicksPerSecond : 0.0;
}

double CalibrationData::getEWE(const ExperimentalDcData *data) const
{
    if (isMainline()) {
        const MainDcRecord_t &record = data->main();
        return dcFormulas.getEWE(record.rawVoltage, record.weGain, record.voltageRef);
    }
    if (isGale()) {
        const GaleDcRecord_t record = data->gale();
        return GaleFormulas::voltage(galeRecord, record.rawVoltage, record.voltageRange, record.voltageRef);
    }
    return 0.0;
}

double CalibrationData::getECE(const ExperimentalDcData *data) const
{
    if (isMainline())
        return dcFormulas.getECE(data->main().secondRaw, data->main().firstRaw);
    return isGale() ? notANumber : 0.0;
}

double CalibrationData::getCurrent(const ExperimentalDcData *data) const
{
    if (isMainline()) {
        const MainDcRecord_t &record = data->main();
        return dcFormulas.getCurrent(record.rawCurrent, record.currentRange, record.iGain, record.currentRef,
                                     record.secondRaw);
    }
    if (isGale()) {
        const GaleDcRecord_t record = data->gale();
        return GaleFormulas::current(galeRecord, record.rawCurrent, record.currentRange, record.currentRef);
    }
    return 0.0;
}

double CalibrationData::getCumulativeCharge(const ExperimentalDcData *data) const
{
    if (isMainline())
        return data->main().charge;
    if (isGale()) {
        const GaleDcRecord_t record = data->gale();
        // Deliberate: the configured count decides here, not the record's eight ranges as for the current.
        const int range = index(record.currentRange) < galeCfg.numCurrentRanges ? index(record.currentRange) : 0;
        return chargeTick * double(GaleFormulas::chargeGain(galeRecord, range) * float(record.charge));
    }
    return 0.0;
}

double CalibrationData::getTemperature(const ExperimentalDcData *data) const
{
    if (isMainline())
        return hardwareModel->supportsTemperature() ? temperatureParser.getTemp(data->main().temperature) : notANumber;
    if (isGale())
        return thermistor.getTemp(float(data->gale().temperature / thermistorFullScale));
    return 0.0;
}

double CalibrationData::getTemperatureToRatio(float degrees) const
{
    if (isMainline())
        return degrees;
    return isGale() ? thermistor.getRatio(degrees) * thermistorFullScale : 0.0;
}

double CalibrationData::getCounter(const ExperimentalDcData *data) const
{
    return isGale() ? double(data->gale().counter) : 0.0;
}

currentRange_t CalibrationData::getCurrentRange(const ExperimentalDcData *data) const
{
    if (isMainline())
        return data->main().currentRange;
    return isGale() ? data->gale().currentRange : currentRange_t::OFF;
}

voltageRange_t CalibrationData::getVoltageRange(const ExperimentalDcData *data) const
{
    if (isMainline())
        return data->main().voltageRange;
    return isGale() ? data->gale().voltageRange : voltageRange_t::Largest;
}

ACgain_t CalibrationData::getWEGain(const ExperimentalDcData *data) const
{
    return isMainline() ? data->main().weGain : ACgain_t::Unknown;
}

ACgain_t CalibrationData::getIGain(const ExperimentalDcData *data) const
{
    return isMainline() ? data->main().iGain : ACgain_t::Unknown;
}
