// SPDX-License-Identifier: MIT
#include "simulator/SimulatedCalibration.h"

#include "simulator/Random.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

namespace {

constexpr double nominalGains[] = {1, 2, 5, 10, 20, 50, 100, 200, 500, 1000};
constexpr double headroom = 1.06;     ///< what a range reads beyond its full scale
constexpr double readingSpan = 32000; ///< raw counts at the headroom
constexpr double settingSpan = 30000; ///< DAC counts at the full scale
constexpr double stepsPerUnit = 256;  ///< of the converter in a raw count
constexpr int lowestCode = -32768;    ///< of the DAC
constexpr int highestCode = 32767;
constexpr quint32 thermocoupleFault = 1u << 16;

double nominalGain(ACgain_t gain)
{
    return nominalGains[std::min(index(gain), 9)];
}

float converted(double raw)
{
    return float(converterWord(raw * stepsPerUnit) / stepsPerUnit);
}

quint32 temperatureWord(double degrees)
{
    if (std::isnan(degrees))
        return thermocoupleFault;
    return quint32(qint32(std::lround(degrees * 4.0)) * (1 << 18));
}

} // namespace

/// Makes each coefficient miss its nominal value.
class Imperfection
{
public:
    explicit Imperfection(quint64 seed) : _random(seed) {}

    /// A gain, up to 3 % off and never less than 0.5 %.
    float gain(double nominal) { return float(nominal * (1.0 + _random.sign() * (0.005 + 0.025 * _random.uniform()))); }
    /// An offset of 0.05 to 0.2 % of a span.
    float offset(double span) { return float(span * _random.sign() * (0.0005 + 0.0015 * _random.uniform())); }

private:
    Random _random;
};

SimulatedCalibration::SimulatedCalibration(std::shared_ptr<const HardwareModel> model, quint32 seed, int channel)
    : _model(std::move(model))
{
    makeRecord(seed, channel);
}

void SimulatedCalibration::makeRecord(quint32 seed, int channel)
{
    Imperfection off(quint64(seed) * 64 + quint64(channel));
    _record.calMagic = CalMagic::v4;
    _record.maxACSignal = off.gain(settingSpan);
    makeVoltagePath(off);
    makeCurrentPath(off);
    _record.eceWeGain = off.gain(_record.eweGainBase);
    _record.eceWeOffset = off.offset(10.0);
    _record.eceCeGain = off.gain(_record.eweGainBase);
    _record.eceCeOffset = off.offset(10.0);
    _record.highSideCMCoeff = off.gain(2e-3);
}

void SimulatedCalibration::makeVoltagePath(Imperfection &off)
{
    constexpr double firstStage[] = {2, 5, 10};
    for (int i = 0; i < 3; ++i)
        _record.weStage1Gain[i] = off.gain(firstStage[i]);
    _record.weStage2Gain = off.gain(10);
    _record.weStage3Gain = off.gain(10);
    const double widest = widestVoltage();
    _record.eweGainBase = off.gain(widest * headroom / readingSpan);
    _record.eweRefCoeff = off.gain(1e-6 * widest);
    for (int gain = 0; gain < 10; ++gain)
        _record.eweOffset[gain] = off.offset(widest / nominalGains[gain]);
    for (int i = 0; i < 4; ++i) {
        const voltageRange_t range = voltageRange_t(i);
        _record.vCtrlGain[i] = off.gain(settingSpan / fullScale(range));
        _record.vCtrlOffset[i] = off.offset(settingSpan);
    }
}

void SimulatedCalibration::makeCurrentPath(Imperfection &off)
{
    constexpr double firstStage[] = {2, 5, 10};
    for (int i = 0; i < 3; ++i)
        _record.iStage1Gain[i] = off.gain(firstStage[i]);
    _record.iStage2Gain = off.gain(10);
    _record.iStage3Gain = off.gain(10);
    _record.iRefCoeff = off.gain(2e-2);
    for (int gain = 0; gain < 10; ++gain)
        _record.iStageOffset[gain] = off.offset(readingSpan);
    for (int i = 0; i < 10; ++i) {
        const currentRange_t range = currentRange_t(i);
        const double counts = readingSpan / nominalGain(_model->getDefaultCurrentGain(range));
        _record.currentGain[i] = off.gain(fullScale(range) * headroom / counts);
        _record.currentOffset[i] = off.offset(fullScale(range));
        _record.iCtrlGain[i] = off.gain(settingSpan / fullScale(range));
        _record.iCtrlOffset[i] = off.offset(settingSpan);
    }
}

QByteArray SimulatedCalibration::recordBytes() const
{
    return QByteArray(reinterpret_cast<const char *>(&_record), sizeof _record);
}

void SimulatedCalibration::setRecordBytes(const QByteArray &bytes)
{
    _record = {};
    std::memcpy(&_record, bytes.constData(), std::min(size_t(bytes.size()), sizeof _record));
}

double SimulatedCalibration::widestVoltage() const
{
    return std::max(_model->getVMax(true), _model->getVMax(false));
}

double SimulatedCalibration::fullScale(currentRange_t range) const
{
    return _model->getIMax() * std::pow(10.0, -index(range));
}

double SimulatedCalibration::fullScale(voltageRange_t range) const
{
    return _model->getVMax(false) / nominalGain(gainOf(range));
}

currentRange_t SimulatedCalibration::rangeForCurrent(double current) const
{
    int i = std::max(1, int(_model->getNumDCcurrentRanges())) - 1;
    while (i > 0 && std::abs(current) > fullScale(currentRange_t(i)))
        --i;
    return currentRange_t(i);
}

voltageRange_t SimulatedCalibration::rangeForVoltage(double voltage) const
{
    int i = _model->getNumVoltageRanges() - 1;
    while (i > 0 && std::abs(voltage) > fullScale(voltageRange_t(i)))
        --i;
    return voltageRange_t(i);
}

ACgain_t SimulatedCalibration::gainOf(voltageRange_t range) const
{
    return _model->getWEgainMap().value(range, ACgain_t::Gain1);
}

/// The product of the stages that a setting switches in; single precision at each step, as the host's ladder has it.
double SimulatedCalibration::measuredGain(const float (&stage1)[3], float stage2, float stage3, ACgain_t gain) const
{
    const int setting = std::min(index(gain), 9);
    if (setting == 0)
        return 1.0;
    float product = stage1[(setting - 1) % 3];
    if (setting > 3)
        product *= stage2;
    if (setting > 6)
        product *= stage3;
    return double(product);
}

double SimulatedCalibration::voltsPerRaw(ACgain_t gain) const
{
    return double(_record.eweGainBase) /
           measuredGain(_record.weStage1Gain, _record.weStage2Gain, _record.weStage3Gain, gain);
}

double SimulatedCalibration::rawVoltage(double voltage, ACgain_t gain, qint16 reference) const
{
    const double offset = double(_record.eweOffset[index(gain)]) + reference * double(_record.eweRefCoeff);
    return (voltage - offset) / voltsPerRaw(gain);
}

double SimulatedCalibration::amperesPerRaw(currentRange_t range, ACgain_t gain) const
{
    return double(_record.currentGain[index(range)]) /
           measuredGain(_record.iStage1Gain, _record.iStage2Gain, _record.iStage3Gain, gain);
}

double SimulatedCalibration::rawCurrent(double current, currentRange_t range, ACgain_t gain, qint16 reference,
                                        float counterRaw) const
{
    const int i = index(range);
    double reading = (current - double(_record.currentOffset[i])) / double(_record.currentGain[i]);
    if (i < _model->getNumHighSideRanges())
        reading -= double(_record.highSideCMCoeff) * double(counterRaw);
    reading -= double(_record.iRefCoeff) * reference;
    const double ladder = measuredGain(_record.iStage1Gain, _record.iStage2Gain, _record.iStage3Gain, gain);
    return reading * ladder - double(_record.iStageOffset[index(gain)]);
}

/// The sample as far as the ranges reach.
DcSample SimulatedCalibration::readable(const DcSample &sample, currentRange_t currentRange,
                                        voltageRange_t voltageRange) const
{
    const double mostAmperes = headroom * fullScale(currentRange);
    const double mostVolts =
        headroom * (voltageRange == voltageRange_t::Largest ? widestVoltage() : fullScale(voltageRange));
    DcSample read = sample;
    read.current = std::clamp(sample.current, -mostAmperes, mostAmperes);
    read.voltage = std::clamp(sample.voltage, -mostVolts, mostVolts);
    return read;
}

MainDcRecord_t SimulatedCalibration::toRecord(const DcSample &given, currentRange_t currentRange,
                                              voltageRange_t voltageRange) const
{
    const DcSample sample = readable(given, currentRange, voltageRange);
    MainDcRecord_t raw = {};
    raw.tick = sample.tick;
    raw.charge = sample.charge;
    raw.voltageRef = voltageReference;
    raw.currentRef = currentReference;
    raw.temperature = temperatureWord(sample.temperature);
    raw.currentRange = currentRange;
    raw.voltageRange = voltageRange;
    raw.weGain = gainOf(voltageRange);
    raw.iGain = _model->getDefaultCurrentGain(currentRange);
    raw.rawVoltage = converted(rawVoltage(sample.voltage, raw.weGain, raw.voltageRef));
    raw.firstRaw = converted(rawVoltage(given.voltage, ACgain_t::Gain1, 0)); // of an input of its own
    const double working = double(_record.eceWeGain) * double(raw.firstRaw) + double(_record.eceWeOffset);
    raw.secondRaw =
        converted((sample.counterElectrode + working - double(_record.eceCeOffset)) / double(_record.eceCeGain));
    raw.rawCurrent = converted(rawCurrent(sample.current, currentRange, raw.iGain, raw.currentRef, raw.secondRaw));
    return raw;
}

double SimulatedCalibration::currentFromCode(int code, currentRange_t range) const
{
    const int i = index(range) % 10;
    return (std::clamp(code, lowestCode, highestCode) - double(_record.iCtrlOffset[i])) / double(_record.iCtrlGain[i]);
}

double SimulatedCalibration::voltageFromCode(int code, voltageRange_t range) const
{
    const int i = index(range) % 4;
    return (std::clamp(code, lowestCode, highestCode) - double(_record.vCtrlOffset[i])) / double(_record.vCtrlGain[i]);
}
