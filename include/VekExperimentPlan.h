// SPDX-License-Identifier: MIT
#pragma once

#include "NimbrelleExport.h"
#include "VekErrorCode.h"
#include "VekPlanComplaint.h"
#include "VekPlannedNode.h"

#include <QtCore/QString>
#include <QtCore/QStringList>

#include <memory>
#include <vector>

class VekExperiment;
class VekExperimentPlanPrivate;
struct VekInstrumentDescription;

/**
 * What an experiment would be on a kind of instrument: the complaints of its upload, or the steps that it expands into.
 * No instrument is needed.
 *
 *     const VekExperimentPlan plan = VekExperimentPlan::forModel(experiment, "Alder_2_5");
 *     if (plan.result() != VekErrorCode::Success) ...
 *
 * @thread A value: copy it freely, use it from one thread at a time.
 */
class NIMBRELLE_EXPORT VekExperimentPlan
{
public:
    /// A plan of nothing, without complaints and steps.
    VekExperimentPlan();

    /// @name Models
    /// @{

    /// The names of all models, by their number.
    static QStringList modelNames();
    /// The name of a model number, as VekInstrumentDescription has both; empty for a number outside 0 to 35.
    static QString modelName(int modelNumber);
    /**
     * The model that people mean by a text: one of modelNames() in any case, a number, or the name that instruments of
     * one kind alone are sold under ("Gale").
     *
     * A name that several kinds share ("Alder") is not decided, although the first of them has no other: they have
     * different limits. That one is found by its number.
     *
     * @param complaint says why there is no such model, and names those that may be meant; may be null
     * @return the number of the model, or -1
     */
    static int modelNumber(const QString &text, QString *complaint = nullptr);
    /// @}

    /// @name Plans
    /// A model that is not known, or not decided, is the only complaint.
    /// @{

    /// Checks an experiment against a model and expands it, both as an upload would. For @p model see modelNumber().
    static VekExperimentPlan forModel(const VekExperiment &experiment, const QString &model);
    /// The same for a model number, 0 to 35.
    static VekExperimentPlan forModel(const VekExperiment &experiment, int modelNumber);
    /// The same for the model of an instrument that has been connected.
    static VekExperimentPlan forModel(const VekExperiment &experiment, const VekInstrumentDescription &instrument);
    /// @}

    /// What an upload to such an instrument would answer before it sends anything: Success, or why it would not.
    VekErrorCode result() const;
    /// All reasons for a refusal; empty when the experiment would run.
    std::vector<VekPlanComplaint> complaints() const;
    /// The steps in the order of their upload, the closing one last; empty when there are complaints.
    std::vector<VekPlannedNode> nodes() const;

    /// Seconds of the whole experiment; see VekPlannedNode for NaN and infinity.
    double expectedDuration() const;
    /// Coulombs of the whole experiment, signed.
    double expectedCharge() const;
    /// Samples and impedance points of the whole experiment.
    double expectedRows() const;

private:
    explicit VekExperimentPlan(std::shared_ptr<const VekExperimentPlanPrivate> plan);
    double total(double (VekPlannedNode::*value)() const) const;

    std::shared_ptr<const VekExperimentPlanPrivate> _private;
};
