// SPDX-License-Identifier: MIT
#include "VekCyclicVoltammetryElement.h"

#include "elements/CyclicVoltammetryElement.h"
#include "experiments/builder_elements/ElementProperties.h"

NIMBRELLE_ELEMENT(VekCyclicVoltammetryElement, CyclicVoltammetryElement)

VekCyclicVoltammetryElement::VekCyclicVoltammetryElement(double startVoltage, double firstVoltageLimit,
                                                         double secondVoltageLimit, double endVoltage, double dEdt,
                                                         double samplingInterval)
    : VekCyclicVoltammetryElement(std::make_shared<CyclicVoltammetryElement>())
{
    setStartVoltage(startVoltage);
    setFirstVoltageLimit(firstVoltageLimit);
    setSecondVoltageLimit(secondVoltageLimit);
    setEndVoltage(endVoltage);
    setdEdt(dEdt);
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
NUMBER(dEdt, dEdt)
NUMBER(SamplingInterval, samplingInterval)
COUNT(NumberOfCycles, numberOfCycles)
NUMBER(QuietTime, quietTime)
NUMBER(QuietTimeSamplingInterval, quietTimeSamplingInterval)
AUTOMATIC_RANGE(isAutoRange, setAutoRange, autoRange)
FIXED_RANGE(ApproxMaxCurrent, approxMaxCurrent, autoRange)
PERCENTAGE(AlphaFactor, alphaFactor)
