// SPDX-License-Identifier: MIT
#include "lab/experiments/ElementCatalogue.h"

#include "VekConstantCurrentElement.h"
#include "VekConstantPotElement.h"
#include "VekConstantPowerElement.h"
#include "VekConstantResistanceElement.h"
#include "VekCyclicVoltammetryElement.h"
#include "VekDCCurrentSweepElement.h"
#include "VekDCPotentialSweepElement.h"
#include "VekDiffPulseVoltammetryElement.h"
#include "VekEISGalvanostaticElement.h"
#include "VekEISPotentiostaticElement.h"
#include "VekMottSchottkyElement.h"
#include "VekNormalPulseVoltammetryElement.h"
#include "VekOpenCircuitElement.h"
#include "VekSquareWaveVoltammetryElement.h"
#include "VekStaircasePotentialVoltammetryElement.h"
#include "VekSteppedCurrentElement.h"
#include "VekSteppedVoltageElement.h"
#include "lab/notation/Suggestion.h"

#include <algorithm>
#include <utility>

namespace lab {

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

// Setters and getters of any element behind two plain function types, picked apart at compile time.
template <auto Setter>
struct SetterCall;

template <typename Element, typename Value, void (Element::*setter)(Value)>
struct SetterCall<setter> {
    static void call(VekAbstractElement &element, double value)
    {
        (static_cast<Element &>(element).*setter)(static_cast<Value>(value));
    }
};

/// A setter without argument turns something on; what turns it off is another property.
template <typename Element, void (Element::*setter)()>
struct SetterCall<setter> {
    static void call(VekAbstractElement &element, double value)
    {
        if (value != 0.0)
            (static_cast<Element &>(element).*setter)();
    }
};

template <auto Getter>
struct GetterCall;

template <typename Element, typename Value, Value (Element::*getter)() const>
struct GetterCall<getter> {
    static double call(const VekAbstractElement &element)
    {
        return static_cast<double>((static_cast<const Element &>(element).*getter)());
    }
};

template <auto Setter, auto Getter>
constexpr PropertyRow row(const char *name, PropertyKind kind, Dimension dimension)
{
    return {name, kind, dimension, SetterCall<Setter>::call, GetterCall<Getter>::call};
}

template <auto Setter, auto Getter>
constexpr PropertyRow quantity(const char *name, Dimension dimension)
{
    return row<Setter, Getter>(name, PropertyKind::Quantity, dimension);
}

template <auto Setter, auto Getter>
constexpr PropertyRow flag(const char *name)
{
    return row<Setter, Getter>(name, PropertyKind::Flag, Dimension::Number);
}

template <auto Setter, auto Getter>
constexpr PropertyRow count(const char *name)
{
    return row<Setter, Getter>(name, PropertyKind::Count, Dimension::Number);
}

template <auto Setter, auto Getter>
constexpr PropertyRow voltageRange(const char *name)
{
    return row<Setter, Getter>(name, PropertyKind::VoltageRange, Dimension::Number);
}

template <auto Setter, auto Getter>
constexpr PropertyRow automatic(const char *name, const char *partner)
{
    PropertyRow made = row<Setter, Getter>(name, PropertyKind::Automatic, Dimension::Number);
    made.partner = partner;
    return made;
}

template <typename Element, int... Indices>
std::unique_ptr<VekAbstractElement> makeOfZeros(std::integer_sequence<int, Indices...>)
{
    return std::make_unique<Element>((Indices * 0)...);
}

/// An element whose constructor takes @p Arguments numbers.
template <typename Element, int Arguments>
std::unique_ptr<VekAbstractElement> make()
{
    return makeOfZeros<Element>(std::make_integer_sequence<int, Arguments>());
}

// A property that another one resets stands behind it: an interval turns the voltage filter off, a range the automatic.
// clang-format off
std::vector<PropertyRow> constantCurrent()
{
    using E = VekConstantCurrentElement;
    return {
        quantity<&E::setCurrent, &E::getCurrent>("current", Dimension::Current).required(),
        quantity<&E::setSamplingInterval, &E::getSamplingInterval>("samplingInterval", Dimension::Time).required(),
        quantity<&E::setMaxDuration, &E::getMaxDuration>("maxDuration", Dimension::Time).required().noneIs(infinity),
        quantity<&E::setMaxVoltage, &E::getMaxVoltage>("maxVoltage", Dimension::Voltage).noneIs(infinity),
        quantity<&E::setMinVoltage, &E::getMinVoltage>("minVoltage", Dimension::Voltage).noneIs(-infinity),
        quantity<&E::setMaxCapacity, &E::getMaxCapacity>("maxCapacity", Dimension::Charge).noneIs(infinity),
        quantity<&E::setApproxMaxCurrent, &E::getApproxMaxCurrent>("approxMaxCurrent", Dimension::Current),
        automatic<&E::setAutoRange, &E::isAutoRange>("autoRange", "approxMaxCurrent"),
        quantity<&E::setMinSamplingVoltageDifference, &E::getMinSamplingVoltageDifference>("minSamplingVoltageDifference", Dimension::Voltage).noneIs(-infinity),
        quantity<&E::setApproxMaxVoltage, &E::getApproxMaxVoltage>("approxMaxVoltage", Dimension::Voltage),
        automatic<&E::setAutoVoltageRange, &E::isAutoVoltageRange>("autoVoltageRange", "approxMaxVoltage"),
    };
}

std::vector<PropertyRow> constantPot()
{
    using E = VekConstantPotElement;
    return {
        quantity<&E::setPotential, &E::getPotential>("potential", Dimension::Voltage).required(),
        flag<&E::setVoltageVsOCP, &E::isVoltageVsOCP>("voltageVsOCP"),
        quantity<&E::setSamplingInterval, &E::getSamplingInterval>("samplingInterval", Dimension::Time).required(),
        quantity<&E::setMaxDuration, &E::getMaxDuration>("maxDuration", Dimension::Time).required().noneIs(infinity),
        quantity<&E::setMaxAbsoluteCurrent, &E::getMaxAbsoluteCurrent>("maxAbsoluteCurrent", Dimension::Current).noneIs(infinity),
        quantity<&E::setMinAbsoluteCurrent, &E::getMinAbsoluteCurrent>("minAbsoluteCurrent", Dimension::Current).noneIs(0.0),
        quantity<&E::setMaxCapacity, &E::getMaxCapacity>("maxCapacity", Dimension::Charge).noneIs(infinity),
        quantity<&E::setMindIdt, &E::getMindIdt>("mindIdt", Dimension::CurrentRate).noneIs(0.0),
        quantity<&E::setApproxMaxCurrent, &E::getApproxMaxCurrent>("approxMaxCurrent", Dimension::Current),
        automatic<&E::setAutoRange, &E::isAutoRange>("autoRange", "approxMaxCurrent"),
        voltageRange<&E::setVoltageRange, &E::getVoltageRange>("voltageRange"),
    };
}

std::vector<PropertyRow> constantPower()
{
    using E = VekConstantPowerElement;
    return {
        quantity<&E::setPower, &E::getPower>("power", Dimension::Power).required(),
        quantity<&E::setMaxDuration, &E::getMaxDuration>("maxDuration", Dimension::Time).required().noneIs(infinity),
        quantity<&E::setSamplingInterval, &E::getSamplingInterval>("samplingInterval", Dimension::Time).required(),
        quantity<&E::setMaxVoltage, &E::getMaxVoltage>("maxVoltage", Dimension::Voltage).noneIs(infinity),
        flag<&E::setMaximumVoltageVsOCP, &E::isMaximumVoltageVsOCP>("maximumVoltageVsOCP"),
        quantity<&E::setMinVoltage, &E::getMinVoltage>("minVoltage", Dimension::Voltage).noneIs(-infinity),
        flag<&E::setMinimumVoltageVsOCP, &E::isMinimumVoltageVsOCP>("minimumVoltageVsOCP"),
        quantity<&E::setMaxCapacity, &E::getMaxCapacity>("maxCapacity", Dimension::Charge).noneIs(infinity),
        quantity<&E::setMinCurrent, &E::getMinCurrent>("minCurrent", Dimension::Current).noneIs(-infinity),
        quantity<&E::setMaxCurrent, &E::getMaxCurrent>("maxCurrent", Dimension::Current).noneIs(infinity),
    };
}

std::vector<PropertyRow> constantResistance()
{
    using E = VekConstantResistanceElement;
    return {
        quantity<&E::setResistance, &E::getResistance>("resistance", Dimension::Resistance).required(),
        quantity<&E::setMaxDuration, &E::getMaxDuration>("maxDuration", Dimension::Time).required().noneIs(infinity),
        quantity<&E::setSamplingInterval, &E::getSamplingInterval>("samplingInterval", Dimension::Time).required(),
        quantity<&E::setMinVoltage, &E::getMinVoltage>("minVoltage", Dimension::Voltage).noneIs(-infinity),
        flag<&E::setMinimumVoltageVsOCP, &E::isMinimumVoltageVsOCP>("minimumVoltageVsOCP"),
        quantity<&E::setMaxVoltage, &E::getMaxVoltage>("maxVoltage", Dimension::Voltage).noneIs(infinity),
        flag<&E::setMaximumVoltageVsOCP, &E::isMaximumVoltageVsOCP>("maximumVoltageVsOCP"),
        quantity<&E::setMinCurrent, &E::getMinCurrent>("minCurrent", Dimension::Current).noneIs(-infinity),
        quantity<&E::setMaxCurrent, &E::getMaxCurrent>("maxCurrent", Dimension::Current).noneIs(infinity),
        quantity<&E::setMaxCapacity, &E::getMaxCapacity>("maxCapacity", Dimension::Charge).noneIs(infinity),
    };
}

std::vector<PropertyRow> cyclicVoltammetry()
{
    using E = VekCyclicVoltammetryElement;
    return {
        quantity<&E::setStartVoltage, &E::getStartVoltage>("startVoltage", Dimension::Voltage).required(),
        flag<&E::setStartVoltageVsOCP, &E::isStartVoltageVsOCP>("startVoltageVsOCP"),
        quantity<&E::setFirstVoltageLimit, &E::getFirstVoltageLimit>("firstVoltageLimit", Dimension::Voltage).required(),
        flag<&E::setFirstVoltageLimitVsOCP, &E::isFirstVoltageLimitVsOCP>("firstVoltageLimitVsOCP"),
        quantity<&E::setSecondVoltageLimit, &E::getSecondVoltageLimit>("secondVoltageLimit", Dimension::Voltage).required(),
        flag<&E::setSecondVoltageLimitVsOCP, &E::isSecondVoltageLimitVsOCP>("secondVoltageLimitVsOCP"),
        quantity<&E::setEndVoltage, &E::getEndVoltage>("endVoltage", Dimension::Voltage).required(),
        flag<&E::setEndVoltageVsOCP, &E::isEndVoltageVsOCP>("endVoltageVsOCP"),
        quantity<&E::setdEdt, &E::getdEdt>("dEdt", Dimension::VoltageRate).required(),
        quantity<&E::setSamplingInterval, &E::getSamplingInterval>("samplingInterval", Dimension::Time).required(),
        count<&E::setNumberOfCycles, &E::getNumberOfCycles>("numberOfCycles"),
        quantity<&E::setQuietTime, &E::getQuietTime>("quietTime", Dimension::Time),
        quantity<&E::setQuietTimeSamplingInterval, &E::getQuietTimeSamplingInterval>("quietTimeSamplingInterval", Dimension::Time),
        quantity<&E::setApproxMaxCurrent, &E::getApproxMaxCurrent>("approxMaxCurrent", Dimension::Current),
        automatic<&E::setAutoRange, &E::isAutoRange>("autoRange", "approxMaxCurrent"),
        quantity<&E::setAlphaFactor, &E::getAlphaFactor>("alphaFactor", Dimension::Percent),
    };
}

std::vector<PropertyRow> dcCurrentSweep()
{
    using E = VekDCCurrentSweepElement;
    return {
        quantity<&E::setStartingCurrent, &E::getStartingCurrent>("startingCurrent", Dimension::Current).required(),
        quantity<&E::setEndingCurrent, &E::getEndingCurrent>("endingCurrent", Dimension::Current).required(),
        quantity<&E::setScanRate, &E::getScanRate>("scanRate", Dimension::CurrentRate).required(),
        quantity<&E::setSamplingInterval, &E::getSamplingInterval>("samplingInterval", Dimension::Time).required(),
        quantity<&E::setQuietTime, &E::getQuietTime>("quietTime", Dimension::Time),
        quantity<&E::setQuietTimeSamplingInterval, &E::getQuietTimeSamplingInterval>("quietTimeSamplingInterval", Dimension::Time),
        quantity<&E::setMaxVoltage, &E::getMaxVoltage>("maxVoltage", Dimension::Voltage).noneIs(infinity),
        quantity<&E::setMinVoltage, &E::getMinVoltage>("minVoltage", Dimension::Voltage).noneIs(-infinity),
        quantity<&E::setAlphaFactor, &E::getAlphaFactor>("alphaFactor", Dimension::Percent),
    };
}

std::vector<PropertyRow> dcPotentialSweep()
{
    using E = VekDCPotentialSweepElement;
    return {
        quantity<&E::setStartingPot, &E::getStartingPot>("startingPot", Dimension::Voltage).required(),
        flag<&E::setStartVoltageVsOCP, &E::isStartVoltageVsOCP>("startVoltageVsOCP"),
        quantity<&E::setEndingPot, &E::getEndingPot>("endingPot", Dimension::Voltage).required(),
        flag<&E::setEndVoltageVsOCP, &E::isEndVoltageVsOCP>("endVoltageVsOCP"),
        quantity<&E::setScanRate, &E::getScanRate>("scanRate", Dimension::VoltageRate).required(),
        quantity<&E::setSamplingInterval, &E::getSamplingInterval>("samplingInterval", Dimension::Time).required(),
        quantity<&E::setQuietTime, &E::getQuietTime>("quietTime", Dimension::Time),
        quantity<&E::setQuietTimeSamplingInterval, &E::getQuietTimeSamplingInterval>("quietTimeSamplingInterval", Dimension::Time),
        quantity<&E::setApproxMaxCurrent, &E::getApproxMaxCurrent>("approxMaxCurrent", Dimension::Current),
        automatic<&E::setAutoRange, &E::isAutoRange>("autoRange", "approxMaxCurrent"),
        quantity<&E::setMaxAbsoluteCurrent, &E::getMaxAbsoluteCurrent>("maxAbsoluteCurrent", Dimension::Current).noneIs(infinity),
        quantity<&E::setMinAbsoluteCurrent, &E::getMinAbsoluteCurrent>("minAbsoluteCurrent", Dimension::Current).noneIs(0.0),
        quantity<&E::setAlphaFactor, &E::getAlphaFactor>("alphaFactor", Dimension::Percent),
    };
}

std::vector<PropertyRow> diffPulseVoltammetry()
{
    using E = VekDiffPulseVoltammetryElement;
    return {
        quantity<&E::setStartVoltage, &E::getStartVoltage>("startVoltage", Dimension::Voltage).required(),
        flag<&E::setStartVoltageVsOCP, &E::isStartVoltageVsOCP>("startVoltageVsOCP"),
        quantity<&E::setEndVoltage, &E::getEndVoltage>("endVoltage", Dimension::Voltage).required(),
        flag<&E::setEndVoltageVsOCP, &E::isEndVoltageVsOCP>("endVoltageVsOCP"),
        quantity<&E::setVStep, &E::getVStep>("vStep", Dimension::Voltage).required(),
        quantity<&E::setPulseHeight, &E::getPulseHeight>("pulseHeight", Dimension::Voltage).required(),
        quantity<&E::setPulseWidth, &E::getPulseWidth>("pulseWidth", Dimension::Time).required(),
        quantity<&E::setPulsePeriod, &E::getPulsePeriod>("pulsePeriod", Dimension::Time).required(),
        quantity<&E::setQuietTime, &E::getQuietTime>("quietTime", Dimension::Time),
        quantity<&E::setQuietTimeSamplingInterval, &E::getQuietTimeSamplingInterval>("quietTimeSamplingInterval", Dimension::Time),
        quantity<&E::setApproxMaxCurrent, &E::getApproxMaxCurrent>("approxMaxCurrent", Dimension::Current),
        automatic<&E::setAutoRange, &E::isAutoRange>("autoRange", "approxMaxCurrent"),
        quantity<&E::setAlphaFactor, &E::getAlphaFactor>("alphaFactor", Dimension::Percent),
    };
}

std::vector<PropertyRow> eisGalvanostatic()
{
    using E = VekEISGalvanostaticElement;
    return {
        quantity<&E::setStartFreq, &E::getStartFreq>("startFreq", Dimension::Frequency).required(),
        quantity<&E::setEndFreq, &E::getEndFreq>("endFreq", Dimension::Frequency).required(),
        quantity<&E::setStepsPerDecade, &E::getStepsPerDecade>("stepsPerDecade", Dimension::Number).required(),
        quantity<&E::setBiasCurrent, &E::getBiasCurrent>("biasCurrent", Dimension::Current).required(),
        quantity<&E::setAmplitude, &E::getAmplitude>("amplitude", Dimension::Current).required(),
        quantity<&E::setQuietTime, &E::getQuietTime>("quietTime", Dimension::Time),
        quantity<&E::setQuietTimeSamplingInterval, &E::getQuietTimeSamplingInterval>("quietTimeSamplingInterval", Dimension::Time),
        count<&E::setMinimumCycles, &E::getMinimumCycles>("minimumCycles"),
    };
}

std::vector<PropertyRow> eisPotentiostatic()
{
    using E = VekEISPotentiostaticElement;
    return {
        quantity<&E::setStartFreq, &E::getStartFreq>("startFreq", Dimension::Frequency).required(),
        quantity<&E::setEndFreq, &E::getEndFreq>("endFreq", Dimension::Frequency).required(),
        quantity<&E::setStepsPerDecade, &E::getStepsPerDecade>("stepsPerDecade", Dimension::Number).required(),
        quantity<&E::setBiasVoltage, &E::getBiasVoltage>("biasVoltage", Dimension::Voltage).required(),
        flag<&E::setBiasVoltageVsOCP, &E::isBiasVoltageVsOCP>("biasVoltageVsOCP"),
        quantity<&E::setAmplitude, &E::getAmplitude>("amplitude", Dimension::Voltage).required(),
        quantity<&E::setQuietTime, &E::getQuietTime>("quietTime", Dimension::Time),
        quantity<&E::setQuietTimeSamplingInterval, &E::getQuietTimeSamplingInterval>("quietTimeSamplingInterval", Dimension::Time),
        count<&E::setMinimumCycles, &E::getMinimumCycles>("minimumCycles"),
    };
}

std::vector<PropertyRow> mottSchottky()
{
    using E = VekMottSchottkyElement;
    return {
        quantity<&E::setStartingPotential, &E::getStartingPotential>("startingPotential", Dimension::Voltage).required(),
        flag<&E::setStartVoltageVsOCP, &E::isStartVoltageVsOCP>("startVoltageVsOCP"),
        quantity<&E::setEndingPotential, &E::getEndingPotential>("endingPotential", Dimension::Voltage).required(),
        flag<&E::setEndVoltageVsOCP, &E::isEndVoltageVsOCP>("endVoltageVsOCP"),
        quantity<&E::setVoltageStep, &E::getVoltageStep>("voltageStep", Dimension::Voltage).required(),
        quantity<&E::setStartFrequency, &E::getStartFrequency>("startFrequency", Dimension::Frequency).required(),
        quantity<&E::setEndFrequency, &E::getEndFrequency>("endFrequency", Dimension::Frequency).required(),
        quantity<&E::setStepsPerDecade, &E::getStepsPerDecade>("stepsPerDecade", Dimension::Number).required(),
        quantity<&E::setAmplitude, &E::getAmplitude>("amplitude", Dimension::Voltage).required(),
        count<&E::setMinCycles, &E::getMinCycles>("minCycles").required(),
        quantity<&E::setQuietTime, &E::getQuietTime>("quietTime", Dimension::Time),
        quantity<&E::setQuietTimeSampInterval, &E::getQuietTimeSampInterval>("quietTimeSampInterval", Dimension::Time),
        quantity<&E::setStepQuietTime, &E::getStepQuietTime>("stepQuietTime", Dimension::Time),
        quantity<&E::setStepQuietSampInterval, &E::getStepQuietSampInterval>("stepQuietSampInterval", Dimension::Time),
    };
}

std::vector<PropertyRow> normalPulseVoltammetry()
{
    using E = VekNormalPulseVoltammetryElement;
    return {
        quantity<&E::setStartVoltage, &E::getStartVoltage>("startVoltage", Dimension::Voltage).required(),
        flag<&E::setStartVoltageVsOCP, &E::isStartVoltageVsOCP>("startVoltageVsOCP"),
        quantity<&E::setEndVoltage, &E::getEndVoltage>("endVoltage", Dimension::Voltage).required(),
        flag<&E::setEndVoltageVsOCP, &E::isEndVoltageVsOCP>("endVoltageVsOCP"),
        quantity<&E::setVStep, &E::getVStep>("vStep", Dimension::Voltage).required(),
        quantity<&E::setPulseWidth, &E::getPulseWidth>("pulseWidth", Dimension::Time).required(),
        quantity<&E::setPulsePeriod, &E::getPulsePeriod>("pulsePeriod", Dimension::Time).required(),
        quantity<&E::setQuietTime, &E::getQuietTime>("quietTime", Dimension::Time),
        quantity<&E::setQuietTimeSamplingInterval, &E::getQuietTimeSamplingInterval>("quietTimeSamplingInterval", Dimension::Time),
        quantity<&E::setApproxMaxCurrent, &E::getApproxMaxCurrent>("approxMaxCurrent", Dimension::Current),
        automatic<&E::setAutoRange, &E::isAutoRange>("autoRange", "approxMaxCurrent"),
        quantity<&E::setAlphaFactor, &E::getAlphaFactor>("alphaFactor", Dimension::Percent),
    };
}

std::vector<PropertyRow> openCircuit()
{
    using E = VekOpenCircuitElement;
    return {
        quantity<&E::setMaxDuration, &E::getMaxDuration>("maxDuration", Dimension::Time).required().noneIs(infinity),
        quantity<&E::setSamplingInterval, &E::getSamplingInterval>("samplingInterval", Dimension::Time).required(),
        quantity<&E::setMaxVoltage, &E::getMaxVoltage>("maxVoltage", Dimension::Voltage).noneIs(infinity),
        quantity<&E::setMinVoltage, &E::getMinVoltage>("minVoltage", Dimension::Voltage).noneIs(-infinity),
        quantity<&E::setMindVdt, &E::getMindVdt>("mindVdt", Dimension::VoltageRate).noneIs(0.0),
        quantity<&E::setApproxMaxVoltage, &E::getApproxMaxVoltage>("approxMaxVoltage", Dimension::Voltage).excluding("maxVoltage"),
        automatic<&E::setAutoVoltageRange, &E::isAutoVoltageRange>("autoVoltageRange", "approxMaxVoltage"),
    };
}

std::vector<PropertyRow> squareWaveVoltammetry()
{
    using E = VekSquareWaveVoltammetryElement;
    return {
        quantity<&E::setStartVoltage, &E::getStartVoltage>("startVoltage", Dimension::Voltage).required(),
        flag<&E::setStartVoltageVsOCP, &E::isStartVoltageVsOCP>("startVoltageVsOCP"),
        quantity<&E::setEndVoltage, &E::getEndVoltage>("endVoltage", Dimension::Voltage).required(),
        flag<&E::setEndVoltageVsOCP, &E::isEndVoltageVsOCP>("endVoltageVsOCP"),
        quantity<&E::setVStep, &E::getVStep>("vStep", Dimension::Voltage).required(),
        quantity<&E::setPulseAmp, &E::getPulseAmp>("pulseAmp", Dimension::Voltage).required(),
        quantity<&E::setPulseFreq, &E::getPulseFreq>("pulseFreq", Dimension::Frequency).required(),
        quantity<&E::setQuietTime, &E::getQuietTime>("quietTime", Dimension::Time),
        quantity<&E::setQuietTimeSamplingInterval, &E::getQuietTimeSamplingInterval>("quietTimeSamplingInterval", Dimension::Time),
        quantity<&E::setApproxMaxCurrent, &E::getApproxMaxCurrent>("approxMaxCurrent", Dimension::Current),
        automatic<&E::setAutoRange, &E::isAutoRange>("autoRange", "approxMaxCurrent"),
        quantity<&E::setAlphaFactor, &E::getAlphaFactor>("alphaFactor", Dimension::Percent),
    };
}

std::vector<PropertyRow> staircasePotentialVoltammetry()
{
    using E = VekStaircasePotentialVoltammetryElement;
    return {
        quantity<&E::setStartVoltage, &E::getStartVoltage>("startVoltage", Dimension::Voltage).required(),
        flag<&E::setStartVoltageVsOCP, &E::isStartVoltageVsOCP>("startVoltageVsOCP"),
        quantity<&E::setFirstVoltageLimit, &E::getFirstVoltageLimit>("firstVoltageLimit", Dimension::Voltage).required(),
        flag<&E::setFirstVoltageLimitVsOCP, &E::isFirstVoltageLimitVsOCP>("firstVoltageLimitVsOCP"),
        quantity<&E::setSecondVoltageLimit, &E::getSecondVoltageLimit>("secondVoltageLimit", Dimension::Voltage).required(),
        flag<&E::setSecondVoltageLimitVsOCP, &E::isSecondVoltageLimitVsOCP>("secondVoltageLimitVsOCP"),
        quantity<&E::setEndVoltage, &E::getEndVoltage>("endVoltage", Dimension::Voltage).required(),
        flag<&E::setEndVoltageVsOCP, &E::isEndVoltageVsOCP>("endVoltageVsOCP"),
        quantity<&E::setStepSize, &E::getStepSize>("stepSize", Dimension::Voltage).required(),
        quantity<&E::setStepDuration, &E::getStepDuration>("stepDuration", Dimension::Time).required(),
        quantity<&E::setSamplingInterval, &E::getSamplingInterval>("samplingInterval", Dimension::Time).required(),
        count<&E::setNumberOfCycles, &E::getNumberOfCycles>("numberOfCycles"),
        quantity<&E::setQuietTime, &E::getQuietTime>("quietTime", Dimension::Time),
        quantity<&E::setQuietTimeSamplingInterval, &E::getQuietTimeSamplingInterval>("quietTimeSamplingInterval", Dimension::Time),
        quantity<&E::setApproxMaxCurrent, &E::getApproxMaxCurrent>("approxMaxCurrent", Dimension::Current),
        automatic<&E::setAutorange, &E::isAutorange>("autorange", "approxMaxCurrent"),
    };
}

std::vector<PropertyRow> steppedCurrent()
{
    using E = VekSteppedCurrentElement;
    return {
        quantity<&E::setStartCurrent, &E::getStartCurrent>("startCurrent", Dimension::Current).required(),
        quantity<&E::setEndCurrent, &E::getEndCurrent>("endCurrent", Dimension::Current).required(),
        quantity<&E::setStepSize, &E::getStepSize>("stepSize", Dimension::Current).required(),
        quantity<&E::setStepDuration, &E::getStepDuration>("stepDuration", Dimension::Time).required(),
        quantity<&E::setSamplingInterval, &E::getSamplingInterval>("samplingInterval", Dimension::Time).required(),
        quantity<&E::setApproxMaxVoltage, &E::getApproxMaxVoltage>("approxMaxVoltage", Dimension::Voltage).noneIs(infinity),
        quantity<&E::setApproxMinVoltage, &E::getApproxMinVoltage>("approxMinVoltage", Dimension::Voltage).noneIs(-infinity),
    };
}

std::vector<PropertyRow> steppedVoltage()
{
    using E = VekSteppedVoltageElement;
    return {
        quantity<&E::setStartVoltage, &E::getStartVoltage>("startVoltage", Dimension::Voltage).required(),
        flag<&E::setStartVoltageVsOCP, &E::isStartVoltageVsOCP>("startVoltageVsOCP"),
        quantity<&E::setEndVoltage, &E::getEndVoltage>("endVoltage", Dimension::Voltage).required(),
        flag<&E::setEndVoltageVsOCP, &E::isEndVoltageVsOCP>("endVoltageVsOCP"),
        quantity<&E::setStepSize, &E::getStepSize>("stepSize", Dimension::Voltage).required(),
        quantity<&E::setSamplingInterval, &E::getSamplingInterval>("samplingInterval", Dimension::Time).required(),
        quantity<&E::setStepDuration, &E::getStepDuration>("stepDuration", Dimension::Time).required(),
        quantity<&E::setApproxMaxCurrent, &E::getApproxMaxCurrent>("approxMaxCurrent", Dimension::Current),
        automatic<&E::setCurrentAutorange, &E::isAutoRange>("autoRange", "approxMaxCurrent"),
    };
}
// clang-format on

} // namespace

const PropertyRow *ElementRow::find(const QString &property) const
{
    for (const PropertyRow &each : properties) {
        if (property == QLatin1String(each.name))
            return &each;
    }
    return nullptr;
}

QStringList ElementRow::propertyNames() const
{
    QStringList names;
    for (const PropertyRow &each : properties)
        names.append(QString::fromLatin1(each.name));
    return names;
}

const std::vector<ElementRow> &elementCatalogue()
{
    // clang-format off
    static const std::vector<ElementRow> catalogue = {
        {"ConstantCurrent", "Holds a current.", make<VekConstantCurrentElement, 3>, constantCurrent()},
        {"ConstantPot", "Holds a potential.", make<VekConstantPotElement, 3>, constantPot()},
        {"ConstantPower", "Holds a power: positive charges, negative discharges.", make<VekConstantPowerElement, 3>, constantPower()},
        {"ConstantResistance", "Discharges through a constant resistance.", make<VekConstantResistanceElement, 3>, constantResistance()},
        {"CyclicVoltammetry", "Sweeps the potential between two vertices, cycle after cycle.", make<VekCyclicVoltammetryElement, 6>, cyclicVoltammetry()},
        {"DCCurrentSweep", "Sweeps the current at a constant rate.", make<VekDCCurrentSweepElement, 4>, dcCurrentSweep()},
        {"DCPotentialSweep", "Sweeps the potential at a constant rate.", make<VekDCPotentialSweepElement, 4>, dcPotentialSweep()},
        {"DiffPulseVoltammetry", "Differential pulse voltammetry: a staircase with a pulse of constant height on each step.", make<VekDiffPulseVoltammetryElement, 6>, diffPulseVoltammetry()},
        {"EISGalvanostatic", "Impedance with a sine on the current.", make<VekEISGalvanostaticElement, 5>, eisGalvanostatic()},
        {"EISPotentiostatic", "Impedance with a sine on the potential.", make<VekEISPotentiostaticElement, 5>, eisPotentiostatic()},
        {"MottSchottky", "Impedance at one potential after the other.", make<VekMottSchottkyElement, 8>, mottSchottky()},
        {"NormalPulseVoltammetry", "Normal pulse voltammetry: pulses of growing height from one base potential.", make<VekNormalPulseVoltammetryElement, 5>, normalPulseVoltammetry()},
        {"OpenCircuit", "Disconnects the cell and watches its potential.", make<VekOpenCircuitElement, 2>, openCircuit()},
        {"SquareWaveVoltammetry", "Square-wave voltammetry: a staircase with a square wave on it.", make<VekSquareWaveVoltammetryElement, 5>, squareWaveVoltammetry()},
        {"StaircasePotentialVoltammetry", "Steps the potential between two vertices, cycle after cycle.", make<VekStaircasePotentialVoltammetryElement, 7>, staircasePotentialVoltammetry()},
        {"SteppedCurrent", "Steps the current.", make<VekSteppedCurrentElement, 5>, steppedCurrent()},
        {"SteppedVoltage", "Steps the potential.", make<VekSteppedVoltageElement, 5>, steppedVoltage()},
    };
    // clang-format on
    return catalogue;
}

const ElementRow *findElement(const QString &name)
{
    for (const ElementRow &each : elementCatalogue()) {
        if (name == QLatin1String(each.name))
            return &each;
    }
    return nullptr;
}

QStringList elementNames()
{
    QStringList names;
    for (const ElementRow &each : elementCatalogue())
        names.append(QString::fromLatin1(each.name));
    return names;
}

QStringList elementsAbbreviated(const QString &abbreviation)
{
    struct Row {
        const char *abbreviation;
        QStringList elements;
    };
    static const Row rows[] = {
        {"CV", {QStringLiteral("CyclicVoltammetry")}},
        {"LSV", {QStringLiteral("DCPotentialSweep")}},
        {"CA", {QStringLiteral("ConstantPot")}},
        {"CP", {QStringLiteral("ConstantCurrent")}},
        {"CC", {QStringLiteral("ConstantCurrent")}},
        {"OCP", {QStringLiteral("OpenCircuit")}},
        {"OCV", {QStringLiteral("OpenCircuit")}},
        {"EIS", {QStringLiteral("EISPotentiostatic"), QStringLiteral("EISGalvanostatic")}},
        {"PEIS", {QStringLiteral("EISPotentiostatic")}},
        {"GEIS", {QStringLiteral("EISGalvanostatic")}},
        {"DPV", {QStringLiteral("DiffPulseVoltammetry")}},
        {"SWV", {QStringLiteral("SquareWaveVoltammetry")}},
        {"NPV", {QStringLiteral("NormalPulseVoltammetry")}},
        {"CCCV", {QStringLiteral("ConstantCurrent"), QStringLiteral("ConstantPot")}},
        {"MS", {QStringLiteral("MottSchottky")}},
    };
    for (const Row &row : rows) {
        if (abbreviation.toUpper() == QLatin1String(row.abbreviation))
            return row.elements;
    }
    return {};
}

QString elementMeant(const QString &word)
{
    const QStringList elements = elementsAbbreviated(word);
    if (elements.isEmpty())
        return didYouMean(word, elementNames());
    const bool isSequence = word.toUpper() == QLatin1String("CCCV");
    return isSequence ? QStringLiteral("; write \"%1\" with \"maxVoltage\", and a \"%2\" behind it")
                            .arg(elements[0], elements[1])
                      : QStringLiteral("; did you mean \"%1\"?").arg(elements.join(QLatin1String("\" or \"")));
}

} // namespace lab
