#include "SafetyLimits.h"

#include "VekConstantPowerElement.h"
#include "VekExperiment.h"
#include "VekExperimentPlan.h"
#include "VekInstrumentHandler.h"

#include <QStringList>

#include <limits>

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

const QStringList limitNames{QStringLiteral("maxVoltage"), QStringLiteral("minVoltage"), QStringLiteral("maxCurrent"),
                             QStringLiteral("minCurrent")};

} // namespace

bool SafetyLimits::isEmpty() const
{
    for (const LimitRow &row : limitRows) {
        if (this->*row.value)
            return false;
    }
    return true;
}

VekErrorCode SafetyLimits::check(const VekInstrumentDescription &instrument) const
{
    // The limits of an element have the ranges of the model, too; what the rest of this one would do is of no interest.
    constexpr double none = std::numeric_limits<double>::infinity();
    VekConstantPowerElement element(0.0, 1.0, 1.0);
    element.setMaxVoltage(maxVoltage.value_or(none));
    element.setMinVoltage(minVoltage.value_or(-none));
    element.setMaxCurrent(maxCurrent.value_or(none));
    element.setMinCurrent(minCurrent.value_or(-none));
    VekExperiment experiment;
    experiment.appendElement(element, 1);
    QStringList faults;
    for (const VekPlanComplaint &complaint : VekExperimentPlan::forModel(experiment, instrument).complaints()) {
        const QString text = complaint.text().section(QLatin1String("::"), 1);
        if (limitNames.contains(complaint.property()) && !faults.contains(text))
            faults.append(text);
    }
    return faults.isEmpty() ? VekErrorCode(VekErrorCode::Success)
                            : VekErrorCode(VekErrorCode::ImplausibleParameters, faults.join(QLatin1Char('\n')));
}

VekErrorCode SafetyLimits::replace(const VekInstrumentHandler &handler, unsigned char channel) const
{
    VekErrorCode result = check(handler.getDescription());
    if (result == VekErrorCode::Success)
        result = handler.resetChannelLimits(channel);
    return result == VekErrorCode::Success ? apply(handler, channel) : result;
}

VekErrorCode SafetyLimits::apply(const VekInstrumentHandler &handler, unsigned char channel) const
{
    const VekErrorCode fault = check(handler.getDescription());
    if (fault != VekErrorCode::Success)
        return fault;
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
