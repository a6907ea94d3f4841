// SPDX-License-Identifier: MIT
#include "VekDiffPulseVoltammetryElement.h"

#include "elements/DiffPulseVoltammetryElement.h"
#include "experiments/builder_elements/ElementProperties.h"

NIMBRELLE_ELEMENT(VekDiffPulseVoltammetryElement, DiffPulseVoltammetryElement)

VekDiffPulseVoltammetryElement::VekDiffPulseVoltammetryElement(double startVoltage, double endVoltage, double vStep,
                                                               double pulseHeight, double pulseWidth,
                                                               double pulsePeriod)
    : VekDiffPulseVoltammetryElement(std::make_shared<DiffPulseVoltammetryElement>())
{
    setStartVoltage(startVoltage);
    setEndVoltage(endVoltage);
    setVStep(vStep);
    setPulseHeight(pulseHeight);
    setPulseWidth(pulseWidth);
    setPulsePeriod(pulsePeriod);
}

VekDiffPulseVoltammetryElement::VekDiffPulseVoltammetryElement(double startVoltage, double endVoltage, double vStep,
                                                               double pulseHeight, double pulseWidth,
                                                               double pulsePeriod, double approxMaxCurrent)
    : VekDiffPulseVoltammetryElement(startVoltage, endVoltage, vStep, pulseHeight, pulseWidth, pulsePeriod)
{
    setApproxMaxCurrent(approxMaxCurrent);
}

NUMBER(StartVoltage, startVoltage)
FLAG(StartVoltageVsOCP, startVoltageVsOCP)
NUMBER(EndVoltage, endVoltage)
FLAG(EndVoltageVsOCP, endVoltageVsOCP)
NUMBER(VStep, vStep)
NUMBER(PulseHeight, pulseHeight)
NUMBER(PulseWidth, pulseWidth)
NUMBER(PulsePeriod, pulsePeriod)
NUMBER(QuietTime, quietTime)
NUMBER(QuietTimeSamplingInterval, quietTimeSamplingInterval)
AUTOMATIC_RANGE(isAutoRange, setAutoRange, autoRange)
FIXED_RANGE(ApproxMaxCurrent, approxMaxCurrent, autoRange)
PERCENTAGE(AlphaFactor, alphaFactor)
