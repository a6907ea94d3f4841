#include "SafetyLimits.h"

#include "VekInstrumentHandler.h"

namespace client {

namespace {

struct LimitRow {
    std::optional<double> SafetyLimits::*value;
    VekErrorCode (VekInstrumentHandler::*set)(unsigned char, double) const;
};

constexpr LimitRow limitRows[] = {
    {&SafetyLimits::maxVoltage, &VekInstrumentHandler::setChannelMaximumVoltage},
    {&SafetyLimits::minVoltage, &VekInstrumentHandler::setChannelMinimumVoltage},
    {&SafetyLimits::maxCurrent, &VekInstrumentHandler::setChannelMaximumCurrent},
    {&SafetyLimits::minCurrent, &VekInstrumentHandler::setChannelMinimumCurrent},
    {&SafetyLimits::maxTemperature, &VekInstrumentHandler::setChannelMaximumTemperature},
};

} // namespace

bool SafetyLimits::isEmpty() const
{
    for (const LimitRow &row : limitRows) {
        if (this->*row.value)
            return false;
    }
    return true;
}

VekErrorCode SafetyLimits::replace(const VekInstrumentHandler &handler, unsigned char channel) const
{
    const VekErrorCode result = handler.resetChannelLimits(channel);
    return result == VekErrorCode::Success ? apply(handler, channel) : result;
}

VekErrorCode SafetyLimits::apply(const VekInstrumentHandler &handler, unsigned char channel) const
{
    for (const LimitRow &row : limitRows) {
        const std::optional<double> &value = this->*row.value;
        if (!value)
            continue;
        const VekErrorCode result = (handler.*row.set)(channel, *value);
        if (result != VekErrorCode::Success)
            return result;
    }
    return VekErrorCode::Success;
}

} // namespace client
