// SPDX-License-Identifier: MIT
#include "VekPlannedNode.h"

#include "elements/NodePlan.h"

#include <utility>

VekPlannedNode::VekPlannedNode() : VekPlannedNode(std::make_shared<const PlannedNode>())
{
}

VekPlannedNode::VekPlannedNode(std::shared_ptr<const PlannedNode> node) : _node(std::move(node))
{
}

QString VekPlannedNode::stepName() const
{
    return _node->stepName;
}

QString VekPlannedNode::typeName() const
{
    return _node->typeName;
}

int VekPlannedNode::stepNumber() const
{
    return _node->stepNumber;
}

QString VekPlannedNode::unit() const
{
    return _node->unit;
}

double VekPlannedNode::startValue() const
{
    return _node->startValue;
}

double VekPlannedNode::endValue() const
{
    return _node->endValue;
}

bool VekPlannedNode::isStartVersusOcp() const
{
    return _node->isStartVersusOcp;
}

bool VekPlannedNode::isEndVersusOcp() const
{
    return _node->isEndVersusOcp;
}

double VekPlannedNode::fixedCurrentRange() const
{
    return _node->fixedCurrentRange;
}

int VekPlannedNode::voltageRange() const
{
    return _node->voltageRange;
}

double VekPlannedNode::samplingInterval() const
{
    return _node->samplingInterval;
}

unsigned int VekPlannedNode::downsampleFactor() const
{
    return _node->downsampleFactor;
}

double VekPlannedNode::timeLimit() const
{
    return _node->timeLimit;
}

double VekPlannedNode::chargeLimit() const
{
    return _node->chargeLimit;
}

double VekPlannedNode::minVoltage() const
{
    return _node->minVoltage;
}

double VekPlannedNode::maxVoltage() const
{
    return _node->maxVoltage;
}

bool VekPlannedNode::isMinVoltageVersusOcp() const
{
    return _node->isMinVoltageVersusOcp;
}

bool VekPlannedNode::isMaxVoltageVersusOcp() const
{
    return _node->isMaxVoltageVersusOcp;
}

double VekPlannedNode::minCurrent() const
{
    return _node->minCurrent;
}

double VekPlannedNode::maxCurrent() const
{
    return _node->maxCurrent;
}

bool VekPlannedNode::areCurrentLimitsMagnitudes() const
{
    return _node->areCurrentLimitsMagnitudes;
}

unsigned int VekPlannedNode::repeats() const
{
    return _node->repeats;
}

int VekPlannedNode::loopTarget() const
{
    return _node->loopTarget;
}

double VekPlannedNode::runs() const
{
    return _node->runs;
}

double VekPlannedNode::expectedDuration() const
{
    return _node->expectedDuration;
}

double VekPlannedNode::expectedCharge() const
{
    return _node->expectedCharge;
}

double VekPlannedNode::expectedRows() const
{
    return _node->expectedRows;
}
