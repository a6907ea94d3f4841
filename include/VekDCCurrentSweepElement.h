// SPDX-License-Identifier: MIT
#pragma once

#include "VekAbstractElement.h"

class DCCurrentSweepElement;

/**
 * Sweeps the current linearly from a start to an end, unless the voltage meets a limit before.
 *
 * @thread A value: use it from one thread at a time.
 */
class NIMBRELLE_EXPORT VekDCCurrentSweepElement : public VekAbstractElement
{
public:
    /**
     * An element with these values; everything else has its default.
     *
     * @param startingCurrent current in amperes at which the sweep starts
     * @param endingCurrent current in amperes at which the sweep ends
     * @param scanRate scan rate in amperes per second
     * @param samplingInterval interval between two samples in seconds
     */
    VekDCCurrentSweepElement(double startingCurrent, double endingCurrent, double scanRate, double samplingInterval);
    /// A copy with values of its own.
    VekDCCurrentSweepElement(const VekDCCurrentSweepElement &other);
    /// Takes over the values of the other element; the two stay independent.
    VekDCCurrentSweepElement &operator=(const VekDCCurrentSweepElement &other);
    /// Experiments that hold a copy of the element keep it.
    ~VekDCCurrentSweepElement() override;

    /// Current in amperes at which the sweep starts; set by the constructor.
    double getStartingCurrent() const;
    /// Sets the current in amperes at which the sweep starts.
    void setStartingCurrent(double amperes);

    /// Current in amperes at which the sweep ends; set by the constructor.
    double getEndingCurrent() const;
    /// Sets the current in amperes at which the sweep ends.
    void setEndingCurrent(double amperes);

    /// Scan rate in amperes per second; set by the constructor.
    double getScanRate() const;
    /// Sets the scan rate in amperes per second.
    void setScanRate(double amperesPerSecond);

    /// Interval between two samples in seconds; 1.0 by default.
    double getSamplingInterval() const;
    /// Sets the interval between two samples in seconds.
    void setSamplingInterval(double seconds);

    /// Quiet time in seconds before the step, held at the starting current; 0.0 by default.
    double getQuietTime() const;
    /// Sets the quiet time in seconds before the step, held at the starting current; 0 for none.
    void setQuietTime(double seconds);

    /// Interval in seconds between two samples of the quiet time; 1.0 by default.
    double getQuietTimeSamplingInterval() const;
    /// Sets the interval in seconds between two samples of the quiet time.
    void setQuietTimeSamplingInterval(double seconds);

    /// Upper voltage limit in volts; positive infinity (none) by default.
    double getMaxVoltage() const;
    /// Sets the upper voltage limit in volts; the step ends when the voltage rises above it.
    void setMaxVoltage(double volts);

    /// Lower voltage limit in volts; negative infinity (none) by default.
    double getMinVoltage() const;
    /// Sets the lower voltage limit in volts; the step ends when the voltage falls below it.
    void setMinVoltage(double volts);

    /// Last part of each step over which the instrument samples, in percent; 100 by default.
    double getAlphaFactor() const;
    /// Sets the last part of each step over which the instrument samples, in percent, 0 to 100.
    void setAlphaFactor(double percent);

private:
    explicit VekDCCurrentSweepElement(std::shared_ptr<DCCurrentSweepElement> builder);

    std::shared_ptr<DCCurrentSweepElement> _builder; // the object that the base holds too
};
