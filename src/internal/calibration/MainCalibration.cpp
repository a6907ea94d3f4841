// SPDX-License-Identifier: MIT
#include "calibration/MainCalibration.h"

#include "calibration/Spans.h"
#include "hardware_models/HardwareModel.h"

#include <limits>

namespace {

constexpr double lowestDacCode = std::numeric_limits<qint16>::min();
constexpr double highestDacCode = std::numeric_limits<qint16>::max();

bool isDacCode(int code)
{
    return code >= lowestDacCode && code <= highestDacCode;
}

} // namespace

MainCalibration::MainCalibration(const cal_v4 &record, const std::shared_ptr<const HardwareModel> &model)
{
    setModel(model);
    _formulas.setNumHighSideRanges(model->getNumHighSideRanges());
    _formulas.setNumDCcurrentRanges(model->getNumDCcurrentRanges());
    _formulas.setNumVoltageRanges(model->getNumVoltageRanges());
    _formulas.setWEgainMap(model->getWEgainMap().toStdMap());
    _formulas.copyCalData(&record);
}

void MainCalibration::setModel(const std::shared_ptr<const HardwareModel> &model)
{
    _model = model;
    _hasThermocouple = model->supportsTemperature();
}

int MainCalibration::voltageCode(double volts, voltageRange_t range) const
{
    const double held = qBound(_model->getVMin(false), volts, _model->getVMax(false));
    return qint16(_formulas.getVCtrlBIN(float(held), range));
}

int MainCalibration::currentCode(double amperes, currentRange_t range) const
{
    const double held = qBound(_model->getIMin(), amperes, _model->getIMax());
    return qint16(_formulas.getICtrlBIN(float(held), range));
}

double MainCalibration::voltageOfCode(int code, voltageRange_t range) const
{
    return isDacCode(code) ? _formulas.getVSetpointFromBIN(short(code), range) : 0.0;
}

double MainCalibration::currentOfCode(int code, currentRange_t range) const
{
    return isDacCode(code) ? _formulas.getISetpointFromBIN(short(code), range) : 0.0;
}

std::pair<double, double> MainCalibration::currentSpan(currentRange_t range) const
{
    if (index(range) >= _model->getTotalNumCurrentRanges())
        return {0.0, 0.0};
    DcRecord record = {};
    record.currentRange = range;
    record.iGain = _model->getDefaultCurrentGain(range);
    const Span readable = readableSpan(*this, record, _model->getUpperBinaryCurrentLimit());
    if (index(range) >= _model->getNumDCcurrentRanges())
        return readable;
    return intersection(readable, ascending(_formulas.getICtrlFromCode(highestDacCode, range),
                                            _formulas.getICtrlFromCode(lowestDacCode, range)));
}
