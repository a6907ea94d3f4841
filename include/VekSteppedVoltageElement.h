// SPDX-License-Identifier: MIT
#pragma once

#include "VekAbstractElement.h"

class SteppedVoltage;

/**
 * Steps the potential from a start to an end.
 *
 * @thread A value: use it from one thread at a time.
 */
class NIMBRELLE_EXPORT VekSteppedVoltageElement : public VekAbstractElement
{
public:
    /**
     * An element with these values; everything else has its default.
     *
     * @param startVoltage potential in volts of the first step
     * @param endVoltage potential in volts of the last step
     * @param stepSize height of a step in volts
     * @param samplingInterval interval between two samples in seconds
     * @param stepDuration duration of a step in seconds; above 0
     */
    VekSteppedVoltageElement(double startVoltage, double endVoltage, double stepSize, double samplingInterval,
                             double stepDuration);
    /// A copy with values of its own.
    VekSteppedVoltageElement(const VekSteppedVoltageElement &other);
    /// Takes over the values of the other element; the two stay independent.
    VekSteppedVoltageElement &operator=(const VekSteppedVoltageElement &other);
    /// Experiments that hold a copy of the element keep it.
    ~VekSteppedVoltageElement() override;

    /// Potential in volts of the first step; set by the constructor.
    double getStartVoltage() const;
    /// Sets the potential in volts of the first step.
    void setStartVoltage(double volts);

    /// Whether the start potential is relative to the open-circuit potential; false by default.
    bool isStartVoltageVsOCP() const;
    /// Makes the start potential relative to the open-circuit potential (true) or to the reference electrode (false).
    void setStartVoltageVsOCP(bool isVsOCP);

    /// Potential in volts of the last step; set by the constructor.
    double getEndVoltage() const;
    /// Sets the potential in volts of the last step.
    void setEndVoltage(double volts);

    /// Whether the end potential is relative to the open-circuit potential; false by default.
    bool isEndVoltageVsOCP() const;
    /// Makes the end potential relative to the open-circuit potential (true) or to the reference electrode (false).
    void setEndVoltageVsOCP(bool isVsOCP);

    /// Height of a step in volts; set by the constructor.
    double getStepSize() const;
    /// Sets the height of a step in volts.
    void setStepSize(double volts);

    /// Interval between two samples in seconds; 1.0 by default.
    double getSamplingInterval() const;
    /// Sets the interval between two samples in seconds.
    void setSamplingInterval(double seconds);

    /// Duration of a step in seconds; 1.0 by default.
    double getStepDuration() const;
    /// Sets the duration of a step in seconds; above 0.
    void setStepDuration(double seconds);

    /// Whether the instrument chooses the current range by itself; true by default.
    bool isAutoRange() const;
    /// Lets the instrument choose the current range by itself. The expected maximum current is kept.
    void setCurrentAutorange();

    /// Expected maximum current in amperes; 0.0 by default.
    double getApproxMaxCurrent() const;
    /// Sets the expected maximum current in amperes: the smallest current range that holds it is used throughout.
    void setApproxMaxCurrent(double amperes);

private:
    explicit VekSteppedVoltageElement(std::shared_ptr<SteppedVoltage> builder);

    std::shared_ptr<SteppedVoltage> _builder; // the object that the base holds too
};
