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

void visitFrom(const BuilderContainer &container, int &stepNumber, const ElementVisitor &visit)
{
    if (!container.isList)
        return visit(*container.element.pointer, ++stepNumber);
    for (const BuilderContainer &child : container.children)
        visitFrom(child, stepNumber, visit);
}

} // namespace

void visitElements(const BuilderContainer &container, const ElementVisitor &visit)
{
    int stepNumber = 0;
    visitFrom(container, stepNumber, visit);
}

NodeList FillNodeData(const BuilderContainer &container, const CalibrationData &calibration,
                      const HardwareVersion &hardware)
{
    return container.isList ? expandList(container, calibration, hardware)
                            : expandLeaf(container, calibration, hardware);
}

ErrorStringList getErrorList(const BuilderContainer &container, const HardwareVersion &hardware)
{
    ErrorStringList errors;
    visitElements(container, [&](const AbstractBuilderElement &element, int) {
        for (const QString &error : element.validateInput(hardware).getErrorList())
            errors.addError(element.GetFullName() + QStringLiteral("::") + error);
    });
    return errors;
}
