// SPDX-License-Identifier: MIT
#include "lab/experiments/ElementTraits.h"

#include "lab/experiments/ElementCatalogue.h"
#include "lab/experiments/ExperimentFile.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <limits>

namespace lab {

namespace {

bool isOneOf(const FileElement &element, std::initializer_list<const char *> classNames)
{
    return std::any_of(classNames.begin(), classNames.end(),
                       [&element](const char *each) { return element.className == QLatin1String(each); });
}

} // namespace

double propertyOf(const FileElement &element, const char *name)
{
    const ElementRow *row = findElement(element.className);
    const PropertyRow *property = row ? row->find(QString::fromLatin1(name)) : nullptr;
    return property ? property->get(*element.element) : std::numeric_limits<double>::quiet_NaN();
}

bool isPulsed(const FileElement &element)
{
    return isOneOf(element, {"NormalPulseVoltammetry", "DiffPulseVoltammetry", "SquareWaveVoltammetry"});
}

bool isLoad(const FileElement &element)
{
    return isOneOf(element, {"ConstantCurrent", "ConstantPower", "ConstantResistance"});
}

double longestInterval(const FileElement &element)
{
    if (propertyOf(element, "minSamplingVoltageDifference") > 0.0)
        return std::numeric_limits<double>::infinity();
    const double frequency = propertyOf(element, "pulseFreq");
    double longest = frequency > 0.0 ? 1.0 / frequency : 0.0;
    for (const char *name : {"samplingInterval", "quietTimeSamplingInterval", "quietTimeSampInterval",
                             "stepQuietSampInterval", "pulsePeriod"})
        longest = std::fmax(longest, propertyOf(element, name)); // passes over NaN
    return longest;
}

} // namespace lab
