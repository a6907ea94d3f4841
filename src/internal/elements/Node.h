// SPDX-License-Identifier: MIT
#pragma once

#include "elements/ExpNode.h"

#include <QString>

/// One step of an experiment as the host knows it: the instrument's record, and what the instrument never sees.
struct Node {
    ExpNode_t hwNode;              ///< goes to the instrument as it stands
    QString stepName;              ///< shown to the user; reported when the node begins
    qint32 stepNumber = -1;        ///< number of the element, from 1; -1 until NodeList::addNode() assigns one
    double voltageDifferent = 0.0; ///< volts; a sample is reported only if the voltage moved this much
    bool newSubStep = false;       ///< opens a new step number
    bool timeSeriesData = false;   ///< an AC node whose raw time series is wanted
    bool newCycle = false;         ///< opens a new cycle
    bool restPeriod = false;       ///< a rest
    quint32 downsampleFactor = 1;  ///< how many instrument samples make one reported sample

    void setStepName(const QString &name) { stepName = name; }
    void setNewSubStep(bool isNew) { newSubStep = isNew; }
    void setVoltageDifferent(double volts) { voltageDifferent = volts; }
    void setStepNumber(int number) { stepNumber = number; }
    void setTimeSeriesData(bool isWanted) { timeSeriesData = isWanted; }
    void setNewCycle(bool isNew) { newCycle = isNew; }
    void setRestPeriod(bool isRest) { restPeriod = isRest; }

    /// All of the above in one call.
    void setNodeMembers(const QString &name, bool isNewSubStep, double volts = 0.0, int number = -1,
                        bool wantsTimeSeries = false, bool isNewCycle = false, bool isRest = false);
};
