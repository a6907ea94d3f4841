// SPDX-License-Identifier: MIT
#pragma once

#include "VekAbstractElement.h"

class OpenCircuitElement;

/**
 * Disconnects the cell and watches its potential until the time is over or a limit is met.
 *
 * @thread A value: use it from one thread at a time.
 */
class NIMBRELLE_EXPORT VekOpenCircuitElement : public VekAbstractElement
{
public:
    /**
     * An element with these values; everything else has its default.
     *
     * @param maxDuration longest duration of the step in seconds; infinity for no limit
     * @param samplingInterval interval between two samples in seconds
     */
    VekOpenCircuitElement(double maxDuration, double samplingInterval);
    /// A copy with values of its own.
    VekOpenCircuitElement(const VekOpenCircuitElement &other);
    /// Takes over the values of the other element; the two stay independent.
    VekOpenCircuitElement &operator=(const VekOpenCircuitElement &other);
    /// Experiments that hold a copy of the element keep it.
    ~VekOpenCircuitElement() override;

    /// Longest duration of the step in seconds; set by the constructor.
    double getMaxDuration() const;
    /// Sets the longest duration of the step in seconds; infinity for no limit.
    void setMaxDuration(double seconds);

    /// Interval between two samples in seconds; 1.0 by default.
    double getSamplingInterval() const;
    /// Sets the interval between two samples in seconds.
    void setSamplingInterval(double seconds);

    /// Upper voltage limit in volts; positive infinity (none) by default.
    double getMaxVoltage() const;
    /// Sets the upper voltage limit in volts; the step ends when the voltage rises above it.
    void setMaxVoltage(double volts);

    /// Lower voltage limit in volts; negative infinity (none) by default.
    double getMinVoltage() const;
    /// Sets the lower voltage limit in volts; the step ends when the voltage falls below it.
    void setMinVoltage(double volts);

    /// Smallest rate in volts per second at which the voltage may change, without sign; 0.0 by default.
    double getMindVdt() const;
    /// Sets the smallest rate in volts per second at which the voltage may change, without sign; the step ends when the
    /// rate falls below it; 0 for no limit.
    void setMindVdt(double voltsPerSecond);

    /// Whether the instrument chooses the voltage range by itself; true by default.
    bool isAutoVoltageRange() const;
    /// Lets the instrument choose the voltage range by itself. The expected maximum voltage is kept.
    void setAutoVoltageRange();

    /// Expected maximum voltage in volts; positive infinity by default. It is the upper voltage limit as well: setting
    /// one sets both.
    double getApproxMaxVoltage() const;
    /// Sets the expected maximum voltage in volts: the smallest voltage range that holds it is used throughout. It is
    /// the upper voltage limit as well: setting one sets both.
    void setApproxMaxVoltage(double volts);

private:
    explicit VekOpenCircuitElement(std::shared_ptr<OpenCircuitElement> builder);

    std::shared_ptr<OpenCircuitElement> _builder; // the object that the base holds too
};
