// SPDX-License-Identifier: MIT
#pragma once

#include "simulator/NodeRunner.h"

#include <cmath>

/**
 * Sampling without a node list: idle sampling at open circuit, and the manual mode, whose control the host sets.
 *
 * The first sample comes one interval after the start, and a new interval counts from the last sample.
 *
 * @thread Lives on the instrument's thread.
 */
class FreeRun
{
public:
    FreeRun(Regulator &regulator, quint64 tick, double interval)
        : _regulator(regulator), _lastSample(tick), _time(tick), _interval(interval)
    {
    }

    quint64 nextTick() const { return _lastSample + quint64(std::llround(_interval * ticksPerSecond)); }
    quint64 now() const { return _time; }
    /// Goes on to the next sample.
    RunSample step()
    {
        liveUntil(nextTick());
        return sample();
    }
    /// Goes on to a tick and samples there.
    RunSample sampleAt(quint64 tick)
    {
        liveUntil(tick);
        return sample();
    }

    /// Lets the cell live under the present control.
    void liveUntil(quint64 tick)
    {
        if (tick <= _time)
            return;
        _charge += _regulator.hold(_control, double(tick - _time) / ticksPerSecond);
        _time = tick;
    }
    void setControl(const Control &control, quint64 tick)
    {
        liveUntil(tick);
        _control = control;
    }
    void setInterval(double seconds) { _interval = seconds; }

private:
    RunSample sample()
    {
        _lastSample = _time;
        return {_time, _regulator.read(_control), _charge};
    }

    Regulator &_regulator;
    Control _control;
    quint64 _lastSample;
    quint64 _time;
    double _interval; ///< seconds
    double _charge = 0.0;
};
