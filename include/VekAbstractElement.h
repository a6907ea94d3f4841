// SPDX-License-Identifier: MIT
#pragma once

#include "NimbrelleExport.h"

#include <QtCore/QString>
#include <QtCore/QStringList>

#include <memory>

class AbstractBuilderElement;

/**
 * Base of all elements: one kind of step that an experiment can run.
 *
 * An element is a set of values with getters and setters, in SI units. Values are not checked when they are set: the
 * upload checks them against the limits of the instrument and names each one that is out of bounds. Copies are
 * independent of each other.
 *
 * @thread A value: use it from one thread at a time.
 */
class NIMBRELLE_EXPORT VekAbstractElement
{
public:
    /// Copying is for the concrete elements, which give each copy values of its own.
    VekAbstractElement(const VekAbstractElement &) = delete;
    /// See the copy constructor.
    VekAbstractElement &operator=(const VekAbstractElement &) = delete;
    /// Experiments that hold a copy of the element keep it.
    virtual ~VekAbstractElement();

    /// Name of this kind of element, for example "Open Circuit Potential".
    virtual QString getName() const;
    /// The groups in which a program may list this kind of element, for example "Basic Experiments".
    virtual QStringList getCategory() const;

protected:
    /// For the concrete elements. @p builder holds the values; null makes an element that no experiment takes.
    explicit VekAbstractElement(std::shared_ptr<AbstractBuilderElement> builder);
    /// Makes the element stand for other values.
    void setBuilder(std::shared_ptr<AbstractBuilderElement> builder);

private:
    friend class VekExperiment;

    std::shared_ptr<AbstractBuilderElement> _abstractBuilder;
};
