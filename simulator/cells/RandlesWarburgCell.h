// SPDX-License-Identifier: MIT
#pragma once

#include "simulator/cells/DiffusionLayer.h"
#include "simulator/cells/MarchingCell.h"

/**
 * Randles' circuit with a semi-infinite Warburg element:
 *   Z = Rs + 1 / (j w C + 1 / (Rct + W (1 - j) / sqrt(w))),  W in ohms per square root of a second.
 *
 * In time the Warburg element is diffusion: its voltage is the surface's concentration under a flux that is
 * proportional to the current, which makes sqrt(2) W / sqrt(s) of it in Laplace's plane.
 */
class RandlesWarburgCell : public MarchingCell
{
public:
    struct Parameters {
        double series = 20.0;
        double transfer = 200.0;   ///< Rct, ohms
        double capacitance = 2e-5; ///< farads
        double warburg = 50.0;     ///< W
    };

    explicit RandlesWarburgCell(const Parameters &parameters);

    std::unique_ptr<Cell> clone() const override { return std::make_unique<RandlesWarburgCell>(*this); }
    std::complex<double> impedance(double frequency) const override;

protected:
    bool holdsPotential() const override { return true; }
    double instantCurrent(double potential) const override;
    CurrentLaw prepareStep(double seconds) override;
    void finishStep(double potential) override;
    void extrapolateFrom(const MarchingCell &coarse) override;

private:
    double stepCurrent(double potential) const;

    Parameters _parameters;
    DiffusionLayer _diffusion;
    double _voltsPerFlux; ///< of the flux that a current makes: sqrt(2 D) W
    DiffusionLayer::Surface _end = {0.0, 0.0};
};
