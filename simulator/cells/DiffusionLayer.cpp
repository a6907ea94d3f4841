// SPDX-License-Identifier: MIT
#include "simulator/cells/DiffusionLayer.h"

namespace {

constexpr double firstSpacing = 5e-8; ///< metres
constexpr double growth = 1.1;
constexpr double depth = 0.02; ///< metres

} // namespace

struct DiffusionLayer::Grid {
    std::vector<double> spacing; ///< between node i and i + 1
    std::vector<double> width;   ///< of the volume around node i
};

std::shared_ptr<const DiffusionLayer::Grid> DiffusionLayer::grid()
{
    static const std::shared_ptr<const Grid> shared = [] {
        auto made = std::make_shared<Grid>();
        double reached = 0.0;
        for (double spacing = firstSpacing; reached < depth; spacing *= growth) {
            made->width.push_back(0.5 * (spacing + (made->spacing.empty() ? 0.0 : made->spacing.back())));
            made->spacing.push_back(spacing);
            reached += spacing;
        }
        return made;
    }();
    return shared;
}

DiffusionLayer::DiffusionLayer(double diffusivity, double bulk)
    : _grid(grid()), _diffusivity(diffusivity), _concentrations(_grid->spacing.size() + 1, bulk),
      _offset(_concentrations.size()), _factor(_concentrations.size())
{
}

DiffusionLayer::Surface DiffusionLayer::prepareStep(double seconds)
{
    const std::size_t last = _grid->spacing.size();
    _offset[last] = _concentrations[last];
    _factor[last] = 0.0;
    for (std::size_t i = last - 1; i > 0; --i) {
        const double outer = _diffusivity / _grid->spacing[i];
        const double inner = _diffusivity / _grid->spacing[i - 1];
        const double storage = _grid->width[i] / seconds;
        const double pivot = 1.0 / (storage + inner + outer * (1.0 - _factor[i + 1]));
        _offset[i] = (storage * _concentrations[i] + outer * _offset[i + 1]) * pivot;
        _factor[i] = inner * pivot;
    }
    const double outer = _diffusivity / _grid->spacing[0];
    const double storage = _grid->width[0] / seconds;
    const double pivot = 1.0 / (storage + outer * (1.0 - _factor[1]));
    return {(storage * _concentrations[0] + outer * _offset[1]) * pivot, pivot};
}

void DiffusionLayer::finishStep(double surface)
{
    _concentrations[0] = surface;
    for (std::size_t i = 1; i < _concentrations.size(); ++i)
        _concentrations[i] = _offset[i] + _factor[i] * _concentrations[i - 1];
}

void DiffusionLayer::extrapolateFrom(const DiffusionLayer &coarse)
{
    for (std::size_t i = 0; i < _concentrations.size(); ++i)
        _concentrations[i] = 2.0 * _concentrations[i] - coarse._concentrations[i];
}
