// SPDX-License-Identifier: MIT
#include "VekSquareWaveVoltammetryElement.h"

#include "elements/SquareWaveVoltammetryElement.h"
#include "experiments/builder_elements/ElementProperties.h"

NIMBRELLE_ELEMENT(VekSquareWaveVoltammetryElement, SquareWaveVoltammetryElement)

VekSquareWaveVoltammetryElement::VekSquareWaveVoltammetryElement(double startVoltage, double endVoltage, double vStep,
                                                                 double pulseAmp, double pulseFreq)
    : VekSquareWaveVoltammetryElement(std::make_shared<SquareWaveVoltammetryElement>())
{
    setStartVoltage(startVoltage);
    setEndVoltage(endVoltage);
    setVStep(vStep);
    setPulseAmp(pulseAmp);
    setPulseFreq(pulseFreq);
}

VekSquareWaveVoltammetryElement::VekSquareWaveVoltammetryElement(double startVoltage, double endVoltage, double vStep,
                                                                 double pulseAmp, double pulseFreq,
                                                                 double approxMaxCurrent)
    : VekSquareWaveVoltammetryElement(startVoltage, endVoltage, vStep, pulseAmp, pulseFreq)
{
    setApproxMaxCurrent(approxMaxCurrent);
}

NUMBER(StartVoltage, startVoltage)
FLAG(StartVoltageVsOCP, startVoltageVsOCP)
NUMBER(EndVoltage, endVoltage)
FLAG(EndVoltageVsOCP, endVoltageVsOCP)
NUMBER(VStep, vStep)
NUMBER(PulseAmp, pulseAmp)
NUMBER(PulseFreq, pulseFreq)
NUMBER(QuietTime, quietTime)
NUMBER(QuietTimeSamplingInterval, quietTimeSamplingInterval)
AUTOMATIC_RANGE(isAutoRange, setAutoRange, autoRange)
FIXED_RANGE(ApproxMaxCurrent, approxMaxCurrent, autoRange)
PERCENTAGE(AlphaFactor, alphaFactor)
