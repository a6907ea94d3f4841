// SPDX-License-Identifier: MIT
#include "VekLowPass.h"

#include "nimbrellelibrary/LowPass.h"

#include <cmath>

namespace {

constexpr int highestOrder = 20;

} // namespace

class VekLowPassPrivate : public LowPass
{
};

VekLowPass::VekLowPass() : _private(std::make_unique<VekLowPassPrivate>())
{
}

VekLowPass::VekLowPass(const VekLowPass &other) : _private(std::make_unique<VekLowPassPrivate>(*other._private))
{
}

VekLowPass &VekLowPass::operator=(const VekLowPass &other)
{
    *_private = *other._private;
    return *this;
}

VekLowPass::~VekLowPass() = default;

VekErrorCode VekLowPass::setUp(int order, double sampleFrequency, double cornerFrequency)
{
    if (order < 2 || order > highestOrder || order % 2 != 0)
        return {VekErrorCode::InvalidParameters, QStringLiteral("The order has to be an even number from 2 to 20.")};
    if (!(cornerFrequency > 0.0 && cornerFrequency < 0.5 * sampleFrequency && std::isfinite(sampleFrequency)))
        return {VekErrorCode::InvalidParameters,
                QStringLiteral("The corner frequency has to lie between 0 and half the sample frequency.")};
    _private->setup(static_cast<unsigned>(order), sampleFrequency, cornerFrequency);
    return VekErrorCode::Success;
}

double VekLowPass::filter(double sample)
{
    return _private->Filter(sample);
}
