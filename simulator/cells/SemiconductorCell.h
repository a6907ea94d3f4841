// SPDX-License-Identifier: MIT
#pragma once

#include "simulator/cells/MarchingCell.h"

/**
 * An n-type semiconductor in depletion: a space-charge capacitance that depends on the potential, and a leak.
 *   1 / C^2 = 2 (E - Efb - kT/e) / (e eps eps0 N A^2)   (Mott and Schottky),  Z = Rs + 1 / (j w C + 1 / R)
 *
 * Below a band bending of kT/e the capacitance keeps the value that it has there.
 */
class SemiconductorCell : public MarchingCell
{
public:
    struct Parameters {
        double series = 20.0;
        double leak = 1e7;           ///< R, ohms
        double flatBand = -0.5;      ///< Efb, volts
        double donors = 1e24;        ///< N, per m3
        double permittivity = 10;    ///< eps, relative
        double area = 1e-5;          ///< m2
        double temperature = 298.15; ///< kelvin
    };

    explicit SemiconductorCell(const Parameters &parameters)
        : MarchingCell(parameters.series, 0.0), _parameters(parameters)
    {
    }

    std::unique_ptr<Cell> clone() const override { return std::make_unique<SemiconductorCell>(*this); }
    std::complex<double> impedance(double frequency) const override;
    double capacitance(double potential) const;

protected:
    bool holdsPotential() const override { return true; }
    double instantCurrent(double potential) const override { return potential / _parameters.leak; }
    CurrentLaw prepareStep(double seconds) override;
    void finishStep(double) override {}
    void extrapolateFrom(const MarchingCell &) override {}

private:
    double storedCharge(double potential) const;
    double bending(double potential) const;

    Parameters _parameters;
};
