// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <vector>

/**
 * One dissolved species in front of a planar electrode: dc/dt = D d2c/dx2, c = bulk far away, and the flux at x = 0 given.
 *
 * Finite volumes on a grid whose cells grow by a tenth each, from 50 nm at the electrode to beyond 20 mm (six diffusion
 * lengths of hours); backward Euler in time. One elimination from the bulk towards the electrode leaves the surface's
 * concentration as a linear function of the flux, so that the electrode's kinetics can be solved with it.
 */
class DiffusionLayer
{
public:
    /// The surface's concentration at the end of a step: free - perFlux x (flux out of the solution).
    struct Surface {
        double free;    ///< mol/m3
        double perFlux; ///< s/m
    };

    /// @param diffusivity m2/s, @param bulk mol/m3
    DiffusionLayer(double diffusivity, double bulk);

    double surface() const { return _concentrations.front(); }
    Surface prepareStep(double seconds);
    /// Ends the step that was prepared, with the surface's concentration that the kinetics gave.
    void finishStep(double surface);
    /// Richardson's extrapolation: this took two half steps, @p coarse the whole one.
    void extrapolateFrom(const DiffusionLayer &coarse);

private:
    struct Grid;
    static std::shared_ptr<const Grid> grid();

    std::shared_ptr<const Grid> _grid;
    double _diffusivity;
    std::vector<double> _concentrations;
    std::vector<double> _offset; ///< of the elimination: c[i] = offset[i] + factor[i] c[i - 1]
    std::vector<double> _factor;
};
