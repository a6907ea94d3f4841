// SPDX-License-Identifier: MIT
#include "elements/StepNodes.h"

#include "calibration/CalibrationData.h"
#include "elements/NodeMakers.h"
#include "elements/NodeSampling.h"

#include <cmath>

currentRange_t chooseCurrentRange(const CalibrationData &calibration, bool isAutomatic, double maxCurrent)
{
    return isAutomatic ? currentRange_t::Auto : calibration.getMinCurrentRange_dc(static_cast<float>(maxCurrent));
}

voltageRange_t chooseVoltageRange(const CalibrationData &calibration, bool isAutomatic, double maxVoltage)
{
    return isAutomatic ? voltageRange_t::Auto
                       : calibration.getMinVoltageRange(static_cast<float>(std::fabs(maxVoltage)));
}

Node openStep(const ExpNode_t &hwNode, const QString &name, float period)
{
    Node node;
    node.hwNode = hwNode;
    setDownsampling(node, period);
    node.setNodeMembers(name, true);
    return node;
}

NodeList listOf(const Node &node)
{
    NodeList list;
    list.addNode(node);
    return list;
}

Node quietNode(ExpNode_t hold, double quietTime, currentRange_t range)
{
    Vek_Node_SetTimeLimit(hold, static_cast<float>(quietTime), true);
    Vek_Node_SetCurrentRange(hold, range);
    hold.flags2 |= NodeFlag2::quietTime;
    return openStep(hold, QStringLiteral("Quiet Time"));
}

void addQuietTime(NodeList &list, ExpNode_t hold, double quietTime, currentRange_t range)
{
    if (quietTime > 0.0)
        list.addNode(quietNode(hold, quietTime, range));
}
