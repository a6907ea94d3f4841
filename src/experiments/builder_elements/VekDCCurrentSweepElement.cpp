// SPDX-License-Identifier: MIT
#include "VekDCCurrentSweepElement.h"

#include "elements/DCCurrentSweepElement.h"
#include "experiments/builder_elements/ElementProperties.h"

NIMBRELLE_ELEMENT(VekDCCurrentSweepElement, DCCurrentSweepElement)

VekDCCurrentSweepElement::VekDCCurrentSweepElement(double startingCurrent, double endingCurrent, double scanRate,
                                                   double samplingInterval)
    : VekDCCurrentSweepElement(std::make_shared<DCCurrentSweepElement>())
{
    setStartingCurrent(startingCurrent);
    setEndingCurrent(endingCurrent);
    setScanRate(scanRate);
    setSamplingInterval(samplingInterval);
}

NUMBER(StartingCurrent, startingCurrent)
NUMBER(EndingCurrent, endingCurrent)
NUMBER(ScanRate, scanRate)
NUMBER(SamplingInterval, samplingInterval)
NUMBER(QuietTime, quietTime)
NUMBER(QuietTimeSamplingInterval, quietTimeSamplingInterval)
NUMBER(MaxVoltage, maxVoltage)
NUMBER(MinVoltage, minVoltage)
PERCENTAGE(AlphaFactor, alphaFactor)
