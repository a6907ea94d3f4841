// SPDX-License-Identifier: MIT
#include "VekConstantPowerElement.h"

#include "elements/ConstantPowerElement.h"
#include "experiments/builder_elements/ElementProperties.h"

#include <QDebug>

namespace {

constexpr char constructorWarning[] =
    "DEPRECATION WARNING: Use of the VekConstantPowerElement constructor with the 'isCharge' parameter will not be "
    "supported in a future version. Use the alternative constructor and set power to either positive or negative "
    "values instead.";
constexpr char constructorConsequence[] =
    "If you continue to use this function, the state of 'isCharge' will still be used to set the sign of the power.";
constexpr char setterWarning[] =
    "DEPRECATION WARNING: VekConstantPowerElement:setCharge will not be supported in a future version. When this "
    "function is not called, positive or negative values powers should be used instead.";

} // namespace

NIMBRELLE_ELEMENT(VekConstantPowerElement, ConstantPowerElement)

VekConstantPowerElement::VekConstantPowerElement(double power, double maxDuration, double samplingInterval)
    : VekConstantPowerElement(std::make_shared<ConstantPowerElement>())
{
    setPower(power);
    setMaxDuration(maxDuration);
    setSamplingInterval(samplingInterval);
}

VekConstantPowerElement::VekConstantPowerElement(bool isCharge, double power, double maxDuration,
                                                 double samplingInterval)
    : VekConstantPowerElement(power, maxDuration, samplingInterval)
{
    qDebug() << constructorWarning;
    qDebug() << constructorConsequence;
    _builder->isChargeSet = true;
    _builder->isCharge = isCharge;
}

NUMBER(Power, power)
NUMBER(MaxDuration, maxDuration)
NUMBER(SamplingInterval, samplingInterval)
NUMBER(MaxVoltage, maxVoltage)
FLAG(MaximumVoltageVsOCP, maximumVoltageVsOCP)
NUMBER(MinVoltage, minVoltage)
FLAG(MinimumVoltageVsOCP, minimumVoltageVsOCP)
NUMBER(MaxCapacity, maxCapacity)
NUMBER(MinCurrent, minCurrent)
NUMBER(MaxCurrent, maxCurrent)
GETTER(bool, isCharge, isCharge)

void VekConstantPowerElement::setCharge(bool isCharge)
{
    qDebug() << setterWarning;
    _builder->isChargeSet = true;
    _builder->isCharge = isCharge;
}
