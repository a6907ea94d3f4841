// SPDX-License-Identifier: MIT
#pragma once

#include "elements/AbstractBuilderElement.h"

#include <limits>
#include <vector>

/// What a value is, which decides its unit and where it has to lie.
enum class Sense {
    Potential,     ///< under control
    RestPotential, ///< of a cell that is not driven, or relative to it
    PotentialSum,  ///< of a bias and an amplitude
    PotentialStep, ///< of either sign, but not 0
    Difference,    ///< of potentials, not negative
    PotentialRate, ///< of either sign, but not 0
    LeastPotentialRate,
    Current,
    CurrentSum,
    CurrentStep,
    CurrentRate,
    LeastCurrentRate,
    Power,
    Resistance,
    Charge,   ///< of either sign
    Time,     ///< not negative
    StepTime, ///< above 0
    Interval, ///< between samples
    Frequency,
    Share, ///< in percent; the elements hold a fraction
    Cycles,
};

/// Reads a value of an element; flags as 0 and 1.
using ElementValue = double (*)(const AbstractBuilderElement &element);

/// How one value of a kind of element is judged.
struct Rule {
    const char *property;
    Sense sense;
    ElementValue value;
    const char *term = nullptr; ///< what the value is where it is more than the property: "startVoltage + pulseHeight"
    double none = std::numeric_limits<double>::quiet_NaN(); ///< what stands for no limit
    ElementValue isVsOcp = nullptr;  ///< not 0: relative to the open circuit, whose range it then has
    ElementValue counts = nullptr;   ///< above 0: the value is used; without it always
    ElementValue isIdle = nullptr;   ///< not 0: the value is not used
    const char *atLeast = nullptr;   ///< the property that must not lie above this one
    ElementValue opposite = nullptr; ///< below 0: this one points the other way than the span that it divides

    Rule orNone(double bound) const { return with(&Rule::none, bound); }
    Rule vsOcp(ElementValue flag) const { return with(&Rule::isVsOcp, flag); }
    Rule where(ElementValue other) const { return with(&Rule::counts, other); }
    Rule unless(ElementValue flag) const { return with(&Rule::isIdle, flag); }
    Rule notBelow(const char *other) const { return with(&Rule::atLeast, other); }
    Rule of(const char *words) const { return with(&Rule::term, words); }
    Rule along(ElementValue sign) const { return with(&Rule::opposite, sign); }

private:
    template <class Value, class Given>
    Rule with(Value Rule::*member, Given given) const
    {
        Rule rule = *this;
        rule.*member = given;
        return rule;
    }
};

/// In the order of the complaints.
using Rules = std::vector<Rule>;

/// The rules of an element's kind; empty for a kind that is not known. Charge and discharge is one: no client makes it.
const Rules &rulesOf(const AbstractBuilderElement &element);
