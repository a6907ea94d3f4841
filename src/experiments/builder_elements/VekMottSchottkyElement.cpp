// SPDX-License-Identifier: MIT
#include "VekMottSchottkyElement.h"

#include "elements/MottSchottkyElement.h"
#include "experiments/builder_elements/ElementProperties.h"

NIMBRELLE_ELEMENT(VekMottSchottkyElement, MottSchottkyElement)

VekMottSchottkyElement::VekMottSchottkyElement(double startingPotential, double endingPotential, double voltageStep,
                                               double startFrequency, double endFrequency, double stepsPerDecade,
                                               double amplitude, unsigned int minCycles)
    : VekMottSchottkyElement(std::make_shared<MottSchottkyElement>())
{
    setStartingPotential(startingPotential);
    setEndingPotential(endingPotential);
    setVoltageStep(voltageStep);
    setStartFrequency(startFrequency);
    setEndFrequency(endFrequency);
    setStepsPerDecade(stepsPerDecade);
    setAmplitude(amplitude);
    setMinCycles(minCycles);
}

VekMottSchottkyElement::VekMottSchottkyElement(double startingPotential, double endingPotential, double voltageStep,
                                               double stepQuietTime, double startFrequency, double endFrequency,
                                               double stepsPerDecade, double amplitude, unsigned int minCycles)
    : VekMottSchottkyElement(startingPotential, endingPotential, voltageStep, startFrequency, endFrequency,
                             stepsPerDecade, amplitude, minCycles)
{
    setStepQuietTime(stepQuietTime);
}

NUMBER(StartingPotential, startingPotential)
FLAG(StartVoltageVsOCP, startVoltageVsOCP)
NUMBER(EndingPotential, endingPotential)
FLAG(EndVoltageVsOCP, endVoltageVsOCP)
NUMBER(VoltageStep, voltageStep)
NUMBER(StartFrequency, startFrequency)
NUMBER(EndFrequency, endFrequency)
NUMBER(StepsPerDecade, stepsPerDecade)
NUMBER(Amplitude, amplitude)
COUNT(MinCycles, minCycles)
NUMBER(QuietTime, quietTime)
NUMBER(QuietTimeSampInterval, quietTimeSampInterval)
NUMBER(StepQuietTime, stepQuietTime)
NUMBER(StepQuietSampInterval, stepQuietSampInterval)
