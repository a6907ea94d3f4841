// SPDX-License-Identifier: MIT
#include "VekConstantCurrentElement.h"

#include "elements/ConstantCurrentAdvElement.h"
#include "experiments/builder_elements/ElementProperties.h"

NIMBRELLE_ELEMENT(VekConstantCurrentElement, ConstantCurrentAdvElement)

VekConstantCurrentElement::VekConstantCurrentElement(double current, double samplingInterval, double maxDuration)
    : VekConstantCurrentElement(std::make_shared<ConstantCurrentAdvElement>())
{
    setCurrent(current);
    setSamplingInterval(samplingInterval);
    setMaxDuration(maxDuration);
}

NUMBER(Current, current)
GETTER(double, getSamplingInterval, samplingInterval)
NUMBER(MaxDuration, maxDuration)
NUMBER(MaxVoltage, maxVoltage)
NUMBER(MinVoltage, minVoltage)
NUMBER(MaxCapacity, maxCapacity)
AUTOMATIC_RANGE(isAutoRange, setAutoRange, autoRange)
FIXED_RANGE(ApproxMaxCurrent, approxMaxCurrent, autoRange)
NUMBER(MinSamplingVoltageDifference, minSamplingVoltageDifference)
AUTOMATIC_RANGE(isAutoVoltageRange, setAutoVoltageRange, autoVoltageRange)
FIXED_RANGE(ApproxMaxVoltage, approxMaxVoltage, autoVoltageRange)

void VekConstantCurrentElement::setSamplingInterval(double seconds)
{
    _builder->samplingInterval = seconds;
    _builder->minSamplingVoltageDifference = -std::numeric_limits<double>::infinity();
}
