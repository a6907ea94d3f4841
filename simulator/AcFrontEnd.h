// SPDX-License-Identifier: MIT
#pragma once

#include "simulator/AnalogResponse.h"
#include "simulator/FrontEnd.h"
#include "simulator/SimulatedCalibration.h"

#include <QMap>

/**
 * Makes the AC records of one channel: steady sines through the imperfect chain, sampled, as raw words.
 *
 * Records carry signed 16-bit words, and floats below 100 Hz or where a signal is weak; they are taken with the highest
 * gains that hold the signals.
 */
class AcFrontEnd
{
public:
    /// Harmonics of the current: order (2 and up) to amplitude as a share of the fundamental's.
    using Harmonics = QMap<int, double>;

    AcFrontEnd(std::shared_ptr<const HardwareModel> model, std::shared_ptr<const AnalogResponse> response,
               const Harmonics &harmonics, double noise);

    /// Payload of NT_AC_DATA.
    QByteArray record(const AcMeasurement &measurement, const SimulatedCalibration &calibration, Random &random) const;

private:
    /// One signal in raw units.
    struct Signal {
        double mean;
        std::complex<double> phasor;
        ACgain_t gain;
    };

    Signal voltageSignal(const AcMeasurement &measurement, const SimulatedCalibration &calibration,
                         std::complex<double> phasor) const;
    Signal currentSignal(const AcMeasurement &measurement, const SimulatedCalibration &calibration,
                         currentRange_t range, std::complex<double> phasor) const;
    currentRange_t rangeFor(const AcMeasurement &measurement, const SimulatedCalibration &calibration,
                            double amplitude) const;
    std::vector<double> samples(const AcPlan &plan, const Signal &signal, const Harmonics &harmonics,
                                Random &random) const;

    std::shared_ptr<const HardwareModel> _model;
    std::shared_ptr<const AnalogResponse> _response;
    Harmonics _harmonics;
    double _noise; ///< rms, as a share of the converter's span
};
