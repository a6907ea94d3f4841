// SPDX-License-Identifier: MIT
#pragma once

#include "VekAbstractElement.h"

class SquareWaveVoltammetryElement;

/**
 * Square-wave voltammetry: a square wave on a staircase. VekDataManipulator tells its two levels apart in the data.
 *
 * @thread A value: use it from one thread at a time.
 */
class NIMBRELLE_EXPORT VekSquareWaveVoltammetryElement : public VekAbstractElement
{
public:
    /**
     * An element with these values; everything else has its default.
     *
     * @param startVoltage base potential in volts of the first pulse
     * @param endVoltage potential in volts at which the step ends
     * @param vStep potential step in volts from one pulse to the next
     * @param pulseAmp amplitude of the square wave in volts
     * @param pulseFreq frequency of the square wave in hertz; above 0; the model has a highest one
     */
    VekSquareWaveVoltammetryElement(double startVoltage, double endVoltage, double vStep, double pulseAmp,
                                    double pulseFreq);
    /**
     * The same with a fixed current range.
     *
     * @param approxMaxCurrent expected maximum current in amperes, which fixes the current range
     */
    VekSquareWaveVoltammetryElement(double startVoltage, double endVoltage, double vStep, double pulseAmp,
                                    double pulseFreq, double approxMaxCurrent);
    /// A copy with values of its own.
    VekSquareWaveVoltammetryElement(const VekSquareWaveVoltammetryElement &other);
    /// Takes over the values of the other element; the two stay independent.
    VekSquareWaveVoltammetryElement &operator=(const VekSquareWaveVoltammetryElement &other);
    /// Experiments that hold a copy of the element keep it.
    ~VekSquareWaveVoltammetryElement() override;

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

    /// Amplitude of the square wave in volts; set by the constructor.
    double getPulseAmp() const;
    /// Sets the amplitude of the square wave in volts.
    void setPulseAmp(double volts);

    /// Frequency of the square wave in hertz; set by the constructor.
    double getPulseFreq() const;
    /// Sets the frequency of the square wave in hertz; above 0; the model has a highest one.
    void setPulseFreq(double hertz);

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
    explicit VekSquareWaveVoltammetryElement(std::shared_ptr<SquareWaveVoltammetryElement> builder);

    std::shared_ptr<SquareWaveVoltammetryElement> _builder; // the object that the base holds too
};
