// SPDX-License-Identifier: MIT
#include "elements/Node.h"

void Node::setNodeMembers(const QString &name, bool isNewSubStep, double volts, int number, bool wantsTimeSeries,
                          bool isNewCycle, bool isRest)
{
    stepName = name;
    newSubStep = isNewSubStep;
    voltageDifferent = volts;
    stepNumber = number;
    timeSeriesData = wantsTimeSeries;
    newCycle = isNewCycle;
    restPeriod = isRest;
}
