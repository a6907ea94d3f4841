// SPDX-License-Identifier: MIT
#include "VekDCPotentialSweepElement.h"

#include "elements/DCPotentialSweepElement.h"
#include "experiments/builder_elements/ElementProperties.h"

NIMBRELLE_ELEMENT(VekDCPotentialSweepElement, DCPotentialSweepElement)

VekDCPotentialSweepElement::VekDCPotentialSweepElement(double startingPot, double endingPot, double scanRate,
                                                       double samplingInterval)
    : VekDCPotentialSweepElement(std::make_shared<DCPotentialSweepElement>())
{
    setStartingPot(startingPot);
    setEndingPot(endingPot);
    setScanRate(scanRate);
    setSamplingInterval(samplingInterval);
}

NUMBER(StartingPot, startingPot)
FLAG(StartVoltageVsOCP, startVoltageVsOCP)
NUMBER(EndingPot, endingPot)
FLAG(EndVoltageVsOCP, endVoltageVsOCP)
NUMBER(ScanRate, scanRate)
NUMBER(SamplingInterval, samplingInterval)
NUMBER(QuietTime, quietTime)
NUMBER(QuietTimeSamplingInterval, quietTimeSamplingInterval)
AUTOMATIC_RANGE(isAutoRange, setAutoRange, autoRange)
FIXED_RANGE(ApproxMaxCurrent, approxMaxCurrent, autoRange)
NUMBER(MaxAbsoluteCurrent, maxAbsoluteCurrent)
NUMBER(MinAbsoluteCurrent, minAbsoluteCurrent)
PERCENTAGE(AlphaFactor, alphaFactor)
