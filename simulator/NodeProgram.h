// SPDX-License-Identifier: MIT
#pragma once

#include "elements/ExpNode.h"
#include "simulator/Control.h"
#include "simulator/ImpedanceSweep.h"

#include <functional>
#include <limits>
#include <memory>

/// A stretch of a node during which one control holds.
struct Segment {
    Control control;
    double duration = std::numeric_limits<double>::infinity(); ///< seconds
    const AcPlan *acPlan = nullptr; ///< of an impedance node: the record that ends with this segment
    double span = 0.0;              ///< of a pulse node: the last part of it, over which its one sample is averaged
};

/**
 * What a node's record asks for, unfolded: its segments one after the other, and how they are sampled.
 *
 * - Sweeps are one ramp. Staircases stand at start, start + step, ... for as long as the level does not pass the end; one
 *   that continues an earlier leg leaves its first level out. The step's sign is that of end - start.
 * - Pulse nodes have floor(|end - start| / |step|) + 1 steps of two segments. Normal: base at the start level, pulse at
 *   the step's level. Differential: base at the step's level, pulse higher by the height. Square wave: the forward half
 *   at level + amplitude in the direction of the sweep, then the backward half at level - amplitude.
 * - The pseudo constant voltage is a voltage reached by steering the current, which never exceeds the given value; with
 *   a value of 0 it is a plain constant voltage.
 * - Impedance nodes hold their bias; each segment ends with an AC record.
 */
class NodeProgram
{
public:
    /// @param openCircuit the potential that "vs OCP" parameters count from
    /// @param acCycles    the most that an AC record of the instrument's line may hold
    NodeProgram(const ExpNode_t &node, double openCircuit, int acCycles);
    NodeProgram() = default;

    /// Whether the type is one that this instrument runs in time (neither jump nor end nor an unknown type).
    static bool isRunnable(NodeType_t type);
    /// Whether its measurements are AC records.
    static bool isImpedance(NodeType_t type);

    int segmentCount() const { return _count; }
    Segment segment(int index) const { return _segment(index); }
    /// Seconds until the node ends by itself; infinite where only limits end it.
    double duration() const { return _duration; }
    /// Seconds between samples; 0: one sample at the end of each segment.
    double interval() const { return _interval; }
    /// The interval counts from the begin of each segment, and each one's end is sampled, as the node's is.
    bool samplesEachSegment() const { return _samplesEachSegment; }
    /// Share of the interval, before each sample, over which a sweep's sample is averaged.
    double averagedShare() const { return _averagedShare; }
    /// The node ends when the voltage (or the current) changes less than this per second between samples; 0: never.
    double leastVoltageRate() const { return _leastVoltageRate; }
    double leastCurrentRate() const { return _leastCurrentRate; }
    /// False when the record makes no sense: no positive sampling interval, scan rate or duration.
    bool isValid() const { return _valid; }

private:
    void unfold(const ExpNode_t &node, double openCircuit);
    void hold(const Control &control);
    void sweep(Control::Law law, double start, double end, double rate, double alpha);
    void staircase(Control::Law law, double start, double end, double step, double stepDuration, bool continues);
    void pulses(Control::Law law, const ExpNode_t &node, double start, double end);

    void impedance(const Control &bias, const ExpNode_t &node);

    int _acCycles = 0;

    std::function<Segment(int)> _segment;
    std::shared_ptr<const std::vector<AcPlan>> _plans; ///< of an impedance node
    int _count = 0;
    double _duration = std::numeric_limits<double>::infinity();
    double _interval = 0.0;
    bool _samplesEachSegment = false;
    double _averagedShare = 0.0;
    double _leastVoltageRate = 0.0;
    double _leastCurrentRate = 0.0;
    bool _valid = true;
};
