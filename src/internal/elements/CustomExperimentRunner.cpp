#include "elements/CustomExperimentRunner.h"

#include "elements/NodeExpansion.h"
#include "logging/ErrorStringList.h"

#include <cstring>

namespace {

Node endNode()
{
    Node end;
    std::memset(static_cast<void *>(&end.hwNode), 0, sizeof end.hwNode); // zeros throughout, not the defaults
    end.stepName = QStringLiteral("Experiment Complete");
    return end;
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

bool CustomExperimentRunner::addElement(const std::shared_ptr<AbstractBuilderElement> &element, quint32 repeats)
{
    return _container.addElement(element, repeats);
}

bool CustomExperimentRunner::addLoop(const std::shared_ptr<CustomExperimentRunner> &other, quint32 repeats)
{
    return other && _container.addLoop(other->_container.getContainer(), repeats);
}
