// SPDX-License-Identifier: MIT
#pragma once

#include "elements/AbstractExperiment.h"
#include "elements/BuilderContainer.h"

/**
 * The experiment that a client composed: a tree of elements with a name and a description.
 *
 * @thread A value: used from one thread while it grows, read from any afterwards.
 */
class CustomExperimentRunner : public AbstractExperiment
{
public:
    std::shared_ptr<AbstractExperiment> clone() const override;
    QString GetShortName() const override { return _name; }
    QString GetFullName() const override { return _name; }
    QString GetDescription() const override { return _description; }
    QStringList GetCategory() const override { return {QStringLiteral("Custom")}; }
    QList<quint8> GetTypes() const override { return {1}; }
    NodeList GetNodesData(const CalibrationData &calibration, const HardwareVersion &hardware) const override;
    ErrorStringList validateInput(const HardwareVersion &hardware) override;
    ExperimentComplaints findComplaints(const HardwareVersion &hardware) override;

    const VekInternalContainer::BuilderContainer &root() const { return _container.getContainer(); }

    void setName(const QString &name) { _name = name; }
    void setDescription(const QString &description) { _description = description; }

    /// See BuildExperimentContainer::addElement().
    bool addElement(const std::shared_ptr<AbstractBuilderElement> &element, quint32 repeats);
    /// Appends what another experiment holds now; false for a null pointer, else as BuildExperimentContainer::addLoop().
    bool addLoop(const std::shared_ptr<CustomExperimentRunner> &other, quint32 repeats);

private:
    BuildExperimentContainer _container;
    QString _name = QStringLiteral("Custom Experiment");
    QString _description = QStringLiteral("Not Defined");
};
