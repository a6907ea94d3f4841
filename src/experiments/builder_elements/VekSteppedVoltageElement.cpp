// SPDX-License-Identifier: MIT
#include "VekSteppedVoltageElement.h"

#include "elements/SteppedVoltage.h"
#include "experiments/builder_elements/ElementProperties.h"

NIMBRELLE_ELEMENT(VekSteppedVoltageElement, SteppedVoltage)

VekSteppedVoltageElement::VekSteppedVoltageElement(double startVoltage, double endVoltage, double stepSize,
                                                   double samplingInterval, double stepDuration)
    : VekSteppedVoltageElement(std::make_shared<SteppedVoltage>())
{
    setStartVoltage(startVoltage);
    setEndVoltage(endVoltage);
    setStepSize(stepSize);
    setSamplingInterval(samplingInterval);
    setStepDuration(stepDuration);
}

NUMBER(StartVoltage, startVoltage)
FLAG(StartVoltageVsOCP, startVoltageVsOCP)
NUMBER(EndVoltage, endVoltage)
FLAG(EndVoltageVsOCP, endVoltageVsOCP)
NUMBER(StepSize, stepSize)
NUMBER(SamplingInterval, samplingInterval)
NUMBER(StepDuration, stepDuration)
AUTOMATIC_RANGE(isAutoRange, setCurrentAutorange, autoRange)
FIXED_RANGE(ApproxMaxCurrent, approxMaxCurrent, autoRange)
