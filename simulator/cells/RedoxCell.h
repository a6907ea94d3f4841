// SPDX-License-Identifier: MIT
#pragma once

#include "simulator/cells/DiffusionLayer.h"
#include "simulator/cells/MarchingCell.h"

/**
 * A redox couple in still solution at a planar electrode: R <=> O + n e.
 *
 * Both species diffuse (DiffusionLayer); the electrode follows Butler and Volmer,
 *   I = n F A k0 (cR exp((1 - a) n F (E - E0) / RT) - cO exp(-a n F (E - E0) / RT)) + C dE/dt,
 * and a series resistance stands between electrode and reference, V = E + Rs I. With fast kinetics the couple is
 * reversible: at 298 K a sweep of v volts a second peaks at 0.4463 n F A c sqrt(n F v D / RT) (Randles and Sevcik), and
 * the peaks of a cycle lie 57 mV / n apart; a step to the plateau gives n F A c sqrt(D / (pi t)) (Cottrell).
 *
 * For a small sine around a state the electrode is a Randles circuit, with s = sqrt(j w D):
 *   Zf = (1 + (kf + kb) / s) / (n F A (n F / RT) ((1 - a) kf cR + a kb cO)), Z = Rs + 1 / (1 / Zf + j w C).
 */
class RedoxCell : public MarchingCell
{
public:
    struct Parameters {
        double formalPotential = 0.2; ///< volts
        double electrons = 1.0;
        double reduced = 1.0; ///< mol/m3 (mM) in the bulk
        double oxidised = 1e-4;
        double diffusivity = 1e-9; ///< m2/s, of both species
        double area = 1e-5;        ///< m2
        double rate = 1e-2;        ///< k0, m/s
        double transfer = 0.5;
        double series = 5.0;         ///< ohms
        double capacitance = 0.0;    ///< farads, of the double layer
        double temperature = 298.15; ///< kelvin
    };

    explicit RedoxCell(const Parameters &parameters);

    std::unique_ptr<Cell> clone() const override { return std::make_unique<RedoxCell>(*this); }
    std::complex<double> impedance(double frequency) const override;

protected:
    bool holdsPotential() const override { return _parameters.capacitance > 0.0; }
    double instantCurrent(double potential) const override;
    CurrentLaw prepareStep(double seconds) override;
    void finishStep(double potential) override;
    void extrapolateFrom(const MarchingCell &coarse) override;

private:
    static double restPotential(const Parameters &parameters);
    double stepFlux(double potential) const;
    double forward(double potential) const;  ///< m/s
    double backward(double potential) const; ///< m/s

    Parameters _parameters;
    double _molarCharge;  ///< n F A, coulombs times m2 per mole
    double _inverseVolts; ///< n F / RT
    DiffusionLayer _reduced;
    DiffusionLayer _oxidised;
    DiffusionLayer::Surface _reducedEnd = {0.0, 0.0}; ///< of the step that was prepared
    DiffusionLayer::Surface _oxidisedEnd = {0.0, 0.0};
};
