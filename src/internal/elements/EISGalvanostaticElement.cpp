// SPDX-License-Identifier: MIT
#include "elements/EISGalvanostaticElement.h"

#include "calibration/CalibrationData.h"
#include "elements/InputCheck.h"
#include "elements/NodeMakers.h"
#include "elements/StepNodes.h"

NodeList EISGalvanostaticElement::GetNodesData(const CalibrationData &calibration, const HardwareVersion &) const
{
    NodeList list;
    addQuietTime(list, Vek_Node_Constant_Current(quietTimeSamplingInterval, biasCurrent, 0), quietTime,
                 calibration.getMinCurrentRange_GalvEIS(biasCurrent, amplitude));
    Node sweep = openStep(Vek_Node_EIS_Current(biasCurrent, amplitude, startFreq, endFreq, stepsPerDecade,
                                               eisFixedFraction, minimumCycles),
                          QStringLiteral("Galvanostatic EIS"));
    sweep.setTimeSeriesData(timeSeriesData);
    list.addNode(sweep);
    return list;
}

ErrorStringList EISGalvanostaticElement::validateInput(const HardwareVersion &hardware) const
{
    return InputCheck(hardware)
        .acSupport()
        .frequencyLimit(startFreq)
        .frequencyLimit(endFreq)
        .currentLimit(biasCurrent)
        .sweepDensity(stepsPerDecade, minimumCycles)
        .currentAmplitude(amplitude)
        .errors();
}
