// SPDX-License-Identifier: MIT
#pragma once

#include "elements/ExpNode.h"
#include "link/ExpStopType.h"
#include "simulator/NodeProgram.h"
#include "simulator/Regulator.h"

#include <QVector>

#include <limits>
#include <optional>

constexpr double ticksPerSecond = 1e8; ///< of the mainline's clock

/// What was measured at one instant.
struct RunSample {
    quint64 tick = 0;
    CellReading reading;
    double charge = 0.0; ///< of the instrument's counter, coulombs
};

/// The limits of a whole channel; they end the experiment. Infinity stands for none.
struct SafetyLimits {
    float currentMin = -std::numeric_limits<float>::infinity();
    float currentMax = std::numeric_limits<float>::infinity();
    float voltageMin = -std::numeric_limits<float>::infinity();
    float voltageMax = std::numeric_limits<float>::infinity();

    std::optional<ExpStopType_t> brokenBy(const CellReading &reading) const;
};

/// Hears what a run does, in the order in which the instrument reports it.
class RunObserver
{
public:
    virtual ~RunObserver() = default;
    virtual void onNodeBegin(quint64 tick, int index) = 0;
    virtual void onSample(const RunSample &sample) = 0;
    /// An AC record has been taken around this reading; one impedance of the cell's present state for each tone.
    virtual void onAcRecord(const RunSample &sample, const AcPlan &plan,
                            const std::vector<std::complex<double>> &impedances) = 0;
    virtual void onNodeDone(quint64 tick, int index) = 0;
    virtual void onNodeSkipped() = 0;
    /// The run is over; the observer may drop the runner after this call has returned to it.
    virtual void onRunDone(quint64 tick, ExpStopType_t reason) = 0;
};

/**
 * Executes an uploaded node list on a cell, as the firmware would, in instrument time alone.
 *
 * - Each pass of each node is announced; loop, branch, modify and end nodes are announced too, since positions in the
 *   list count, but take no time and are never reported as done.
 * - A sample comes at each whole multiple of the interval, counted from the node's start and not at the start itself, and
 *   one more at the node's end whatever ends it, so that no charge goes unreported. A regular sample that would fall
 *   within a thousandth of an interval before the end gives way to that last one. The levels of a staircase are sampled
 *   like nodes, so that each has as many samples. Pulse nodes have one sample per segment.
 * - A limit ends the node at the very instant at which the cell passes it, found by bisection to 1e-12 of the step.
 * - The charge counter starts again from zero at a node with the charge limit flag; otherwise it goes on.
 * - "vs OCP" counts from the open-circuit potential at the start of the run or at the end of the last open-circuit node.
 * - A branch takes its first jump if the open-circuit potential lies within its voltage limits, else the second.
 * - While it is paused, the cell rests at open circuit and the node's time stands still.
 *
 * @thread Lives on the instrument's thread.
 */
class NodeRunner
{
public:
    /// @param regulator and @param observer are borrowed and outlive the runner
    NodeRunner(Regulator &regulator, RunObserver &observer, const QVector<ExpNode_t> &nodes);

    void start(quint64 tick);
    bool isOver() const { return _over; }
    bool isPaused() const { return _pausedAt.has_value(); }
    /// When step() has something to report; the largest number while paused or over.
    quint64 nextTick() const;
    /// Goes on to the next instant and reports what happens there.
    void step();

    void pause(quint64 tick);
    void resume(quint64 tick);
    void skip(quint64 tick);
    void stop(quint64 tick, ExpStopType_t reason);

    void setSafetyLimits(const SafetyLimits &limits) { _safety = limits; }
    /// What the instrument itself can stand; beyond it the experiment is stopped.
    void setInstrumentLimits(double current, double voltage);
    /// The most cycles that one AC record holds.
    void setAcCycles(int cycles) { _acCycles = cycles; }
    const ExpNode_t &node() const { return _nodes.at(_index); }

private:
    /// Why a run or a node may end; nothing, or a node's own limit, or the reason of the whole stop.
    struct Verdict {
        bool endsNode = false;
        std::optional<ExpStopType_t> stops;
        explicit operator bool() const { return endsNode || stops; }
    };

    void enter(int index);
    int passLoop(int index);
    int branch(int index) const;
    int modify(int index);
    void beginPass();
    void endPass();
    void closePass();
    void arrive();
    void finish(const Verdict &verdict);
    void beginSegment(int index);

    double nextInstant() const;
    double nextSampleTime() const;
    double windowBefore(double time) const;
    bool advanceTo(double time);
    bool advance(double seconds);
    bool advanceAveraging(double window);
    Verdict judge(const Regulator &regulator, double time, double charge) const;
    Verdict judge() const { return judge(_regulator, _time, _charge); }
    bool isNodeLimitPassed(const CellReading &reading, double charge) const;
    bool hasSettled(const RunSample &before) const;
    Control controlAt(double time) const { return _segment.control.after(time - _segmentStart); }
    quint64 tickAt(double time) const;
    void report(const CellReading &reading);
    void reportAcRecord();
    void reportSample(const CellReading &reading);
    void catchUp(quint64 tick);

    Regulator &_regulator;
    RunObserver &_observer;
    QVector<ExpNode_t> _nodes;
    QVector<int> _passes;          ///< by node: finished passes of a loop
    QVector<float> _modifiedValue; ///< by node: the value that a modify node last wrote
    SafetyLimits _safety;
    double _currentLimit = std::numeric_limits<double>::infinity();
    double _voltageLimit = std::numeric_limits<double>::infinity();
    int _acCycles = 120;
    double _openCircuit = 0.0;
    double _charge = 0.0;

    int _index = 0;
    int _pass = 0;
    NodeProgram _program;
    double _nodeEnd = 0.0; ///< seconds of node time
    double _time = 0.0;    ///< seconds of node time
    quint64 _origin = 0;   ///< tick at which the node's time is zero
    int _segmentIndex = 0;
    Segment _segment;
    double _segmentStart = 0.0;
    qint64 _sampleCount = 0; ///< regular ones, since sampling began to count
    CellReading _reading;
    std::optional<RunSample> _lastSample; ///< of this pass
    std::optional<quint64> _pausedAt;
    bool _passIsOpen = false; ///< begun and not yet done
    bool _over = false;
};
