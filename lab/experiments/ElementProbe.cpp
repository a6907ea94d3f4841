// SPDX-License-Identifier: MIT
#include "lab/experiments/ElementProbe.h"

#include "VekExperimentPlan.h"
#include "lab/experiments/ElementCatalogue.h"
#include "lab/experiments/ExperimentFile.h"

#include <algorithm>

namespace lab {

namespace {

using PlanComplaints = std::vector<VekPlanComplaint>;

/// In base units. Small enough for a current or an amplitude, long enough for a time, or large enough for a count.
constexpr double trialValues[] = {0.01, 1.0, 10.0};

std::vector<double> trialsOf(const PropertyRow &property, const VekAbstractElement &element)
{
    switch (property.kind) {
    case PropertyKind::Quantity:
    case PropertyKind::Count:
        return {std::begin(trialValues), std::end(trialValues)};
    case PropertyKind::Flag:
        return {property.get(element) == 0.0 ? 1.0 : 0.0};
    case PropertyKind::Automatic:
    case PropertyKind::VoltageRange:
        break; // no model complains about them
    }
    return {};
}

/// An element with the values of another one, save for one property.
PlanComplaints complaintsWith(const FileElement &element, const ElementRow &row, const PropertyRow &changed,
                              double value, int modelNumber)
{
    const std::unique_ptr<VekAbstractElement> made = row.make();
    for (const PropertyRow &property : row.properties) {
        if (&property == &changed)
            property.set(*made, value);
        else if (element.propertyLines.count(QString::fromLatin1(property.name)) > 0)
            property.set(*made, property.get(*element.element));
    }
    VekExperiment experiment;
    experiment.appendElement(*made, 1);
    return VekExperimentPlan::forModel(experiment, modelNumber).complaints();
}

/// How often a model says the same; a complaint that names its property may say it with another number.
auto countOf(const VekPlanComplaint &complaint, const PlanComplaints &all)
{
    return std::count_if(all.begin(), all.end(), [&complaint](const VekPlanComplaint &each) {
        return each.property() == complaint.property() &&
               (!complaint.property().isEmpty() || each.text() == complaint.text());
    });
}

bool isLifted(const VekPlanComplaint &complaint, const PlanComplaints &before, const PlanComplaints &after)
{
    return countOf(complaint, after) < countOf(complaint, before);
}

} // namespace

ElementProbe::ElementProbe(const FileElement &element, int modelNumber)
{
    VekExperiment experiment;
    experiment.appendElement(*element.element, 1);
    _complaints = VekExperimentPlan::forModel(experiment, modelNumber).complaints();
    const ElementRow &row = *findElement(element.className);
    for (const PropertyRow &property : row.properties) {
        for (const double value : trialsOf(property, *element.element))
            _trials.push_back(
                {QString::fromLatin1(property.name), complaintsWith(element, row, property, value, modelNumber)});
    }
}

QStringList ElementProbe::blamed(const VekPlanComplaint &complaint) const
{
    QStringList properties;
    for (const Trial &trial : _trials) {
        if (isLifted(complaint, _complaints, trial.complaints) && !properties.contains(trial.property))
            properties.append(trial.property);
    }
    return properties;
}

} // namespace lab
