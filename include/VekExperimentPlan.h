#pragma once

#include "NimbrelleExport.h"

#include <QtCore/QString>
#include <QtCore/QStringList>

#include <vector>

class VekExperiment;

/**
 * One step that the instrument will execute. A plain value; use it on any thread.
 *
 * Numbers are in SI units. NaN stands for what nobody can know beforehand, because it depends on the cell; infinity for
 * what has no bound.
 */
struct VekPlannedNode {
    QString stepName;         ///< As VekExperimentNode will announce it; empty for steps that are not announced.
    QString typeName;         ///< What the instrument does, for example "Constant current" or "Loop".
    int stepNumber = 0;       ///< Number of the element in the experiment, from 1.
    QString unit;             ///< Unit of the three set points: "V", "A", "W", "Ohm", "Hz", or empty.
    double startValue = 0.0;  ///< The value that is held, or the one that a sweep begins with. NaN without a set point.
    double endValue = 0.0;    ///< The value that a sweep ends with; equal to startValue where one value is held.
    bool isVersusOcp = false; ///< Whether startValue is relative to the open-circuit potential.
    double samplingInterval = 0.0; ///< Seconds between two reported samples; 0 where the step is not sampled by time.
    unsigned int downsampleFactor = 1; ///< How many samples of the instrument make one that is reported.
    double timeLimit = 0.0;            ///< Seconds after which the step ends.
    double chargeLimit = 0.0;          ///< Coulombs after which the step ends, of either sign.
    unsigned int repeats = 1;          ///< How often the step runs in a row; of a loop the number of its passes.
    int loopTarget = -1;               ///< Of a loop the position of the step that it goes back to, else -1.
    double runs = 1.0;                 ///< How often the step runs in the whole experiment.
    double expectedDuration = 0.0;     ///< Seconds of one run, if no limit of voltage or current ends it earlier.
    double expectedCharge = 0.0;       ///< Coulombs that one run moves, signed.
    double expectedRows = 0.0;         ///< Samples or impedance points that one run reports.
};

/**
 * What an experiment would be on a kind of instrument: the complaints of its limits, or the steps that it expands into.
 * No instrument is needed.
 *
 *     const VekExperimentPlan plan = VekExperimentPlan::forModel(experiment, "Alder_2_5");
 *     if (!plan.complaints().isEmpty()) ...
 *
 * @thread A value: use it from one thread at a time.
 */
class NIMBRELLE_EXPORT VekExperimentPlan
{
public:
    /// The names that forModel() knows.
    static QStringList modelNames();
    /// The name of a model number, as VekInstrumentDescription has it; empty for a number outside 0 to 35.
    static QString modelName(int modelNumber);

    /**
     * Checks an experiment against the limits of a model and expands it as an upload would.
     *
     * @param modelName one of modelNames(), in any case; for any other name the only complaint says that the model is
     *                  not known
     */
    static VekExperimentPlan forModel(const VekExperiment &experiment, const QString &modelName);

    /// Every broken limit, as an upload to such an instrument would refuse it; empty when it would run.
    QStringList complaints() const { return _complaints; }
    /// The steps in the order of their upload, the closing one last; empty when there are complaints.
    std::vector<VekPlannedNode> nodes() const { return _nodes; }

    /// Seconds of the whole experiment; see VekPlannedNode for NaN and infinity.
    double expectedDuration() const { return total(&VekPlannedNode::expectedDuration); }
    /// Coulombs of the whole experiment, signed.
    double expectedCharge() const { return total(&VekPlannedNode::expectedCharge); }
    /// Samples and impedance points of the whole experiment.
    double expectedRows() const { return total(&VekPlannedNode::expectedRows); }

private:
    double total(double VekPlannedNode::*field) const;

    QStringList _complaints;
    std::vector<VekPlannedNode> _nodes;
};
