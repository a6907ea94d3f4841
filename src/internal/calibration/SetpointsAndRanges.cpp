#include "calibration/CalibrationData.h"
#include "calibration/GaleFormulas.h"
#include "hardware_models/HardwareModel.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

using Span = std::pair<double, double>;

Span ascending(double one, double other)
{
    return {std::min(one, other), std::max(one, other)};
}

Span intersection(const Span &one, const Span &other)
{
    return {std::max(one.first, other.first), std::min(one.second, other.second)};
}

/// The currents that a record stands for at both ends of the converter.
template <class Record>
Span readableSpan(const CalibrationData &calibration, Record record, qint32 fullScale)
{
    const auto currentAt = [&calibration, &record](qint32 raw) {
        record.rawCurrent = float(raw);
        const ExperimentalDcData data(record);
        return calibration.getCurrent(&data);
    };
    return ascending(currentAt(fullScale), currentAt(-fullScale));
}

bool isDacCode(int code)
{
    return code >= std::numeric_limits<qint16>::min() && code <= std::numeric_limits<qint16>::max();
}

} // namespace

int CalibrationData::GetBINVoltageForDAC(double volts, voltageRange_t range) const
{
    const voltageRange_t chosen = range == voltageRange_t::Auto ? getMinVoltageRange(float(volts)) : range;
    if (isMainline()) {
        const double held = qBound(hardwareModel->getVMin(false), volts, hardwareModel->getVMax(false));
        return qint16(dcFormulas.getVCtrlBIN(float(held), chosen));
    }
    return isGale() ? GaleFormulas::voltageCode(galeRecord, volts, chosen) : 0;
}

int CalibrationData::GetBINCurrentForDAC(currentRange_t range, double amps) const
{
    const currentRange_t chosen = range == currentRange_t::Auto ? getMinCurrentRange_galv(float(amps)) : range;
    if (isMainline()) {
        const double held = qBound(hardwareModel->getIMin(), amps, hardwareModel->getIMax());
        return qint16(dcFormulas.getICtrlBIN(float(held), chosen));
    }
    return isGale() ? GaleFormulas::currentCode(galeRecord, amps, chosen) : 0;
}

double CalibrationData::GetVCtrlFromDAC_BINcode(int code, voltageRange_t range) const
{
    if (isMainline())
        return isDacCode(code) ? dcFormulas.getVSetpointFromBIN(short(code), range) : 0.0;
    return isGale() ? GaleFormulas::controlVoltage(galeRecord, code, range) : 0.0;
}

double CalibrationData::GetICtrlFromDAC_BINcode(int code, currentRange_t range) const
{
    return isMainline() && isDacCode(code) ? dcFormulas.getISetpointFromBIN(short(code), range) : 0.0;
}

currentRange_t CalibrationData::getMinCurrentRange_dc(float amps) const
{
    if (isMainline())
        return dcFormulas.getMinCurrentRange_DC(amps);
    if (!isGale())
        return currentRange_t::OFF;

    const auto limit = std::abs(qint64(hardwareModel->getUpperBinaryCurrentLimit()));
    for (int range = hardwareModel->getNumDCcurrentRanges() - 1; range >= 1; --range) {
        const auto code = std::abs(qint64(GetBINCurrentForDAC(currentRange_t(range), amps)));
        if (code <= limit && GaleFormulas::hasCurrentRange(galeRecord, range))
            return currentRange_t(range);
    }
    return currentRange_t::Largest;
}

currentRange_t CalibrationData::getMinCurrentRange_galv(float amps) const
{
    return getMinCurrentRange_dc(amps);
}

currentRange_t CalibrationData::getMinCurrentRange_GalvEIS(float dc, float ac) const
{
    if (isMainline())
        return dcFormulas.getMinCurrentRange_GalvEIS(dc, ac);
    return isGale() ? getMinCurrentRange_dc(std::abs(dc) + std::abs(ac)) : currentRange_t::OFF;
}

voltageRange_t CalibrationData::getMinVoltageRange(float volts) const
{
    if (isMainline())
        return dcFormulas.getMinVoltageRange(volts);
    if (!isGale())
        return voltageRange_t::Largest;

    // Deliberate: the current's limit. The cycler's two DACs share their span of codes.
    const auto limit = std::abs(qint64(hardwareModel->getUpperBinaryCurrentLimit()));
    int range = GaleFormulas::voltageRanges - 1;
    while (range > 0 && std::abs(qint64(GetBINVoltageForDAC(volts, voltageRange_t(range)))) > limit)
        --range;
    return voltageRange_t(range);
}

std::vector<Span> CalibrationData::getCurrentMinMaxList() const
{
    std::vector<Span> spans;
    if (!isMainline() && !isGale())
        return spans;
    for (int range = 0; range < hardwareModel->getTotalNumCurrentRanges(); ++range) {
        const Span span = isMainline() ? getCurrentMinMax_mainline(currentRange_t(range))
                                       : getCurrentMinMax_gale(currentRange_t(range));
        if (span.second != 0.0)
            spans.push_back(span);
    }
    return spans;
}

Span CalibrationData::getCurrentMinMax_gale(currentRange_t range) const
{
    if (index(range) >= hardwareModel->getTotalNumCurrentRanges())
        return {0.0, 0.0};
    GaleDcRecord_t record = {};
    record.currentRange = range;
    return readableSpan(*this, record, hardwareModel->getUpperBinaryCurrentLimit());
}

Span CalibrationData::getCurrentMinMax_mainline(currentRange_t range) const
{
    if (index(range) >= hardwareModel->getTotalNumCurrentRanges())
        return {0.0, 0.0};
    MainDcRecord_t record = {};
    record.currentRange = range;
    record.iGain = hardwareModel->getDefaultCurrentGain(range);
    const Span readable = readableSpan(*this, record, hardwareModel->getUpperBinaryCurrentLimit());
    if (index(range) >= hardwareModel->getNumDCcurrentRanges())
        return readable;
    const Span settable =
        ascending(dcFormulas.getICtrlFromCode(32767.0, range), dcFormulas.getICtrlFromCode(-32768.0, range));
    return intersection(readable, settable);
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
