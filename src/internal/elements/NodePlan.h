// SPDX-License-Identifier: MIT
#pragma once

#include "elements/NodeList.h"

#include <limits>

/// What an instrument will do with one node; the fields are those of VekPlannedNode, where they are described.
struct PlannedNode {
    QString stepName;
    QString typeName;
    int stepNumber = 0;
    QString unit;
    double startValue = std::numeric_limits<double>::quiet_NaN();
    double endValue = std::numeric_limits<double>::quiet_NaN();
    bool isStartVersusOcp = false;
    bool isEndVersusOcp = false;
    double fixedCurrentRange = std::numeric_limits<double>::quiet_NaN();
    int voltageRange = -1;
    double samplingInterval = 0.0;
    quint32 downsampleFactor = 1;
    double timeLimit = 0.0;
    double chargeLimit = 0.0;
    double minVoltage = -std::numeric_limits<double>::infinity();
    double maxVoltage = std::numeric_limits<double>::infinity();
    bool isMinVoltageVersusOcp = false;
    bool isMaxVoltageVersusOcp = false;
    double minCurrent = -std::numeric_limits<double>::infinity();
    double maxCurrent = std::numeric_limits<double>::infinity();
    bool areCurrentLimitsMagnitudes = false;
    quint32 repeats = 1;
    int loopTarget = -1;
    double runs = 1.0;
    double expectedDuration = 0.0;
    double expectedCharge = 0.0;
    double expectedRows = 0.0;
};

/**
 * Foretells what an instrument does with the nodes of an experiment, by the rules of the firmware:
 *
 * - A sampled node reports at each whole multiple of its interval and once more at its end, where a sample that would fall
 *   within a thousandth of an interval before the end gives way. The host reports the last one of each full group.
 * - A staircase has a level more than steps, one that goes on from another leg has not. A pulse has two samples.
 * - An impedance point takes one period to settle, and as many as the node says, at least eight from 1 Hz on. The
 *   converter takes 64 samples a period, or of an alias of the sine where that were more than 100,000 a second.
 *
 * fixedCurrentRange is left open: the elements know it, the nodes know an index that depends on a calibration.
 */
std::vector<PlannedNode> planNodes(const NodeList &list);
