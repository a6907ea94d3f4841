// SPDX-License-Identifier: MIT
#include "VekExperimentPlan.h"

#include "VekExperiment.h"
#include "VekInstrumentDescription.h"
#include "calibration/CalibrationData.h"
#include "elements/CheckedExperiment.h"
#include "elements/NodeExpansion.h"
#include "elements/NodePlan.h"
#include "elements/Plausibility.h"
#include "experiments/VekExperimentPrivate.h"
#include "hardware_models/HardwareModelFactory.h"
#include "hardware_models/HardwareVersion.h"
#include "hardware_models/ModelNames.h"

#include <cmath>
#include <utility>

/// What a plan holds; nothing changes it once it is made.
class VekExperimentPlanPrivate
{
public:
    ExperimentComplaints complaints;
    std::vector<std::shared_ptr<const PlannedNode>> nodes;
};

namespace {

std::shared_ptr<VekExperimentPlanPrivate> refusal(const QString &complaint)
{
    auto plan = std::make_shared<VekExperimentPlanPrivate>();
    plan->complaints.push_back({VekErrorCode::InvalidParameters, 0, QString(), complaint});
    return plan;
}

/// The currents that the elements' fixed ranges have to hold, by step number from 1.
std::vector<double> fixedCurrentRanges(const CustomExperimentRunner &experiment)
{
    std::vector<double> ranges;
    visitElements(experiment.root(), [&ranges](const AbstractBuilderElement &element, int) {
        ranges.push_back(std::abs(Plausibility::usedValue(element, QStringLiteral("approxMaxCurrent"))));
    });
    return ranges;
}

/// A constant current widens a range that it would not fit in.
double fixedRangeOf(const PlannedNode &node, double range)
{
    const bool isCurrent = node.unit == QLatin1String("A");
    return isCurrent && range < std::abs(node.startValue) ? std::abs(node.startValue) : range;
}

std::shared_ptr<VekExperimentPlanPrivate> planFor(CustomExperimentRunner &experiment, HardwareModel_t model)
{
    HardwareVersion hardware;
    hardware.hwModel = model;
    const CheckedExperiment checked = checkAndExpand(experiment, CalibrationData(), hardware);
    auto plan = std::make_shared<VekExperimentPlanPrivate>();
    plan->complaints = checked.complaints;
    if (!checked.complaints.empty())
        return plan;
    const std::vector<double> ranges = fixedCurrentRanges(experiment);
    for (PlannedNode &node : planNodes(checked.nodes)) {
        const bool isMeasured = node.expectedDuration != 0.0 && node.stepNumber >= 1;
        if (isMeasured)
            node.fixedCurrentRange = fixedRangeOf(node, ranges.at(std::size_t(node.stepNumber) - 1));
        plan->nodes.push_back(std::make_shared<const PlannedNode>(std::move(node)));
    }
    return plan;
}

/// The models that are sold under a name.
QStringList modelsSoldAs(const QString &vanityName)
{
    QStringList names;
    const QStringList all = ModelNames::all();
    for (int number = 0; number < all.size(); ++number) {
        const auto model = HardwareModelFactory::getHardwareModel(HardwareModel_t(number));
        if (model->getVanityName().compare(vanityName, Qt::CaseInsensitive) == 0)
            names.append(all[number]);
    }
    return names;
}

/// A name that is also that of others goes by its number.
QString undecided(const QString &text, const QStringList &models)
{
    QStringList names;
    for (const QString &name : models) {
        const bool isShared = name.compare(text, Qt::CaseInsensitive) == 0;
        names.append(isShared ? QStringLiteral("%1 (number %2)").arg(name).arg(int(ModelNames::find(name))) : name);
    }
    return QStringLiteral("\"%1\" is the name of several models, with different limits. Which one? %2.")
        .arg(text, names.join(QLatin1String(", ")));
}

void tell(QString *complaint, const QString &text)
{
    if (complaint)
        *complaint = text;
}

} // namespace

VekExperimentPlan::VekExperimentPlan() : VekExperimentPlan(std::make_shared<VekExperimentPlanPrivate>())
{
}

VekExperimentPlan::VekExperimentPlan(std::shared_ptr<const VekExperimentPlanPrivate> plan) : _private(std::move(plan))
{
}

QStringList VekExperimentPlan::modelNames()
{
    return ModelNames::all();
}

QString VekExperimentPlan::modelName(int modelNumber)
{
    return ModelNames::all().value(modelNumber);
}

int VekExperimentPlan::modelNumber(const QString &text, QString *complaint)
{
    bool isNumber = false;
    const int number = text.toInt(&isNumber);
    if (isNumber && !modelName(number).isEmpty())
        return number;
    const QStringList soldAs = modelsSoldAs(text);
    if (soldAs.size() > 1) {
        tell(complaint, undecided(text, soldAs));
        return -1;
    }
    const HardwareModel_t model = ModelNames::find(soldAs.value(0, text));
    if (model != HardwareModel_t::Invalid)
        return int(model);
    tell(complaint, QStringLiteral("There is no model \"%1\".").arg(text));
    return -1;
}

VekExperimentPlan VekExperimentPlan::forModel(const VekExperiment &experiment, const QString &model)
{
    QString complaint;
    const int number = modelNumber(model, &complaint);
    return number < 0 ? VekExperimentPlan(refusal(complaint)) : forModel(experiment, number);
}

VekExperimentPlan VekExperimentPlan::forModel(const VekExperiment &experiment, int modelNumber)
{
    if (modelName(modelNumber).isEmpty())
        return VekExperimentPlan(refusal(QStringLiteral("There is no model with the number %1.").arg(modelNumber)));
    return VekExperimentPlan(planFor(*experiment._private->getRunner(), HardwareModel_t(modelNumber)));
}

VekExperimentPlan VekExperimentPlan::forModel(const VekExperiment &experiment,
                                              const VekInstrumentDescription &instrument)
{
    return forModel(experiment, instrument.modelNumber);
}

VekErrorCode VekExperimentPlan::result() const
{
    return resultOf(_private->complaints);
}

std::vector<VekPlanComplaint> VekExperimentPlan::complaints() const
{
    std::vector<VekPlanComplaint> list;
    for (const ExperimentComplaint &complaint : _private->complaints)
        list.push_back(VekPlanComplaint(complaint));
    return list;
}

std::vector<VekPlannedNode> VekExperimentPlan::nodes() const
{
    std::vector<VekPlannedNode> list;
    for (const auto &node : _private->nodes)
        list.push_back(VekPlannedNode(node));
    return list;
}

double VekExperimentPlan::expectedDuration() const
{
    return total(&VekPlannedNode::expectedDuration);
}

double VekExperimentPlan::expectedCharge() const
{
    return total(&VekPlannedNode::expectedCharge);
}

double VekExperimentPlan::expectedRows() const
{
    return total(&VekPlannedNode::expectedRows);
}

double VekExperimentPlan::total(double (VekPlannedNode::*value)() const) const
{
    double sum = 0.0;
    for (const VekPlannedNode &node : nodes())
        sum += node.runs() * (node.*value)();
    return sum;
}
