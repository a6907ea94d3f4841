// SPDX-License-Identifier: MIT
#pragma once

#include "calibration/CalRecords.h"
#include "calibration/CalibrationData.h"

/// What the host makes of the record of an instrument of this model.
inline CalibrationData calibrated(HardwareModel_t model, const QByteArray &record)
{
    CalibrationData calibration;
    calibration.setModelType(model);
    calibration.importCalData(record.constData(), record.size());
    return calibration;
}

template <class Record>
CalibrationData calibrated(HardwareModel_t model, const Record &record)
{
    return calibrated(model, QByteArray(reinterpret_cast<const char *>(&record), int(sizeof record)));
}

/// Mainline record with round numbers: 1 V is 3000 counts in range 0, 1 A is 20000 counts and a decade more per range.
inline cal_v4 roundMainRecord()
{
    cal_v4 record = {};
    record.calMagic = CalMagic::v4;
    record.maxACSignal = 16000.0f;
    record.eweRefCoeff = 0.0625f;
    record.iRefCoeff = 0.5f;
    record.eceWeGain = 0.5f;
    record.eceWeOffset = 0.25f;
    record.eceCeGain = 2.0f;
    record.eceCeOffset = 1.0f;
    record.eweGainBase = 0.0005f;
    record.highSideCMCoeff = 0.125f;
    record.weStage2Gain = record.weStage3Gain = record.iStage2Gain = record.iStage3Gain = 10.0f;
    const float stage1[] = {2.0f, 5.0f, 10.0f};
    for (int i = 0; i < 3; ++i)
        record.weStage1Gain[i] = record.iStage1Gain[i] = stage1[i];
    const float codesPerVolt[] = {3000.0f, 6000.0f, 30000.0f, 60000.0f};
    for (int i = 0; i < 4; ++i)
        record.vCtrlGain[i] = codesPerVolt[i];
    float decade = 1.0f;
    for (int i = 0; i < 10; ++i, decade *= 10.0f) {
        record.currentGain[i] = 0.0005f / decade;
        record.iCtrlGain[i] = 20000.0f * decade;
    }
    return record;
}

/// Cycler record with round numbers in ranges 0 to 2; the other current ranges are absent.
inline cal_vc07 roundGaleRecord()
{
    cal_vc07 record = {};
    record.calMagic = CalMagic::vc07;
    for (int i = 0; i < 3; ++i) {
        record.iGain[i] = 0.5f / float(1 << (4 * i)); // 1/2, 1/32, 1/512
        record.iRefCoeff[i] = 0.25f;
    }
    for (int i = 0; i < 4; ++i) {
        record.vGain[i] = 0.25f / float(1 << i);
        record.vRefCoeff[i] = 0.125f;
    }
    return record;
}
