// SPDX-License-Identifier: MIT
#include "VekNormalPulseVoltammetryElement.h"

#include "elements/NormalPulseVoltammetryElement.h"
#include "experiments/builder_elements/ElementProperties.h"

NIMBRELLE_ELEMENT(VekNormalPulseVoltammetryElement, NormalPulseVoltammetryElement)

VekNormalPulseVoltammetryElement::VekNormalPulseVoltammetryElement(double startVoltage, double endVoltage, double vStep,
                                                                   double pulseWidth, double pulsePeriod)
    : VekNormalPulseVoltammetryElement(std::make_shared<NormalPulseVoltammetryElement>())
{
    setStartVoltage(startVoltage);
    setEndVoltage(endVoltage);
    setVStep(vStep);
    setPulseWidth(pulseWidth);
    setPulsePeriod(pulsePeriod);
}

VekNormalPulseVoltammetryElement::VekNormalPulseVoltammetryElement(double startVoltage, double endVoltage, double vStep,
                                                                   double pulseWidth, double pulsePeriod,
                                                                   double approxMaxCurrent)
    : VekNormalPulseVoltammetryElement(startVoltage, endVoltage, vStep, pulseWidth, pulsePeriod)
{
    setApproxMaxCurrent(approxMaxCurrent);
}

NUMBER(StartVoltage, startVoltage)
FLAG(StartVoltageVsOCP, startVoltageVsOCP)
NUMBER(EndVoltage, endVoltage)
FLAG(EndVoltageVsOCP, endVoltageVsOCP)
NUMBER(VStep, vStep)
NUMBER(PulseWidth, pulseWidth)
NUMBER(PulsePeriod, pulsePeriod)
NUMBER(QuietTime, quietTime)
NUMBER(QuietTimeSamplingInterval, quietTimeSamplingInterval)
AUTOMATIC_RANGE(isAutoRange, setAutoRange, autoRange)
FIXED_RANGE(ApproxMaxCurrent, approxMaxCurrent, autoRange)
PERCENTAGE(AlphaFactor, alphaFactor)
