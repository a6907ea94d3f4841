#include "elements/NodeExpansion.h"

#include "elements/BuilderContainer.h"
#include "elements/NodeMakers.h"
#include "logging/ErrorStringList.h"

using VekInternalContainer::BuilderContainer;

namespace {

/// Makes a filled list run several times.
void repeatNodes(NodeList &list, quint32 repeats)
{
    if (repeats < 2)
        return;
    const auto count = static_cast<quint16>(repeats);
    if (list.size() == 1 && list[0]->hwNode.repeats == 1) {
        Vek_Node_SetRepeats(list[0]->hwNode, count);
        return;
    }
    Node loop;
    loop.hwNode = Vek_Node_Loop(static_cast<qint16>(-list.size()), count);
    list.addNode(loop);
}

void appendBehind(NodeList &list, const NodeList &next)
{
    const int stepsSoFar = list.isEmpty() ? 0 : list[list.size() - 1]->stepNumber;
    for (const auto &node : next.getNodeList())
        node->stepNumber += stepsSoFar;
    list.append(next);
}

NodeList expandLeaf(const BuilderContainer &leaf, const CalibrationData &calibration, const HardwareVersion &hardware)
{
    NodeList list = leaf.element.pointer->GetNodesData(calibration, hardware);
    if (list.isEmpty())
        return list;
    repeatNodes(list, leaf.repeats);
    for (const auto &node : list.getNodeList())
        node->stepNumber = 1;
    return list;
}

NodeList expandList(const BuilderContainer &vertex, const CalibrationData &calibration, const HardwareVersion &hardware)
{
    NodeList list;
    for (const BuilderContainer &child : vertex.children)
        appendBehind(list, FillNodeData(child, calibration, hardware));
    if (!list.isEmpty())
        repeatNodes(list, vertex.repeats);
    return list;
}

ErrorStringList elementErrors(const AbstractBuilderElement &element, const HardwareVersion &hardware)
{
    ErrorStringList errors;
    for (const QString &error : element.validateInput(hardware).getErrorList())
        errors.addError(element.GetFullName() + QStringLiteral("::") + error);
    return errors;
}

} // namespace

NodeList FillNodeData(const BuilderContainer &container, const CalibrationData &calibration,
                      const HardwareVersion &hardware)
{
    return container.isList ? expandList(container, calibration, hardware)
                            : expandLeaf(container, calibration, hardware);
}

ErrorStringList getErrorList(const BuilderContainer &container, const HardwareVersion &hardware)
{
    if (!container.isList)
        return elementErrors(*container.element.pointer, hardware);
    ErrorStringList errors;
    for (const BuilderContainer &child : container.children)
        errors.appendErrorList(getErrorList(child, hardware));
    return errors;
}
