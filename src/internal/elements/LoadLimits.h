// SPDX-License-Identifier: MIT
#pragma once

#include "elements/InputCheck.h"
#include "elements/NodeMakers.h"

/// Sets the limits that the constant-load elements share; they name their fields alike.
template <class Element>
void setLoadLimits(ExpNode_t &node, const Element &element)
{
    Vek_Node_SetTimeLimit(node, element.maxDuration, true);
    Vek_Node_SetVLimits(node, element.minVoltage, element.minimumVoltageVsOCP, element.maxVoltage,
                        element.maximumVoltageVsOCP);
    Vek_Node_SetILimits(node, element.minCurrent, element.maxCurrent);
    Vek_Node_SetChargeLimit(node, element.maxCapacity, true);
}

/// Checks the sampling interval and these limits.
template <class Element>
InputCheck &checkLoadLimits(InputCheck &check, const Element &element)
{
    return check.samplingLimit(element.samplingInterval)
        .voltageLimits(element.minVoltage, element.minimumVoltageVsOCP, element.maxVoltage, element.maximumVoltageVsOCP)
        .currentLimits(element.minCurrent, element.maxCurrent);
}
