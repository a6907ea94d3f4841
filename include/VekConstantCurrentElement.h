// SPDX-License-Identifier: MIT
#pragma once

#include "VekAbstractElement.h"

class ConstantCurrentAdvElement;

/**
 * Drives a constant current until the time is over or a limit is met. The instrument samples at least twice a second;
 * samples in between are not reported.
 *
 * @thread A value: use it from one thread at a time.
 */
class NIMBRELLE_EXPORT VekConstantCurrentElement : public VekAbstractElement
{
public:
    /**
     * An element with these values; everything else has its default.
     *
     * @param current current in amperes; positive is anodic, or charging
     * @param samplingInterval interval between two samples in seconds
     * @param maxDuration longest duration of the step in seconds; infinity for no limit
     */
    VekConstantCurrentElement(double current, double samplingInterval, double maxDuration);
    /// A copy with values of its own.
    VekConstantCurrentElement(const VekConstantCurrentElement &other);
    /// Takes over the values of the other element; the two stay independent.
    VekConstantCurrentElement &operator=(const VekConstantCurrentElement &other);
    /// Experiments that hold a copy of the element keep it.
    ~VekConstantCurrentElement() override;

    /// Current in amperes; set by the constructor.
    double getCurrent() const;
    /// Sets the current in amperes; positive is anodic, or charging.
    void setCurrent(double amperes);

    /// Interval between two samples in seconds; 1.0 by default.
    double getSamplingInterval() const;
    /// Sets the interval between two samples in seconds, and turns the filter of setMinSamplingVoltageDifference() off.
    void setSamplingInterval(double seconds);

    /// Longest duration of the step in seconds; set by the constructor.
    double getMaxDuration() const;
    /// Sets the longest duration of the step in seconds; infinity for no limit.
    void setMaxDuration(double seconds);

    /// Upper voltage limit in volts; positive infinity (none) by default.
    double getMaxVoltage() const;
    /// Sets the upper voltage limit in volts; the step ends when the voltage rises above it.
    void setMaxVoltage(double volts);

    /// Lower voltage limit in volts; negative infinity (none) by default.
    double getMinVoltage() const;
    /// Sets the lower voltage limit in volts; the step ends when the voltage falls below it.
    void setMinVoltage(double volts);

    /// Largest charge in coulombs moved in the step; positive infinity (none) by default.
    double getMaxCapacity() const;
    /// Sets the largest charge in coulombs moved in the step; the step ends when it has passed.
    void setMaxCapacity(double coulombs);

    /// Whether the instrument chooses the current range by itself; true by default.
    bool isAutoRange() const;
    /// Lets the instrument choose the current range by itself. The expected maximum current is kept.
    void setAutoRange();

    /// Expected maximum current in amperes; positive infinity by default.
    double getApproxMaxCurrent() const;
    /// Sets the expected maximum current in amperes: the smallest current range that holds it is used throughout.
    void setApproxMaxCurrent(double amperes);

    /// Change of voltage in volts that makes a sample worth reporting; negative infinity (none) by default.
    double getMinSamplingVoltageDifference() const;
    /// Sets the change of voltage in volts that makes a sample worth reporting; the instrument then samples as fast as
    /// it can, in place of the sampling interval; negative infinity turns the filter off.
    void setMinSamplingVoltageDifference(double volts);

    /// Whether the instrument chooses the voltage range by itself; true by default.
    bool isAutoVoltageRange() const;
    /// Lets the instrument choose the voltage range by itself. The expected maximum voltage is kept.
    void setAutoVoltageRange();

    /// Expected maximum voltage in volts; positive infinity by default.
    double getApproxMaxVoltage() const;
    /// Sets the expected maximum voltage in volts: the smallest voltage range that holds it is used throughout.
    void setApproxMaxVoltage(double volts);

private:
    explicit VekConstantCurrentElement(std::shared_ptr<ConstantCurrentAdvElement> builder);

    std::shared_ptr<ConstantCurrentAdvElement> _builder; // the object that the base holds too
};
