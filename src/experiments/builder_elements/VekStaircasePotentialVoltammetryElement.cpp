// SPDX-License-Identifier: MIT
#include "VekStaircasePotentialVoltammetryElement.h"

#include "elements/StaircasePotentialVoltammetryElement.h"
#include "experiments/builder_elements/ElementProperties.h"

NIMBRELLE_ELEMENT(VekStaircasePotentialVoltammetryElement, StaircasePotentialVoltammetryElement)

VekStaircasePotentialVoltammetryElement::VekStaircasePotentialVoltammetryElement(
    double startVoltage, double firstVoltageLimit, double secondVoltageLimit, double endVoltage, double stepSize,
    double stepDuration, double samplingInterval)
    : VekStaircasePotentialVoltammetryElement(std::make_shared<StaircasePotentialVoltammetryElement>())
{
    setStartVoltage(startVoltage);
    setFirstVoltageLimit(firstVoltageLimit);
    setSecondVoltageLimit(secondVoltageLimit);
    setEndVoltage(endVoltage);
    setStepSize(stepSize);
    setStepDuration(stepDuration);
    setSamplingInterval(samplingInterval);
}

NUMBER(StartVoltage, startVoltage)
FLAG(StartVoltageVsOCP, startVoltageVsOCP)
NUMBER(FirstVoltageLimit, firstVoltageLimit)
FLAG(FirstVoltageLimitVsOCP, firstVoltageLimitVsOCP)
NUMBER(SecondVoltageLimit, secondVoltageLimit)
FLAG(SecondVoltageLimitVsOCP, secondVoltageLimitVsOCP)
NUMBER(EndVoltage, endVoltage)
FLAG(EndVoltageVsOCP, endVoltageVsOCP)
NUMBER(StepSize, stepSize)
NUMBER(StepDuration, stepDuration)
NUMBER(SamplingInterval, samplingInterval)
COUNT(NumberOfCycles, numberOfCycles)
NUMBER(QuietTime, quietTime)
NUMBER(QuietTimeSamplingInterval, quietTimeSamplingInterval)
AUTOMATIC_RANGE(isAutorange, setAutorange, autoRange)
FIXED_RANGE(ApproxMaxCurrent, approxMaxCurrent, autoRange)
