#pragma once

#include "simulator/cells/Cell.h"
#include "simulator/cells/DiffusionLayer.h"

#include <functional>

/**
 * A redox couple in still solution at a planar electrode: R <=> O + n e.
 *
 * Both species diffuse (DiffusionLayer); the electrode follows Butler and Volmer,
 *   I = n F A k0 (cR exp((1 - a) n F (E - E0) / RT) - cO exp(-a n F (E - E0) / RT)) + C dE/dt,
 * and a series resistance stands between electrode and reference, V = E + Rs I. With fast kinetics the couple is
 * reversible: at 298 K a sweep of v volts a second peaks at 0.4463 n F A c sqrt(n F v D / RT) (Randles and Sevcik), and
 * the peaks of a cycle lie 57 mV / n apart; a step to the plateau gives n F A c sqrt(D / (pi t)) (Cottrell).
 *
 * Time goes in steps of at most a tenth of the time since the last jump of the control, and a quarter millivolt, each
 * with Richardson's extrapolation of backward Euler.
 */
class RedoxCell : public Cell
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
    double voltageAt(double current) const override;
    double currentAt(double voltage) const override;
    double passCurrent(double current, double slope, double seconds) override;
    double holdVoltage(double voltage, double slope, double seconds) override;

private:
    enum class Held { Voltage, Current };
    struct Target {
        Held held;
        double value; ///< at the end of the step
    };
    using Residual = std::function<double(double potential)>;

    double go(Held held, double value, double slope, double seconds);
    double longestStep(Held held, double slope) const;
    double extrapolatedStep(const Target &halfway, const Target &end, double seconds);
    double step(const Target &target, double seconds);
    double fluxAt(double potential, const DiffusionLayer::Surface &reduced,
                  const DiffusionLayer::Surface &oxidised) const;
    double faradaicCurrent(double potential) const;
    double solve(const Residual &residual) const;
    double forward(double potential) const;  ///< m/s
    double backward(double potential) const; ///< m/s

    Parameters _parameters;
    double _molarCharge;  ///< n F A, coulombs times m2 per mole
    double _inverseVolts; ///< n F / RT
    DiffusionLayer _reduced;
    DiffusionLayer _oxidised;
    double _potential; ///< of the electrode, without the series resistance
    Held _held = Held::Current;
    double _voltage; ///< at the terminals at the end of the last step
    double _current = 0.0;
    double _sinceJump = 1e3; ///< seconds
};
