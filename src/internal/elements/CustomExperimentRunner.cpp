// SPDX-License-Identifier: MIT
#include "elements/CustomExperimentRunner.h"

#include "elements/ExperimentSize.h"
#include "elements/NodeExpansion.h"
#include "elements/Plausibility.h"
#include "hardware_models/HardwareModelFactory.h"
#include "hardware_models/HardwareVersion.h"
#include "logging/ErrorStringList.h"

#include <cstring>

using VekInternalContainer::BuilderContainer;

namespace {

Node endNode()
{
    Node end;
    std::memset(static_cast<void *>(&end.hwNode), 0, sizeof end.hwNode); // zeros throughout, not the defaults
    end.stepName = QStringLiteral("Experiment Complete");
    return end;
}

ExperimentComplaints brokenLimits(const BuilderContainer &root, const HardwareVersion &hardware)
{
    const QString vanityName = HardwareModelFactory::getHardwareModel(hardware.hwModel)->getVanityName();
    ExperimentComplaints complaints;
    visitElements(root, [&](const AbstractBuilderElement &element, int stepNumber) {
        for (QString text : element.validateInput(hardware).getErrorList())
            complaints.push_back(
                {VekErrorCode::InvalidParameters, stepNumber, QString(),
                 element.GetFullName() + QStringLiteral("::") + text.replace(QLatin1String("%1"), vanityName)});
    });
    return complaints;
}

ExperimentComplaints implausibleValues(const BuilderContainer &root, const HardwareVersion &hardware)
{
    const auto model = HardwareModelFactory::getHardwareModel(hardware.hwModel);
    ExperimentComplaints complaints;
    visitElements(root, [&](const AbstractBuilderElement &element, int stepNumber) {
        for (const Plausibility::Finding &finding : Plausibility::findings(element, *model))
            complaints.push_back({VekErrorCode::ImplausibleParameters, stepNumber, finding.property,
                                  element.GetFullName() + QStringLiteral("::") + finding.text});
    });
    return complaints;
}

} // namespace

std::shared_ptr<AbstractExperiment> CustomExperimentRunner::clone() const
{
    return std::make_shared<CustomExperimentRunner>(*this);
}

NodeList CustomExperimentRunner::GetNodesData(const CalibrationData &calibration, const HardwareVersion &hardware) const
{
    NodeList list = FillNodeData(_container.getContainer(), calibration, hardware);
    list.addNode(endNode());
    return list;
}

ErrorStringList CustomExperimentRunner::validateInput(const HardwareVersion &hardware)
{
    const auto &root = _container.getContainer();
    if (!root.children.isEmpty() || root.element.pointer)
        return getErrorList(root, hardware);
    ErrorStringList errors;
    errors.addError(QStringLiteral("Device: %1 did not start an empty experiment. "
                                   "The experiment should have at least one element."));
    return errors;
}

ExperimentComplaints CustomExperimentRunner::findComplaints(const HardwareVersion &hardware)
{
    const BuilderContainer &root = _container.getContainer();
    if (root.children.isEmpty())
        return AbstractExperiment::findComplaints(hardware);
    const ExperimentComplaints size = ExperimentSize::complaintsOf(root);
    if (!size.empty())
        return size;
    ExperimentComplaints complaints = brokenLimits(root, hardware);
    const ExperimentComplaints further = implausibleValues(root, hardware); // names the values, too, that broke a limit
    complaints.insert(complaints.end(), further.begin(), further.end());
    return complaints;
}

bool CustomExperimentRunner::addElement(const std::shared_ptr<AbstractBuilderElement> &element, quint32 repeats)
{
    return _container.addElement(element, repeats);
}

bool CustomExperimentRunner::addLoop(const std::shared_ptr<CustomExperimentRunner> &other, quint32 repeats)
{
    return other && _container.addLoop(other->_container.getContainer(), repeats);
}
