// SPDX-License-Identifier: MIT
#include "VekEISGalvanostaticElement.h"

#include "elements/EISGalvanostaticElement.h"
#include "experiments/builder_elements/ElementProperties.h"

NIMBRELLE_ELEMENT(VekEISGalvanostaticElement, EISGalvanostaticElement)

VekEISGalvanostaticElement::VekEISGalvanostaticElement(double startFreq, double endFreq, double stepsPerDecade,
                                                       double biasCurrent, double amplitude)
    : VekEISGalvanostaticElement(std::make_shared<EISGalvanostaticElement>())
{
    setStartFreq(startFreq);
    setEndFreq(endFreq);
    setStepsPerDecade(stepsPerDecade);
    setBiasCurrent(biasCurrent);
    setAmplitude(amplitude);
}

NUMBER(StartFreq, startFreq)
NUMBER(EndFreq, endFreq)
NUMBER(StepsPerDecade, stepsPerDecade)
NUMBER(BiasCurrent, biasCurrent)
NUMBER(Amplitude, amplitude)
NUMBER(QuietTime, quietTime)
NUMBER(QuietTimeSamplingInterval, quietTimeSamplingInterval)
COUNT(MinimumCycles, minimumCycles)
