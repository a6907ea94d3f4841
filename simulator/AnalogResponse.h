// SPDX-License-Identifier: MIT
#pragma once

#include "hardware_models/HardwareModel.h"
#include "hardware_models/RangeTypes.h"

#include <QByteArray>

#include <array>
#include <complex>
#include <memory>
#include <vector>

/**
 * The frequency response of an instrument's analogue chain, and the tables by which a host takes it out again.
 *
 * Every stage is a first-order low-pass, whose corner follows from the seed: the voltage buffer, three amplifier blocks in
 * either path, one current converter per range with its corner at about four times the highest frequency that the range is
 * used at. Parallel to the cell lies the capacitance of the cable. The tables hold 24 rows a decade.
 *
 * A response is the factor by which a stage changes the phasor of a sine.
 */
class AnalogResponse
{
public:
    AnalogResponse(const HardwareModel &model, quint32 seed);

    std::complex<double> voltagePath(double frequency, ACgain_t gain) const;
    std::complex<double> currentPath(double frequency, currentRange_t range, ACgain_t gain) const;
    /// Siemens, between the leads.
    std::complex<double> cableAdmittance(double frequency, currentRange_t range) const;

    /// All tables as one stream of the SD card: name, comma, rows, file separator.
    QByteArray tables() const;

private:
    static std::complex<double> lowPass(double frequency, double corner);
    std::complex<double> amplifier(double frequency, ACgain_t gain) const;
    void addTable(QByteArray &stream, const QByteArray &name, double corner, double phaseSign) const;

    double _bufferCorner = 0.0;               ///< hertz
    std::array<double, 8> _blockCorners = {}; ///< of the blocks' settings
    std::vector<double> _converterCorners;    ///< by current range
    std::vector<double> _cableCapacitance;    ///< farads, by current range
};
