// SPDX-License-Identifier: MIT
#pragma once

#include "VekAbstractElement.h"

class DCPotentialSweepElement;

/**
 * Sweeps the potential linearly from a start to an end, unless the current meets a limit before.
 *
 * @thread A value: use it from one thread at a time.
 */
class NIMBRELLE_EXPORT VekDCPotentialSweepElement : public VekAbstractElement
{
public:
    /**
     * An element with these values; everything else has its default.
     *
     * @param startingPot potential in volts at which the sweep starts
     * @param endingPot potential in volts at which the sweep ends
     * @param scanRate scan rate in volts per second
     * @param samplingInterval interval between two samples in seconds
     */
    VekDCPotentialSweepElement(double startingPot, double endingPot, double scanRate, double samplingInterval);
    /// A copy with values of its own.
    VekDCPotentialSweepElement(const VekDCPotentialSweepElement &other);
    /// Takes over the values of the other element; the two stay independent.
    VekDCPotentialSweepElement &operator=(const VekDCPotentialSweepElement &other);
    /// Experiments that hold a copy of the element keep it.
    ~VekDCPotentialSweepElement() override;

    /// Potential in volts at which the sweep starts; set by the constructor.
    double getStartingPot() const;
    /// Sets the potential in volts at which the sweep starts.
    void setStartingPot(double volts);

    /// Whether the starting potential is relative to the open-circuit potential; false by default.
    bool isStartVoltageVsOCP() const;
    /// Makes the starting potential relative to the open-circuit potential (true) or to the reference electrode
    /// (false).
    void setStartVoltageVsOCP(bool isVsOCP);

    /// Potential in volts at which the sweep ends; set by the constructor.
    double getEndingPot() const;
    /// Sets the potential in volts at which the sweep ends.
    void setEndingPot(double volts);

    /// Whether the ending potential is relative to the open-circuit potential; false by default.
    bool isEndVoltageVsOCP() const;
    /// Makes the ending potential relative to the open-circuit potential (true) or to the reference electrode (false).
    void setEndVoltageVsOCP(bool isVsOCP);

    /// Scan rate in volts per second; set by the constructor.
    double getScanRate() const;
    /// Sets the scan rate in volts per second.
    void setScanRate(double voltsPerSecond);

    /// Interval between two samples in seconds; 1.0 by default.
    double getSamplingInterval() const;
    /// Sets the interval between two samples in seconds.
    void setSamplingInterval(double seconds);

    /// Quiet time in seconds before the step, held at the starting potential; 0.0 by default.
    double getQuietTime() const;
    /// Sets the quiet time in seconds before the step, held at the starting potential; 0 for none.
    void setQuietTime(double seconds);

    /// Interval in seconds between two samples of the quiet time; 1.0 by default.
    double getQuietTimeSamplingInterval() const;
    /// Sets the interval in seconds between two samples of the quiet time.
    void setQuietTimeSamplingInterval(double seconds);

    /// Whether the instrument chooses the current range by itself; true by default.
    bool isAutoRange() const;
    /// Lets the instrument choose the current range by itself. The expected maximum current is kept.
    void setAutoRange();

    /// Expected maximum current in amperes; positive infinity by default.
    double getApproxMaxCurrent() const;
    /// Sets the expected maximum current in amperes: the smallest current range that holds it is used throughout.
    void setApproxMaxCurrent(double amperes);

    /// Largest magnitude of the current in amperes; positive infinity (none) by default.
    double getMaxAbsoluteCurrent() const;
    /// Sets the largest magnitude of the current in amperes; the step ends when it is exceeded.
    void setMaxAbsoluteCurrent(double amperes);

    /// Smallest magnitude of the current in amperes; 0.0 by default.
    double getMinAbsoluteCurrent() const;
    /// Sets the smallest magnitude of the current in amperes; the step ends when the magnitude falls below it.
    void setMinAbsoluteCurrent(double amperes);

    /// Last part of each step over which the instrument samples, in percent; 100 by default.
    double getAlphaFactor() const;
    /// Sets the last part of each step over which the instrument samples, in percent, 0 to 100.
    void setAlphaFactor(double percent);

private:
    explicit VekDCPotentialSweepElement(std::shared_ptr<DCPotentialSweepElement> builder);

    std::shared_ptr<DCPotentialSweepElement> _builder; // the object that the base holds too
};
