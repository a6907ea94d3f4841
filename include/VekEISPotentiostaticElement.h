// SPDX-License-Identifier: MIT
#pragma once

#include "VekAbstractElement.h"

class EISPotentiostaticElement;

/**
 * Potentiostatic impedance spectroscopy: a sine of potential on a bias, stepped through frequencies. Needs a model that
 * runs AC experiments.
 *
 * @thread A value: use it from one thread at a time.
 */
class NIMBRELLE_EXPORT VekEISPotentiostaticElement : public VekAbstractElement
{
public:
    /**
     * An element with these values; everything else has its default.
     *
     * @param startFreq frequency in hertz at which the sweep starts
     * @param endFreq frequency in hertz at which the sweep ends; it may lie above or below the start
     * @param stepsPerDecade number of frequencies per decade; a whole number
     * @param biasVoltage bias potential in volts
     * @param amplitude amplitude of the sine in volts; above 0
     */
    VekEISPotentiostaticElement(double startFreq, double endFreq, double stepsPerDecade, double biasVoltage,
                                double amplitude);
    /// A copy with values of its own.
    VekEISPotentiostaticElement(const VekEISPotentiostaticElement &other);
    /// Takes over the values of the other element; the two stay independent.
    VekEISPotentiostaticElement &operator=(const VekEISPotentiostaticElement &other);
    /// Experiments that hold a copy of the element keep it.
    ~VekEISPotentiostaticElement() override;

    /// Frequency in hertz at which the sweep starts; set by the constructor.
    double getStartFreq() const;
    /// Sets the frequency in hertz at which the sweep starts.
    void setStartFreq(double hertz);

    /// Frequency in hertz at which the sweep ends; set by the constructor.
    double getEndFreq() const;
    /// Sets the frequency in hertz at which the sweep ends; it may lie above or below the start.
    void setEndFreq(double hertz);

    /// Number of frequencies per decade; 1.0 by default.
    double getStepsPerDecade() const;
    /// Sets the number of frequencies per decade; a whole number.
    void setStepsPerDecade(double steps);

    /// Bias potential in volts; set by the constructor.
    double getBiasVoltage() const;
    /// Sets the bias potential in volts.
    void setBiasVoltage(double volts);

    /// Whether the bias potential is relative to the open-circuit potential; false by default.
    bool isBiasVoltageVsOCP() const;
    /// Makes the bias potential relative to the open-circuit potential (true) or to the reference electrode (false).
    void setBiasVoltageVsOCP(bool isVsOCP);

    /// Amplitude of the sine in volts; set by the constructor.
    double getAmplitude() const;
    /// Sets the amplitude of the sine in volts; above 0.
    void setAmplitude(double volts);

    /// Quiet time in seconds before the step, held at the bias potential; 0.0 by default.
    double getQuietTime() const;
    /// Sets the quiet time in seconds before the step, held at the bias potential; 0 for none.
    void setQuietTime(double seconds);

    /// Interval in seconds between two samples of the quiet time; 1.0 by default.
    double getQuietTimeSamplingInterval() const;
    /// Sets the interval in seconds between two samples of the quiet time.
    void setQuietTimeSamplingInterval(double seconds);

    /// Smallest number of periods measured at each frequency; 2 by default.
    unsigned int getMinimumCycles() const;
    /// Sets the smallest number of periods measured at each frequency.
    void setMinimumCycles(unsigned int number);

private:
    explicit VekEISPotentiostaticElement(std::shared_ptr<EISPotentiostaticElement> builder);

    std::shared_ptr<EISPotentiostaticElement> _builder; // the object that the base holds too
};
