// SPDX-License-Identifier: MIT
#include "VekConstantPotElement.h"

#include "elements/ConstantPotAdvElement.h"
#include "experiments/builder_elements/ElementProperties.h"

#include <cmath>

NIMBRELLE_ELEMENT(VekConstantPotElement, ConstantPotAdvElement)

VekConstantPotElement::VekConstantPotElement(double potential, double samplingInterval, double maxDuration)
    : VekConstantPotElement(std::make_shared<ConstantPotAdvElement>())
{
    setPotential(potential);
    setSamplingInterval(samplingInterval);
    setMaxDuration(maxDuration);
}

NUMBER(Potential, potential)
FLAG(VoltageVsOCP, voltageVsOCP)
NUMBER(SamplingInterval, samplingInterval)
NUMBER(MaxDuration, maxDuration)
MAGNITUDE(MaxAbsoluteCurrent, maxAbsoluteCurrent)
MAGNITUDE(MaxCurrent, maxAbsoluteCurrent)
MAGNITUDE(MinAbsoluteCurrent, minAbsoluteCurrent)
MAGNITUDE(MinCurrent, minAbsoluteCurrent)
NUMBER(MaxCapacity, maxCapacity)
NUMBER(MindIdt, mindIdt)
AUTOMATIC_RANGE(isAutoRange, setAutoRange, autoRange)
FIXED_RANGE(ApproxMaxCurrent, approxMaxCurrent, autoRange)
GETTER(int, getVoltageRange, voltageRange)

void VekConstantPotElement::setVoltageRange(int range)
{
    if ((range >= 0 && range <= 3) || range == 5)
        _builder->voltageRange = static_cast<qint8>(range);
}
