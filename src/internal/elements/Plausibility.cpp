// SPDX-License-Identifier: MIT
#include "elements/Plausibility.h"

#include "elements/PlausibilityRules.h"
#include "hardware_models/HardwareModel.h"

#include <algorithm>
#include <cfloat>
#include <cmath>

namespace {

constexpr double noNumber = std::numeric_limits<double>::quiet_NaN();
constexpr double largest = FLT_MAX; ///< beyond it a record would hold infinity
constexpr double smallest = FLT_MIN;
constexpr double mostCycles = 65536; ///< a loop counts 65535 passes in 16 bits, and the last cycle stands behind it

struct Range {
    double lowest;
    double highest;
};

struct SenseRow {
    Sense sense;
    const char *unit;
    bool mayBeZero;
    Range (*range)(const HardwareModel &model);
};

double largestPower(const HardwareModel &model)
{
    return model.getIMax() * model.getVMax(false);
}

// clang-format off
constexpr SenseRow senseRows[] = {
    {Sense::Potential,          "V",   true,  [](const HardwareModel &m) { return Range{m.getVMin(false), m.getVMax(false)}; }},
    {Sense::RestPotential,      "V",   true,  [](const HardwareModel &m) { return Range{m.getVMin(true), m.getVMax(true)}; }},
    {Sense::PotentialSum,       "V",   true,  [](const HardwareModel &m) { return Range{0.0, m.getVandVAmpMax()}; }},
    {Sense::PotentialStep,      "V",   false, [](const HardwareModel &) { return Range{-largest, largest}; }},
    {Sense::Difference,         "V",   true,  [](const HardwareModel &) { return Range{0.0, largest}; }},
    {Sense::PotentialRate,      "V/s", false, [](const HardwareModel &m) { return Range{-m.getVoltageScanRateMax(), m.getVoltageScanRateMax()}; }},
    {Sense::LeastPotentialRate, "V/s", true,  [](const HardwareModel &) { return Range{-largest, largest}; }},
    {Sense::Current,            "A",   true,  [](const HardwareModel &m) { return Range{m.getIMin(), m.getIMax()}; }},
    {Sense::CurrentSum,         "A",   true,  [](const HardwareModel &m) { return Range{0.0, m.getIandIAmpMax()}; }},
    {Sense::CurrentStep,        "A",   false, [](const HardwareModel &) { return Range{-largest, largest}; }},
    {Sense::CurrentRate,        "A/s", false, [](const HardwareModel &) { return Range{-largest, largest}; }},
    {Sense::LeastCurrentRate,   "A/s", true,  [](const HardwareModel &) { return Range{-largest, largest}; }},
    {Sense::Power,              "W",   true,  [](const HardwareModel &m) { return Range{-largestPower(m), largestPower(m)}; }},
    {Sense::Resistance,         "Ohm", false, [](const HardwareModel &) { return Range{0.0, largest}; }},
    {Sense::Charge,             "C",   true,  [](const HardwareModel &) { return Range{-largest, largest}; }},
    {Sense::Time,               "s",   true,  [](const HardwareModel &) { return Range{0.0, largest}; }},
    {Sense::StepTime,           "s",   false, [](const HardwareModel &) { return Range{0.0, largest}; }},
    {Sense::Interval,           "s",   false, [](const HardwareModel &m) { return Range{m.getMinSamplingPeriod(), largest}; }},
    {Sense::Frequency,          "Hz",  false, [](const HardwareModel &) { return Range{0.0, largest}; }},
    {Sense::Share,              "%",   true,  [](const HardwareModel &) { return Range{0.0, 100.0}; }},
    {Sense::Cycles,             "",    false, [](const HardwareModel &) { return Range{1.0, mostCycles}; }},
};
// clang-format on

constexpr bool isInOrder()
{
    for (std::size_t row = 0; row < std::size(senseRows); ++row) {
        if (std::size_t(senseRows[row].sense) != row)
            return false;
    }
    return true;
}
static_assert(isInOrder(), "one row per sense, in the order of the enumeration");

// ---- words ----

QString quantity(double value, const SenseRow &row)
{
    if (std::isnan(value))
        return QStringLiteral("not a number");
    if (std::isinf(value))
        return value > 0.0 ? QStringLiteral("infinity") : QStringLiteral("minus infinity");
    return QStringLiteral("%1 %2").arg(QString::number(value, 'g', 6), QLatin1String(row.unit)).trimmed();
}

/// Where a value has to lie: "from -10 V to 10 V", "above 0 s", "other than 0 A/s".
QString rangeText(const Range &range, const SenseRow &row)
{
    const bool isBoundedBelow = range.lowest > -largest;
    const bool isBoundedAbove = range.highest < largest;
    if (isBoundedBelow && isBoundedAbove) {
        const QString bounds =
            QStringLiteral("from %1 to %2").arg(quantity(range.lowest, row), quantity(range.highest, row));
        const bool hasHole = !row.mayBeZero && range.lowest < 0.0;
        return hasHole ? bounds + QStringLiteral(" other than 0") : bounds;
    }
    if (isBoundedBelow && range.lowest == 0.0 && !row.mayBeZero)
        return QStringLiteral("above ") + quantity(0.0, row);
    if (isBoundedBelow)
        return QStringLiteral("of at least ") + quantity(range.lowest, row);
    return row.mayBeZero ? QStringLiteral("that are finite") : QStringLiteral("that are finite and not 0");
}

/// @param none what stands for no limit; NaN where nothing does
QString outsideText(const QString &what, double value, const Range &range, const SenseRow &row,
                    const HardwareModel &model, double none)
{
    const QString orNone =
        std::isnan(none) ? QString() : QStringLiteral(", or %1 for no limit").arg(quantity(none, row));
    return QStringLiteral("%1 is %2; the %3 takes values %4%5.")
        .arg(what, quantity(value, row), model.getVanityName(), rangeText(range, row), orNone);
}

// ---- the check ----

const SenseRow &rowOf(Sense sense)
{
    return senseRows[int(sense)];
}

/// A cycler's limits are infinite in its model; a number has to be finite all the same.
Range rangeOf(const SenseRow &row, const HardwareModel &model)
{
    const Range range = row.range(model);
    return {std::max(range.lowest, -largest), std::min(range.highest, largest)};
}

bool isInside(double value, const Range &range, const SenseRow &row)
{
    if (!row.mayBeZero && std::fabs(value) < smallest)
        return false;
    return range.lowest <= value && value <= range.highest; // NaN is outside
}

bool isSet(ElementValue getter, const AbstractBuilderElement &element)
{
    return getter && getter(element) != 0.0;
}

bool isUsed(const Rule &rule, const AbstractBuilderElement &element)
{
    return !isSet(rule.isIdle, element) && (!rule.counts || rule.counts(element) > 0.0);
}

const Rule &ruleNamed(const char *property, const Rules &rules)
{
    return *std::find_if(rules.begin(), rules.end(),
                         [property](const Rule &rule) { return qstrcmp(rule.property, property) == 0; });
}

/// The complaint about a lower limit that lies above this upper one; two that count from different zeros do not compare.
QString crossingText(const Rule &upper, const Rules &rules, const AbstractBuilderElement &element)
{
    if (!upper.atLeast)
        return {};
    const Rule &lower = ruleNamed(upper.atLeast, rules);
    const bool areComparable = isSet(lower.isVsOcp, element) == isSet(upper.isVsOcp, element);
    if (!areComparable || !(lower.value(element) > upper.value(element)))
        return {};
    const SenseRow &row = rowOf(upper.sense);
    return QStringLiteral("%1 of %2 lies above %3 of %4.")
        .arg(QLatin1String(lower.property), quantity(lower.value(element), row), QLatin1String(upper.property),
             quantity(upper.value(element), row));
}

QString faultOf(const Rule &rule, const Rules &rules, const AbstractBuilderElement &element, const HardwareModel &model)
{
    const double value = rule.value(element);
    const bool vsOcp = rule.sense == Sense::Potential && isSet(rule.isVsOcp, element);
    const SenseRow &row = rowOf(vsOcp ? Sense::RestPotential : rule.sense);
    const Range range = rangeOf(row, model);
    const QString what = QLatin1String(rule.term ? rule.term : rule.property);
    if (value != rule.none && !isInside(value, range, row))
        return outsideText(what, value, range, row, model, rule.none);
    if (rule.opposite && rule.opposite(element) < 0.0)
        return QStringLiteral("%1 of %2 leads away from the end.").arg(what, quantity(value, row));
    return crossingText(rule, rules, element);
}

QString faultOfManual(const QString &what, Sense sense, double value, const HardwareModel &model)
{
    const SenseRow &row = rowOf(sense);
    const Range range = rangeOf(row, model);
    return isInside(value, range, row) ? QString() : outsideText(what, value, range, row, model, noNumber);
}

} // namespace

std::vector<Plausibility::Finding> Plausibility::findings(const AbstractBuilderElement &element,
                                                          const HardwareModel &model)
{
    std::vector<Finding> found;
    const Rules &rules = rulesOf(element);
    for (const Rule &rule : rules) {
        if (!isUsed(rule, element))
            continue;
        const QString fault = faultOf(rule, rules, element, model);
        if (!fault.isEmpty())
            found.push_back({QString::fromLatin1(rule.property), fault});
    }
    return found;
}

double Plausibility::usedValue(const AbstractBuilderElement &element, const QString &property)
{
    for (const Rule &rule : rulesOf(element)) {
        if (property == QLatin1String(rule.property) && isUsed(rule, element))
            return rule.value(element);
    }
    return noNumber;
}

QString Plausibility::faultOfManualVoltage(double volts, const HardwareModel &model)
{
    return faultOfManual(QStringLiteral("The voltage"), Sense::Potential, volts, model);
}

QString Plausibility::faultOfManualCurrent(double amperes, const HardwareModel &model)
{
    return faultOfManual(QStringLiteral("The current"), Sense::Current, amperes, model);
}

QString Plausibility::faultOfManualInterval(double seconds)
{
    if (std::isnan(seconds) || seconds > largest)
        return QStringLiteral("The sampling interval has to be finite; it is %1.")
            .arg(quantity(seconds, rowOf(Sense::Interval)));
    return {};
}

QString Plausibility::faultOfSafetyLimit(double value)
{
    return std::isnan(value) ? QStringLiteral("A limit has to be a number, or infinity for none; it is not a number.")
                             : QString();
}
