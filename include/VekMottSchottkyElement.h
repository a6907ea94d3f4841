// SPDX-License-Identifier: MIT
#pragma once

#include "VekAbstractElement.h"

class MottSchottkyElement;

/**
 * Mott-Schottky run: an impedance sweep at each potential of a staircase.
 *
 * @thread A value: use it from one thread at a time.
 */
class NIMBRELLE_EXPORT VekMottSchottkyElement : public VekAbstractElement
{
public:
    /**
     * An element with these values; everything else has its default.
     *
     * @param startingPotential potential in volts of the first sweep
     * @param endingPotential potential in volts of the last sweep
     * @param voltageStep potential step in volts from one sweep to the next; negative where the end lies below the
     *         start
     * @param startFrequency frequency in hertz at which the sweep starts
     * @param endFrequency frequency in hertz at which the sweep ends; it may lie above or below the start
     * @param stepsPerDecade number of frequencies per decade; a whole number
     * @param amplitude amplitude of the sine in volts; above 0
     * @param minCycles smallest number of periods measured at each frequency
     */
    VekMottSchottkyElement(double startingPotential, double endingPotential, double voltageStep, double startFrequency,
                           double endFrequency, double stepsPerDecade, double amplitude, unsigned int minCycles);
    /**
     * The same with a quiet time at each further potential.
     *
     * @param stepQuietTime quiet time in seconds before each further sweep, held at its potential; 0 for none
     */
    VekMottSchottkyElement(double startingPotential, double endingPotential, double voltageStep, double stepQuietTime,
                           double startFrequency, double endFrequency, double stepsPerDecade, double amplitude,
                           unsigned int minCycles);
    /// A copy with values of its own.
    VekMottSchottkyElement(const VekMottSchottkyElement &other);
    /// Takes over the values of the other element; the two stay independent.
    VekMottSchottkyElement &operator=(const VekMottSchottkyElement &other);
    /// Experiments that hold a copy of the element keep it.
    ~VekMottSchottkyElement() override;

    /// Potential in volts of the first sweep; 0.0 by default.
    double getStartingPotential() const;
    /// Sets the potential in volts of the first sweep.
    void setStartingPotential(double volts);

    /// Whether the starting potential is relative to the open-circuit potential; false by default.
    bool isStartVoltageVsOCP() const;
    /// Makes the starting potential relative to the open-circuit potential (true) or to the reference electrode
    /// (false).
    void setStartVoltageVsOCP(bool isVsOCP);

    /// Potential in volts of the last sweep; 1.0 by default.
    double getEndingPotential() const;
    /// Sets the potential in volts of the last sweep.
    void setEndingPotential(double volts);

    /// Whether the ending potential is relative to the open-circuit potential; false by default.
    bool isEndVoltageVsOCP() const;
    /// Makes the ending potential relative to the open-circuit potential (true) or to the reference electrode (false).
    void setEndVoltageVsOCP(bool isVsOCP);

    /// Potential step in volts from one sweep to the next; 10.0 by default.
    double getVoltageStep() const;
    /// Sets the potential step in volts from one sweep to the next; negative where the end lies below the start.
    void setVoltageStep(double volts);

    /// Frequency in hertz at which the sweep starts; 10.0 by default.
    double getStartFrequency() const;
    /// Sets the frequency in hertz at which the sweep starts.
    void setStartFrequency(double hertz);

    /// Frequency in hertz at which the sweep ends; 1.0 by default.
    double getEndFrequency() const;
    /// Sets the frequency in hertz at which the sweep ends; it may lie above or below the start.
    void setEndFrequency(double hertz);

    /// Number of frequencies per decade; 10.0 by default.
    double getStepsPerDecade() const;
    /// Sets the number of frequencies per decade; a whole number.
    void setStepsPerDecade(double steps);

    /// Amplitude of the sine in volts; 10.0 by default.
    double getAmplitude() const;
    /// Sets the amplitude of the sine in volts; above 0.
    void setAmplitude(double volts);

    /// Smallest number of periods measured at each frequency; 2 by default.
    unsigned int getMinCycles() const;
    /// Sets the smallest number of periods measured at each frequency.
    void setMinCycles(unsigned int number);

    /// Quiet time in seconds before the first sweep, held at the starting potential; 0.0 by default.
    double getQuietTime() const;
    /// Sets the quiet time in seconds before the first sweep, held at the starting potential; 0 for none.
    void setQuietTime(double seconds);

    /// Interval in seconds between two samples of the quiet time; 1.0 by default.
    double getQuietTimeSampInterval() const;
    /// Sets the interval in seconds between two samples of the quiet time.
    void setQuietTimeSampInterval(double seconds);

    /// Quiet time in seconds before each further sweep, held at its potential; 0.0 by default.
    double getStepQuietTime() const;
    /// Sets the quiet time in seconds before each further sweep, held at its potential; 0 for none.
    void setStepQuietTime(double seconds);

    /// Interval in seconds between two samples of that quiet time; 1.0 by default.
    double getStepQuietSampInterval() const;
    /// Sets the interval in seconds between two samples of that quiet time.
    void setStepQuietSampInterval(double seconds);

private:
    explicit VekMottSchottkyElement(std::shared_ptr<MottSchottkyElement> builder);

    std::shared_ptr<MottSchottkyElement> _builder; // the object that the base holds too
};
