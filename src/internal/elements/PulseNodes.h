// SPDX-License-Identifier: MIT
#pragma once

#include "elements/NodeMakers.h"
#include "elements/StepNodes.h"

/// The levels of a pulse train in single precision, seconds: how long each lasts and how long the instrument samples it.
struct PulseTiming {
    float baseSpan;
    float baseTime;
    float pulseSpan;
    float pulseTime;

    PulseTiming(float base, float pulse, float alphaFactor)
        : baseSpan(alphaFactor * base), baseTime(base), pulseSpan(alphaFactor * pulse), pulseTime(pulse)
    {
    }
};

/// An optional quiet time at the start potential and the pulse node, both in the element's current range.
template <class Element>
NodeList pulseNodes(const Element &element, const CalibrationData &calibration, ExpNode_t pulses, const QString &name)
{
    const currentRange_t range = chooseCurrentRange(calibration, element.autoRange, element.approxMaxCurrent);
    NodeList list;
    addQuietTime(list,
                 Vek_Node_Constant_Voltage(element.quietTimeSamplingInterval, element.startVoltage,
                                           element.startVoltageVsOCP, 0),
                 element.quietTime, range);
    Vek_Node_SetCurrentRange(pulses, range);
    list.addNode(openStep(pulses, name));
    return list;
}
