// SPDX-License-Identifier: MIT
#include "VekSteppedCurrentElement.h"

#include "elements/SteppedCurrent.h"
#include "experiments/builder_elements/ElementProperties.h"

NIMBRELLE_ELEMENT(VekSteppedCurrentElement, SteppedCurrent)

VekSteppedCurrentElement::VekSteppedCurrentElement(double startCurrent, double endCurrent, double stepSize,
                                                   double stepDuration, double samplingInterval)
    : VekSteppedCurrentElement(std::make_shared<SteppedCurrent>())
{
    setStartCurrent(startCurrent);
    setEndCurrent(endCurrent);
    setStepSize(stepSize);
    setStepDuration(stepDuration);
    setSamplingInterval(samplingInterval);
}

NUMBER(StartCurrent, startCurrent)
NUMBER(EndCurrent, endCurrent)
NUMBER(StepSize, stepSize)
NUMBER(StepDuration, stepDuration)
NUMBER(SamplingInterval, samplingInterval)
NUMBER(ApproxMaxVoltage, approxMaxVoltage)
NUMBER(ApproxMinVoltage, approxMinVoltage)
