// SPDX-License-Identifier: MIT
#pragma once

#include "simulator/cells/Cell.h"

#include <functional>

/**
 * A cell whose state has no closed form in time: it goes on in steps of backward Euler with Richardson's extrapolation,
 * each at most a tenth of the time since the last jump of the control, and a quarter millivolt of a ramp.
 *
 * All such cells are an electrode behind a series resistance, V = E + Rs I. What a kind has to say is the current that
 * its electrode takes at a potential E: in the very instant, and at the end of a step.
 */
class MarchingCell : public Cell
{
public:
    double voltageAt(double current) const final;
    double currentAt(double voltage) const final;
    double passCurrent(double current, double slope, double seconds) final;
    double holdVoltage(double voltage, double slope, double seconds) final;

protected:
    /// Current as a function of the electrode's potential; it must grow with the potential.
    using CurrentLaw = std::function<double(double potential)>;

    /// @param potential of the electrode at rest, to start with
    MarchingCell(double seriesResistance, double potential);

    double potential() const { return _potential; }
    double series() const { return _series; }
    /// Whether a capacitor holds the potential of the electrode when the control jumps.
    virtual bool holdsPotential() const = 0;
    /// The current in the very instant, without such a capacitor.
    virtual double instantCurrent(double potential) const = 0;
    /// The current at the end of a step of backward Euler, for any potential that the electrode may have then.
    virtual CurrentLaw prepareStep(double seconds) = 0;
    /// Takes the potential at which the step that was prepared ends.
    virtual void finishStep(double potential) = 0;
    /// This took two half steps, @p coarse (of the same kind) the whole one: state = 2 this - coarse.
    virtual void extrapolateFrom(const MarchingCell &coarse) = 0;

private:
    enum class Held { Voltage, Current };
    struct Target {
        Held held;
        double value; ///< at the end of the step
    };

    double march(Held held, double value, double slope, double seconds);
    double longestStep(Held held, double slope) const;
    double extrapolatedStep(const Target &halfway, const Target &end, double seconds);
    double step(const Target &target, double seconds);
    double solve(const CurrentLaw &residual) const;

    double _series;    ///< ohms
    double _potential; ///< of the electrode, volts
    double _voltage;   ///< at the terminals at the end of the last step
    double _current = 0.0;
    Held _held = Held::Current;
    double _sinceJump = 1e3; ///< seconds
};
