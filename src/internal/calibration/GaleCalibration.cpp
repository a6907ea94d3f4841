// SPDX-License-Identifier: MIT
#include "calibration/GaleCalibration.h"

#include "calibration/GaleFormulas.h"
#include "calibration/Spans.h"
#include "hardware_models/HardwareModel.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>

namespace {

constexpr double usualChargeTick = 1.5625e-5;
constexpr double slowChargeTick = 2e-5;
constexpr quint32 slowChargeBoards[] = {0x12010200, 0x12010300, 0x12010400};

double chargeTickOf(quint32 board)
{
    const auto end = std::end(slowChargeBoards);
    return std::find(std::begin(slowChargeBoards), end, board) != end ? slowChargeTick : usualChargeTick;
}

} // namespace

GaleCalibration::GaleCalibration(const cal_vc07 &record, const Gale_Cfg_t &board,
                                 const std::shared_ptr<const HardwareModel> &model)
    : _model(model), _record(record)
{
    setBoard(board);
}

void GaleCalibration::setBoard(const Gale_Cfg_t &board)
{
    _configuredCurrentRanges = board.numCurrentRanges;
    _secondsPerCount = chargeTickOf(board.boardId);
}

void GaleCalibration::setCurrentOffset(int range, float amperes)
{
    if (range >= 0 && range < GaleFormulas::currentRanges)
        _record.iOffset[range] = amperes;
}

void GaleCalibration::setVoltageOffset(int range, float volts)
{
    if (range >= 0 && range < GaleFormulas::voltageRanges)
        _record.vOffset[range] = volts;
}

int GaleCalibration::voltageCode(double volts, voltageRange_t range) const
{
    return GaleFormulas::voltageCode(_record, volts, range);
}

int GaleCalibration::currentCode(double amperes, currentRange_t range) const
{
    return GaleFormulas::currentCode(_record, amperes, range);
}

double GaleCalibration::voltageOfCode(int code, voltageRange_t range) const
{
    return GaleFormulas::controlVoltage(_record, code, range);
}

double GaleCalibration::temperatureLimit(float degrees) const
{
    return _thermistor.getRatio(degrees) * thermistorFullScale;
}

qint64 GaleCalibration::largestCode() const
{
    return std::abs(qint64(_model->getUpperBinaryCurrentLimit()));
}

currentRange_t GaleCalibration::smallestCurrentRange(float amperes) const
{
    for (int range = _model->getNumDCcurrentRanges() - 1; range >= 1; --range) {
        const auto code = std::abs(qint64(currentCode(double(amperes), currentRange_t(range))));
        if (code <= largestCode() && GaleFormulas::hasCurrentRange(_record, range))
            return currentRange_t(range);
    }
    return currentRange_t::Largest;
}

currentRange_t GaleCalibration::smallestCurrentRangeOfSine(float dc, float ac) const
{
    return smallestCurrentRange(std::abs(dc) + std::abs(ac));
}

voltageRange_t GaleCalibration::smallestVoltageRange(float volts) const
{
    // See compatibility.md, limit of the current's codes.
    int range = GaleFormulas::voltageRanges - 1;
    while (range > 0 && std::abs(qint64(voltageCode(double(volts), voltageRange_t(range)))) > largestCode())
        --range;
    return voltageRange_t(range);
}

std::pair<double, double> GaleCalibration::currentSpan(currentRange_t range) const
{
    if (index(range) >= _model->getTotalNumCurrentRanges())
        return {0.0, 0.0};
    DcRecord record = {};
    record.currentRange = range;
    return readableSpan(*this, record, _model->getUpperBinaryCurrentLimit());
}
