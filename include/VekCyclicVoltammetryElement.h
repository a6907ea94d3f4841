// SPDX-License-Identifier: MIT
#pragma once

#include "VekAbstractElement.h"

class CyclicVoltammetryElement;

/**
 * Sweeps the potential from a start to a first vertex, then to a second vertex, back and forth for a number of cycles,
 * and to an end.
 *
 * @thread A value: use it from one thread at a time.
 */
class NIMBRELLE_EXPORT VekCyclicVoltammetryElement : public VekAbstractElement
{
public:
    /**
     * An element with these values; everything else has its default.
     *
     * @param startVoltage potential in volts at which the first leg starts
     * @param firstVoltageLimit first vertex in volts
     * @param secondVoltageLimit second vertex in volts
     * @param endVoltage potential in volts at which the last leg ends
     * @param dEdt scan rate in volts per second
     * @param samplingInterval interval between two samples in seconds
     */
    VekCyclicVoltammetryElement(double startVoltage, double firstVoltageLimit, double secondVoltageLimit,
                                double endVoltage, double dEdt, double samplingInterval);
    /// A copy with values of its own.
    VekCyclicVoltammetryElement(const VekCyclicVoltammetryElement &other);
    /// Takes over the values of the other element; the two stay independent.
    VekCyclicVoltammetryElement &operator=(const VekCyclicVoltammetryElement &other);
    /// Experiments that hold a copy of the element keep it.
    ~VekCyclicVoltammetryElement() override;

    /// Potential in volts at which the first leg starts; set by the constructor.
    double getStartVoltage() const;
    /// Sets the potential in volts at which the first leg starts.
    void setStartVoltage(double volts);

    /// Whether the start potential is relative to the open-circuit potential; false by default.
    bool isStartVoltageVsOCP() const;
    /// Makes the start potential relative to the open-circuit potential (true) or to the reference electrode (false).
    void setStartVoltageVsOCP(bool isVsOCP);

    /// First vertex in volts; set by the constructor.
    double getFirstVoltageLimit() const;
    /// Sets the first vertex in volts.
    void setFirstVoltageLimit(double volts);

    /// Whether the first vertex is relative to the open-circuit potential; false by default.
    bool isFirstVoltageLimitVsOCP() const;
    /// Makes the first vertex relative to the open-circuit potential (true) or to the reference electrode (false).
    void setFirstVoltageLimitVsOCP(bool isVsOCP);

    /// Second vertex in volts; set by the constructor.
    double getSecondVoltageLimit() const;
    /// Sets the second vertex in volts.
    void setSecondVoltageLimit(double volts);

    /// Whether the second vertex is relative to the open-circuit potential; false by default.
    bool isSecondVoltageLimitVsOCP() const;
    /// Makes the second vertex relative to the open-circuit potential (true) or to the reference electrode (false).
    void setSecondVoltageLimitVsOCP(bool isVsOCP);

    /// Potential in volts at which the last leg ends; set by the constructor.
    double getEndVoltage() const;
    /// Sets the potential in volts at which the last leg ends.
    void setEndVoltage(double volts);

    /// Whether the end potential is relative to the open-circuit potential; false by default.
    bool isEndVoltageVsOCP() const;
    /// Makes the end potential relative to the open-circuit potential (true) or to the reference electrode (false).
    void setEndVoltageVsOCP(bool isVsOCP);

    /// Scan rate in volts per second; set by the constructor.
    double getdEdt() const;
    /// Sets the scan rate in volts per second.
    void setdEdt(double voltsPerSecond);

    /// Interval between two samples in seconds; 1.0 by default.
    double getSamplingInterval() const;
    /// Sets the interval between two samples in seconds.
    void setSamplingInterval(double seconds);

    /// Number of sweeps from the first vertex to the second; 1 by default.
    unsigned int getNumberOfCycles() const;
    /// Sets the number of sweeps from the first vertex to the second; at least 1.
    void setNumberOfCycles(unsigned int number);

    /// Quiet time in seconds before the step, held at the start potential; 0.0 by default.
    double getQuietTime() const;
    /// Sets the quiet time in seconds before the step, held at the start potential; 0 for none.
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

    /// Last part of each step over which the instrument samples, in percent; 100 by default.
    double getAlphaFactor() const;
    /// Sets the last part of each step over which the instrument samples, in percent, 0 to 100.
    void setAlphaFactor(double percent);

private:
    explicit VekCyclicVoltammetryElement(std::shared_ptr<CyclicVoltammetryElement> builder);

    std::shared_ptr<CyclicVoltammetryElement> _builder; // the object that the base holds too
};
