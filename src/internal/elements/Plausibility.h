// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <vector>

class AbstractBuilderElement;
class HardwareModel;

/**
 * The second check of what a client asks for. The elements' own validators look at some of their values; this one looks
 * at all of them, and refuses what cannot be meant: what is no number, infinity where it does not stand for "no limit",
 * negative times, a rate of zero, a lower limit above its upper one, set points and limits beyond the model's range.
 */
namespace Plausibility {

/// A value that cannot be meant.
struct Finding {
    QString property; ///< as the getter of the public element has it: "maxVoltage"
    QString text;     ///< names property, value, unit and range; a whole sentence
};

/// All that an element asks for and cannot mean, in the order of its properties; empty for elements that are not known.
std::vector<Finding> findings(const AbstractBuilderElement &element, const HardwareModel &model);

/// A value that findings() looks at, by its property; NaN where the element has no such value or does not use it.
double usedValue(const AbstractBuilderElement &element, const QString &property);

/// What is wrong with a potential in volts, or a current in amperes, that is to be set by hand; empty if nothing is.
QString faultOfManualVoltage(double volts, const HardwareModel &model);
QString faultOfManualCurrent(double amperes, const HardwareModel &model);
/// What is wrong with a sampling interval in seconds; one that is too short is no fault, since it is lengthened.
QString faultOfManualInterval(double seconds);
/// What is wrong with a channel's safety limit; infinity stands for none, so only NaN is refused.
QString faultOfSafetyLimit(double value);

} // namespace Plausibility
