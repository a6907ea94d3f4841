// SPDX-License-Identifier: MIT
// Calibration records, board configurations and samples of any content, and every conversion with them.

#include "FuzzTarget.h"
#include "calibration/CalibrationData.h"
#include "calibration/RecordBytes.h"

namespace {

void import(CalibrationData &calibration, FuzzInput &input)
{
    constexpr quint32 tags[] = {CalMagic::v4, CalMagic::vc07, 0};
    QByteArray record = bytesOfRecord(input.oneOf(tags));
    const int floats = input.below(200); // 740 bytes are the larger record
    for (int i = 0; i < floats; ++i)
        record += bytesOfRecord(float(input.number()));
    calibration.importCalData(record.constData(), record.size());
}

void configure(CalibrationData &calibration, FuzzInput &input)
{
    if (input.flag())
        calibration.setGaleCfgData(recordFromBytes<Gale_Cfg_t>(input.bytes(int(sizeof(Gale_Cfg_t)))));
    calibration.UpdateCurrentOffset(input.take<qint8>(), float(input.number()));
    calibration.UpdateVoltageOffset(input.take<qint8>(), float(input.number()));
}

void convertSample(const CalibrationData &calibration, FuzzInput &input)
{
    const auto sample = ExperimentalDcData::fromPayload(input.bytes(int(sizeof(MainDcRecord_t))));
    const ProcessedDCData point = calibration.ProcessDCDataPoint(sample);
    mustHold(point.timestamp >= 0.0, "time does not run backwards from the start");
    if (calibration.getCalVersion() == 0)
        mustHold(point.current == 0.0 && point.workingElectrodeVoltage == 0.0, "without a record all is neutral");
}

void convertSetpoints(const CalibrationData &calibration, FuzzInput &input)
{
    const auto currentRange = currentRange_t(input.take<quint8>());
    const auto voltageRange = voltageRange_t(input.take<quint8>());
    const double value = input.number();
    const int voltageCode = calibration.GetBINVoltageForDAC(value, voltageRange);
    const int currentCode = calibration.GetBINCurrentForDAC(currentRange, value);
    if (calibration.getCalVersion() == 4) {
        mustHold(voltageCode == qint16(voltageCode) && currentCode == qint16(currentCode), "a code fits its DAC");
    }
    const int code = input.take<qint32>();
    calibration.GetVCtrlFromDAC_BINcode(code, voltageRange);
    calibration.GetICtrlFromDAC_BINcode(code, currentRange);
    calibration.getTemperatureToRatio(float(value));
    calibration.getCurrentMinMax_gale(currentRange);
    calibration.getCurrentMinMax_mainline(currentRange);
}

void chooseRanges(const CalibrationData &calibration, FuzzInput &input)
{
    const auto value = float(input.number());
    const auto other = float(input.number());
    const bool hasRecord = calibration.getCalVersion() != 0;
    for (const currentRange_t range :
         {calibration.getMinCurrentRange_dc(value), calibration.getMinCurrentRange_galv(value),
          calibration.getMinCurrentRange_GalvEIS(value, other)})
        mustHold(index(range) < 10 || !hasRecord, "a chosen current range is one");
    mustHold(index(calibration.getMinVoltageRange(value)) < 4, "a chosen voltage range is one");
    for (const auto &[lowest, highest] : calibration.getCurrentMinMaxList())
        mustHold(!(highest < lowest) || calibration.getCalVersion() == 4, "a range begins below its end");
    calibration.getVoltageMinMaxList();
}

void convertAmplitudes(const CalibrationData &calibration, FuzzInput &input)
{
    const std::complex<double> z(input.number(), input.number());
    const double frequency = input.number();
    const double level = input.number();
    const auto currentRange = currentRange_t(input.take<quint8>());
    const auto firstGain = ACgain_t(input.take<quint8>());
    const auto secondGain = ACgain_t(input.take<quint8>());
    const auto source = ADC_src_t(input.flag());
    calibration.getACCurrent_main(z, firstGain, currentRange, frequency, level, source);
    calibration.getACVoltage_main(z, firstGain, secondGain, frequency, level, source);
    calibration.getACCurrent_gale(z, index(currentRange), frequency);
    calibration.getACVoltage_gale(z, index(currentRange), frequency);
    calibration.removeCMCurrent(z, index(currentRange), frequency, level);
    calibration.adjustZforCableCapacitance(frequency, z, currentRange);
    calibration.getCurrentGain(firstGain);
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    FuzzProcess::instance();
    FuzzInput input(data, size);
    CalibrationData calibration;
    calibration.setModelType(HardwareModel_t(input.take<quint8>()));
    import(calibration, input);
    configure(calibration, input);
    convertSample(calibration, input);
    convertSetpoints(calibration, input);
    chooseRanges(calibration, input);
    convertAmplitudes(calibration, input);
    return 0;
}
