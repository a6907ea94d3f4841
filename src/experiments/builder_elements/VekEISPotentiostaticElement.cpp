// SPDX-License-Identifier: MIT
#include "VekEISPotentiostaticElement.h"

#include "elements/EISPotentiostaticElement.h"
#include "experiments/builder_elements/ElementProperties.h"

NIMBRELLE_ELEMENT(VekEISPotentiostaticElement, EISPotentiostaticElement)

VekEISPotentiostaticElement::VekEISPotentiostaticElement(double startFreq, double endFreq, double stepsPerDecade,
                                                         double biasVoltage, double amplitude)
    : VekEISPotentiostaticElement(std::make_shared<EISPotentiostaticElement>())
{
    setStartFreq(startFreq);
    setEndFreq(endFreq);
    setStepsPerDecade(stepsPerDecade);
    setBiasVoltage(biasVoltage);
    setAmplitude(amplitude);
}

NUMBER(StartFreq, startFreq)
NUMBER(EndFreq, endFreq)
NUMBER(StepsPerDecade, stepsPerDecade)
NUMBER(BiasVoltage, biasVoltage)
FLAG(BiasVoltageVsOCP, biasVoltageVsOCP)
NUMBER(Amplitude, amplitude)
NUMBER(QuietTime, quietTime)
NUMBER(QuietTimeSamplingInterval, quietTimeSamplingInterval)
COUNT(MinimumCycles, minimumCycles)
