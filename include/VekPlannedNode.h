// SPDX-License-Identifier: MIT
#pragma once

#include "NimbrelleExport.h"

#include <QtCore/QString>

#include <memory>

struct PlannedNode;

/**
 * One step that the instrument will execute. A small value: copy it freely, use it on any thread.
 *
 * Numbers are in SI units. NaN stands for what nobody can know beforehand, because it depends on the cell; infinity for
 * what has no bound.
 */
class NIMBRELLE_EXPORT VekPlannedNode
{
public:
    /// For containers only: a step of no kind.
    VekPlannedNode();

    /// @name What the step is
    /// @{
    QString stepName() const; ///< As VekExperimentNode will announce it; empty for steps that are not announced.
    QString typeName() const; ///< What the instrument does, for example "Constant current" or "Loop".
    int stepNumber() const;   ///< Number of the element in the experiment, from 1.
    /// @}

    /// @name What it drives
    /// @{
    QString unit() const; ///< Unit of the two set points: "V", "A", "W", "Ohm", "Hz", or empty.
    /// The value that is held, or the one that a sweep begins with. NaN without a set point.
    double startValue() const;
    /// The value that a sweep ends with; equal to startValue() where one value is held.
    double endValue() const;
    bool isStartVersusOcp() const; ///< Whether startValue() is relative to the open-circuit potential.
    bool isEndVersusOcp() const;   ///< The same of endValue(); where one value is held, of the same one.
    /// @}

    /// @name How it is measured
    /// @{

    /// Amperes that its fixed current range has to hold; NaN where the instrument chooses the range while it measures.
    double fixedCurrentRange() const;
    /// Index of the fixed voltage range of a potential that is held, from 0 for the largest; -1 where the element names
    /// none: the instrument, or its calibration at the upload, then chooses.
    int voltageRange() const;
    /// Seconds between two reported samples; 0 where the step is not sampled by time.
    double samplingInterval() const;
    unsigned int downsampleFactor() const; ///< How many samples of the instrument make one that is reported.
    /// @}

    /// @name What ends it
    /// @{
    double timeLimit() const;           ///< Seconds after which the step ends.
    double chargeLimit() const;         ///< Coulombs after which the step ends, of either sign.
    double minVoltage() const;          ///< Volts below which the step ends; minus infinity for none.
    double maxVoltage() const;          ///< Volts above which the step ends; infinity for none.
    bool isMinVoltageVersusOcp() const; ///< Whether minVoltage() is relative to the open-circuit potential.
    bool isMaxVoltageVersusOcp() const; ///< Whether maxVoltage() is relative to the open-circuit potential.
    /// Amperes below which the step ends; minus infinity for none, of a magnitude 0.
    double minCurrent() const;
    double maxCurrent() const;               ///< Amperes above which the step ends; infinity for none.
    bool areCurrentLimitsMagnitudes() const; ///< Whether the sign of the current does not count for these two.
    /// @}

    /// @name How often it runs
    /// @{
    unsigned int repeats() const; ///< How often the step runs in a row; of a loop the number of its passes.
    int loopTarget() const;       ///< Of a loop the position of the step that it goes back to, else -1.
    double runs() const;          ///< How often the step runs in the whole experiment.
    /// @}

    /// @name What to expect of one run, if no limit that depends on the cell ends it earlier
    /// @{

    /// Seconds. Of impedance the periods to settle and to measure; finding its ranges may take an instrument longer.
    double expectedDuration() const;
    double expectedCharge() const; ///< Coulombs that are moved, signed.
    double expectedRows() const;   ///< Samples or impedance points that are reported.
    /// @}

private:
    friend class VekExperimentPlan;
    explicit VekPlannedNode(std::shared_ptr<const PlannedNode> node);

    std::shared_ptr<const PlannedNode> _node;
};
