// SPDX-License-Identifier: MIT
#include "VekOpenCircuitElement.h"

#include "elements/OpenCircuitElement.h"
#include "experiments/builder_elements/ElementProperties.h"

NIMBRELLE_ELEMENT(VekOpenCircuitElement, OpenCircuitElement)

VekOpenCircuitElement::VekOpenCircuitElement(double maxDuration, double samplingInterval)
    : VekOpenCircuitElement(std::make_shared<OpenCircuitElement>())
{
    setMaxDuration(maxDuration);
    setSamplingInterval(samplingInterval);
}

NUMBER(MaxDuration, maxDuration)
NUMBER(SamplingInterval, samplingInterval)
NUMBER(MaxVoltage, maxVoltage)
NUMBER(MinVoltage, minVoltage)
NUMBER(MindVdt, mindVdt)
AUTOMATIC_RANGE(isAutoVoltageRange, setAutoVoltageRange, autoVoltageRange)
FIXED_RANGE(ApproxMaxVoltage, maxVoltage, autoVoltageRange)
