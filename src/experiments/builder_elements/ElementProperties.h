// SPDX-License-Identifier: MIT
#pragma once

#include <cmath>
#include <limits>
#include <memory>
#include <utility>

/*
 * The bodies of the public elements, one row for each property. A class's source names the class and its builder once,
 * by NIMBRELLE_ELEMENT; the rows below it then give getter and setter the field of the builder that they stand for.
 */

/// Construction around a builder, independent copies, destruction; and the class as Element for the rows to come.
#define NIMBRELLE_ELEMENT(Class, Builder)                                                                              \
    Class::Class(std::shared_ptr<Builder> builder) : VekAbstractElement(builder), _builder(std::move(builder))         \
    {                                                                                                                  \
    }                                                                                                                  \
    Class::Class(const Class &other) : Class(std::make_shared<Builder>(*other._builder))                               \
    {                                                                                                                  \
    }                                                                                                                  \
    Class &Class::operator=(const Class &other)                                                                        \
    {                                                                                                                  \
        _builder = std::make_shared<Builder>(*other._builder);                                                         \
        setBuilder(_builder);                                                                                          \
        return *this;                                                                                                  \
    }                                                                                                                  \
    Class::~Class() = default;                                                                                         \
    using Element = Class;

#define GETTER(Type, getter, field)                                                                                    \
    Type Element::getter() const                                                                                       \
    {                                                                                                                  \
        return _builder->field;                                                                                        \
    }

#define GETTER_AND_SETTER(Type, getter, setter, field)                                                                 \
    GETTER(Type, getter, field)                                                                                        \
    void Element::setter(Type value)                                                                                   \
    {                                                                                                                  \
        _builder->field = value;                                                                                       \
    }

/// getProperty() and setProperty() of a physical value.
#define NUMBER(Property, field) GETTER_AND_SETTER(double, get##Property, set##Property, field)

/// getProperty() and setProperty() of a count.
#define COUNT(Property, field) GETTER_AND_SETTER(unsigned int, get##Property, set##Property, field)

/// isProperty() and setProperty().
#define FLAG(Property, field) GETTER_AND_SETTER(bool, is##Property, set##Property, field)

/// A value whose sign does not count.
#define MAGNITUDE(Property, field)                                                                                     \
    GETTER(double, get##Property, field)                                                                               \
    void Element::set##Property(double value)                                                                          \
    {                                                                                                                  \
        _builder->field = std::fabs(value);                                                                            \
    }

/// A percentage outside, a fraction inside.
#define PERCENTAGE(Property, field)                                                                                    \
    double Element::get##Property() const                                                                              \
    {                                                                                                                  \
        return _builder->field * 100.0;                                                                                \
    }                                                                                                                  \
    void Element::set##Property(double percent)                                                                        \
    {                                                                                                                  \
        _builder->field = percent / 100.0;                                                                             \
    }

/// The flag that the instrument ranges by itself; its setter can only turn it on.
#define AUTOMATIC_RANGE(getter, setter, flag)                                                                          \
    GETTER(bool, getter, flag)                                                                                         \
    void Element::setter()                                                                                             \
    {                                                                                                                  \
        _builder->flag = true;                                                                                         \
    }

/// The value that a fixed range has to hold; setting it turns automatic ranging off.
#define FIXED_RANGE(Property, field, flag)                                                                             \
    GETTER(double, get##Property, field)                                                                               \
    void Element::set##Property(double value)                                                                          \
    {                                                                                                                  \
        _builder->field = value;                                                                                       \
        _builder->flag = false;                                                                                        \
    }
