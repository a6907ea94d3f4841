// SPDX-License-Identifier: MIT
#pragma once

#include "VekAbstractElement.h"

class ConstantPotAdvElement;

/**
 * Holds a constant potential until the time is over or a limit is met.
 *
 * @thread A value: use it from one thread at a time.
 */
class NIMBRELLE_EXPORT VekConstantPotElement : public VekAbstractElement
{
public:
    /**
     * An element with these values; everything else has its default.
     *
     * @param potential potential in volts
     * @param samplingInterval interval between two samples in seconds
     * @param maxDuration longest duration of the step in seconds; infinity for no limit
     */
    VekConstantPotElement(double potential, double samplingInterval, double maxDuration);
    /// A copy with values of its own.
    VekConstantPotElement(const VekConstantPotElement &other);
    /// Takes over the values of the other element; the two stay independent.
    VekConstantPotElement &operator=(const VekConstantPotElement &other);
    /// Experiments that hold a copy of the element keep it.
    ~VekConstantPotElement() override;

    /// Potential in volts; 0.0 by default.
    double getPotential() const;
    /// Sets the potential in volts.
    void setPotential(double volts);

    /// Whether the potential is relative to the open-circuit potential; false by default.
    bool isVoltageVsOCP() const;
    /// Makes the potential relative to the open-circuit potential (true) or to the reference electrode (false).
    void setVoltageVsOCP(bool isVsOCP);

    /// Interval between two samples in seconds; 1.0 by default.
    double getSamplingInterval() const;
    /// Sets the interval between two samples in seconds.
    void setSamplingInterval(double seconds);

    /// Longest duration of the step in seconds; set by the constructor.
    double getMaxDuration() const;
    /// Sets the longest duration of the step in seconds; infinity for no limit.
    void setMaxDuration(double seconds);

    /// Largest magnitude of the current in amperes; positive infinity (none) by default.
    double getMaxAbsoluteCurrent() const;
    /// Sets the largest magnitude of the current in amperes; the step ends when it is exceeded. The sign is dropped.
    void setMaxAbsoluteCurrent(double amperes);
    /// Another name for getMaxAbsoluteCurrent().
    double getMaxCurrent() const;
    /// Another name for setMaxAbsoluteCurrent().
    void setMaxCurrent(double amperes);
    /// Smallest magnitude of the current in amperes; 0.0 by default.
    double getMinAbsoluteCurrent() const;
    /// Sets the smallest magnitude of the current in amperes; the step ends when the magnitude falls below it. The sign
    /// is dropped.
    void setMinAbsoluteCurrent(double amperes);
    /// Another name for getMinAbsoluteCurrent().
    double getMinCurrent() const;
    /// Another name for setMinAbsoluteCurrent().
    void setMinCurrent(double amperes);

    /// Largest charge in coulombs moved in the step; positive infinity (none) by default.
    double getMaxCapacity() const;
    /// Sets the largest charge in coulombs moved in the step; the step ends when it has passed.
    void setMaxCapacity(double coulombs);

    /// Smallest rate in amperes per second at which the current may change, without sign; 0.0 by default.
    double getMindIdt() const;
    /// Sets the smallest rate in amperes per second at which the current may change, without sign; the step ends when
    /// the rate falls below it; 0 for no limit.
    void setMindIdt(double amperesPerSecond);

    /// Whether the instrument chooses the current range by itself; true by default.
    bool isAutoRange() const;
    /// Lets the instrument choose the current range by itself. The expected maximum current is kept.
    void setAutoRange();

    /// Expected maximum current in amperes; positive infinity by default.
    double getApproxMaxCurrent() const;
    /// Sets the expected maximum current in amperes: the smallest current range that holds it is used throughout.
    void setApproxMaxCurrent(double amperes);

    /// Voltage range, 0 (largest) to 3, or 5 where the instrument chooses by itself; 5 by default.
    int getVoltageRange() const;
    /// Sets the voltage range, 0 (largest) to 3, or 5 to let the instrument choose. Any other number is ignored.
    void setVoltageRange(int range);

private:
    explicit VekConstantPotElement(std::shared_ptr<ConstantPotAdvElement> builder);

    std::shared_ptr<ConstantPotAdvElement> _builder; // the object that the base holds too
};
