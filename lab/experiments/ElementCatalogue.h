// SPDX-License-Identifier: MIT
#pragma once

#include "lab/notation/Dimension.h"

#include <QStringList>

#include <cmath>
#include <limits>
#include <memory>
#include <vector>

class VekAbstractElement;

namespace lab {

/// How a property is written in an experiment file.
enum class PropertyKind {
    Quantity,     ///< a number in the base unit, or a text with a unit
    Flag,         ///< true or false
    Automatic,    ///< true, or false together with the property that then chooses the range
    Count,        ///< a whole number from 0
    VoltageRange, ///< a range from 0 to 3, or 5 for automatic
};

/// One property of an element. Its value travels as a double: flags as 0 and 1.
struct PropertyRow {
    const char *name; ///< as the getter of the class has it, without "get" or "is"
    PropertyKind kind;
    Dimension dimension;
    void (*set)(VekAbstractElement &element, double value);
    double (*get)(const VekAbstractElement &element);
    bool isRequired = false;
    double none = std::numeric_limits<double>::quiet_NaN(); ///< what "none" stands for; NaN where it may not be written
    const char *partner = nullptr;  ///< the property that has to be there when this one is false
    const char *excludes = nullptr; ///< the property that writes the same value

    constexpr PropertyRow required() const
    {
        PropertyRow row = *this;
        row.isRequired = true;
        return row;
    }
    constexpr PropertyRow noneIs(double value) const
    {
        PropertyRow row = *this;
        row.none = value;
        return row;
    }
    constexpr PropertyRow excluding(const char *other) const
    {
        PropertyRow row = *this;
        row.excludes = other;
        return row;
    }
    bool mayBeNone() const { return !std::isnan(none); }
};

/// One class of elements, as an experiment file names it.
struct ElementRow {
    const char *name; ///< the class name without "Vek" and "Element"
    const char *summary;
    std::unique_ptr<VekAbstractElement> (*make)(); ///< the required values are still 0
    std::vector<PropertyRow> properties;           ///< in the order in which they have to be set

    const PropertyRow *find(const QString &property) const;
    QStringList propertyNames() const;
};

/// All elements, sorted by name.
const std::vector<ElementRow> &elementCatalogue();

/// The element of this name; null without one.
const ElementRow *findElement(const QString &name);

QStringList elementNames();

/// "; did you mean \"CyclicVoltammetry\"?" for a word that is no element, or nothing.
QString elementMeant(const QString &word);

/// The elements that an abbreviation of the laboratory stands for ("CV", "GEIS"), whatever its case; empty for others.
QStringList elementsAbbreviated(const QString &abbreviation);

} // namespace lab
