// SPDX-License-Identifier: MIT
#pragma once

#include "VekAbstractElement.h"

class DiffPulseVoltammetryElement;

/**
 * Differential pulse voltammetry: pulses of constant height on a staircase. VekDataManipulator tells base and pulse
 * apart in the data.
 *
 * @thread A value: use it from one thread at a time.
 */
class NIMBRELLE_EXPORT VekDiffPulseVoltammetryElement : public VekAbstractElement
{
public:
    /**
     * An element with these values; everything else has its default.
     *
     * @param startVoltage base potential in volts of the first pulse
     * @param endVoltage potential in volts at which the step ends
     * @param vStep potential step in volts from one pulse to the next
     * @param pulseHeight height of the pulses above their base in volts
     * @param pulseWidth duration of a pulse in seconds; at least 1 ms and shorter than the period
     * @param pulsePeriod time from one pulse to the next in seconds
     */
    VekDiffPulseVoltammetryElement(double startVoltage, double endVoltage, double vStep, double pulseHeight,
                                   double pulseWidth, double pulsePeriod);
    /**
     * The same with a fixed current range.
     *
     * @param approxMaxCurrent expected maximum current in amperes, which fixes the current range
     */
    VekDiffPulseVoltammetryElement(double startVoltage, double endVoltage, double vStep, double pulseHeight,
                                   double pulseWidth, double pulsePeriod, double approxMaxCurrent);
    /// A copy with values of its own.
    VekDiffPulseVoltammetryElement(const VekDiffPulseVoltammetryElement &other);
    /// Takes over the values of the other element; the two stay independent.
    VekDiffPulseVoltammetryElement &operator=(const VekDiffPulseVoltammetryElement &other);
    /// Experiments that hold a copy of the element keep it.
    ~VekDiffPulseVoltammetryElement() override;

    /// Base potential in volts of the first pulse; set by the constructor.
    double getStartVoltage() const;
    /// Sets the base potential in volts of the first pulse.
    void setStartVoltage(double volts);

    /// Whether the start potential is relative to the open-circuit potential; false by default.
    bool isStartVoltageVsOCP() const;
    /// Makes the start potential relative to the open-circuit potential (true) or to the reference electrode (false).
    void setStartVoltageVsOCP(bool isVsOCP);

    /// Potential in volts at which the step ends; set by the constructor.
    double getEndVoltage() const;
    /// Sets the potential in volts at which the step ends.
    void setEndVoltage(double volts);

    /// Whether the end potential is relative to the open-circuit potential; false by default.
    bool isEndVoltageVsOCP() const;
    /// Makes the end potential relative to the open-circuit potential (true) or to the reference electrode (false).
    void setEndVoltageVsOCP(bool isVsOCP);

    /// Potential step in volts from one pulse to the next; set by the constructor.
    double getVStep() const;
    /// Sets the potential step in volts from one pulse to the next.
    void setVStep(double volts);

    /// Height of the pulses above their base in volts; set by the constructor.
    double getPulseHeight() const;
    /// Sets the height of the pulses above their base in volts.
    void setPulseHeight(double volts);

    /// Duration of a pulse in seconds; 0.5 by default.
    double getPulseWidth() const;
    /// Sets the duration of a pulse in seconds; at least 1 ms and shorter than the period.
    void setPulseWidth(double seconds);

    /// Time from one pulse to the next in seconds; 1.0 by default.
    double getPulsePeriod() const;
    /// Sets the time from one pulse to the next in seconds.
    void setPulsePeriod(double seconds);

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

    /// Last part of each step over which the instrument samples, in percent; 75 by default.
    double getAlphaFactor() const;
    /// Sets the last part of each step over which the instrument samples, in percent, 0 to 100.
    void setAlphaFactor(double percent);

private:
    explicit VekDiffPulseVoltammetryElement(std::shared_ptr<DiffPulseVoltammetryElement> builder);

    std::shared_ptr<DiffPulseVoltammetryElement> _builder; // the object that the base holds too
};
