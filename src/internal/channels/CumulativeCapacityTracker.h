// SPDX-License-Identifier: MIT
#pragma once

#include <mutex>
#include <optional>
#include <vector>

/**
 * Turns the instrument's running charge counter into charge totals per experiment, step and sub-step, each as a sum of
 * magnitudes (abs) and as a signed sum (net). All charges are in coulombs.
 *
 * Charge is booked from one sample to the next. What an open node has moved so far is the tail; it is folded into
 * sub-step, step and experiment when the node ends. The live readings count the tail in, the others do not.
 *
 * @thread Events and readings may come from any thread: each holds the object's own mutex. The channel's idle samples
 *         go on while a client begins an experiment.
 */
class CumulativeCapacityTracker
{
public:
    /// Charge moved both ways: the sum of the magnitudes, and the sum.
    struct Accum {
        double absC = 0.0;
        double netC = 0.0;

        void add(double delta, double epsilon);
        void add(const Accum &other);
        bool isZero() const { return absC == 0.0 && netC == 0.0; }
    };

    /// What a sample carries along, in coulombs: the live totals.
    struct Snapshot {
        double experimentAbs, experimentNet;
        double stepAbs, stepNet;
        double substepAbs, substepNet;
    };

    /// @name Events
    /// @{
    void beginExperiment();
    /// @param stepNumber        the node's step, from 1
    /// @param chargeLimitActive the instrument's counter starts again from zero on such a node
    void onNodeBeginning(int stepNumber, bool chargeLimitActive);
    /// @param chargeCoulombs reading of the instrument's counter; it may fall. One that is no finite number is passed over:
    ///                       the next one counts what has moved since the last that was.
    void onDcDataReceived(double chargeCoulombs);
    void onNodeCompleted();
    /// The totals stay until the next beginExperiment().
    void endExperiment();
    /// Changes of a smaller magnitude are dropped, not carried over. Negative values are ignored; 0 at the start.
    void setDeltaEpsilon(double coulombs);
    /// @}

    /// @name Readings in coulombs
    /// @{
    double getLiveExperimentAbs_C() const;
    double getLiveExperimentNet_C() const;
    double getCurrentStepAbs_C() const;
    double getCurrentStepNet_C() const;
    double getCurrentSubstepAbs_C() const;
    double getCurrentSubstepNet_C() const;
    /// Without the open node.
    double getExperimentAbs_C() const;
    double getExperimentNet_C() const;
    /// Finished steps, by step number minus 1.
    std::vector<double> getPerStepAbs_C() const;
    std::vector<double> getPerStepNet_C() const;
    /// Finished sub-steps, by step number minus 1, then in the order in which they came.
    std::vector<std::vector<double>> getPerSubstepAbs_C() const;
    std::vector<std::vector<double>> getPerSubstepNet_C() const;
    Snapshot getSnapshot_C() const;
    /// @}

private:
    enum State : int {
        NoOpenNode = 0,
        FirstSampleAwaited = 1,
        NodeOpen = 2,
    };

    /// A mutex of the object's own: copying or assigning the object leaves it alone.
    struct OwnMutex : std::mutex {
        OwnMutex() = default;
        OwnMutex(const OwnMutex &) {}
        OwnMutex &operator=(const OwnMutex &) { return *this; }
    };

    void beginStep(int stepNumber);
    void beginSubstep();
    void beginNode(bool chargeLimitActive);
    void endNode();
    void endSubstep();
    void endStep();
    void countUpTo(double reading, const std::optional<double> &from);
    void foldTailUp_();
    void finalizeOpenSubstep_(bool force);
    void finalizeOpenStep_();
    void growToStep();
    void growToSubstep();

    State _state = NoOpenNode;
    double _lastSample = 0.0;
    std::optional<double> _baseline; // reading from which the open node counts
    std::optional<double> _previous; // reading of the last sample that was counted
    Accum _tail;                     // since the last fold
    Accum _substep;
    Accum _step;
    Accum _experiment;
    int _stepNumber = 0; // 0: no open step
    std::vector<double> _perStepAbs;
    std::vector<double> _perStepNet;
    int _substepIndex = 0; // count of sub-steps in the open step
    std::vector<std::vector<double>> _perSubstepAbs;
    std::vector<std::vector<double>> _perSubstepNet;
    double _deltaEpsilon = 0.0;
    mutable OwnMutex _mutex; // guards all of the above
};
