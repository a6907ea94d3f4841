#include "calibration/CalibrationData.h"

#include "calibration/GaleFormulas.h"
#include "calibration/RecordBytes.h"
#include "hardware_models/HardwareModelFactory.h"

#include <algorithm>
#include <iterator>

namespace {

constexpr double defaultChargeTick = 1.5625e-5;
constexpr double slowChargeTick = 2e-5;
constexpr quint32 slowChargeBoards[] = {0x12010200, 0x12010300, 0x12010400};

} // namespace

CalibrationData::CalibrationData()
    : hardwareModel(HardwareModelFactory::getHardwareModel(HardwareModel_t::Invalid)), chargeTick(defaultChargeTick)
{
}

void CalibrationData::setModelType(HardwareModel_t model)
{
    modelType = model;
    hardwareModel = HardwareModelFactory::getHardwareModel(model);
    setGaleCfgData(Gale_Cfg_t());
}

void CalibrationData::importCalData(const char *data, int size)
{
    const cal_vc07 staged = recordFromBytes<cal_vc07>(data, size); // the larger record; the smaller one is its front
    mainRecord = recordFromBytes<cal_v4>(reinterpret_cast<const char *>(&staged), int(sizeof staged));
    calVersion = 0;
    if (staged.calMagic == CalMagic::vc07) {
        calVersion = galeVersion;
        galeRecord = staged;
        thermistor = Thermistor(0.003354016f, 0.000256524f, 2.60597e-6f, 6.32926e-8f);
    } else if (staged.calMagic == CalMagic::v4) {
        calVersion = mainlineVersion;
        takeMainRecord();
    }
}

void CalibrationData::takeMainRecord()
{
    dcFormulas.setNumHighSideRanges(hardwareModel->getNumHighSideRanges());
    dcFormulas.setNumDCcurrentRanges(hardwareModel->getNumDCcurrentRanges());
    dcFormulas.setNumVoltageRanges(hardwareModel->getNumVoltageRanges());
    dcFormulas.setWEgainMap(hardwareModel->getWEgainMap().toStdMap());
    dcFormulas.copyCalData(&mainRecord);
}

void CalibrationData::setGaleCfgData(const Gale_Cfg_t &cfg)
{
    galeCfg = cfg;
    const auto end = std::end(slowChargeBoards);
    const bool isSlow = std::find(std::begin(slowChargeBoards), end, cfg.boardId) != end;
    chargeTick = isSlow ? slowChargeTick : defaultChargeTick;
}

void CalibrationData::UpdateCurrentOffset(int range, float value)
{
    if (isGale() && range >= 0 && range < GaleFormulas::currentRanges)
        galeRecord.iOffset[range] = value;
}

void CalibrationData::UpdateVoltageOffset(int range, float value)
{
    if (isGale() && range >= 0 && range < GaleFormulas::voltageRanges)
        galeRecord.vOffset[range] = value;
}
