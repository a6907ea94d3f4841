// SPDX-License-Identifier: MIT
#include "hardware_models/HardwareModel.h"

#include "numerics/EngineeringUnits.h"

// Watts behind " mW", ohms behind " W", volts behind "A": see compatibility.md, units of the limits. The sentences are
// put together with operator+, since "%1" has to stay for the caller.

namespace {

QString plain(double value)
{
    return QString::number(value, 'g', 6);
}

QString prefixed(double value)
{
    return valueString(value, 3);
}

} // namespace

QString HardwareModel::getHwModelErrorMsg() const
{
    return QStringLiteral("Device: %1 is not supported by the API");
}

QString HardwareModel::getACErrorMsg() const
{
    return QStringLiteral("The %1 does not support AC Experiments");
}

QString HardwareModel::getFrequencyLimitErrorMsg() const
{
    return QStringLiteral("The %1 has a minimum frequency of ") + prefixed(_frequencyMin) +
           QStringLiteral("Hz and a maximum frequency of ") + prefixed(_frequencyMax) + QStringLiteral("Hz");
}

QString HardwareModel::getSamplingLimitErrorMsg() const
{
    return QStringLiteral("The %1 has a minimum sampling rate of ") + plain(_minSamplingPeriod) + QStringLiteral(" s.");
}

QString HardwareModel::getVoltSamplingLimitErrorMsg() const
{
    return QStringLiteral("The %1 has a minimum voltage interval period of ") + prefixed(_minVoltInterval) +
           QStringLiteral("V.");
}

QString HardwareModel::getVoltageLimitErrorMsg(bool isOpenCircuit) const
{
    return (isOpenCircuit ? QStringLiteral("In an open circuit ") : QString()) +
           QStringLiteral("The %1 has a minimum voltage of ") + plain(getVMin(isOpenCircuit)) +
           QStringLiteral("V and a maximum voltage of ") + plain(getVMax(isOpenCircuit)) + QStringLiteral("V.");
}

QString HardwareModel::getCurrentLimitErrorMsg() const
{
    return QStringLiteral("The %1 has a minimum current of ") + plain(_iMin) +
           QStringLiteral("A and a maximum current of ") + plain(_iMax) + QStringLiteral("A.");
}

QString HardwareModel::getVoltageStepLimitErrorMsg() const
{
    return QStringLiteral("The %1 has a minimum voltage step of ") + plain(_vStepMin) + QStringLiteral(" V");
}

QString HardwareModel::getVoltageScanRateLimitErrorMsg() const
{
    return QStringLiteral("The %1 has a minimum voltage scan rate of ") + plain(_scanRateMin) +
           QStringLiteral(" V/s and a maximum voltage scan rate of ") + plain(_scanRateMax) + QStringLiteral(" V/s.");
}

QString HardwareModel::getPowerLimitErrorMsg(bool isOpenCircuit) const
{
    return QStringLiteral("%1 has a maximum power delivery of ") + plain(_iMax * getVMax(isOpenCircuit)) +
           QStringLiteral(" mW");
}

QString HardwareModel::getPositiveResistanceErrorMsg() const
{
    return QStringLiteral("%1 Resistance must be greater than 0");
}

QString HardwareModel::getResistanceLoadLimitErrorMsg(bool isOpenCircuit) const
{
    return QStringLiteral("%1 has a maximum resistance load of ") + plain(getVMax(isOpenCircuit) / _iLoadMin) +
           QStringLiteral(" W");
}

QString HardwareModel::getVAmplitudeLimitErrorMsg() const
{
    return QStringLiteral("%1 has a voltage amplitude range of ") + plain(_vAmpMin) + QStringLiteral(" to ") +
           plain(_vAmpMax) + QStringLiteral(" V");
}

QString HardwareModel::getIAmplitudeLimitErrorMsg() const
{
    return QStringLiteral("%1 has a current amplitude range of ") + plain(_iAmpMin) + QStringLiteral("A to ") +
           plain(_iAmpMax) + QStringLiteral(" A");
}

QString HardwareModel::getIandIAmplitudeLimitErrorMsg() const
{
    return QStringLiteral("%1 has a (current amplitude + biase current)  should be less then ") +
           prefixed(_iAndIAmpMax) + QStringLiteral("A");
}

QString HardwareModel::getVandVAmplitudeLimitErrorMsg() const
{
    return QStringLiteral("%1 has a (voltage amplitude + biase potential)  should be less then ") +
           prefixed(_vAndVAmpMax) + QStringLiteral("A");
}

QString HardwareModel::getStepsPerDecadeLimitErrorMsg() const
{
    return QStringLiteral("%1 The steps per decade must be an integer between ") + QString::number(_stepsPerDecadeMin) +
           QStringLiteral(" and ") + QString::number(_stepsPerDecadeMax);
}

QString HardwareModel::getMinCyclesLimitErrorMsg() const
{
    return QStringLiteral("%1 The minimum cycles must be an integer between ") + QString::number(_minCyclesMin) +
           QStringLiteral(" and ") + QString::number(_minCyclesMax);
}
