// SPDX-License-Identifier: MIT
#pragma once

#include "calibration/ComplexDataPoint.h"
#include "nimbrellelibrary/FourierKernel.h"

#include <complex>
#include <vector>

/// Entry 0 is twice the mean, entry k the conjugate of the k-th harmonic's phasor; empty when nothing can be analysed.
using Spectrum = std::vector<std::complex<double>>;

/// How many harmonics every analysis takes above the fundamental.
constexpr int analysedHarmonics = 12;

/// The spectra of a record's two signals.
struct RecordSpectra {
    Spectrum current;
    Spectrum voltage;

    bool isEmpty() const { return current.empty() || voltage.empty(); }
    /// Percent, the larger of the two signals' distortion; 0 when neither has a fundamental.
    double thdPercent() const;
};

/**
 * Integrates both signals over as many whole periods as the record holds, by the trapezoid rule.
 *
 * A frequency above half the sample frequency is found at its alias, each harmonic at its own.
 *
 * @param sampleFrequency, signalFrequency in hertz
 * @param kernel how to sum; the result does not depend on it
 * @return harmonics + 2 entries for each signal; empty if either has fewer than two samples or their counts differ
 */
RecordSpectra analyseRecord(const std::vector<float> &current, const std::vector<float> &voltage,
                            double sampleFrequency, double signalFrequency, int harmonics,
                            const FourierKernel &kernel = fastestFourierKernel());

/// Whole periods in a record; 0 when it is shorter than one.
double wholePeriods(double samples, double sampleFrequency, double signalFrequency);

/// Fills magnitude, phase, real and imaginary part.
void setImpedance(ComplexDataPoint_t &point, std::complex<double> z);
