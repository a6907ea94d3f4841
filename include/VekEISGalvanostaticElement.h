// SPDX-License-Identifier: MIT
#pragma once

#include "VekAbstractElement.h"

class EISGalvanostaticElement;

/**
 * Galvanostatic impedance spectroscopy: a sine of current on a bias, stepped through frequencies. Needs a model that
 * runs AC experiments.
 *
 * @thread A value: use it from one thread at a time.
 */
class NIMBRELLE_EXPORT VekEISGalvanostaticElement : public VekAbstractElement
{
public:
    /**
     * An element with these values; everything else has its default.
     *
     * @param startFreq frequency in hertz at which the sweep starts
     * @param endFreq frequency in hertz at which the sweep ends; it may lie above or below the start
     * @param stepsPerDecade number of frequencies per decade; a whole number
     * @param biasCurrent bias current in amperes
     * @param amplitude amplitude of the sine in amperes; above 0
     */
    VekEISGalvanostaticElement(double startFreq, double endFreq, double stepsPerDecade, double biasCurrent,
                               double amplitude);
    /// A copy with values of its own.
    VekEISGalvanostaticElement(const VekEISGalvanostaticElement &other);
    /// Takes over the values of the other element; the two stay independent.
    VekEISGalvanostaticElement &operator=(const VekEISGalvanostaticElement &other);
    /// Experiments that hold a copy of the element keep it.
    ~VekEISGalvanostaticElement() override;

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

    /// Bias current in amperes; set by the constructor.
    double getBiasCurrent() const;
    /// Sets the bias current in amperes.
    void setBiasCurrent(double amperes);

    /// Amplitude of the sine in amperes; set by the constructor.
    double getAmplitude() const;
    /// Sets the amplitude of the sine in amperes; above 0.
    void setAmplitude(double amperes);

    /// Quiet time in seconds before the step, held at the bias current; 0.0 by default.
    double getQuietTime() const;
    /// Sets the quiet time in seconds before the step, held at the bias current; 0 for none.
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
    explicit VekEISGalvanostaticElement(std::shared_ptr<EISGalvanostaticElement> builder);

    std::shared_ptr<EISGalvanostaticElement> _builder; // the object that the base holds too
};
