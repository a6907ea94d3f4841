// SPDX-License-Identifier: MIT
#include "lab/runs/SafetyLimits.h"

#include "VekConstantPowerElement.h"
#include "VekInstrumentHandler.h"
#include "lab/experiments/ModelWords.h"
#include "lab/notation/Units.h"

#include <QStringList>

#include <limits>

namespace lab {

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

const OptionNames limitNames{
    {QStringLiteral("maxVoltage"), QStringLiteral("--max-voltage")},
    {QStringLiteral("minVoltage"), QStringLiteral("--min-voltage")},
    {QStringLiteral("maxCurrent"), QStringLiteral("--max-current")},
    {QStringLiteral("minCurrent"), QStringLiteral("--min-current")},
};

/// What a sensor can read, in degrees Celsius.
struct SensorRow {
    const char *model; ///< empty for all that have no row of their own
    const char *sensor;
    double lowest;
    double highest;
};

constexpr SensorRow sensorRows[] = {
    {"Gale", "thermistors", -60.0, 135.0},
    {"", "thermocouple", -270.0, 1800.0},
};

const SensorRow &sensorOf(const VekInstrumentDescription &instrument)
{
    const SensorRow *row = sensorRows;
    while (row->model[0] != '\0' && instrument.vanityName != QLatin1String(row->model))
        ++row;
    return *row;
}

QStringList faultsOfTemperature(const std::optional<double> &limit, const VekInstrumentDescription &instrument)
{
    const SensorRow &sensor = sensorOf(instrument);
    if (!limit || (sensor.lowest <= *limit && *limit <= sensor.highest))
        return {};
    const auto words = [](double degrees) { return formatQuantity(degrees, Dimension::Temperature); };
    return {QStringLiteral("--max-temperature is %1; the %2 of the %3 reads from %4 to %5.")
                .arg(words(*limit), QLatin1String(sensor.sensor), instrument.vanityName, words(sensor.lowest),
                     words(sensor.highest))};
}

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
    const QStringList faults =
        faultsOf(element, limitNames, instrument) + faultsOfTemperature(maxTemperature, instrument);
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

} // namespace lab
