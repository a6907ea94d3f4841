// SPDX-License-Identifier: MIT
#pragma once

#include "NimbrelleExport.h"

#include <QtCore/QString>
#include <QtCore/QStringList>

#include <memory>

class VekAbstractElement;
class VekExperimentPrivate;

/**
 * What an instrument is to run: elements in their order, each with a repeat count, and groups of elements that repeat
 * as a whole, nested to any depth.
 *
 *     VekConstantCurrentElement charge(0.1, 1.0, 3600.0);
 *     VekOpenCircuitElement rest(600.0, 10.0);
 *     VekExperiment cycle;
 *     cycle.appendElement(charge, 1);
 *     cycle.appendElement(rest, 1);
 *     VekExperiment experiment;
 *     experiment.appendSubExperiment(cycle, 10);
 *
 * Values are checked when the experiment is uploaded, by VekInstrumentHandler::uploadExperimentToChannel().
 *
 * @thread A value: use it from one thread at a time. After the upload it may be changed or destroyed freely.
 */
class NIMBRELLE_EXPORT VekExperiment
{
public:
    /// An empty experiment named "Custom Experiment", described as "Not Defined".
    VekExperiment();
    /// A copy that grows independently of its source.
    VekExperiment(const VekExperiment &other);
    /// Makes this experiment a copy that grows independently of its source.
    VekExperiment &operator=(const VekExperiment &other);
    ~VekExperiment();

    /// The name, "Custom Experiment" until it is set.
    QString getExperimentName() const;
    /// The description, "Not Defined" until it is set.
    QString getDescription() const;
    /// The list with "Custom".
    QStringList getCategory() const;

    /// Gives the experiment a name; any text.
    void setExperimentName(QString name);
    /// Gives the experiment a description; any text.
    void setDescription(QString description);

    /**
     * Appends a copy of an element: what is set on @p element later does not reach the experiment, so one object may be
     * appended many times with other values in between.
     *
     * @param repeats how many times it runs; above 65535 it counts as 65535
     * @return false when @p repeats is 0; the experiment is then unchanged
     */
    bool appendElement(VekAbstractElement &element, unsigned int repeats);
    /**
     * Appends all that another experiment holds now, as a group that repeats as a whole; what is appended to @p sub
     * later does not reach this experiment. An experiment may be appended to itself.
     *
     * @param repeats how many times the group runs; above 65535 it counts as 65535
     * @return false when @p sub is empty or @p repeats is 0; the experiment is then unchanged
     */
    bool appendSubExperiment(const VekExperiment &sub, unsigned int repeats);

private:
    friend class VekExperimentPlan;
    friend class VekInstrumentHandler;

    std::shared_ptr<VekExperimentPrivate> _private;
};
