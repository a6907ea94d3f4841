// SPDX-License-Identifier: MIT
#include "VekConstantResistanceElement.h"

#include "elements/ConstantResistanceElement.h"
#include "experiments/builder_elements/ElementProperties.h"

NIMBRELLE_ELEMENT(VekConstantResistanceElement, ConstantResistanceElement)

VekConstantResistanceElement::VekConstantResistanceElement(double resistance, double maxDuration,
                                                           double samplingInterval)
    : VekConstantResistanceElement(std::make_shared<ConstantResistanceElement>())
{
    setResistance(resistance);
    setMaxDuration(maxDuration);
    setSamplingInterval(samplingInterval);
}

NUMBER(Resistance, resistance)
NUMBER(MaxDuration, maxDuration)
NUMBER(SamplingInterval, samplingInterval)
NUMBER(MinVoltage, minVoltage)
FLAG(MinimumVoltageVsOCP, minimumVoltageVsOCP)
NUMBER(MaxVoltage, maxVoltage)
FLAG(MaximumVoltageVsOCP, maximumVoltageVsOCP)
NUMBER(MinCurrent, minCurrent)
NUMBER(MaxCurrent, maxCurrent)
NUMBER(MaxCapacity, maxCapacity)
