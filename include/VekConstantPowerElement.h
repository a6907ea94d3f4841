// SPDX-License-Identifier: MIT
#pragma once

#include "VekAbstractElement.h"

class ConstantPowerElement;

/**
 * Charges or discharges a cell at constant power until the time is over or a limit is met.
 *
 * @thread A value: use it from one thread at a time.
 */
class NIMBRELLE_EXPORT VekConstantPowerElement : public VekAbstractElement
{
public:
    /**
     * An element with these values; everything else has its default.
     *
     * @param power power in watts; positive charges, negative discharges
     * @param maxDuration longest duration of the step in seconds; infinity for no limit
     * @param samplingInterval interval between two samples in seconds
     */
    VekConstantPowerElement(double power, double maxDuration, double samplingInterval);
    /**
     * The same with a direction of its own, so that the sign of the power does not count. Deprecated, with two lines on
     * the debug channel: use the sign of the power.
     *
     * @param isCharge whether the cell is charged
     */
    VekConstantPowerElement(bool isCharge, double power, double maxDuration, double samplingInterval);
    /// A copy with values of its own.
    VekConstantPowerElement(const VekConstantPowerElement &other);
    /// Takes over the values of the other element; the two stay independent.
    VekConstantPowerElement &operator=(const VekConstantPowerElement &other);
    /// Experiments that hold a copy of the element keep it.
    ~VekConstantPowerElement() override;

    /// Power in watts; set by the constructor.
    double getPower() const;
    /// Sets the power in watts; positive charges, negative discharges.
    void setPower(double watts);

    /// Longest duration of the step in seconds; positive infinity (none) by default.
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

    /// Whether the upper voltage limit is relative to the open-circuit potential; false by default.
    bool isMaximumVoltageVsOCP() const;
    /// Makes the upper voltage limit relative to the open-circuit potential (true) or to the reference electrode
    /// (false).
    void setMaximumVoltageVsOCP(bool isVsOCP);

    /// Lower voltage limit in volts; negative infinity (none) by default.
    double getMinVoltage() const;
    /// Sets the lower voltage limit in volts; the step ends when the voltage falls below it.
    void setMinVoltage(double volts);

    /// Whether the lower voltage limit is relative to the open-circuit potential; false by default.
    bool isMinimumVoltageVsOCP() const;
    /// Makes the lower voltage limit relative to the open-circuit potential (true) or to the reference electrode
    /// (false).
    void setMinimumVoltageVsOCP(bool isVsOCP);

    /// Largest charge in coulombs moved in the step; positive infinity (none) by default.
    double getMaxCapacity() const;
    /// Sets the largest charge in coulombs moved in the step; the step ends when it has passed.
    void setMaxCapacity(double coulombs);

    /// Lower limit of the signed current in amperes; negative infinity (none) by default.
    double getMinCurrent() const;
    /// Sets the lower limit of the signed current in amperes; the step ends when the current falls below it.
    void setMinCurrent(double amperes);

    /// Upper limit of the signed current in amperes; positive infinity (none) by default.
    double getMaxCurrent() const;
    /// Sets the upper limit of the signed current in amperes; the step ends when the current rises above it.
    void setMaxCurrent(double amperes);

    /// Whether the cell is charged, where that was set apart from the sign of the power; false by default.
    bool isCharge() const;
    /// Sets whether the cell is charged; from now on the sign of the power does not count. Deprecated, with a line on
    /// the debug channel: use the sign of the power.
    void setCharge(bool isCharge);

private:
    explicit VekConstantPowerElement(std::shared_ptr<ConstantPowerElement> builder);

    std::shared_ptr<ConstantPowerElement> _builder; // the object that the base holds too
};
