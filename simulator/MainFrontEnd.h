// SPDX-License-Identifier: MIT
#pragma once

#include "simulator/AcFrontEnd.h"
#include "simulator/FrontEnd.h"
#include "simulator/SimulatedCalibration.h"

/// The front end of a potentiostat: its calibration record, and its AC records one packet each.
class MainFrontEnd : public FrontEnd
{
public:
    MainFrontEnd(std::shared_ptr<const HardwareModel> model, std::shared_ptr<const AnalogResponse> response,
                 const AcFrontEnd::Harmonics &harmonics, double noise, quint32 seed, int channel)
        : _model(model), _calibration(model, seed, channel), _ac(model, std::move(response), harmonics, noise)
    {
    }

    QByteArray calibration() const override { return _calibration.recordBytes(); }
    void setCalibration(const QByteArray &record) override { _calibration.setRecordBytes(record); }
    int currentRangeCount() const override { return _model->getTotalNumCurrentRanges(); }
    int voltageRangeCount() const override { return _model->getNumVoltageRanges(); }
    double fullScale(currentRange_t range) const override { return _calibration.fullScale(range); }
    double fullScale(voltageRange_t range) const override { return _calibration.fullScale(range); }
    currentRange_t rangeForCurrent(double current) const override { return _calibration.rangeForCurrent(current); }
    voltageRange_t rangeForVoltage(double voltage) const override { return _calibration.rangeForVoltage(voltage); }
    double settableCurrent() const override { return _model->getIMax(); }
    double settableVoltage() const override { return _model->getVMax(false); }
    double bearableVoltage() const override { return _model->getVMax(true); }
    QByteArray dcRecord(const DcSample &sample, currentRange_t currentRange, voltageRange_t voltageRange,
                        quint8 counter) const override;
    QVector<Packet> acPackets(const AcMeasurement &measurement, Random &random) const override;
    double currentFromCode(int code, currentRange_t range) const override
    {
        return _calibration.currentFromCode(code, range);
    }
    double voltageFromCode(int code, voltageRange_t range) const override
    {
        return _calibration.voltageFromCode(code, range);
    }

private:
    std::shared_ptr<const HardwareModel> _model;
    SimulatedCalibration _calibration;
    AcFrontEnd _ac;
};
