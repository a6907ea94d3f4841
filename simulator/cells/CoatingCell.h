// SPDX-License-Identifier: MIT
#pragma once

#include "simulator/cells/MarchingCell.h"

/**
 * A coated metal between two electrodes: the coating's capacitance, pores through it, and the metal at their ground.
 *   Z = Rs + 1 / (j w Cc + 1 / (Rpo + 1 / (j w Cdl + 1 / Rct)))
 */
class CoatingCell : public MarchingCell
{
public:
    struct Parameters {
        double series = 50.0;
        double coatingCapacitance = 1e-9;
        double pores = 1e5;             ///< Rpo, ohms
        double layerCapacitance = 1e-7; ///< Cdl, farads
        double transfer = 1e6;          ///< Rct, ohms
    };

    explicit CoatingCell(const Parameters &parameters) : MarchingCell(parameters.series, 0.0), _parameters(parameters)
    {
    }

    std::unique_ptr<Cell> clone() const override { return std::make_unique<CoatingCell>(*this); }
    std::complex<double> impedance(double frequency) const override;

protected:
    bool holdsPotential() const override { return true; }
    double instantCurrent(double potential) const override { return (potential - _metal) / _parameters.pores; }
    CurrentLaw prepareStep(double seconds) override;
    void finishStep(double potential) override;
    void extrapolateFrom(const MarchingCell &coarse) override;

private:
    double metalAtEnd(double potential) const;

    Parameters _parameters;
    double _metal = 0.0;   ///< volts across the metal's double layer
    double _seconds = 0.0; ///< of the step that was prepared
};
