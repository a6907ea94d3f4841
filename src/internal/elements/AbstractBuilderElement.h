// SPDX-License-Identifier: MIT
#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include <memory>

class CalibrationData;
class ErrorStringList;
class NodeList;
struct HardwareVersion;

/**
 * One element of an experiment: a few numbers, the check of these numbers against a model, and the nodes that they
 * make. Concrete elements are plain data with public fields in SI units.
 */
class AbstractBuilderElement
{
public:
    virtual ~AbstractBuilderElement() = default;

    virtual QString GetFullName() const = 0;
    virtual QStringList GetCategory() const = 0;
    /// What the element measures: 1 for DC, 0 for AC.
    virtual QList<quint8> GetTypes() const = 0;
    /// Makes the nodes from whatever values stand; validateInput() comes before. Cannot fail.
    virtual NodeList GetNodesData(const CalibrationData &calibration, const HardwareVersion &hardware) const = 0;
    virtual std::shared_ptr<AbstractBuilderElement> clone() const = 0;
    /// Every complaint about the values, in a fixed order; that the model is unknown comes first and alone.
    virtual ErrorStringList validateInput(const HardwareVersion &hardware) const = 0;

protected:
    AbstractBuilderElement() = default;
    AbstractBuilderElement(const AbstractBuilderElement &) = default;
    AbstractBuilderElement &operator=(const AbstractBuilderElement &) = default;
};
