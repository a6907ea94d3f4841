// SPDX-License-Identifier: MIT
#include "elements/PlausibilityRules.h"

#include "elements/ConstantCurrentAdvElement.h"
#include "elements/ConstantCurrentElement.h"
#include "elements/ConstantPotAdvElement.h"
#include "elements/ConstantPotElement.h"
#include "elements/ConstantPowerElement.h"
#include "elements/ConstantResistanceElement.h"
#include "elements/CyclicVoltammetryElement.h"
#include "elements/DCCurrentSweepElement.h"
#include "elements/DCPotentialSweepElement.h"
#include "elements/DiffPulseVoltammetryElement.h"
#include "elements/EISGalvanostaticElement.h"
#include "elements/EISPotentiostaticElement.h"
#include "elements/MottSchottkyElement.h"
#include "elements/NormalPulseVoltammetryElement.h"
#include "elements/OpenCircuitElement.h"
#include "elements/SquareWaveVoltammetryElement.h"
#include "elements/StaircasePotentialVoltammetryElement.h"
#include "elements/SteppedCurrent.h"
#include "elements/SteppedVoltage.h"
#include "numerics/Constants.h"

#include <cmath>
#include <typeindex>
#include <unordered_map>

namespace {

template <class Pointer>
struct ClassOf;
template <class Class, class Value>
struct ClassOf<Value Class::*> {
    using Type = Class;
};

template <auto field>
double valueOf(const AbstractBuilderElement &element)
{
    return double(static_cast<const typename ClassOf<decltype(field)>::Type &>(element).*field);
}

template <auto field>
double percentOf(const AbstractBuilderElement &element)
{
    return valueOf<field>(element) * 100.0;
}

template <auto field>
double magnitudeOf(const AbstractBuilderElement &element)
{
    return std::fabs(valueOf<field>(element));
}

/// The sum of two values as it lies farthest from 0.
template <auto field, auto amplitude>
double sumOf(const AbstractBuilderElement &element)
{
    return magnitudeOf<field>(element) + magnitudeOf<amplitude>(element);
}

template <auto field, auto height>
double raised(const AbstractBuilderElement &element)
{
    return valueOf<field>(element) + valueOf<height>(element);
}

/// A value, farther from 0 by an amplitude.
template <auto field, auto amplitude>
double widened(const AbstractBuilderElement &element)
{
    const double value = valueOf<field>(element);
    return value + std::copysign(magnitudeOf<amplitude>(element), value);
}

template <auto field>
Rule rule(const char *property, Sense sense)
{
    return {property, sense, &valueOf<field>};
}

Rules operator+(Rules rules, const Rules &more)
{
    rules.insert(rules.end(), more.begin(), more.end());
    return rules;
}

// ---- what several elements share; they name their fields alike ----

template <class E>
Rules quietTime()
{
    return {rule<&E::quietTime>("quietTime", Sense::Time),
            rule<&E::quietTimeSamplingInterval>("quietTimeSamplingInterval", Sense::Interval)
                .where(&valueOf<&E::quietTime>)};
}

template <class E>
Rules voltageWindow(Sense sense = Sense::Potential)
{
    return {rule<&E::minVoltage>("minVoltage", sense).orNone(-infinity),
            rule<&E::maxVoltage>("maxVoltage", sense).orNone(infinity).notBelow("minVoltage")};
}

template <class E>
Rules fixedCurrentRange()
{
    return {rule<&E::approxMaxCurrent>("approxMaxCurrent", Sense::Current).unless(&valueOf<&E::autoRange>)};
}

template <class E>
Rules alphaFactor()
{
    return {{"alphaFactor", Sense::Share, &percentOf<&E::alphaFactor>}};
}

template <class E>
Rules currentWindow()
{
    const Rule lower{"minAbsoluteCurrent", Sense::Current, &magnitudeOf<&E::minAbsoluteCurrent>};
    const Rule upper{"maxAbsoluteCurrent", Sense::Current, &magnitudeOf<&E::maxAbsoluteCurrent>};
    return {lower, upper.orNone(infinity).notBelow("minAbsoluteCurrent")};
}

/// A constant load: power or resistance.
template <class E>
Rules load()
{
    return {
        rule<&E::samplingInterval>("samplingInterval", Sense::Interval),
        rule<&E::maxDuration>("maxDuration", Sense::Time).orNone(infinity),
        rule<&E::minVoltage>("minVoltage", Sense::Potential).orNone(-infinity).vsOcp(&valueOf<&E::minimumVoltageVsOCP>),
        rule<&E::maxVoltage>("maxVoltage", Sense::Potential)
            .orNone(infinity)
            .vsOcp(&valueOf<&E::maximumVoltageVsOCP>)
            .notBelow("minVoltage"),
        rule<&E::minCurrent>("minCurrent", Sense::Current).orNone(-infinity),
        rule<&E::maxCurrent>("maxCurrent", Sense::Current).orNone(infinity).notBelow("minCurrent"),
        rule<&E::maxCapacity>("maxCapacity", Sense::Charge).orNone(infinity),
    };
}

/// The potentials of a voltammogram with two vertices.
template <class E>
Rules path()
{
    return {
        rule<&E::startVoltage>("startVoltage", Sense::Potential).vsOcp(&valueOf<&E::startVoltageVsOCP>),
        rule<&E::firstVoltageLimit>("firstVoltageLimit", Sense::Potential).vsOcp(&valueOf<&E::firstVoltageLimitVsOCP>),
        rule<&E::secondVoltageLimit>("secondVoltageLimit", Sense::Potential)
            .vsOcp(&valueOf<&E::secondVoltageLimitVsOCP>),
        rule<&E::endVoltage>("endVoltage", Sense::Potential).vsOcp(&valueOf<&E::endVoltageVsOCP>),
        rule<&E::numberOfCycles>("numberOfCycles", Sense::Cycles),
        rule<&E::samplingInterval>("samplingInterval", Sense::Interval),
    };
}

/// A staircase of pulses but for the pulses themselves.
template <class E>
Rules pulseStaircase()
{
    return Rules{rule<&E::startVoltage>("startVoltage", Sense::Potential).vsOcp(&valueOf<&E::startVoltageVsOCP>),
                 rule<&E::endVoltage>("endVoltage", Sense::Potential).vsOcp(&valueOf<&E::endVoltageVsOCP>),
                 rule<&E::vStep>("vStep", Sense::PotentialStep)} +
           quietTime<E>() + fixedCurrentRange<E>() + alphaFactor<E>();
}

template <class E>
Rules pulseTimes()
{
    return {rule<&E::pulseWidth>("pulseWidth", Sense::StepTime), rule<&E::pulsePeriod>("pulsePeriod", Sense::StepTime)};
}

template <class E>
Rules impedanceSweep()
{
    return Rules{rule<&E::startFreq>("startFreq", Sense::Frequency), rule<&E::endFreq>("endFreq", Sense::Frequency)} +
           quietTime<E>();
}

// ---- the elements ----

// clang-format off
Rules constantCurrent()
{
    using E = ConstantCurrentAdvElement;
    return Rules{
        rule<&E::current>("current", Sense::Current),
        rule<&E::samplingInterval>("samplingInterval", Sense::Interval),
        rule<&E::maxDuration>("maxDuration", Sense::Time).orNone(infinity),
        rule<&E::maxCapacity>("maxCapacity", Sense::Charge).orNone(infinity),
        rule<&E::minSamplingVoltageDifference>("minSamplingVoltageDifference", Sense::Difference).orNone(-infinity),
        rule<&E::approxMaxVoltage>("approxMaxVoltage", Sense::Potential).unless(&valueOf<&E::autoVoltageRange>),
    } + voltageWindow<E>() + fixedCurrentRange<E>();
}

Rules constantPotential()
{
    using E = ConstantPotAdvElement;
    return Rules{
        rule<&E::potential>("potential", Sense::Potential).vsOcp(&valueOf<&E::voltageVsOCP>),
        rule<&E::samplingInterval>("samplingInterval", Sense::Interval),
        rule<&E::maxDuration>("maxDuration", Sense::Time).orNone(infinity),
        rule<&E::maxCapacity>("maxCapacity", Sense::Charge).orNone(infinity),
        rule<&E::mindIdt>("mindIdt", Sense::LeastCurrentRate),
    } + currentWindow<E>() + fixedCurrentRange<E>();
}

Rules simpleConstantCurrent()
{
    using E = ConstantCurrentElement;
    return {
        rule<&E::current>("current", Sense::Current),
        rule<&E::samplingInterval>("samplingInterval", Sense::Interval),
        rule<&E::maxDuration>("maxDuration", Sense::Time).orNone(infinity),
    };
}

Rules simpleConstantPotential()
{
    using E = ConstantPotElement;
    return {
        rule<&E::potential>("potential", Sense::Potential).vsOcp(&valueOf<&E::voltageVsOCP>),
        rule<&E::samplingInterval>("samplingInterval", Sense::Interval),
        rule<&E::maxDuration>("maxDuration", Sense::Time).orNone(infinity),
    };
}

Rules constantPower()
{
    using E = ConstantPowerElement;
    return Rules{rule<&E::power>("power", Sense::Power)} + load<E>();
}

Rules constantResistance()
{
    using E = ConstantResistanceElement;
    return Rules{rule<&E::resistance>("resistance", Sense::Resistance)} + load<E>();
}

Rules openCircuit()
{
    using E = OpenCircuitElement;
    return Rules{
        rule<&E::maxDuration>("maxDuration", Sense::Time).orNone(infinity),
        rule<&E::samplingInterval>("samplingInterval", Sense::Interval),
        rule<&E::mindVdt>("mindVdt", Sense::LeastPotentialRate),
    } + voltageWindow<E>(Sense::RestPotential);
}

Rules potentialSweep()
{
    using E = DCPotentialSweepElement;
    return Rules{
        rule<&E::startingPot>("startingPot", Sense::Potential).vsOcp(&valueOf<&E::startVoltageVsOCP>),
        rule<&E::endingPot>("endingPot", Sense::Potential).vsOcp(&valueOf<&E::endVoltageVsOCP>),
        rule<&E::scanRate>("scanRate", Sense::PotentialRate),
        rule<&E::samplingInterval>("samplingInterval", Sense::Interval),
    } + quietTime<E>() + fixedCurrentRange<E>() + currentWindow<E>() + alphaFactor<E>();
}

Rules currentSweep()
{
    using E = DCCurrentSweepElement;
    return Rules{
        rule<&E::startingCurrent>("startingCurrent", Sense::Current),
        rule<&E::endingCurrent>("endingCurrent", Sense::Current),
        rule<&E::scanRate>("scanRate", Sense::CurrentRate),
        rule<&E::samplingInterval>("samplingInterval", Sense::Interval),
    } + quietTime<E>() + voltageWindow<E>() + alphaFactor<E>();
}

Rules cyclicVoltammetry()
{
    using E = CyclicVoltammetryElement;
    return path<E>() + Rules{rule<&E::dEdt>("dEdt", Sense::PotentialRate)} + quietTime<E>() + fixedCurrentRange<E>() + alphaFactor<E>();
}

Rules staircaseVoltammetry()
{
    using E = StaircasePotentialVoltammetryElement;
    return path<E>() + Rules{
        rule<&E::stepSize>("stepSize", Sense::PotentialStep),
        rule<&E::stepDuration>("stepDuration", Sense::StepTime),
    } + quietTime<E>() + fixedCurrentRange<E>();
}

Rules normalPulse()
{
    using E = NormalPulseVoltammetryElement;
    return pulseStaircase<E>() + pulseTimes<E>();
}

Rules differentialPulse()
{
    using E = DiffPulseVoltammetryElement;
    return pulseStaircase<E>() + pulseTimes<E>() + Rules{
        Rule{"pulseHeight", Sense::Potential, &raised<&E::startVoltage, &E::pulseHeight>, "startVoltage + pulseHeight"}.vsOcp(&valueOf<&E::startVoltageVsOCP>),
        Rule{"pulseHeight", Sense::Potential, &raised<&E::endVoltage, &E::pulseHeight>, "endVoltage + pulseHeight"}.vsOcp(&valueOf<&E::endVoltageVsOCP>),
    };
}

Rules squareWave()
{
    using E = SquareWaveVoltammetryElement;
    return pulseStaircase<E>() + Rules{
        rule<&E::pulseFreq>("pulseFreq", Sense::Frequency),
        Rule{"pulseAmp", Sense::Potential, &widened<&E::startVoltage, &E::pulseAmp>, "startVoltage with pulseAmp"}.vsOcp(&valueOf<&E::startVoltageVsOCP>),
        Rule{"pulseAmp", Sense::Potential, &widened<&E::endVoltage, &E::pulseAmp>, "endVoltage with pulseAmp"}.vsOcp(&valueOf<&E::endVoltageVsOCP>),
    };
}

Rules potentiostaticImpedance()
{
    using E = EISPotentiostaticElement;
    return impedanceSweep<E>() + Rules{
        rule<&E::biasVoltage>("biasVoltage", Sense::Potential).vsOcp(&valueOf<&E::biasVoltageVsOCP>),
        Rule{"amplitude", Sense::PotentialSum, &sumOf<&E::biasVoltage, &E::amplitude>, "biasVoltage with amplitude"}.unless(&valueOf<&E::biasVoltageVsOCP>),
    };
}

Rules galvanostaticImpedance()
{
    using E = EISGalvanostaticElement;
    return impedanceSweep<E>() + Rules{
        rule<&E::biasCurrent>("biasCurrent", Sense::Current),
        Rule{"amplitude", Sense::CurrentSum, &sumOf<&E::biasCurrent, &E::amplitude>, "biasCurrent with amplitude"},
    };
}

/// Other than in the elements that step by themselves, the sign of the step counts.
double stepAlongPath(const AbstractBuilderElement &element)
{
    const auto &mottSchottky = static_cast<const MottSchottkyElement &>(element);
    return mottSchottky.voltageStep * (mottSchottky.endingPotential - mottSchottky.startingPotential);
}

Rules mottSchottky()
{
    using E = MottSchottkyElement;
    return {
        rule<&E::startingPotential>("startingPotential", Sense::Potential).vsOcp(&valueOf<&E::startVoltageVsOCP>),
        rule<&E::endingPotential>("endingPotential", Sense::Potential).vsOcp(&valueOf<&E::endVoltageVsOCP>),
        rule<&E::voltageStep>("voltageStep", Sense::PotentialStep).along(&stepAlongPath),
        rule<&E::startFrequency>("startFrequency", Sense::Frequency),
        rule<&E::endFrequency>("endFrequency", Sense::Frequency),
        Rule{"amplitude", Sense::PotentialSum, &sumOf<&E::startingPotential, &E::amplitude>, "startingPotential with amplitude"}.unless(&valueOf<&E::startVoltageVsOCP>),
        Rule{"amplitude", Sense::PotentialSum, &sumOf<&E::endingPotential, &E::amplitude>, "endingPotential with amplitude"}.unless(&valueOf<&E::endVoltageVsOCP>),
        rule<&E::quietTime>("quietTime", Sense::Time),
        rule<&E::quietTimeSampInterval>("quietTimeSampInterval", Sense::Interval),
        rule<&E::stepQuietTime>("stepQuietTime", Sense::Time),
        rule<&E::stepQuietSampInterval>("stepQuietSampInterval", Sense::Interval).where(&valueOf<&E::stepQuietTime>),
    };
}

Rules currentSteps()
{
    using E = SteppedCurrent;
    return {
        rule<&E::startCurrent>("startCurrent", Sense::Current),
        rule<&E::endCurrent>("endCurrent", Sense::Current),
        rule<&E::stepSize>("stepSize", Sense::CurrentStep),
        rule<&E::stepDuration>("stepDuration", Sense::StepTime),
        rule<&E::samplingInterval>("samplingInterval", Sense::Interval),
        rule<&E::approxMinVoltage>("approxMinVoltage", Sense::Potential).orNone(-infinity),
        rule<&E::approxMaxVoltage>("approxMaxVoltage", Sense::Potential).orNone(infinity).notBelow("approxMinVoltage"),
    };
}

Rules potentialSteps()
{
    using E = SteppedVoltage;
    return Rules{
        rule<&E::startVoltage>("startVoltage", Sense::Potential).vsOcp(&valueOf<&E::startVoltageVsOCP>),
        rule<&E::endVoltage>("endVoltage", Sense::Potential).vsOcp(&valueOf<&E::endVoltageVsOCP>),
        rule<&E::stepSize>("stepSize", Sense::PotentialStep),
        rule<&E::stepDuration>("stepDuration", Sense::StepTime),
        rule<&E::samplingInterval>("samplingInterval", Sense::Interval),
    } + fixedCurrentRange<E>();
}

} // namespace

const Rules &rulesOf(const AbstractBuilderElement &element)
{
    static const std::unordered_map<std::type_index, Rules> catalogue = {
        {typeid(ConstantCurrentAdvElement), constantCurrent()},
        {typeid(ConstantCurrentElement), simpleConstantCurrent()},
        {typeid(ConstantPotAdvElement), constantPotential()},
        {typeid(ConstantPotElement), simpleConstantPotential()},
        {typeid(ConstantPowerElement), constantPower()},
        {typeid(ConstantResistanceElement), constantResistance()},
        {typeid(CyclicVoltammetryElement), cyclicVoltammetry()},
        {typeid(DCCurrentSweepElement), currentSweep()},
        {typeid(DCPotentialSweepElement), potentialSweep()},
        {typeid(DiffPulseVoltammetryElement), differentialPulse()},
        {typeid(EISGalvanostaticElement), galvanostaticImpedance()},
        {typeid(EISPotentiostaticElement), potentiostaticImpedance()},
        {typeid(MottSchottkyElement), mottSchottky()},
        {typeid(NormalPulseVoltammetryElement), normalPulse()},
        {typeid(OpenCircuitElement), openCircuit()},
        {typeid(SquareWaveVoltammetryElement), squareWave()},
        {typeid(StaircasePotentialVoltammetryElement), staircaseVoltammetry()},
        {typeid(SteppedCurrent), currentSteps()},
        {typeid(SteppedVoltage), potentialSteps()},
    };
    static const Rules none;
    const auto found = catalogue.find(typeid(element));
    return found == catalogue.end() ? none : found->second;
}
// clang-format on
