// SPDX-License-Identifier: MIT
#pragma once

#include "elements/ExpNode.h"
#include "elements/ExperimentComplaint.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <memory>

class CalibrationData;
class ErrorStringList;
class NodeList;
struct HardwareVersion;

/// What a handler validates, expands and runs.
class AbstractExperiment
{
public:
    virtual ~AbstractExperiment() = default;

    virtual std::shared_ptr<AbstractExperiment> clone() const = 0;
    virtual QString GetShortName() const = 0;
    virtual QString GetFullName() const = 0;
    virtual QString GetDescription() const = 0;
    virtual QStringList GetCategory() const = 0;
    virtual QList<quint8> GetTypes() const = 0;
    /// The nodes in the order of their upload, the end node last. Cannot fail: validateInput() comes before.
    virtual NodeList GetNodesData(const CalibrationData &calibration, const HardwareVersion &hardware) const = 0;
    /// Every complaint of every element, in order; "%1" stands for the name of the model.
    virtual ErrorStringList validateInput(const HardwareVersion &hardware) = 0;
    /// Histograms of the run; an experiment that makes none answers with an empty list.
    virtual QStringList returnHistogramData() const { return {}; }
    /**
     * All that an upload refuses before it makes nodes: a size that cannot be expanded; else what validateInput()
     * complains about; else values that cannot be meant. Each check runs only when the one before has nothing to say.
     */
    virtual ExperimentComplaints findComplaints(const HardwareVersion &hardware);

    /// 0 for the types of node that measure AC, 1 for all others.
    static int getExperimentNodeType(NodeType_t type);

protected:
    AbstractExperiment() = default;
    AbstractExperiment(const AbstractExperiment &) = default;
    AbstractExperiment &operator=(const AbstractExperiment &) = default;
};
