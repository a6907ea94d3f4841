// SPDX-License-Identifier: MIT
#pragma once

#include "VekAbstractElement.h"

class SteppedCurrent;

/**
 * Steps the current from a start to an end, unless the voltage meets a limit before.
 *
 * @thread A value: use it from one thread at a time.
 */
class NIMBRELLE_EXPORT VekSteppedCurrentElement : public VekAbstractElement
{
public:
    /**
     * An element with these values; everything else has its default.
     *
     * @param startCurrent current in amperes of the first step
     * @param endCurrent current in amperes of the last step
     * @param stepSize height of a step in amperes; there may be up to 2047 steps
     * @param stepDuration duration of a step in seconds; above 0
     * @param samplingInterval interval between two samples in seconds
     */
    VekSteppedCurrentElement(double startCurrent, double endCurrent, double stepSize, double stepDuration,
                             double samplingInterval);
    /// A copy with values of its own.
    VekSteppedCurrentElement(const VekSteppedCurrentElement &other);
    /// Takes over the values of the other element; the two stay independent.
    VekSteppedCurrentElement &operator=(const VekSteppedCurrentElement &other);
    /// Experiments that hold a copy of the element keep it.
    ~VekSteppedCurrentElement() override;

    /// Current in amperes of the first step; set by the constructor.
    double getStartCurrent() const;
    /// Sets the current in amperes of the first step.
    void setStartCurrent(double amperes);

    /// Current in amperes of the last step; set by the constructor.
    double getEndCurrent() const;
    /// Sets the current in amperes of the last step.
    void setEndCurrent(double amperes);

    /// Height of a step in amperes; set by the constructor.
    double getStepSize() const;
    /// Sets the height of a step in amperes; there may be up to 2047 steps.
    void setStepSize(double amperes);

    /// Duration of a step in seconds; 1.0 by default.
    double getStepDuration() const;
    /// Sets the duration of a step in seconds; above 0.
    void setStepDuration(double seconds);

    /// Interval between two samples in seconds; 1.0 by default.
    double getSamplingInterval() const;
    /// Sets the interval between two samples in seconds.
    void setSamplingInterval(double seconds);

    /// Upper voltage limit in volts; positive infinity (none) by default.
    double getApproxMaxVoltage() const;
    /// Sets the upper voltage limit in volts; the step ends when the voltage rises above it; no voltage range is chosen
    /// by it.
    void setApproxMaxVoltage(double volts);

    /// Lower voltage limit in volts; negative infinity (none) by default.
    double getApproxMinVoltage() const;
    /// Sets the lower voltage limit in volts; the step ends when the voltage falls below it; no voltage range is chosen
    /// by it.
    void setApproxMinVoltage(double volts);

private:
    explicit VekSteppedCurrentElement(std::shared_ptr<SteppedCurrent> builder);

    std::shared_ptr<SteppedCurrent> _builder; // the object that the base holds too
};
